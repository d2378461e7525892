#include <fmt/format.h>

#include <optional>

#include "platform/beacons/captures/advertisement_queue.h"
#include "platform/beacons/captures/captures.h"
#include "platform/beacons/captures/hci_builder.h"
#include "platform/beacons/captures/log_reader.h"
#include "platform/beacons/captures/output_file.h"
#include "platform/beacons/captures/wall_time.h"
#include "platform/hex.h"

namespace System::Beacon {

namespace {

/// Seconds with no more decimals than it takes: "-0.5", "12", "0.000001".
std::string SecondsToText(TTicks ATime) {
  const TTicks Size = ATime < 0 ? -ATime : ATime;
  std::string Text =
      fmt::format("{}{}.{:06}", ATime < 0 ? "-" : "", Size / TicksPerSecond, Size % TicksPerSecond);
  Text.erase(Text.find_last_not_of('0') + 1);
  if (Text.back() == '.') Text.pop_back();
  return Text;
}

std::string LineOf(const TAdvertisement& AAdvertisement, TTicks ATime) {
  std::string Line = fmt::format(R"({{"t": {}, "address": "{}", "rssi": )",
                                 SecondsToText(ATime),
                                 AAdvertisement.Address.ToText());
  const std::int8_t Rssi = RssiFromRadio(AAdvertisement.Rssi);
  Line += Rssi == UnknownRssi ? "null" : fmt::format("{}", Rssi);
  return Line + R"(, "adv": ")" + BytesToHex(AAdvertisement.Payload) + "\"}\n";
}

class TLogWriter : public TInterfacedObject, public virtual IAdvertisementWriter {
 public:
  TLogWriter(const std::string& APath, TCaptureClock AClock);
  void Write(const TAdvertisement& AAdvertisement) override;
  void Close() override { FFile.Close(); }

 private:
  TOutputFile FFile;
  std::optional<TTicks> FStart;  // empty until the first advertisement of a wall clock
};

TLogWriter::TLogWriter(const std::string& APath, TCaptureClock AClock) : FFile(APath) {
  if (AClock == TCaptureClock::Recording) FStart = 0;
  FFile.Write(std::string_view("# t in seconds, rssi in dBm, adv in hexadecimal\n"));
}

void TLogWriter::Write(const TAdvertisement& AAdvertisement) {
  CheckWritable(AAdvertisement, FFile.GetPath());
  if (!FStart) {
    FStart = AAdvertisement.Time;
    FFile.Write(fmt::format("{}{}\n", LogStartMark, WallTimeToText(*FStart)));
  }
  FFile.Write(LineOf(AAdvertisement, AAdvertisement.Time - *FStart));
}

}  // namespace

TRef<IAdvertisementWriter> CreateAdvertisementLog(const std::string& APath, TCaptureClock AClock) {
  return New<TLogWriter>(APath, AClock);
}

}  // namespace System::Beacon
