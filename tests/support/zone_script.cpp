#include "support/zone_script.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace System::Beacon::Fencing {
namespace {

std::vector<std::string> Split(std::string_view AText, char ASeparator) {
  std::vector<std::string> Result;
  std::istringstream Stream{std::string(AText)};
  for (std::string Part; std::getline(Stream, Part, ASeparator);) Result.push_back(Part);
  return Result;
}

std::string Squeeze(const std::string& AText) {
  std::istringstream Words(AText);
  std::string Result;
  for (std::string Word; Words >> Word;) Result += (Result.empty() ? "" : " ") + Word;
  return Result;
}

template <class TEnum>
TEnum Parse(const std::string& AName) {
  const auto& Names = TEnumNames<TEnum>::Names;
  const auto Found = std::find(Names.begin(), Names.end(), AName);
  if (Found == Names.end()) throw std::invalid_argument("no such value: '" + AName + "'");
  return static_cast<TEnum>(Found - Names.begin());
}

}  // namespace

std::vector<std::vector<std::string>> Rows(std::string_view ATable) {
  constexpr std::string_view Mark = "\n- ";
  std::vector<std::vector<std::string>> Result;
  std::size_t At = ATable.find(Mark);
  while (At != std::string_view::npos) {
    const std::size_t Next = ATable.find(Mark, At + 1);
    const std::string_view Row = ATable.substr(At, Next - At).substr(Mark.size());
    std::vector<std::string>& Cells = Result.emplace_back();
    for (const std::string& Cell : Split(std::string(Row) + " ", '|'))
      Cells.push_back(Squeeze(Cell));
    At = Next;
  }
  return Result;
}

void AddZones(TBeaconZones& AZones, std::string_view AText) {
  for (const std::string& Row : Split(AText, ',')) {
    std::istringstream Words(Row);
    std::string Name, Proximity;
    Words >> Name >> Proximity;
    TBeaconZoneItem& Zone = *AZones.Add();
    Zone.SetDisplayName(Name);
    Zone.SetBeaconProximity(Parse<TBeaconEditProximity>(Proximity));
    for (std::uint16_t Minor = 0; Words >> Minor;) {
      TBeaconItem& Item = *Zone.GetBeaconList()->Add();
      Item.SetGUID(TestGUID);
      Item.SetMinor(Minor);
    }
  }
}

void TZoneScript::Play(std::string_view ASteps) {
  for (const std::string& Step : Split(ASteps, ';')) PlayStep(Step);
}

void TZoneScript::PlayStep(std::string_view AStep) {
  std::istringstream Words{std::string(AStep)};
  std::string Verb, Proximity;
  int Minor = 0;
  Words >> Verb >> Minor;
  TFakeBeacon& Beacon = GetBeacon(Minor);
  if (Verb == "exit") return Leave(Beacon);
  if (Verb == "lose") {
    Beacon.Alive = false;
    return;
  }
  Words >> Proximity >> Beacon.Distance;
  Beacon.Proximity = Parse<TBeaconProximity>(Proximity);
  if (Verb == "enter") {
    FList.SetLength(FList.GetLength() + 1);
    FList[FList.GetLength() - 1] = TRef<IBeacon>(&Beacon);
    FComponent.BeaconEnterEvent(nullptr, TRef<IBeacon>(&Beacon), FList);
  } else if (Verb == "report") {
    FComponent.BeaconProximityChangeEvent(nullptr, TRef<IBeacon>(&Beacon), Beacon.Proximity);
  } else if (Verb != "drift") {
    throw std::invalid_argument("no such step: '" + std::string(AStep) + "'");
  }
}

void TZoneScript::Leave(TFakeBeacon& ABeacon) {
  std::vector<TRef<IBeacon>> Rest(FList.begin(), FList.end());
  std::erase(Rest, TRef<IBeacon>(&ABeacon));
  FList = TBeaconList(std::move(Rest));
  ABeacon.Distance = -1.0;
  ABeacon.Proximity = TBeaconProximity::Away;
  ABeacon.Alive = false;
  const TRef<IBeacon> Lost(&ABeacon);
  FBeacons.erase(ABeacon.Minor);
  FComponent.BeaconExitEvent(nullptr, Lost, FList);
}

TFakeBeacon& TZoneScript::GetBeacon(int AMinor) {
  TRef<TFakeBeacon>& Beacon = FBeacons[AMinor];
  if (!Beacon) Beacon = NewFakeBeacon(AMinor);
  return *Beacon;
}

}  // namespace System::Beacon::Fencing
