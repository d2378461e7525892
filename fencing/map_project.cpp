// The project of a map component: how it comes in, and what the application does with it.
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

#include "fencing/map_fencing.h"
#include "fencing/tracked_project.h"
#include "platform/files.h"

namespace System::Beacon::Fencing {
namespace {

constexpr std::size_t MaxProjectSize = std::size_t{256} << 20U;
constexpr float CentimetresPerInch = 2.54F;

}  // namespace

// ---------------------------------------------------------------- the text

std::string TCustomBeaconMapFencing::GetXMLMAp() const {
  if (!IsDesigning()) return FXMLMap;
  return FXMLMap.empty() ? "<Empty>" : "<Project>";
}

void TCustomBeaconMapFencing::SetXMLMap(const std::string& AValue) {
  if (!MayAct()) {
    if (GetComponentState().Contains(TComponentStateFlag::Loading)) FXMLMap = AValue;
    return;
  }
  bool IsAnother = false;
  try {
    IsAnother = HandOver(AValue);
  } catch (...) {
    // The old project had to be loaded anew.
    if (FSwitch.IsOn() && GetLoaded()->Calculators.empty()) StartProcess();
    throw;
  }
  FXMLMap = AValue;
  if (!FSwitch.IsOn()) {
    if (!FSwitch.IsBusy()) FreeRetired();
    return;
  }
  if (!IsAnother) return;
  if (!AValue.empty()) return StartProcess();
  FEnabled.store(false);
  StopProcess();
}

bool TCustomBeaconMapFencing::LoadProjectFromXML(const std::string& APath) {
  std::error_code Ignored;
  if (!std::filesystem::is_regular_file(APath, Ignored)) return false;
  SetXmlData(ReadWholeFile(APath, MaxProjectSize));
  return true;
}

void TCustomBeaconMapFencing::SaveProjectToXML(const std::string& APath) const {
  ReplaceFile(APath, FXMLMap);
}

// ---------------------------------------------------------------- the record

/// Gives the runtime map a text and takes over its record. False when it is the one that is there.
/// When the record cannot be made, the runtime map gets its old text back.
bool TCustomBeaconMapFencing::HandOver(const std::string& AText) {
  const std::string Old = FRuntimeMap->GetXmlData();
  FRuntimeMap->SetXmlData(AText);
  FRuntimeMap->SetMapOptions(GetMapOptions());
  const TLoadedRef Loaded = GetLoaded();
  try {
    TFencingProject Project = FRuntimeMap->GetProjectInformation();
    if (Loaded->Text == AText && Project.Maps.IsSameAs(Loaded->Project.Maps)) return false;
    Publish(std::make_shared<TTrackedProject>(std::move(Project), AText));
  } catch (...) {
    FRuntimeMap->SetXmlData(Old);
    Publish(std::make_shared<TTrackedProject>(FRuntimeMap->GetProjectInformation(), Old));
    throw;
  }
  return true;
}

/// Other threads see the new project from now on; the old one goes when none works on it.
void TCustomBeaconMapFencing::Publish(TLoadedRef ALoaded) {
  {
    const std::lock_guard Guard(FStateLock);
    std::swap(FLoaded, ALoaded);
  }
  FRetired.push_back(std::move(ALoaded));
}

/// Frees the projects that no other thread works on; the component's own ones have ended. Their
/// calculators are waited for, and hand-offs served meanwhile.
void TCustomBeaconMapFencing::FreeRetired() {
  const auto InUse = std::partition(FRetired.begin(), FRetired.end(), [](const TLoadedRef& AOld) {
    return AOld.use_count() == 1;
  });
  const std::vector<TLoadedRef> Gone(std::make_move_iterator(FRetired.begin()),
                                     std::make_move_iterator(InUse));
  FRetired.erase(FRetired.begin(), InUse);
}

TCustomBeaconMapFencing::TLoadedRef TCustomBeaconMapFencing::GetLoaded() const {
  const std::lock_guard Guard(FStateLock);
  return FLoaded;
}

TFencingProject TCustomBeaconMapFencing::GetProjectInformation() const {
  return GetLoaded()->Project;
}

// ---------------------------------------------------------------- maps

std::int32_t TCustomBeaconMapFencing::GetMapIndex() const {
  return GetLoaded()->Project.CurrentMapIndex;
}

void TCustomBeaconMapFencing::SetMapIndex(std::int32_t AValue) {
  FRuntimeMap->SetMapIndex(AValue);
  GetLoaded()->Project.CurrentMapIndex = AValue;
}

void TCustomBeaconMapFencing::SetRotation(std::int32_t AAngle) {
  FRuntimeMap->SetRotation(AAngle);
}

TMeasureUnits TCustomBeaconMapFencing::GetMeasureUnits() const {
  const TLoadedRef Loaded = GetLoaded();
  const TFencingMap* const Map = Loaded->GetCurrentMap();
  const auto* const Units = Map ? Supports<IDesignMapUnits>(Map->Map.Get()) : nullptr;
  return Units ? Units->GetMeasureUnits() : TMeasureUnits::Centimeters;
}

// ---------------------------------------------------------------- positions

TPointF TCustomBeaconMapFencing::GetLastRawPosition() const {
  return GetLoaded()->GetLastPoint();
}

TPointF TCustomBeaconMapFencing::GetLastPathPosition() const {
  return GetLoaded()->GetLastPathPoint();
}

double TCustomBeaconMapFencing::GetMotionAverage() const {
  const TLoadedRef Loaded = GetLoaded();
  const TMapCalculator* const Entry = Loaded->GetCurrentCalculator();
  return Entry ? Entry->Calculator->GetMotionAverage() : 0.0;
}

void TCustomBeaconMapFencing::ManualCalibration(const TPointF& ACPoint) {
  const TLoadedRef Loaded = GetLoaded();
  const TMapCalculator* const Entry = Loaded->GetCurrentCalculator();
  if (!Entry) return;
  float CentimetresPerUnit = 1.0F;
  if (GetMeasureUnits() == TMeasureUnits::Meters) CentimetresPerUnit = CalculatorUnitsPerMapUnit;
  if (GetMeasureUnits() == TMeasureUnits::Inches) CentimetresPerUnit = CentimetresPerInch;
  Entry->Calculator->ManualCalibration(ACPoint * CentimetresPerUnit);
}

// ---------------------------------------------------------------- routes

bool TCustomBeaconMapFencing::ShowPathToNodeIndex(std::int32_t AIndex) {
  const TLoadedRef Loaded = GetLoaded();
  if (!Loaded->Project.RouteTo(AIndex, ToMap(Loaded->GetLastPathPoint()))) return false;
  Loaded->SetRoute(AIndex);
  return true;
}

void TCustomBeaconMapFencing::ClearRoute() {
  const TLoadedRef Loaded = GetLoaded();
  Loaded->Project.ClearRoute();
  Loaded->SetRoute({});
}

}  // namespace System::Beacon::Fencing
