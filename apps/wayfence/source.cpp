#include "apps/wayfence/source.h"

#include <fmt/format.h>

#include <csignal>
#include <cstdio>
#include <string_view>
#include <vector>

#include "apps/wayfence/messages.h"
#include "apps/wayfence/simulation.h"
#include "platform/beacons/bluez_source.h"
#include "platform/beacons/captures/captures.h"
#include "platform/beacons/replay_source.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

namespace {

volatile std::sig_atomic_t Interrupted = 0;

/// Looks ahead by one advertisement, to know when a recording begins before it is replayed.
class TPeekingReader final : public TInterfacedObject, public virtual IAdvertisementReader {
 public:
  explicit TPeekingReader(TRef<IAdvertisementReader> AReader) : FReader(std::move(AReader)) {
    FHasFirst = FReader->Read(FFirst);
    FPayload.assign(FFirst.Payload.begin(), FFirst.Payload.end());
    FFirst.Payload = FPayload;
  }

  bool Read(TAdvertisement& AAdvertisement) override {
    if (!FHasFirst) return FReader->Read(AAdvertisement);
    FHasFirst = false;
    AAdvertisement = FFirst;
    return true;
  }
  bool HasWallTime() const override { return FReader->HasWallTime(); }
  const TReadProblems& GetProblems() const override { return FReader->GetProblems(); }
  double GetProgress() const override { return FReader->GetProgress(); }

