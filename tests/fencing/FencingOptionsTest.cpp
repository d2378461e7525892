#include <gtest/gtest.h>

#include <cmath>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

template <class T>
TValue V(T AValue) {
  return TValue::From(AValue);
}

/// One property: what it is at first, another value that it takes, and those that it refuses.
struct TRow {
  const char* Property;
  TValue Default;
  TValue Other;
  std::vector<TValue> Refused = {};
  const char* Message = "";
  int Notifications = 1;
};

void CheckRow(TOptionSet& AOptions, const TRow& ARow) {
  const TPropertyInfo& Property = *FindProperty(AOptions.GetClassInfo(), ARow.Property);
  int Notifications = 0;
  AOptions.SetOnChange([&](TObject* ASender) { Notifications += ASender == &AOptions ? 1 : 100; });
  EXPECT_EQ(Property.Get(AOptions), ARow.Default) << ARow.Property;
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
void CheckRows(std::initializer_list<TRow> ARows) {
  TOptions Options;
  for (const TRow& Row : ARows) CheckRow(Options, Row);
}

TEST(FencingOptions, HaveTheirDefaultsRefuseWhatIsOutOfRangeAndNotifyOfChangesOnly) {
  CheckRows<TBeaconManagerOptions>(
      {{"BeaconDeathTime",
        V(20),
        V(1),
        {V(0), V(-1)},
        "Beacon death time should be greater than 0"},
       {"ScanningTime", V(500), V(1), {V(0), V(-1)}, "Scanning time should be greater than 0"},
       {"ScanningSleepingTime",
        V(250),
        V(1),
        {V(0), V(-1)},
        "Scanning sleeping time should be greater than 0"},
       {"SPC", V(0.5F), V(-2.0F)},
       {"CalcMode", V(TBeaconCalcMode::Stabilized), V(TBeaconCalcMode::Raw)},
       {"Mode", V(TBeaconScanMode::Standard), V(TBeaconScanMode::Alternative)}});
  CheckRows<TParticleFilterOptions>(
      {{"ParticlesNumber",
        V(500),
        V(1),
        {V(0), V(-1)},
        "Particles number should be greater than 0"},
       {"UpdateInterval", V(500), V(1), {V(0), V(-1)}, "Update interval should be greater than 0"},
       {"MovementStDeviation", V(15), V(-3)},
       {"SignalRelativeStdDev",
        V(0.15F),
        V(100.0F),
        {V(0.0F), V(-1.0F), V(100.5F), V(NAN)},
        "Signal Relative standard deviation should be Between 1 and 100"},
       {"SignalRelativeStdDev", V(100.0F), V(0.01F)},
       {"BeaconsToUse",
        V(3),
        V(1),
        {V(0), V(-1)},
        "Number of beacons to use should be greater than 0"},
       {"OwnsCalcDistance", V(true), V(false)},
       {"MotionThreshold", V(4.0), V(-1.0)},
       {"CalibrationAverage", V(0.33), V(2.0)},
       {"SPC", V(0.0F), V(0.5F), {}, "", 0},
       {"AutomaticCalibration", V(false), V(true)}});
  CheckRows<TFencingOptions>({{"ZoneHighlightMetod",
                               V(TZoneHighlightMetod::RawPosition),
                               V(TZoneHighlightMetod::PathPosition)},
                              {"RawPositionColor", V(TAlphaColor{0xFF000000}), V(TAlphaColor{1})},
                              {"PathPositionColor", V(TAlphaColor{0xFF8A2BE2}), V(TAlphaColor{1})},
                              {"RawPositionRadius", V(2.0F), V(0.0F)},
                              {"PathPositionRadius", V(1.4F), V(0.0F)}});
}

// ---------------------------------------------------------------- assignment

TEST(TBeaconManagerOptions, AssignsEveryValueAndTheHandlerBeforeTheMode) {
  TBeaconManagerOptions From, To;
  From.SetBeaconDeathTime(1);
  From.SetScanningTime(2);
  From.SetScanningSleepingTime(3);
  From.SetSPC(0.4F);
  From.SetCalcMode(TBeaconCalcMode::Raw);
  From.SetMode(TBeaconScanMode::Alternative);
  std::string Told;
  From.SetOnChange([&](TObject* ASender) { Told += ASender == &To ? "S" : "?"; });
  To.SetOnChange([&](TObject* ASender) { Told += ASender == &To ? "d" : "?"; });

  To.Assign(&From);

  EXPECT_EQ(Told, "dddddS");
  for (const TPropertyInfo& Property : TBeaconManagerOptions::ClassInfo().Properties)
    EXPECT_EQ(Property.Get(To), Property.Get(From)) << Property.Name;
}

TEST(TParticleFilterOptions, AssignsItsFirstFiveValuesOnly) {
  TParticleFilterOptions From, To;
  const TParticleFilterOptions Fresh;
  From.SetParticlesNumber(1);
  From.SetUpdateInterval(2);
  From.SetMovementStDeviation(3);
  From.SetSignalRelativeStdDev(4.0F);
  From.SetBeaconsToUse(5);
  From.SetOwnsCalcDistance(false);
  From.SetMotionThreshold(6.0);
  From.SetCalibrationAverage(7.0);
  From.SetSPC(8.0F);
  From.SetAutomaticCalibration(true);
  From.SetOnChange([](TObject*) {});

  To.Assign(&From);

  EXPECT_EQ(To.GetParticlesNumber(), 1);
  EXPECT_EQ(To.GetUpdateInterval(), 2);
  EXPECT_EQ(To.GetMovementStDeviation(), 3);
  EXPECT_EQ(To.GetSignalRelativeStdDev(), 4.0F);
  EXPECT_EQ(To.GetBeaconsToUse(), 5);
  EXPECT_EQ(To.GetOwnsCalcDistance(), Fresh.GetOwnsCalcDistance());
  EXPECT_EQ(To.GetMotionThreshold(), Fresh.GetMotionThreshold());
  EXPECT_EQ(To.GetCalibrationAverage(), Fresh.GetCalibrationAverage());
  EXPECT_EQ(To.GetSPC(), Fresh.GetSPC());
  EXPECT_EQ(To.GetAutomaticCalibration(), Fresh.GetAutomaticCalibration());
  EXPECT_FALSE(To.GetOnChange());
}

TEST(TFencingOptions, AssignsTheHighlightMethodOnly) {
  TFencingOptions From, To;
  From.SetZoneHighlightMetod(TZoneHighlightMetod::PathPosition);
  From.SetRawPositionRadius(9.0F);
  To.Assign(&From);
  EXPECT_EQ(To.GetZoneHighlightMetod(), TZoneHighlightMetod::PathPosition);
  EXPECT_EQ(To.GetRawPositionRadius(), 2.0F);
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
