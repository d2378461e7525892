// wayfence record: writes a source to a file.
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/messages.h"
#include "apps/wayfence/output_files.h"
#include "apps/wayfence/recording_file.h"
#include "apps/wayfence/source.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

namespace {

constexpr double MicrosecondsADay = 86'400.0 * TicksPerSecond;

TTicks EndOf(TTicks AStart, double ASeconds) {
  return ASeconds > 0.0 ? After(AStart, static_cast<TTicks>(ASeconds * TicksPerSecond))
                        : NoDeadline;
}

std::uint64_t Convert(IAdvertisementReader& AReader,
                      IAdvertisementWriter& AWriter,
                      double ASeconds) {
  std::uint64_t Count = 0;
  TTicks End = NoDeadline;
  TAdvertisement Advertisement;
  for (; AReader.Read(Advertisement); ++Count) {
    if (Count == 0) End = EndOf(Advertisement.Time, ASeconds);
    if (Advertisement.Time >= End) break;
    AWriter.Write(Advertisement);
  }
  return Count;
}

std::uint64_t Listen(TWatchedSource& ASource, IAdvertisementWriter& AWriter, double ASeconds) {
  constexpr TTicks LookAtInterruptsEvery = 100 * TicksPerMillisecond;
  const TTicks Start = Ticks();
  const auto StartOnWall = static_cast<TTicks>(Now() * MicrosecondsADay);
  const TTicks End = EndOf(Start, ASeconds);
  std::uint64_t Count = 0;
  TAdvertisement Advertisement;
  while (!IsInterrupted() && Ticks() < End) {
    const TTicks Deadline = std::min(End, After(Ticks(), LookAtInterruptsEvery));
    const TSourceResult Result = ASource.Next(Advertisement, Deadline);
    if (Result == TSourceResult::Finished) break;
    if (Result != TSourceResult::Advertisement) continue;
    Advertisement.Time += StartOnWall - Start;
    AWriter.Write(Advertisement);
    ++Count;
  }
  return Count;
}

void Report(std::uint64_t ACount, const std::string& AFile) {
  Say(fmt::format("{} written to {}", Counted(ACount, "advertisement"), AFile));
}

void ReportProblems(const TReadProblems& AProblems) {
  for (const std::string& Problem : AProblems.First) Say("not read: " + Problem);
  if (AProblems.Count > AProblems.First.size())
    Say(fmt::format("and {} more", Counted(AProblems.Count - AProblems.First.size(), "place")));
}

int ConvertRecording(const TRecordArguments& AArguments, IAdvertisementReader& AReader) {
  const TCaptureClock Clock =
      AReader.HasWallTime() ? TCaptureClock::Wall : TCaptureClock::Recording;
  const TRef<IAdvertisementWriter> Writer =
      CreateRecording(AArguments.File, AArguments.Format, Clock);
  const std::uint64_t Count = Convert(AReader, *Writer, AArguments.Seconds);
  Writer->Close();
  Report(Count, AArguments.File);
  ReportProblems(AReader.GetProblems());
  return ExitDone;
}

int RecordRadio(const TRecordArguments& AArguments) {
  const TRun Run = OpenRun(AArguments.From);
  CatchInterrupts();
  Run.Source->Open();
  const TRef<IAdvertisementWriter> Writer =
      CreateRecording(AArguments.File, AArguments.Format, TCaptureClock::Wall);
  const std::uint64_t Count = Listen(*Run.Source, *Writer, AArguments.Seconds);
  Run.Source->Close();
  Writer->Close();
  Report(Count, AArguments.File);
  return ExitDone;
}

}  // namespace

int RunRecord(const TRecordArguments& AArguments) {
  CheckOutputs({AArguments.File}, {FileOf(AArguments.From)});
  if (const TRef<IAdvertisementReader> Recording = OpenRecording(AArguments.From))
    return ConvertRecording(AArguments, *Recording);
  return RecordRadio(AArguments);
}

}  // namespace Wayfence