  /// Days since 1 January 1970 of the first advertisement; day 20,000 where there is no date.
  double GetStartTime() const {
    return HasWallTime() ? static_cast<double>(FFirst.Time) / (86'400.0 * TicksPerSecond)
                         : TSimulationOptions().StartTime;
  }
  /// Seconds of the recording's clock.
  double GetStart() const { return static_cast<double>(FFirst.Time) / TicksPerSecond; }

 private:
  const TRef<IAdvertisementReader> FReader;
  TAdvertisement FFirst;
  std::vector<std::uint8_t> FPayload;
  bool FHasFirst = false;
};

TRef<IAdvertisementSource> OpenRadio(std::string_view AAdapter) {
  return NewBluezSource(std::string(AAdapter),
                        {.OnDiagnostic = [](const std::string& AText) { Say(AText); }});
}

/// What follows "NAME:" in a source, or nothing.
bool TakePrefix(std::string_view& ASource, std::string_view APrefix) {
  if (ASource.substr(0, APrefix.size()) != APrefix) return false;
  ASource.remove_prefix(APrefix.size());
  return true;
}

TRef<IAdvertisementReader> OpenSimulation(const TSourceArguments& AArguments,
                                          const std::string& AWalkFile) {
  if (AArguments.Project.empty())
    throw EBeaconSourceError(
        fmt::format("{}: a simulated walk needs a project, and this command has none; 'wayfence "
                    "simulate' writes a recording of it that every command can read",
                    AArguments.Source));
  return OpenSimulatedWalk(AArguments.Project, AWalkFile, AArguments.Seed).Reader;
}

}  // namespace

// ---------------------------------------------------------------- TWatchedSource

TSourceResult TWatchedSource::Next(TAdvertisement& AAdvertisement, TTicks ADeadline) {
  try {
    const TSourceResult Result = FSource->Next(AAdvertisement, ADeadline);
    if (Result == TSourceResult::Advertisement && FFirstTime.load() < 0) FFirstTime.store(Ticks());
    if (Result == TSourceResult::Advertisement && FReader) FSkipped.store(FReader->GetSkipped());
    if (Result == TSourceResult::Finished) FEnded.SetEvent();
    if (FReader) FProgress.Show(FReader->GetProgress(), Result == TSourceResult::Finished);
    return Result;
  } catch (const std::exception& Error) {
    FError = Error.what();
    FEnded.SetEvent();
    throw;
  }
}

void TWatchedSource::ShortenSilences(TTicks ALongest) {
  if (FReader) FReader->ShortenSilences(ALongest);
}

double TWatchedSource::GetSeconds() const noexcept {
  const TTicks First = FFirstTime.load();
  return First < 0 ? 0.0 : static_cast<double>(Ticks() - First + FSkipped.load()) / TicksPerSecond;
}

void TWatchedSource::RaiseError() const {
  if (FEnded.IsSet() && !FError.empty()) throw EBeaconSourceError(FError);
}

void TWatchedSource::ReportProblems() const {
  if (!FReader) return;
  if (const std::string Silences = FReader->DescribeSilences(); !Silences.empty()) Say(Silences);
  if (FReader->GetProblems().Count == 0) return;
  const TReadProblems& Problems = FReader->GetProblems();
  Say(fmt::format("{} of the recording could not be read:", Counted(Problems.Count, "place")));
  for (const std::string& Problem : Problems.First) Say("  " + Problem);
}

// ---------------------------------------------------------------- opening

TRef<IAdvertisementReader> OpenRecording(const TSourceArguments& AArguments) {
  std::string_view Rest = AArguments.Source;
  if (Rest == "bluez" || TakePrefix(Rest, "bluez:")) return nullptr;
  if (TakePrefix(Rest, "btsnoop:")) return OpenBtsnoop(std::string(Rest));
  if (TakePrefix(Rest, "pcap:")) return OpenPcap(std::string(Rest));
  if (TakePrefix(Rest, "log:")) return OpenAdvertisementLog(std::string(Rest));
  if (TakePrefix(Rest, "simulate:")) return OpenSimulation(AArguments, std::string(Rest));
  return OpenCapture(AArguments.Source);
}

std::string FileOf(const TSourceArguments& AArguments) {
  std::string_view Rest = AArguments.Source;
  if (Rest == "bluez" || TakePrefix(Rest, "bluez:")) return {};
  for (const char* Prefix : {"btsnoop:", "pcap:", "log:", "simulate:"})
    if (TakePrefix(Rest, Prefix)) break;
  return std::string(Rest);
}

TRun OpenRun(const TSourceArguments& AArguments) {
  const TRef<IAdvertisementReader> Recording = OpenRecording(AArguments);
  TRun Result;
  if (!Recording) {
    std::string_view Adapter = AArguments.Source;
    if (!TakePrefix(Adapter, "bluez:")) Adapter = {};
    Result.Source = New<TWatchedSource>(OpenRadio(Adapter), nullptr);
    return Result;
  }
  const auto Peeking = New<TPeekingReader>(Recording);
  if (AArguments.Speed == 0.0)
    Result.Simulation = std::make_unique<TSimulation>(
        TSimulationOptions{.Seed = AArguments.Seed, .StartTime = Peeking->GetStartTime()});
  Result.Start = Peeking->GetStart();
  const auto Reader = New<TSilenceReader>(Peeking);
  Result.Source = New<TWatchedSource>(New<TReplaySource>(Reader), Reader);
  return Result;
}

void RefuseRadio(const TRun& ARun, const TSourceArguments& AArguments) {
  if (!ARun.Simulation)
    throw EBeaconSourceError(
        fmt::format("{}: nobody knows where a radio is; name a recording", AArguments.Source));
}

// ---------------------------------------------------------------- running

void CatchInterrupts() {
  const auto Catch = [](int) { Interrupted = 1; };
  std::signal(SIGINT, Catch);
  std::signal(SIGTERM, Catch);
}

bool IsInterrupted() noexcept {
  return Interrupted != 0;
}

void WaitForEnd(TRun& ARun) {
  constexpr std::int64_t LookAtInterruptsEveryMs = 100;
  if (!ARun.Simulation) CatchInterrupts();
  const std::int64_t Step = ARun.Simulation ? NoDeadline : LookAtInterruptsEveryMs;
  while (!IsInterrupted() && !ARun.Source->GetEnded().WaitFor(Step)) ServeHandOffs();
}

}  // namespace Wayfence
