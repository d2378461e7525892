// Reads messages of the bus without trusting what they hold.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

struct sd_bus_message;

namespace System::Beacon {

/// Walks through one message. What does not have the type that is asked for is passed over, never
/// misread. Texts and bytes are views into the message. One thread at a time; never raises.
class TBusReader {
 public:
  explicit TBusReader(sd_bus_message* AMessage) noexcept : FMessage(AMessage) {}

  /// The object that a signal is about; empty for a reply.
  std::string_view GetPath() const noexcept;

  /// The next value, when it is a text or an object path; else empty, and nothing is consumed.
  std::string_view ReadText() noexcept;
  /// The bytes of the next value, when it is an array of them; else none.
  std::span<const std::uint8_t> ReadBytes() noexcept;
  bool Read(std::int16_t& AValue) noexcept;
  bool Read(std::uint16_t& AValue) noexcept;
  bool Read(bool& AValue) noexcept;

  /// Calls `AVisit()` inside the next value, when it is a variant that holds `ASignature`.
  template <class TVisit>
  void InVariant(const char* ASignature, TVisit&& AVisit) {
    if (!Enter('v', ASignature)) return;
    AVisit();
    Leave();
  }

  /// Calls `AVisit()` inside each entry of the next value, when it is a dictionary whose entries
  /// have the signature `AEntry`; what a visit leaves unread is passed over.
  template <class TVisit>
  void ForEachEntry(const char* AEntry, TVisit&& AVisit) {
    if (!EnterDictionary(AEntry)) return;
    while (Enter('e', AEntry)) {
      AVisit();
      Leave();
    }
    Leave();
  }

  /// Calls `AVisit(Text)` for each text of the next value, when it is an array of texts.
  template <class TVisit>
  void ForEachText(TVisit&& AVisit) {
    if (!Enter('a', "s")) return;
    for (auto Text = ReadText(); Text.data() != nullptr; Text = ReadText()) AVisit(Text);
    Leave();
  }

  /// The value of the variant that comes next, when it has the type `T`.
  template <class T>
  std::optional<T> ReadVariant() {
    std::optional<T> Result;
    T Value{};
    InVariant(SignatureOf(Value), [&] {
      if (Read(Value)) Result = Value;
    });
    return Result;
  }

 private:
  static const char* SignatureOf(std::int16_t) noexcept { return "n"; }
  static const char* SignatureOf(bool) noexcept { return "b"; }

  bool Enter(char AKind, const char* AContents) noexcept;
  bool EnterDictionary(const char* AEntry) noexcept;
  void Leave() noexcept;

  sd_bus_message* FMessage;
  bool FIsBroken = false;  // no longer well-formed: nothing more is read
};

}  // namespace System::Beacon
