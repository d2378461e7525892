#include <gtest/gtest.h>

#include <cmath>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

/// A value beside another one.
TValue Another(const TValue& AValue) {
  TValue::TData Data = AValue.GetData();
  if (auto* const Number = std::get_if<std::int64_t>(&Data)) *Number ^= 1;
  if (auto* const Real = std::get_if<double>(&Data)) *Real = 64.0;
  if (auto* const Color = std::get_if<TAlphaColor>(&Data)) Color->Value ^= 1;
  if (auto* const Is = std::get_if<bool>(&Data)) *Is = !*Is;
  return TValue(*AValue.GetType(), Data);
}

/// Gives every property another value, twice; how often each of them notified.
std::string ChangeAll(TOptionSet& AOptions) {
  std::string Result;
  for (const TPropertyInfo& Property : AOptions.GetClassInfo().Properties) {
    int Notified = 0;
    AOptions.SetOnChange([&](TObject* ASender) { Notified += ASender == &AOptions ? 1 : 100; });
    const TValue Other = Another(Property.Get(AOptions));
    for (int I = 0; I < 2; ++I) Property.Set(AOptions, Other);
    EXPECT_EQ(Property.Get(AOptions), Other) << Property.Name;
    Result += std::to_string(Notified);
  }
  AOptions.SetOnChange({});
  return Result;
}

/// Which properties notify when they change, and which of them arrive when they are assigned.
template <class TOptions>
void Check(const char* ANotified, const char* AAssigned) {
  TOptions From, To;
  EXPECT_EQ(ChangeAll(From), ANotified);
  To.Assign(&From);
  std::string Assigned;
  for (const TPropertyInfo& Property : TOptions::ClassInfo().Properties)
    Assigned += Property.Get(To) == Property.Get(From) ? "1" : "0";
  EXPECT_EQ(Assigned, AAssigned);
}

TEST(FencingOptions, NotifyOfChangesOnlyAndAssignTheValuesThatEachClassPromises) {
  Check<TBeaconManagerOptions>("111111", "111111");
  Check<TParticleFilterOptions>("1111111101", "1111100000");
  Check<TFencingOptions>("11111", "10000");
}

TEST(FencingOptions, RefuseWhatIsOutOfRange) {
  TBeaconManagerOptions Manager;
  TParticleFilterOptions Filter;
  Filter.SetSignalRelativeStdDev(100.0F);
  const std::vector<TValue> BelowOne{TValue::From(0), TValue::From(-1), TValue::From(INT32_MIN)};
  std::vector<TValue> Deviations;
  for (const float Value : {0.0F, -1.0F, 100.5F, NAN}) Deviations.push_back(TValue::From(Value));
  const std::string Deviation = "Signal Relative standard deviation should be Between 1 and 100";
  struct TCase {
    TOptionSet& Options;
    const char* Property;
    std::string Message;
  };
  for (const TCase& C : {TCase{Manager, "BeaconDeathTime", "Beacon death time"},
                         {Manager, "ScanningTime", "Scanning time"},
                         {Manager, "ScanningSleepingTime", "Scanning sleeping time"},
                         {Filter, "ParticlesNumber", "Particles number"},
                         {Filter, "UpdateInterval", "Update interval"},
                         {Filter, "BeaconsToUse", "Number of beacons to use"},
                         {Filter, "SignalRelativeStdDev", Deviation}}) {
    C.Options.SetOnChange([](TObject*) { FAIL() << "nothing has changed"; });
    const TPropertyInfo& Property = *FindProperty(C.Options.GetClassInfo(), C.Property);
    const TValue Before = Property.Get(C.Options);
    const bool IsCount = C.Message != Deviation;
    for (const TValue& Refused : IsCount ? BelowOne : Deviations)
      EXPECT_EQ(Raised<EComponentError>([&] { Property.Set(C.Options, Refused); }),
                C.Message + (IsCount ? " should be greater than 0" : ""));
    EXPECT_EQ(Property.Get(C.Options), Before);
  }
}

TEST(TBeaconManagerOptions, AssignsItsHandlerTooBeforeTheMode) {
  TBeaconManagerOptions From, To;
  ChangeAll(From);
  std::string Told;
  From.SetOnChange([&](TObject* ASender) { Told += ASender == &To ? "S" : "?"; });
  To.SetOnChange([&](TObject* ASender) { Told += ASender == &To ? "d" : "?"; });
  To.Assign(&From);
  EXPECT_EQ(Told, "dddddS");
  TParticleFilterOptions Filter;
  EXPECT_THROW(From.Assign(&Filter), EComponentError);
  EXPECT_THROW(Filter.Assign(&From), EComponentError);
}

}  // namespace
}  // namespace System::Beacon::Fencing
