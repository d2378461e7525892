#include "apps/wayfence/simulation.h"

#include <fmt/format.h>

#include <charconv>
#include <utility>
#include <vector>

#include "apps/wayfence/project_file.h"
#include "apps/wayfence/walk_path.h"
#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "platform/beacons/simulated/beacon_payload.h"
#include "platform/errors.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

[[noreturn]] void RefuseBeacon(const IDesignBeacon& ABeacon, std::string_view AWhat) {
  throw EGeneralError(
      fmt::format("the beacon '{}' cannot be simulated: {}; 'wayfence check' tells what is wrong "
                  "with a project",
                  ABeacon.GetName(),
                  AWhat));
}

/// The power in the beacon's description, where there is one.
int PowerOf(const IDesignBeacon& ABeacon, int ADefault) {
  for (const auto& [Key, Value] :
       Scene::Beacons::StringToDescriptionList(ABeacon.GetInformationItems())) {
    if (Key != "power") continue;
    int Power = 0;
    const char* const End = Value.data() + Value.size();
    const auto Result = std::from_chars(Value.data(), End, Power);
    if (Result.ec != std::errc() || Result.ptr != End || Power < TTransmitter::LeastPower ||
        Power > TTransmitter::MostPower)
      RefuseBeacon(
          ABeacon,
          fmt::format("the power '{}' in its description is no whole number of dBm from {} "
                      "to {}",
                      Value,
                      TTransmitter::LeastPower,
                      TTransmitter::MostPower));
    return Power;
  }
  return ADefault;
}

std::uint16_t NumberOf(const IDesignBeacon& ABeacon, std::int32_t ANumber) {
  if (ANumber < 0 || ANumber > 0xFFFF)
    RefuseBeacon(ABeacon, "its major, minor or manufacturer id is not from 0 to 65535");
  return static_cast<std::uint16_t>(ANumber);
}

std::vector<std::uint8_t> PayloadOf(const IDesignBeacon& ABeacon, int APower) {
  constexpr std::uint16_t TestCompany = 0xFFFF;  // set aside for tests by the assigned numbers
  const TKindofBeacon Kind = ABeacon.GetKindofBeacon();
  if (Kind == TKindofBeacon::Eddystone) {
    TEddystoneUID UID;
    if (!UID.SetNamespace(ABeacon.GetEddyNamespace()) ||
        !UID.SetInstance(ABeacon.GetEddyInstance()))
      RefuseBeacon(ABeacon, "it has no Eddystone namespace and instance");
    return MakeEddystonePayload(UID, APower);
  }
  const std::uint16_t Major = NumberOf(ABeacon, ABeacon.GetMajor());
  const std::uint16_t Minor = NumberOf(ABeacon, ABeacon.GetMinor());
  if (Kind != TKindofBeacon::AltBeacon)
    return MakeiBeaconPayload(ABeacon.GetGUID(), Major, Minor, APower);
  const std::int32_t Company = ABeacon.GetMID();
  return MakeAltBeaconPayload(Company < 0 ? TestCompany : NumberOf(ABeacon, Company),
                              ABeacon.GetGUID(),
                              Major,
                              Minor,
                              APower);
}

/// C0:00:00:00:00:01 and so on: a static random address has the two highest bits set.
TBluetoothAddress AddressOf(std::size_t ANumber) {
  TBluetoothAddress Result{{0xC0, 0, 0, 0, 0, 0}};
  for (std::size_t I = 5; I > 1; --I, ANumber >>= 8)
    Result.Bytes[I] = static_cast<std::uint8_t>(ANumber & 0xFF);
  return Result;
}

std::vector<TTransmitter> TransmittersOf(const TFencingProject& AProject,
                                         const TWalkFloors& AFloors,
                                         const TWalk& AWalk) {
  std::vector<TTransmitter> Result;
  for (std::size_t I = 0; I < AProject.Maps.GetLength(); ++I)
    for (const TFencingBeacon& Beacon : AProject.Maps[I].BeaconList) {
      const IDesignBeacon& Design = *Beacon.DesignBeacon;
      const int Power = PowerOf(Design, AWalk.Power);
      Result.push_back(
          {.Payload = PayloadOf(Design, Power),
           .Address = AddressOf(Result.size() + 1),
           .Place = AFloors.ToBuilding(static_cast<int>(I), Design.GetCenterInGlobalSpace()),
           .Power = Power,
           .Interval = AWalk.BeaconInterval});
    }
  if (Result.empty())
    throw EGeneralError("the project has no beacon that could be heard; add some");
  return Result;
}

std::vector<TRadioWall> WallsOf(const TWalk& AWalk, const TWalkFloors& AFloors) {
  std::vector<TRadioWall> Result;
  for (const TWalkWall& Wall : AWalk.Walls) {
    if (Wall.Map >= AFloors.GetCount())
      throw EFileError(fmt::format("{}:{}: there is no map {} for this wall; the project has {}",
                                   AWalk.FileName,
                                   Wall.Line,
                                   Wall.Map,
                                   AFloors.GetCount()));
    Result.push_back({AFloors.ToBuilding(Wall.Map, Wall.FromX, Wall.FromY),
                      AFloors.ToBuilding(Wall.Map, Wall.ToX, Wall.ToY),
                      Wall.Loss});
  }
  return Result;
}

}  // namespace

TSimulatedWalk OpenSimulatedWalk(const std::string& AProjectFile,
                                 const std::string& AWalkFile,
                                 std::uint64_t ASeed) {
  const TProjectFile File = OpenProject(AProjectFile);
  const TFencingProject Project = ExtractFrom(File);
  TWalk Walk = ReadWalk(AWalkFile);
  TWalkFloors Floors(Project);
  TReceiverPath Path = MakeWalkPath(Walk, Project, Floors, ASeed);
  TSimulatedRadio Radio{Walk.Radio, TransmittersOf(Project, Floors, Walk), ASeed};
  Radio.Options.Walls = WallsOf(Walk, Floors);
  TRef<IAdvertisementReader> Reader = OpenSimulatedRadio(std::move(Radio), Path);
  return {std::move(Walk), std::move(Floors), std::move(Path), std::move(Reader)};
}

}  // namespace Wayfence
