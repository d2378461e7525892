// What the commands read from: a source, watched for its first advertisement, its end, its failure
// and its progress.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/progress.h"
#include "apps/wayfence/silences.h"
#include "platform/beacons/advertisement.h"
#include "platform/simulation.h"
#include "platform/threads.h"

namespace Wayfence {

/// Passes another source on. Created on the main thread, delivers on whichever thread asks.
class TWatchedSource final : public System::TInterfacedObject,
                             public virtual System::Beacon::IAdvertisementSource {
 public:
  /// `AReader` is the recording behind the source; nothing for a radio.
  TWatchedSource(System::TRef<System::Beacon::IAdvertisementSource> ASource,
                 System::TRef<TSilenceReader> AReader)
      : FSource(std::move(ASource)), FReader(std::move(AReader)) {}

  void Open() override {
    if (!std::exchange(FIsOpenAhead, false)) FSource->Open();
  }
  /// Opens before whoever reads does, whose first call then finds it open: to know that it works.
  void OpenAhead() {
    FSource->Open();
    FIsOpenAhead = true;
  }
  void Close() noexcept override { FSource->Close(); }
  System::Beacon::TSourceResult Next(System::Beacon::TAdvertisement& AAdvertisement,
                                     System::TTicks ADeadline) override;
  void Interrupt() noexcept override { FSource->Interrupt(); }
  bool IsLive() const override { return FSource->IsLive(); }

  /// Before `Open`: of a recording's silences of more than `ALongest` that much is run, and the
  /// rest is told by `ReportProblems`.
  void ShortenSilences(System::TTicks ALongest);
  /// Seconds since the first advertisement, of a recording's own clock; 0 before it. Any thread.
  double GetSeconds() const noexcept;
  /// Set at the end of a recording and when the source has failed.
  System::TEvent& GetEnded() noexcept { return FEnded; }
  /// Raises what the source failed with, once it has ended.
  void RaiseError() const;
  /// Says on standard error what could not be read and which silences were shortened, if anything.
  void ReportProblems() const;

 private:
  const System::TRef<System::Beacon::IAdvertisementSource> FSource;
  const System::TRef<TSilenceReader> FReader;
  System::TEvent FEnded{"the end of the source"};
  std::atomic<System::TTicks> FFirstTime{-1};
  std::atomic<System::TTicks> FSkipped{0};  // before the advertisement that was delivered last
  std::string FError;                       // written before FEnded is set
  TProgress FProgress;
  bool FIsOpenAhead = false;
};

/// A source and the runtime that it runs in: a recording at speed 0 runs simulated, from the time
/// at which it was made. Lives on the main thread, around everything that uses the source.
struct TRun {
  std::unique_ptr<System::TSimulation> Simulation;  // destroyed last
  System::TRef<TWatchedSource> Source;
  double Start = 0.0;  ///< seconds of a recording's own clock at its first advertisement
};

/// Raises `EBeaconSourceError` when there is no such source. `bluez` reports what it notices on
/// standard error.
TRun OpenRun(const TSourceArguments& AArguments);

/// Raises `EBeaconSourceError` for a run that is not a recording: nobody knows where a radio is.
void RefuseRadio(const TRun& ARun, const TSourceArguments& AArguments);

/// The recording that a source names, or nothing when it names a radio. A simulated walk is a
/// recording that is made while it is read; it goes through the project of the arguments.
System::TRef<System::Beacon::IAdvertisementReader> OpenRecording(
    const TSourceArguments& AArguments);

/// The file that a source is read from; empty for a radio.
std::string FileOf(const TSourceArguments& AArguments);

/// From now on an interrupt (Ctrl-C) or a request to end only sets what `IsInterrupted` tells.
void CatchInterrupts();
bool IsInterrupted() noexcept;

/// Serves hand-offs until the source has ended or the program is interrupted.
void WaitForEnd(TRun& ARun);

}  // namespace Wayfence
