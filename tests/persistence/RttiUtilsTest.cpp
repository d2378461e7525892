#include "persistence/System.Beacon.Fencing.RttiUtils.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "fencing/System.Beacon.Fencing.h"
#include "platform/components.h"
#include "support/raised.h"

namespace System {

enum class TTestMood : std::uint8_t { Calm, Wild };

template <>
struct TEnumNames<TTestMood> {
  static constexpr std::string_view Type = "TTestMood";
  static constexpr std::array<std::string_view, 2> Names{"Calm", "Wild"};
};

namespace Beacon::Fencing {
namespace {

class INamed : public virtual IInterface {
 public:
  virtual std::string GetLabel() const = 0;

 protected:
  ~INamed() = default;
};

/// The root of the classes of this test: one property of every plain kind, and awkward ones.
class TShape : public TInterfacedObject, public virtual INamed {
 public:
  FENCING_CLASS_INFO()
  std::string GetLabel() const override { return "shape"; }

  std::string GetName() const { return FName; }
  virtual void SetName(const std::string& AValue) {
    SetterEntered(*this, "Name", AValue);
    FName = AValue;
  }
  TAlphaColor GetFillColor() const { return FFillColor; }
  void SetFillColor(TAlphaColor AValue) { FFillColor = AValue; }
  TAlphaColor GetStrokeColor() const { return {}; }
  TTestMood GetMood() const { return FMood; }
  void SetMood(TTestMood AValue) { FMood = AValue; }
  std::vector<TPointF> GetPoints() const { return FPoints; }
  void SetPoints(const std::vector<TPointF>& AValue) { FPoints = AValue; }

 private:
  std::string FName = "none";
  TAlphaColor FFillColor;
  TTestMood FMood = TTestMood::Calm;
  std::vector<TPointF> FPoints;
};

const TClassInfo& TShape::ClassInfo() {
  using T = TShape;
  static const TClassInfo Info{
      .Name = "System.Test.TShape",
      .Base = &TObject::ClassInfo(),
      .Create = nullptr,
      .Properties = {Published<&T::GetName, &T::SetName>("Name"),
                     Public<&T::GetFillColor, &T::SetFillColor>("FillColor"),
                     ReadOnlyProperty<&T::GetStrokeColor>("StrokeColor", true),
                     Published<&T::GetMood, &T::SetMood>("Mood"),
                     Published<&T::GetPoints, &T::SetPoints>("Points"),
                     EventProperty("OnMove", true)}};
  return Info;
}

/// Declares the name of its base's property again.
class TCircle final : public TShape {
 public:
  FENCING_CLASS_INFO()
  float GetRadius() const { return FRadius; }
  void SetRadius(float AValue) { FRadius = AValue; }
  std::int32_t GetId() const { return 7; }

