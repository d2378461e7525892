// Decoding, looking up and book-keeping.
#include <benchmark/benchmark.h>

#include "bench/plain_reading.h"
#include "platform/beacons/sighting.h"
#include "platform/beacons/tracker.h"

namespace {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

// ---------------------------------------------------------------- decode one advertisement

void Decode(benchmark::State& AState) {
  const Bench::TBytes Payload = Bench::PayloadOf(7);
  for (auto _ : AState) {
    TFrameReader Reader(Payload);
    TBeaconFrame Frame;
    while (Reader.Next(Frame)) benchmark::DoNotOptimize(KeyOf(Frame));
  }
}
BENCHMARK(Decode)->Name("Decode/ours");

void DecodePlainly(benchmark::State& AState) {
  const Bench::TBytes Payload = Bench::PayloadOf(7);
  for (auto _ : AState) benchmark::DoNotOptimize(Bench::DecodePlainly(Payload));
}
BENCHMARK(DecodePlainly)->Name("Decode/plain");

// ---------------------------------------------------------------- look an item up

constexpr int ItemsOfOneZone = 10;

std::uint32_t NumberOf(std::uint32_t AIndex) {
  return AIndex * 2654435761U;
}

/// So many items with one UUID, ten to a zone.
void Fill(TBeaconZones& AZones, int ACount) {
  AZones.BeginUpdate();
  for (int I = 0; I < ACount; ++I) {
    TBeaconZoneItem* const Zone =
        I % ItemsOfOneZone == 0 ? AZones.Add() : AZones.GetItems(AZones.GetCount() - 1);
    TBeaconItem& Item = *Zone->GetBeaconList()->Add();
    const Bench::TBytes Payload = Bench::PayloadOf(NumberOf(static_cast<std::uint32_t>(I)));
    Item.SetUUID(Bench::TextOf(&Payload[9]));
    Item.SetMajor(static_cast<std::uint16_t>(Payload[25] << 8 | Payload[26]));
    Item.SetMinor(static_cast<std::uint16_t>(Payload[27] << 8 | Payload[28]));
  }
  AZones.EndUpdate();
}

std::vector<Bench::TBytes> Payloads(int ACount) {
  std::vector<Bench::TBytes> Result;
  for (int I = 0; I < ACount; ++I)
    Result.push_back(Bench::PayloadOf(NumberOf(static_cast<std::uint32_t>(I * 7919LL % ACount))));
  return Result;
}

void LookUp(benchmark::State& AState) {
  const int Count = static_cast<int>(AState.range(0));
  TBeaconZones Zones(nullptr);
  Fill(Zones, Count);
  std::vector<TRef<IBeacon>> Beacons;
  for (const Bench::TBytes& Payload : Payloads(Count)) {
    TFrameReader Reader(Payload);
    TBeaconFrame Frame;
    Reader.Next(Frame);
    Beacons.push_back(NewSighting(Frame));
  }
  std::size_t Next = 0;
  for (auto _ : AState) {
    benchmark::DoNotOptimize(Zones.GetZoneForBeacon(Beacons[Next]));
    if (++Next == Beacons.size()) Next = 0;
  }
}
BENCHMARK(LookUp)->Name("Look-up/ours")->Arg(10)->Arg(1000)->Arg(10000);

void LookUpPlainly(benchmark::State& AState) {
  const int Count = static_cast<int>(AState.range(0));
  TBeaconZones Zones(nullptr);
  Fill(Zones, Count);
  std::vector<Bench::TPlainBeacon> Beacons;
  for (const Bench::TBytes& Payload : Payloads(Count))
    Beacons.push_back(*Bench::DecodePlainly(Payload));
  std::size_t Next = 0;
  for (auto _ : AState) {
    benchmark::DoNotOptimize(Bench::FindPlainly(Zones, Beacons[Next]));
    if (++Next == Beacons.size()) Next = 0;
  }
}
BENCHMARK(LookUpPlainly)->Name("Look-up/plain")->Arg(10)->Arg(1000)->Arg(10000);

// ---------------------------------------------------------------- decode and look up

void DecodeAndLookUp(benchmark::State& AState) {
  const int Count = static_cast<int>(AState.range(0));
  const std::vector<Bench::TBytes> All = Payloads(Count);
  TIdentityTable<int> Items;
  for (const Bench::TBytes& Payload : All) {
    TFrameReader Reader(Payload);
    TBeaconFrame Frame;
    Reader.Next(Frame);
    Items.Insert(KeyOf(Frame), 1);
  }
  std::size_t Next = 0;
  for (auto _ : AState) {
    TFrameReader Reader(All[Next]);
    TBeaconFrame Frame;
    while (Reader.Next(Frame)) benchmark::DoNotOptimize(Items.Find(KeyOf(Frame)));
    if (++Next == All.size()) Next = 0;
  }
}
BENCHMARK(DecodeAndLookUp)->Name("Decode and look up/ours")->Arg(10)->Arg(1000)->Arg(10000);

/// The same with the items' fields compared as numbers, so that the walk is as fast as one can be.
void DecodeAndWalk(benchmark::State& AState) {
  const int Count = static_cast<int>(AState.range(0));
  const std::vector<Bench::TBytes> All = Payloads(Count);
  struct TItem {
    TGUID GUID;
    int Major, Minor;
  };
  std::vector<TItem> Items;
  for (int I = 0; I < Count; ++I) {
    const std::uint32_t Number = NumberOf(static_cast<std::uint32_t>(I));
    TBeaconFrame Frame;
    const Bench::TBytes Payload = Bench::PayloadOf(Number);
    TFrameReader(Payload).Next(Frame);
    Items.push_back({Frame.GetGUID(), Frame.Major, Frame.Minor});
  }
  std::size_t Next = 0;
  for (auto _ : AState) {
    TFrameReader Reader(All[Next]);
    TBeaconFrame Frame;
    while (Reader.Next(Frame)) {
      const TGUID GUID = Frame.GetGUID();
      const TItem* Found = nullptr;
      for (const TItem& Item : Items)
        if (Item.GUID == GUID && Item.Major == Frame.Major && Item.Minor == Frame.Minor) {
          Found = &Item;
          break;
        }
      benchmark::DoNotOptimize(Found);
    }
    if (++Next == All.size()) Next = 0;
  }
}
BENCHMARK(DecodeAndWalk)->Name("Decode and look up/plain")->Arg(10)->Arg(1000)->Arg(10000);

// ---------------------------------------------------------------- the whole service

class TSilentListener final : public ITrackerListener {
 public:
  void BeaconEntered(const TRef<IBeacon>&, const TBeaconList&) override {}
  void BeaconExited(const TRef<IBeacon>&, const TBeaconList&) override {}
  void ProximityChanged(const TRef<IBeacon>&, TBeaconProximity) override {}
  void EddystoneURLSeen(const TRef<IBeacon>&, const TEddystoneURL&) override {}
  void EddystoneTLMSeen(const TRef<IBeacon>&, const TEddystoneTLM&) override {}
  bool WantsSightings() const override { return false; }
  bool WantsDistances() const override { return false; }
  void Sighted(const TRef<IBeacon>&) override {}
  void CalcDistance(const TRef<IBeacon>&, int, int, double&) override {}
};

/// Every beacon advertises ten times a second, at strengths that change no proximity.
void Service(benchmark::State& AState) {
  const int Count = static_cast<int>(AState.range(0));
  const std::vector<Bench::TBytes> All = Payloads(Count);
  TSilentListener Listener;
  TBeaconTracker Tracker(Listener);
  TBeaconsRegion Region;
  TGUID GUID;
  std::copy_n(&All[0][9], 16, GUID.Bytes.begin());
  Region.iBAltBeaconRegion.Initialize(GUID, TKindofBeacon::iBeaconAltBeacon, -1);
  Tracker.SetRegions({&Region, 1}, {TKindofBeacon::iBeaconAltBeacon});
  TTrackerSettings Settings;
  Settings.CalcMode = static_cast<TBeaconCalcMode>(AState.range(1));
  Tracker.Configure(Settings);
  const TTicks Step = TicksPerSecond / 10 / Count;
  TTicks Now = 0;
  std::size_t Next = 0;
  TAdvertisement Advertisement;
  Advertisement.Rssi = -75;
  for (const Bench::TBytes& Payload : All) {
    Advertisement.Payload = Payload;
    Tracker.Process(Advertisement, Now += Step);
  }
  for (auto _ : AState) {
    Advertisement.Payload = All[Next];
    Advertisement.Rssi = static_cast<std::int8_t>(-75 - static_cast<int>(Next * 7 % 11));
    if (Tracker.GetNextDeadline() <= Now) Tracker.Expire(Now);
    Tracker.Process(Advertisement, Now);
    Now += Step;
    if (++Next == All.size()) Next = 0;
  }
  AState.SetItemsProcessed(AState.iterations());
}
BENCHMARK(Service)
    ->Name("Service/ours")
    ->ArgNames({"beacons", "median"})
    ->Args({100, 0})
    ->Args({100, 1})
    ->Args({10000, 0})
    ->Args({10000, 1});

void ServicePlainly(benchmark::State& AState) {
  const std::vector<Bench::TBytes> All = Payloads(static_cast<int>(AState.range(0)));
  Bench::TPlainService PlainService;
  for (const Bench::TBytes& Payload : All) PlainService.Process(Payload, -75);
  std::size_t Next = 0;
  for (auto _ : AState) {
    PlainService.Process(All[Next], -75 - static_cast<int>(Next * 7 % 11));
    if (++Next == All.size()) Next = 0;
  }
  AState.SetItemsProcessed(AState.iterations());
}
BENCHMARK(ServicePlainly)
    ->Name("Service/plain")
    ->ArgNames({"beacons", "median"})
    ->Args({100, 0})
    ->Args({100, 1})
    ->Args({10000, 0})
    ->Args({10000, 1});

// ---------------------------------------------------------------- an event that nobody hears

void EmitUnheard(benchmark::State& AState) {
  TEventSlot<void(TObject*, int)> Slot;
  for (auto _ : AState) {
    benchmark::DoNotOptimize(&Slot);
    if (Slot.IsAssigned()) Slot.Get()(nullptr, 1);
  }
}
BENCHMARK(EmitUnheard)->Name("Event without a handler");

}  // namespace
