// Recordings in which nothing was heard for long: a clock that was set, a damaged time.
#pragma once

#include <optional>
#include <string>

#include "platform/beacons/advertisement.h"

namespace Wayfence {

/// Passes a recording on, with the times that the other reader gives until `ShortenSilences` is
/// called. One thread at a time, as the other reader.
class TSilenceReader final : public System::TInterfacedObject,
                             public virtual System::Beacon::IAdvertisementReader {
 public:
  explicit TSilenceReader(System::TRef<System::Beacon::IAdvertisementReader> AReader)
      : FReader(std::move(AReader)) {}

  bool Read(System::Beacon::TAdvertisement& AAdvertisement) override;
  bool HasWallTime() const override { return FReader->HasWallTime(); }
  const System::Beacon::TReadProblems& GetProblems() const override {
    return FReader->GetProblems();
  }
  double GetProgress() const override { return FReader->GetProgress(); }

  /// Leaves whole seconds out of silences, so that none is longer than `ALongest` and a second.
  /// Called before the first `Read`.
  void ShortenSilences(System::TTicks ALongest) { FLongest = ALongest; }
  /// What was left out before the advertisement that was read last.
  System::TTicks GetSkipped() const noexcept { return FSkipped; }
  /// Which silences were shortened, for people; empty when none was.
  std::string DescribeSilences() const;

 private:
  void Shorten(System::TTicks ASilence);

  const System::TRef<System::Beacon::IAdvertisementReader> FReader;
  std::optional<System::TTicks> FLongest;
  std::optional<System::TTicks> FStart;
  System::TTicks FLatest = 0;  // of the recording's clock
  System::TTicks FSkipped = 0;
  int FCount = 0;
  double FFirstAfter = 0.0;  // seconds since the first advertisement
  double FFirstHours = 0.0;
};

}  // namespace Wayfence