 private:
  float FRadius = 1.0F;
};

const TClassInfo& TCircle::ClassInfo() {
  using T = TCircle;
  static const TClassInfo Info{.Name = "System.Test.TCircle",
                               .Base = &TShape::ClassInfo(),
                               .Create = []() -> TRef<TInterfacedObject> { return New<TCircle>(); },
                               .Properties = {Published<&T::GetRadius, &T::SetRadius>("Radius"),
                                              ReadOnlyProperty<&T::GetId>("Id", false),
                                              ReadOnlyProperty<&T::GetId>("MOOD", false)}};
  return Info;
}

std::string NamesOf(const TProperties& AProperties) {
  std::string Result;
  for (const TRef<IProperty>& Property : AProperties) Result += Property->GetName() + " ";
  return Result;
}

// ---------------------------------------------------------------- properties

TEST(RttiUtils, PropertiesAreListedOwnClassFirst) {
  const TRef<TCircle> Circle = New<TCircle>();
  const TProperties All = GetProperties(Circle.Get());
  EXPECT_EQ(NamesOf(All), "Radius Id MOOD Name FillColor StrokeColor Mood Points OnMove ");
  EXPECT_EQ(GetPropertiesNames(Circle.Get()).size(), All.size());
  std::string Published, Strings;
  for (const TRef<IProperty>& Property : All) {
    if (Property->IsPublished()) Published += Property->GetName() + " ";
    if (Property->IsString()) Strings += Property->GetName() + " ";
  }
  EXPECT_EQ(Published, "Radius Name StrokeColor Mood Points OnMove ");
  EXPECT_EQ(Strings, "Name ");
  EXPECT_TRUE(GetProperties(nullptr).empty());
}

TEST(RttiUtils, ValuesAreReadAndWrittenByNameInEitherCaseTheDerivedClassFirst) {
  const TRef<TCircle> Circle = New<TCircle>();
  TObject* const Object = Circle.Get();
  for (const char* Name : {"name", "RADIUS", "Mood"}) EXPECT_TRUE(HasProperty(Object, Name));
  for (const char* Name : {"Nam", ""}) EXPECT_FALSE(HasProperty(Object, Name));
  EXPECT_FALSE(HasProperty(nullptr, "Name"));
  EXPECT_EQ(GetObjectPropertyValue(Object, "mood"), TValue::From(std::int32_t{7}));

  const std::vector<TPointF> Points{{1, 2}, {3, 4}};
  SetObjectPropertyValue(Object, "RADIUS", TValue::From(2.5F));
  SetObjectPropertyValue(Object, "points", TValue::From(Points));
  SetObjectPropertyValue(Object, "FillColor", TValue::From(TAlphaColor{0xFF102030}));
  EXPECT_EQ(GetObjectPropertyValue(Object, "Radius").As<float>(), 2.5F);
  EXPECT_EQ(GetObjectPropertyValue(Object, "Points").As<std::vector<TPointF>>(), Points);
  EXPECT_EQ(Circle->GetFillColor().Value, 0xFF102030U);

  // What is not there, is of another type, or cannot be written or read, is left alone.
  SetObjectPropertyValue(Object, "Diameter", TValue::From(2.5F));
  SetObjectPropertyValue(Object, "Radius", TValue::From(2.5));
  SetObjectPropertyValue(Object, "Id", TValue::From(std::int32_t{8}));
  SetObjectPropertyValue(nullptr, "Radius", TValue::From(1.0F));
  for (const char* Name : {"Radius", "OnMove"}) SetObjectPropertyValue(Object, Name, TValue());
  EXPECT_EQ(Circle->GetRadius(), 2.5F);
  for (const char* Name : {"Diameter", "OnMove"})
    EXPECT_TRUE(GetObjectPropertyValue(Object, Name).IsEmpty());
  EXPECT_TRUE(GetObjectPropertyValue(nullptr, "Radius").IsEmpty());
  EXPECT_EQ(New<TProperty>(Object, nullptr)->GetName(), "");
  EXPECT_TRUE(New<TProperty>(Object, nullptr)->GetValue().IsEmpty());
}

// ---------------------------------------------------------------- enumerations and classes

TEST(RttiUtils, EnumerationsHaveNames) {
  EXPECT_EQ(EnumToString(TValue::From(TTestMood::Wild)), "Wild");
  EXPECT_EQ(EnumeratedToString(TypeOf<TTestMood>(), 0), "Calm");
  EXPECT_EQ(GetEnumeratedValues(TypeOf<TTestMood>()), (std::vector<std::string>{"Calm", "Wild"}));
  EXPECT_EQ(GetEnumeratedValues(TypeOf<TMeasureUnits>()),
            (std::vector<std::string>{"Centimeters", "Meters", "Inches"}));
  for (const std::int64_t Ordinal : {-1LL, 2LL, 1LL << 40})
    EXPECT_EQ(EnumeratedToString(TypeOf<TTestMood>(), Ordinal), "");
  EXPECT_EQ(EnumToString(TValue()), "");
  EXPECT_EQ(EnumToString(TValue::From(std::int32_t{1})), "");
}

TEST(RttiUtils, ObjectsAreMadeByTheQualifiedNameOfTheirClass) {
  TRttiContext& Context = GetSharedRttiContext();
  Context.Register(TShape::ClassInfo());
  Context.Register(TCircle::ClassInfo());
  Context.Register(TCircle::ClassInfo());
  const TRef<TInterfacedObject> Made = CreateInstanceOfClass("system.test.tCIRCLE");
  ASSERT_TRUE(Made);
  EXPECT_EQ(&Made->GetClassInfo(), &TCircle::ClassInfo());
  const TRef<TInterfacedObject> Map =
      CreateInstanceOfClass("System.Beacon.Fencing.Scene.Beacons.TMap");
  ASSERT_TRUE(Map);
  EXPECT_EQ(Map->GetClassInfo().GetShortName(), "TMap");
  for (const char* Name : {"TCircle", "System.Test.TShape", "System.Test.TSquare", ""})
    EXPECT_FALSE(CreateInstanceOfClass(Name)) << Name;
}

TEST(RttiUtils, TransparentSupportsAsksTheObjectItself) {
  const TRef<TCircle> Circle = New<TCircle>();
  TObject* const Object = Circle.Get();
  INamed* Named = nullptr;
  IProperty* Property = nullptr;
  EXPECT_TRUE(TransparentSupports(Object, Named) && Named->GetLabel() == "shape");
  EXPECT_FALSE(TransparentSupports(Object, Property));
  EXPECT_FALSE(TransparentSupports(static_cast<TObject*>(nullptr), Named));
  EXPECT_EQ(Named, nullptr);
}

// ---------------------------------------------------------------- filtering and sorting

TEST(TRttiUtils, FiltersAndSorts) {
  const TRef<TCircle> Circle = New<TCircle>();
  const TProperties All = GetProperties(Circle.Get());
  EXPECT_EQ(NamesOf(TRttiUtils::Filter(All, "color")), "FillColor StrokeColor ");
  EXPECT_EQ(NamesOf(TRttiUtils::Filter(All, "none of them")), "");
  EXPECT_EQ(TRttiUtils::Filter(All, "").size(), All.size());
  using TNames = std::vector<std::string>;
  for (const auto& [Names, Expected] :
       {std::pair<TNames, const char*>{{}, "FillColor Id Name OnMove Points Radius StrokeColor "},
        {{"name", "ID"}, "Name Id FillColor OnMove Points Radius StrokeColor "},
        {{"Radius", "missing", "Radius", "FillColor"},
         "Radius FillColor Id Name OnMove Points StrokeColor "}}) {
    TProperties Sorted;
    for (const TRef<IProperty>& Property : All)
      if (!SameName(Property->GetName(), "Mood")) Sorted.push_back(Property);
    TRttiUtils::Sort(Names, Sorted);
    EXPECT_EQ(NamesOf(Sorted), Expected);
  }
}

// ---------------------------------------------------------------- change tracking

class TWatcher final : public TObjectInterceptor {
 public:
  using TObjectInterceptor::TObjectInterceptor;
  std::string Log;

