#include "apps/wayfence/silences.h"

#include <fmt/format.h>

#include <algorithm>

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

bool TSilenceReader::Read(TAdvertisement& AAdvertisement) {
  if (!FReader->Read(AAdvertisement)) return false;
  const TTicks Time = AAdvertisement.Time;
  if (!FStart) FStart = FLatest = Time;
  if (FLongest && Time - FLatest > *FLongest) Shorten(Time - FLatest);
  FLatest = std::max(FLatest, Time);
  AAdvertisement.Time = Time - FSkipped;
  return true;
}

/// Whole seconds, so that what happens at regular times is where it would have been.
void TSilenceReader::Shorten(TTicks ASilence) {
  FSkipped += (ASilence - *FLongest) / TicksPerSecond * TicksPerSecond;
  if (FCount++ > 0) return;
  FFirstAfter = static_cast<double>(FLatest - *FStart) / TicksPerSecond;
  FFirstHours = static_cast<double>(ASilence) / (3600.0 * TicksPerSecond);
}

std::string TSilenceReader::DescribeSilences() const {
  if (FCount == 0) return {};
  std::string Result = fmt::format(
      "the recording is silent for {:.1f} hours after {:.3f} s", FFirstHours, FFirstAfter);
  if (FCount > 1) Result += fmt::format(", the first of {} such silences", FCount);
  return Result + "; that was passed over";
}

}  // namespace Wayfence
