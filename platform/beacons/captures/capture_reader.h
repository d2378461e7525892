// What all capture readers share.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/beacons/advertisement.h"
#include "platform/beacons/captures/advertisement_queue.h"
#include "platform/beacons/captures/byte_stream.h"

namespace System::Beacon {

/// Times further than this from the origin are rubbish, microseconds: 10,000,000,000 seconds.
inline constexpr TTicks MaxCaptureTime = 10'000'000'000 * TicksPerSecond;
/// Records and lines above this size are not looked at, bytes.
inline constexpr std::size_t MaxRecordSize = std::size_t{64} * 1024;

/// Base of the readers. A reader stands at its first advertisement once it is made, so that
/// `HasWallTime` is known from the beginning. One thread at a time.
class TCaptureReader : public TInterfacedObject, public virtual IAdvertisementReader {
 public:
  void AfterConstruction() override;
  bool Read(TAdvertisement& AAdvertisement) final;
  bool HasWallTime() const final { return FHasWallTime; }
  const TReadProblems& GetProblems() const final { return FProblems; }
  double GetProgress() const final { return FFinished ? 1.0 : FStream->GetProgress(); }

 protected:
  explicit TCaptureReader(std::unique_ptr<TByteStream> AStream);

  /// Reads the next record into `FQueue` or counts what is wrong with it; false at the end.
  virtual bool ReadRecord() = 0;
  /// Where the reader is, in words for messages: "byte 1234".
  virtual std::string GetPlace() const;

  /// Whether the time of a record can be meant; counts it otherwise. The first time decides
  /// whether the recording's clock was ever set.
  bool AcceptTime(TTicks ATime);
  /// Counts a problem at the present place; an empty text is none.
  void AddProblem(std::string_view AWhat);
  /// Says that the file is not what was expected. `AWhat` completes "FILE: …".
  [[noreturn]] void Refuse(std::string_view AWhat) const;

  std::unique_ptr<TByteStream> FStream;
  TAdvertisementQueue FQueue;
  bool FHasWallTime = false;

 private:
  void Advance();

  TReadProblems FProblems;
  bool FTimeSeen = false;
  bool FFinished = false;
};

}  // namespace System::Beacon
