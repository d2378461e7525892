// A recording as a source.
#pragma once

#include "platform/beacons/advertisement.h"
#include "platform/threads.h"

namespace System::Beacon {

/// Delivers what a reader yields at the times when it was recorded, counted from the moment of
/// `Open`. In the simulated runtime that takes no longer than reading; in the real one it takes as
/// long as the recording. Times that run backwards are delivered at once. Can be opened once.
class TReplaySource final : public TInterfacedObject, public virtual IAdvertisementSource {
 public:
  explicit TReplaySource(TRef<IAdvertisementReader> AReader) : FReader(std::move(AReader)) {}

  void Open() override;
  void Close() noexcept override {}
  TSourceResult Next(TAdvertisement& AAdvertisement, TTicks ADeadline) override;
  void Interrupt() noexcept override { FWake.SetEvent(); }
  bool IsLive() const override { return false; }

  /// Set when the last advertisement has been delivered and taken in. Any thread.
  TEvent& GetFinished() noexcept { return FFinished; }
  const IAdvertisementReader& GetReader() const noexcept { return *FReader; }

 private:
  bool ReadNext();

  const TRef<IAdvertisementReader> FReader;
  TEvent FWake{"the next recorded advertisement"};
  TEvent FFinished{"the end of the recording"};
  TAdvertisement FPending;
  bool FHasPending = false;
  TTicks FOffset = 0;  // from the recording's clock to Ticks
  TTicks FDue = 0;
  bool FIsOpen = false;
  bool FHasBegun = false;
};

}  // namespace System::Beacon
