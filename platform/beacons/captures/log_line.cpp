#include "platform/beacons/captures/log_line.h"

#include <fmt/format.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "platform/beacons/captures/capture_reader.h"
#include "platform/hex.h"

namespace System::Beacon {

namespace {

constexpr int MaxDepth = 16;

enum class TMember : std::uint8_t { Other, Time, Address, Rssi, Payload };

TMember MemberOf(std::string_view AName) {
  if (AName == "t") return TMember::Time;
  if (AName == "address") return TMember::Address;
  if (AName == "rssi") return TMember::Rssi;
  if (AName == "adv") return TMember::Payload;
  return TMember::Other;
}

/// Receives a line from the JSON parser piece by piece. Each function returns whether to go on;
/// once one has not, `Problem` says why. Their names are the parser's.
class TLineBuilder {
 public:
  explicit TLineBuilder(TLogLine& ALine) : FLine(ALine) {}

  std::string Problem;

  bool HasTime() const { return FHasTime; }
  bool HasAddress() const { return FHasAddress; }
  bool HasPayload() const { return FHasPayload; }

  // NOLINTBEGIN(readability-identifier-naming)
  bool null() { return FMember == TMember::Rssi ? Next() : Other(); }
  bool boolean(bool) { return Other(); }
  bool number_integer(std::int64_t AValue) { return Number(static_cast<double>(AValue)); }
  bool number_unsigned(std::uint64_t AValue) { return Number(static_cast<double>(AValue)); }
  bool number_float(double AValue, const std::string&) { return Number(AValue); }
  bool string(const std::string& AValue);
  bool binary(const std::vector<std::uint8_t>&) { return false; }
  bool key(const std::string& AName) {
    FMember = FDepth == 1 ? MemberOf(AName) : TMember::Other;
    return true;
  }
  bool start_object(std::size_t) { return Open(); }
  bool end_object() { return Close(); }
  bool start_array(std::size_t) { return FDepth == 0 ? Fail("not a JSON object") : Open(); }
  bool end_array() { return Close(); }
  bool parse_error(std::size_t AColumn,
                   const std::string&,
                   const nlohmann::json::exception& AError) {
    constexpr int NumberOverflow = 406;
    if (AError.id == NumberOverflow) return Fail("a number is out of range");
    return Fail(fmt::format("not a JSON object: wrong at column {}", AColumn));
  }
  // NOLINTEND(readability-identifier-naming)

 private:
  bool Number(double AValue);
  bool Other();
  bool Open();
  bool Close() {
    --FDepth;
    return true;
  }
  bool Next() {
    FMember = TMember::Other;
    return true;
  }
  bool Fail(std::string_view AProblem) {
    Problem = AProblem;
    return false;
  }

  TLogLine& FLine;
  int FDepth = 0;
  TMember FMember = TMember::Other;  // the one whose value comes next
  bool FHasTime = false;
  bool FHasAddress = false;
  bool FHasPayload = false;
};

bool TLineBuilder::string(const std::string& AValue) {
  if (FMember == TMember::Address) {
    FHasAddress = TBluetoothAddress::Parse(AValue, FLine.Address);
    return FHasAddress ? Next() : Fail("\"address\" is not of the form C4:BE:84:01:02:03");
  }
  if (FMember != TMember::Payload) return Other();
  if (AValue.size() > 2 * MaxPayloadSize) return Fail("\"adv\" is longer than 1650 bytes");
  FLine.Payload.resize(AValue.size() / 2);
  FHasPayload = HexToBytes(AValue, FLine.Payload);
  return FHasPayload ? Next() : Fail("\"adv\" is not hexadecimal, two digits a byte");
}

bool TLineBuilder::Number(double AValue) {
  if (FMember == TMember::Time) {
    const double Microseconds = AValue * static_cast<double>(TicksPerSecond);
    if (!(std::abs(Microseconds) <= static_cast<double>(MaxCaptureTime))) {
      return Fail("\"t\" is out of range");
    }
    FLine.Time = std::llround(Microseconds);
    FHasTime = true;
    return Next();
  }
  if (FMember != TMember::Rssi) return Other();
  const bool IsStrength = AValue >= -127 && AValue <= 20 && AValue == std::trunc(AValue);
  if (!IsStrength && AValue != UnknownRssi) {
    return Fail("\"rssi\" is not a whole number from -127 to 20");
  }
  FLine.Rssi = static_cast<std::int8_t>(AValue);
  return Next();
}

/// A value of a kind that none of the known members has.
bool TLineBuilder::Other() {
  if (FDepth == 0) return Fail("not a JSON object");
  switch (FMember) {
    case TMember::Time:
      return Fail("\"t\" is not a number");
    case TMember::Address:
      return Fail("\"address\" is not a string");
    case TMember::Rssi:
      return Fail("\"rssi\" is not a number");
    case TMember::Payload:
      return Fail("\"adv\" is not a string");
    case TMember::Other:
      break;
  }
  return true;
}

bool TLineBuilder::Open() {
  if (FDepth > 0 && !Other()) return false;
  return ++FDepth <= MaxDepth || Fail("nested too deeply");
}

}  // namespace

std::string ParseLogLine(std::string_view AText, TLogLine& ALine) {
  ALine.Rssi = UnknownRssi;
  TLineBuilder Builder(ALine);
  if (!nlohmann::json::sax_parse(AText.begin(), AText.end(), &Builder)) return Builder.Problem;
  if (!Builder.HasTime()) return "\"t\" is missing";
  if (!Builder.HasAddress()) return "\"address\" is missing";
  if (!Builder.HasPayload()) return "\"adv\" is missing";
  return {};
}

}  // namespace System::Beacon
