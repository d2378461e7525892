#include "platform/beacons/tracker.h"

#include <algorithm>
#include <cmath>

namespace System::Beacon {
namespace {

constexpr double ImmediateUpTo = 0.5;  // metres
constexpr double NearUpTo = 3.0;       // metres
constexpr std::size_t MaxAddressesOfOneBeacon = 16;

/// One thread writes, any reads: no read-modify-write is needed.
void Count(std::atomic<std::uint64_t>& ACounter, std::uint64_t AMore = 1) noexcept {
  ACounter.store(ACounter.load(std::memory_order_relaxed) + AMore, std::memory_order_relaxed);
}

TBeaconIdentity KeyOf(const TBluetoothAddress& AAddress) noexcept {
  TBeaconIdentity Result;
  std::copy(AAddress.Bytes.begin(),
            AAddress.Bytes.end(),
            reinterpret_cast<unsigned char*>(Result.Words.data()));
  return Result;
}

std::uint32_t BigEndian(std::span<const std::uint8_t> ABytes) noexcept {
  std::uint32_t Result = 0;
  for (const std::uint8_t Byte : ABytes) Result = Result << 8 | Byte;
  return Result;
}

}  // namespace

TBeaconProximity ProximityOf(double ADistance) noexcept {
  if (ADistance < 0.0) return TBeaconProximity::Away;
  if (ADistance <= ImmediateUpTo) return TBeaconProximity::Immediate;
  return ADistance <= NearUpTo ? TBeaconProximity::Near : TBeaconProximity::Far;
}

TEddystoneTLM ReadTLM(std::span<const std::uint8_t> AData) {
  TEddystoneTLM Result;
  Result.BatteryVoltage = static_cast<std::uint16_t>(BigEndian(AData.subspan(0, 2)));
  const auto Raw = static_cast<std::int16_t>(BigEndian(AData.subspan(2, 2)));
  if (Raw != INT16_MIN) Result.Temperature = Raw / 256.0;
  Result.AdvertisementCount = BigEndian(AData.subspan(4, 4));
  Result.TimeSinceBoot = BigEndian(AData.subspan(8, 4));
  return Result;
}

// ---------------------------------------------------------------- TDistanceTable

void TDistanceTable::Assign(float ASPC) {
  for (int I = -MaxTwiceLoss; I <= MaxTwiceLoss; ++I) {
    // Extended precision: its last bits do not depend on which instructions the processor has.
    const auto Distance = static_cast<double>(
        std::pow(10.0L, static_cast<long double>(I) / 20.0L * static_cast<long double>(ASPC)));
    FDistances[I + MaxTwiceLoss] = std::isfinite(Distance) ? Distance : -1.0;
  }
}

double TDistanceTable::GetDistance(int ATwiceLoss) const noexcept {
  return FDistances[std::clamp(ATwiceLoss, -MaxTwiceLoss, MaxTwiceLoss) + MaxTwiceLoss];
}

// ---------------------------------------------------------------- TBeaconTracker

void TBeaconTracker::Configure(const TTrackerSettings& ASettings) {
  if (ASettings.SPC != FSettings.SPC) FDistances.Assign(ASettings.SPC);
  FSettings = ASettings;
}

void TBeaconTracker::Process(const TAdvertisement& AAdvertisement, TTicks ANow) {
  Count(FCounters.Advertisements);
  TFrameReader Reader(AAdvertisement.Payload);
  TBeaconFrame Frame;
  while (Reader.Next(Frame)) {
    Count(FCounters.Frames);
    if (Frame.Kind == TFrameKind::EddystoneURL || Frame.Kind == TFrameKind::EddystoneTLM)
      ProcessTelemetry(Frame, AAdvertisement, ANow);
    else
      ProcessIdentity(Frame, AAdvertisement, ANow);
  }
  if (Reader.GetMalformed() > 0) Count(FCounters.Malformed, Reader.GetMalformed());
}

void TBeaconTracker::ProcessIdentity(const TBeaconFrame& AFrame,
                                     const TAdvertisement& AAdvertisement,
                                     TTicks ANow) {
  const TBeaconIdentity Key = Beacon::KeyOf(AFrame);
  TSighting* const* const Found = FByIdentity.Find(Key);
  if (!Found) {
    if (FPresent.size() < MaxPresent && FFilter.Accepts(AFrame))
      Enter(AFrame, Key, AAdvertisement, ANow);
    return;
  }
  TSighting& Sighting = **Found;
  if (!StillAccepts(Sighting, AFrame)) return;
  Sighting.SetTxPower(AFrame.Power);
  if (AFrame.Kind == TFrameKind::EddystoneUID) RememberAddress(Sighting, AAdvertisement.Address);
  Refresh(Sighting, AAdvertisement, ANow);
}

bool TBeaconTracker::StillAccepts(TSighting& ASighting, const TBeaconFrame& AFrame) const {
  auto& Tracking = ASighting.Tracking;
  if (Tracking.AcceptedBy == FFilter.GetGeneration() &&
      Tracking.ManufacturerID == AFrame.ManufacturerID)
    return true;
  if (!FFilter.Accepts(AFrame)) return false;
  Tracking.AcceptedBy = FFilter.GetGeneration();
  Tracking.ManufacturerID = AFrame.ManufacturerID;
  return true;
}

void TBeaconTracker::Enter(const TBeaconFrame& AFrame,
                           const TBeaconIdentity& AKey,
                           const TAdvertisement& AAdvertisement,
                           TTicks ANow) {
  const TRef<TSighting> Sighting = NewSighting(AFrame);
  auto& Tracking = Sighting->Tracking;
  Tracking.Key = AKey;
  Tracking.LastSeen = ANow;
  Tracking.AcceptedBy = FFilter.GetGeneration();
  Tracking.ManufacturerID = AFrame.ManufacturerID;
  Tracking.Place = FFresh.insert(FFresh.end(), Sighting);
  FByIdentity.Insert(AKey, Sighting.Get());
  FPresent.push_back(Sighting);
  Sighting->SetTxPower(AFrame.Power);
  Sighting->SetAddress(AAdvertisement.Address);
  if (AFrame.Kind == TFrameKind::EddystoneUID) RememberAddress(*Sighting, AAdvertisement.Address);

  Count(FCounters.Sightings);
  Measure(*Sighting, AAdvertisement.Rssi, ANow);
  Sighting->SetProximity(ProximityOf(Sighting->GetDistance()));
  if (FListener.WantsSightings()) FListener.Sighted(Sighting);
  FListener.BeaconEntered(Sighting, Snapshot());
}

void TBeaconTracker::Refresh(TSighting& ASighting,
                             const TAdvertisement& AAdvertisement,
                             TTicks ANow) {
  auto& Tracking = ASighting.Tracking;
  FFresh.splice(FFresh.end(), Tracking.IsStale ? FStale : FFresh, Tracking.Place);
  Tracking.IsStale = false;
  Tracking.LastSeen = ANow;
  ASighting.SetAddress(AAdvertisement.Address);
  Count(FCounters.Sightings);
  Measure(ASighting, AAdvertisement.Rssi, ANow);
  if (FListener.WantsSightings()) FListener.Sighted(TRef<IBeacon>(&ASighting));
  SetProximity(ASighting);
}

void TBeaconTracker::Measure(TSighting& ASighting, std::int8_t ARssi, TTicks ANow) {
  ASighting.SetRssi(ARssi);
  double Distance = DistanceOf(ASighting, ARssi, ANow);
  if (Distance >= 0.0 && FListener.WantsDistances()) {
    FListener.CalcDistance(TRef<IBeacon>(&ASighting), ASighting.GetTxPower(), ARssi, Distance);
    if (!(std::isfinite(Distance) && Distance >= 0.0)) Distance = -1.0;
  }
  ASighting.SetDistance(Distance);
}

double TBeaconTracker::DistanceOf(TSighting& ASighting, std::int8_t ARssi, TTicks ANow) {
  if (ARssi == UnknownRssi) return -1.0;
  const int Power = ASighting.GetTxPower();
  int TwiceRssi = 2 * ARssi;
  if (FSettings.CalcMode == TBeaconCalcMode::Stabilized) {
    TStrengthMedian& Strengths = ASighting.Tracking.Strengths;
    Strengths.Add(ANow, ARssi);
    TwiceRssi = Strengths.GetTwiceMedian();
  }
  if (Power == NoPower) return -1.0;
  return FDistances.GetDistance(2 * Power - TwiceRssi);
}

void TBeaconTracker::SetProximity(TSighting& ASighting) {
  const TBeaconProximity Proximity = ProximityOf(ASighting.GetDistance());
  if (Proximity == ASighting.GetProximity()) return;
  ASighting.SetProximity(Proximity);
  FListener.ProximityChanged(TRef<IBeacon>(&ASighting), Proximity);
}

void TBeaconTracker::ProcessTelemetry(const TBeaconFrame& AFrame,
                                      const TAdvertisement& AAdvertisement,
                                      TTicks ANow) {
  TEddystoneURL URL;
  if (AFrame.Kind == TFrameKind::EddystoneURL) {
    URL.TxPower = AFrame.Power;
    if (!DecodeEddystoneURL(AFrame.Data, URL.URL)) {
      Count(FCounters.Malformed);
      return;
    }
  }
  TSighting* const* const Found = FByAddress.Find(KeyOf(AAdvertisement.Address));
  if (!Found) return;
  const TRef<TSighting> Sighting(*Found);
  if (Sighting->Tracking.AcceptedBy != FFilter.GetGeneration()) return;  // until its next UID
  Refresh(*Sighting, AAdvertisement, ANow);
  if (AFrame.Kind == TFrameKind::EddystoneURL)
    FListener.EddystoneURLSeen(Sighting, URL);
  else
    FListener.EddystoneTLMSeen(Sighting, ReadTLM(AFrame.Data));
}

void TBeaconTracker::RememberAddress(TSighting& ASighting, const TBluetoothAddress& AAddress) {
  const TBeaconIdentity Key = KeyOf(AAddress);
  if (TSighting** const Known = FByAddress.Find(Key)) {
    if (*Known == &ASighting) return;
    *Known = &ASighting;
  } else {
    FByAddress.Insert(Key, &ASighting);
  }
  auto& Addresses = ASighting.Tracking.Addresses;
  if (std::find(Addresses.begin(), Addresses.end(), AAddress) != Addresses.end()) return;
  if (Addresses.size() == MaxAddressesOfOneBeacon) {
    const TBeaconIdentity Oldest = KeyOf(Addresses.front());
    TSighting* const* const Owner = FByAddress.Find(Oldest);
    if (Owner && *Owner == &ASighting) FByAddress.Erase(Oldest);
    Addresses.erase(Addresses.begin());
  }
  Addresses.push_back(AAddress);
}

void TBeaconTracker::ForgetAddresses(const TSighting& ASighting) {
  for (const TBluetoothAddress& Address : ASighting.Tracking.Addresses) {
    TSighting* const* const Owner = FByAddress.Find(KeyOf(Address));
    if (Owner && *Owner == &ASighting) FByAddress.Erase(KeyOf(Address));
  }
}

TSighting* TBeaconTracker::GetOldest() const noexcept {
  if (!FStale.empty()) return FStale.front().Get();
  return FFresh.empty() ? nullptr : FFresh.front().Get();
}

TTicks TBeaconTracker::GetNextDeadline() const noexcept {
  TTicks Result = NoDeadline;
  if (!FFresh.empty())
    Result = After(FFresh.front()->Tracking.LastSeen, FSettings.DistanceLifetime);
  if (const TSighting* const Oldest = GetOldest())
    Result = std::min(Result, After(Oldest->Tracking.LastSeen, FSettings.DeathTime));
  return Result;
}

void TBeaconTracker::Expire(TTicks ANow) {
  while (GetNextDeadline() <= ANow) {
    TSighting& Oldest = *GetOldest();
    if (After(Oldest.Tracking.LastSeen, FSettings.DeathTime) <= ANow)
      Lose(Oldest);
    else
      GoStale(*FFresh.front());
  }
}

void TBeaconTracker::GoStale(TSighting& ASighting) {
  FStale.splice(FStale.end(), FFresh, ASighting.Tracking.Place);
  ASighting.Tracking.IsStale = true;
  ASighting.SetDistance(-1.0);
  SetProximity(ASighting);
}

void TBeaconTracker::Lose(TSighting& ASighting) {
  const TRef<TSighting> Keep(&ASighting);
  auto& Tracking = ASighting.Tracking;
  ForgetAddresses(ASighting);
  FByIdentity.Erase(Tracking.Key);
  (Tracking.IsStale ? FStale : FFresh).erase(Tracking.Place);
  FPresent.erase(std::find(FPresent.begin(), FPresent.end(), Keep));
  ASighting.MarkLost();
  FListener.BeaconExited(Keep, Snapshot());
}

void TBeaconTracker::Clear() {
  for (const TRef<TSighting>& Sighting : FPresent) Sighting->MarkLost();
  FPresent.clear();
  FFresh.clear();
  FStale.clear();
  FByIdentity.Clear();
  FByAddress.Clear();
}

TBeaconList TBeaconTracker::Snapshot() const {
  return TBeaconList(std::vector<TRef<IBeacon>>(FPresent.begin(), FPresent.end()));
}

TScanStatistics TBeaconTracker::GetStatistics() const noexcept {
  constexpr auto Relaxed = std::memory_order_relaxed;
  return {FCounters.Advertisements.load(Relaxed),
          FCounters.Frames.load(Relaxed),
          FCounters.Sightings.load(Relaxed),
          FCounters.Malformed.load(Relaxed)};
}

}  // namespace System::Beacon
