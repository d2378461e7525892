#include "apps/wayfence/recording_file.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

TRef<IAdvertisementWriter> CreateRecording(const std::string& AFile,
                                           const std::string& AFormat,
                                           TCaptureClock AClock) {
  if (AFormat == "btsnoop") return CreateBtsnoop(AFile);
  if (AFormat == "pcap") return CreatePcap(AFile);
  return CreateAdvertisementLog(AFile, AClock);
}

}  // namespace Wayfence
