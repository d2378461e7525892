#include "platform/beacons/captures/fragment_joiner.h"

namespace System::Beacon {

namespace {

constexpr std::string_view SFragmentsMissing = "extended advertisement without its last fragment";
constexpr std::string_view STooLong = "extended advertisement longer than 1650 bytes";

}  // namespace

void TFragmentJoiner::TChain::Append(const TAdvertisement& AFragment) {
  const std::int8_t Known = AFragment.Rssi == UnknownRssi ? Last.Rssi : AFragment.Rssi;
  Last = AFragment;
  Last.Rssi = Known;
  TooLong = TooLong || Payload.size() + AFragment.Payload.size() > MaxPayloadSize;
  if (!TooLong) Payload.insert(Payload.end(), AFragment.Payload.begin(), AFragment.Payload.end());
}

std::string_view TFragmentJoiner::Add(const TFragmentKey& AKey,
                                      const TAdvertisement& AFragment,
                                      bool AMoreToCome) {
  std::size_t Index = IndexOf(AKey);
  if (Index == FChains.size() && !AMoreToCome) {
    FOut.Push(AFragment);
    return {};
  }
  std::string_view Problem;
  if (Index == FChains.size()) {
    if (Index == MaxChains) Problem = Erase(0);
    Index = FChains.size();
    FChains.emplace_back().Key = AKey;
  }
  TChain& Chain = FChains[Index];
  Chain.Append(AFragment);
  if (AMoreToCome) return Problem;
  Chain.Last.Payload = Chain.Payload;
  if (Chain.TooLong) {
    Problem = STooLong;
  } else {
    FOut.Push(Chain.Last);
  }
  FChains.erase(FChains.begin() + static_cast<std::ptrdiff_t>(Index));
  return Problem;
}

std::string_view TFragmentJoiner::Drop(const TFragmentKey& AKey) {
  const std::size_t Index = IndexOf(AKey);
  return Index == FChains.size() ? std::string_view() : Erase(Index);
}

std::string_view TFragmentJoiner::DropAll() {
  std::string_view Problem;
  while (!FChains.empty()) {
    if (const auto Text = Erase(0); !Text.empty()) Problem = Text;
  }
  return Problem;
}

const TBluetoothAddress* TFragmentJoiner::FindAddress(const TFragmentKey& AKey) const {
  const std::size_t Index = IndexOf(AKey);
  return Index == FChains.size() ? nullptr : &FChains[Index].Last.Address;
}

std::size_t TFragmentJoiner::IndexOf(const TFragmentKey& AKey) const {
  std::size_t Index = 0;
  while (Index < FChains.size() && FChains[Index].Key != AKey) ++Index;
  return Index;
}

std::string_view TFragmentJoiner::Erase(std::size_t AIndex) {
  const bool HadData = !FChains[AIndex].Payload.empty();
  FChains.erase(FChains.begin() + static_cast<std::ptrdiff_t>(AIndex));
  return HadData ? SFragmentsMissing : std::string_view();
}

}  // namespace System::Beacon