 protected:
  void PropertyChanged(const std::string& AProperty,
                       const TValue& AOldValue,
                       const TValue& ANewValue) override {
    Log += fmt::format(
        "{}: {} -> {}; ", AProperty, AOldValue.As<std::string>(), ANewValue.As<std::string>());
  }
};

TEST(TObjectInterceptor, RecordsVirtualSettersWhileItLives) {
  const TRef<TShape> Shape = New<TShape>(), Other = New<TShape>();
  TWatcher Idle(Shape.Get(), false);
  {
    TWatcher Watcher(Shape.Get(), true);
    Shape->SetName("first");
    Other->SetName("other");
    SetObjectPropertyValue(Shape.Get(), "NAME", TValue::From(std::string("second")));
    Shape->SetMood(TTestMood::Wild);
    EXPECT_EQ(Watcher.Log, "Name: none -> first; Name: first -> second; ");
    ASSERT_EQ(Watcher.GetChanges().size(), 2U);
    EXPECT_EQ(Watcher.GetChanges()[1].OldValue, TValue::From(std::string("first")));
  }
  Shape->SetName("third");
  EXPECT_TRUE(Idle.GetChanges().empty());
}

TEST(TObjectInterceptor, HearsOfTheSettersOfZones) {
  TBeaconZonesFencing Component;
  TBeaconZoneItem* const Zone = Component.GetZones()->Add();
  TWatcher Watcher(Zone, true);
  Zone->SetDisplayName("Lobby");
  const TValue Refused = TValue::From(std::string("0"));
  EXPECT_THROW(SetObjectPropertyValue(&Component, "BaseEddyNamespace", Refused), EComponentError);
  EXPECT_EQ(Watcher.Log, "DisplayName: TBeaconZoneItem -> Lobby; ");
}

TEST(TBeaconZonesFencing, PublishesItsPropertiesInTheirOrder) {
  TBeaconZonesFencing Component;
  std::string Published;
  for (const TRef<IProperty>& Property : GetProperties(&Component))
    if (Property->IsPublished()) Published += Property->GetName() + " ";
  EXPECT_EQ(
      Published,
      "Enabled Zones BeaconManagerOptions BaseBeaconGUID BaseManufacturerID BaseEddyNamespace "
      "OnBeaconEnter OnBeaconExit OnBeaconProximity OnBeaconEddyURL OnBeaconEddyTLM "
      "OnZoneBeaconProximity OnZoneBeaconEnter OnZoneBeaconExit OnZoneEnter OnZoneExit ");
  TCustomBeaconZonesFencing Custom;
  for (const TRef<IProperty>& Property : GetProperties(&Custom))
    EXPECT_FALSE(Property->IsPublished()) << Property->GetName();
}

}  // namespace
}  // namespace Beacon::Fencing
}  // namespace System
