#include "platform/beacons/captures/advertisement_queue.h"

#include <span>

namespace System::Beacon {

void TAdvertisementQueue::Push(const TAdvertisement& AAdvertisement) {
  if (IsEmpty()) {
    FEntries.clear();
    FPayloads.clear();
    FNext = 0;
  }
  FEntries.push_back({AAdvertisement, FPayloads.size()});
  const auto& Payload = AAdvertisement.Payload;
  FPayloads.insert(FPayloads.end(), Payload.begin(), Payload.end());
}

bool TAdvertisementQueue::Pop(TAdvertisement& AAdvertisement) {
  if (IsEmpty()) return false;
  const TEntry& Entry = FEntries[FNext++];
  AAdvertisement = Entry.Advertisement;
  AAdvertisement.Payload =
      std::span(FPayloads).subspan(Entry.PayloadOffset, Entry.Advertisement.Payload.size());
  return true;
}

}  // namespace System::Beacon
