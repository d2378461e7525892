#include <gtest/gtest.h>

#include <cmath>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

/// One property: what it is at first, another value that it takes, and those that it refuses.
struct TRow {
  std::string Property;
  TValue Default;
  TValue Other;
  std::vector<TValue> Refused = {};
  std::string Message = {};
  int Notifications = 1;
};

template <class T>
TRow Row(const char* AProperty, T ADefault, T AOther) {
  return {AProperty, TValue::From(ADefault), TValue::From(AOther)};
}

TRow Positive(const char* AProperty, std::int32_t ADefault, const char* AWhat) {
  TRow Result = Row<std::int32_t>(AProperty, ADefault, 1);
  Result.Refused = {TValue::From(0), TValue::From(-1), TValue::From(INT32_MIN)};
  Result.Message = std::string(AWhat) + " should be greater than 0";
  return Result;
}

TRow Deviation() {
  TRow Result = Row("SignalRelativeStdDev", 0.15F, 100.0F);
  for (const float Refused : {0.0F, -1.0F, 100.5F, NAN})
    Result.Refused.push_back(TValue::From(Refused));
  Result.Message = "Signal Relative standard deviation should be Between 1 and 100";
  return Result;
}

TRow PlainField() {
  TRow Result = Row("SPC", 0.0F, 0.5F);
  Result.Notifications = 0;
  return Result;
}

const std::vector<TRow> ManagerRows{
    Positive("BeaconDeathTime", 20, "Beacon death time"),
    Positive("ScanningTime", 500, "Scanning time"),
    Positive("ScanningSleepingTime", 250, "Scanning sleeping time"),
    Row("SPC", 0.5F, -2.0F),
    Row("CalcMode", TBeaconCalcMode::Stabilized, TBeaconCalcMode::Raw),
    Row("Mode", TBeaconScanMode::Standard, TBeaconScanMode::Alternative)};

const std::vector<TRow> FilterRows{Positive("ParticlesNumber", 500, "Particles number"),
                                   Positive("UpdateInterval", 500, "Update interval"),
                                   Row("MovementStDeviation", 15, -3),
                                   Deviation(),
                                   Positive("BeaconsToUse", 3, "Number of beacons to use"),
                                   Row("OwnsCalcDistance", true, false),
                                   Row("MotionThreshold", 4.0, -1.0),
                                   Row("CalibrationAverage", 0.33, 2.0),
                                   PlainField(),
                                   Row("AutomaticCalibration", false, true)};

const std::vector<TRow> FencingRows{
    Row("ZoneHighlightMetod", TZoneHighlightMetod::RawPosition, TZoneHighlightMetod::PathPosition),
    Row("RawPositionColor", TAlphaColor{0xFF000000}, TAlphaColor{1}),
    Row("PathPositionColor", TAlphaColor{0xFF8A2BE2}, TAlphaColor{1}),
    Row("RawPositionRadius", 2.0F, 0.0F),
    Row("PathPositionRadius", 1.4F, 0.0F)};

const TPropertyInfo& PropertyOf(const TOptionSet& AOptions, const TRow& ARow) {
  return *FindProperty(AOptions.GetClassInfo(), ARow.Property);
}

void CheckRow(TOptionSet& AOptions, const TRow& ARow) {
  const TPropertyInfo& Property = PropertyOf(AOptions, ARow);
  int Notifications = 0;
  AOptions.SetOnChange([&](TObject* ASender) { Notifications += ASender == &AOptions ? 1 : 100; });
  for (const TValue& Refused : ARow.Refused)
    EXPECT_EQ(Raised<EComponentError>([&] { Property.Set(AOptions, Refused); }), ARow.Message);
  Property.Set(AOptions, ARow.Default);
  EXPECT_EQ(Property.Get(AOptions), ARow.Default) << ARow.Property;
  EXPECT_EQ(Notifications, 0) << ARow.Property;
  Property.Set(AOptions, ARow.Other);
  Property.Set(AOptions, ARow.Other);
  EXPECT_EQ(Property.Get(AOptions), ARow.Other) << ARow.Property;
  EXPECT_EQ(Notifications, ARow.Notifications) << ARow.Property;
}

template <class TOptions>
void CheckRows(const std::vector<TRow>& ARows) {
  TOptions Options;
  EXPECT_EQ(ARows.size(), TOptions::ClassInfo().Properties.size());
  for (const TRow& Row : ARows)
    EXPECT_EQ(PropertyOf(Options, Row).Get(Options), Row.Default) << Row.Property;
  for (const TRow& Row : ARows) CheckRow(Options, Row);
}

TEST(FencingOptions, RefuseWhatIsOutOfRangeAndNotifyOfChangesOnly) {
  CheckRows<TBeaconManagerOptions>(ManagerRows);
  CheckRows<TParticleFilterOptions>(FilterRows);
  CheckRows<TFencingOptions>(FencingRows);
}

/// Assigns options whose every value is another one; the first `AAssigned` of them arrive.
template <class TOptions>
void CheckAssign(const std::vector<TRow>& ARows, std::size_t AAssigned) {
  TOptions From, To;
  for (const TRow& Row : ARows) PropertyOf(From, Row).Set(From, Row.Other);
  To.Assign(&From);
  for (std::size_t I = 0; I < ARows.size(); ++I)
    EXPECT_EQ(PropertyOf(To, ARows[I]).Get(To), I < AAssigned ? ARows[I].Other : ARows[I].Default)
        << ARows[I].Property;
}

TEST(FencingOptions, AssignTheValuesThatEachClassPromises) {
  CheckAssign<TBeaconManagerOptions>(ManagerRows, 6);
  CheckAssign<TParticleFilterOptions>(FilterRows, 5);
  CheckAssign<TFencingOptions>(FencingRows, 1);
}

TEST(TBeaconManagerOptions, AssignsItsHandlerTooBeforeTheMode) {
  TBeaconManagerOptions From, To;
  for (const TRow& Row : ManagerRows) PropertyOf(From, Row).Set(From, Row.Other);
  std::string Told;
  From.SetOnChange([&](TObject* ASender) { Told += ASender == &To ? "S" : "?"; });
  To.SetOnChange([&](TObject* ASender) { Told += ASender == &To ? "d" : "?"; });
  To.Assign(&From);
  EXPECT_EQ(Told, "dddddS");
  To.SetScanningTime(9);
  EXPECT_EQ(Told, "dddddSS");
}

TEST(FencingOptions, AreNotAssignedToOneAnother) {
  TBeaconManagerOptions Manager;
  TParticleFilterOptions Filter;
  EXPECT_THROW(Manager.Assign(&Filter), EComponentError);
  EXPECT_THROW(Filter.Assign(&Manager), EComponentError);
  EXPECT_THROW(Manager.Assign(nullptr), EComponentError);
}

}  // namespace
}  // namespace System::Beacon::Fencing
