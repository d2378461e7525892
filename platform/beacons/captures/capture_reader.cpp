#include "platform/beacons/captures/capture_reader.h"

#include <fmt/format.h>

#include <utility>

namespace System::Beacon {

namespace {

constexpr TTicks YearOfUnsetClocks = TicksPerSecond * 3600 * 24 * 365;

}  // namespace

TCaptureReader::TCaptureReader(std::unique_ptr<TByteStream> AStream)
    : FStream(std::move(AStream)) {}

void TCaptureReader::AfterConstruction() {
  Advance();
}

bool TCaptureReader::Read(TAdvertisement& AAdvertisement) {
  Advance();
  return FQueue.Pop(AAdvertisement);
}

void TCaptureReader::Advance() {
  while (FQueue.IsEmpty() && !FFinished) {
    FFinished = !ReadRecord();
    if (FFinished && !FStream->GetFailure().empty()) {
      AddProblem("cannot be read: " + FStream->GetFailure());
    }
  }
}

std::string TCaptureReader::GetPlace() const {
  return fmt::format("byte {}", FStream->GetPosition());
}

bool TCaptureReader::AcceptTime(TTicks ATime) {
  if (ATime > MaxCaptureTime || ATime < -MaxCaptureTime) {
    AddProblem("time out of range");
    return false;
  }
  if (!FTimeSeen) FHasWallTime = ATime >= YearOfUnsetClocks;
  FTimeSeen = true;
  return true;
}

void TCaptureReader::AddProblem(std::string_view AWhat) {
  if (!AWhat.empty()) FProblems.Add(GetPlace(), AWhat);
}

void TCaptureReader::Refuse(std::string_view AWhat) const {
  throw EBeaconSourceError(fmt::format("{}: {}", FStream->GetName(), AWhat));
}

}  // namespace System::Beacon
