#include "persistence/System.Beacon.Fencing.RttiUtils.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "fencing/System.Beacon.Fencing.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

/// Declares the name of its base's property again.
class TNumbered final : public Scene::TLayer {
 public:
  FENCING_CLASS_INFO()
  std::int32_t GetNumber() const { return 7; }
};

const TClassInfo& TNumbered::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Test.TNumbered",
      .Base = &TLayer::ClassInfo(),
      .Create = []() -> TRef<TInterfacedObject> { return New<TNumbered>(); },
      .Properties = {ReadOnlyProperty<&TNumbered::GetNumber>("NAME", false)}};
  return Info;
}

std::string NamesOf(const TProperties& AProperties) {
  std::string Result;
  for (const TRef<IProperty>& Property : AProperties) Result += Property->GetName() + " ";
  return Result;
}

// ---------------------------------------------------------------- properties

TEST(RttiUtils, PropertiesAreListedOwnClassFirst) {
  const TRef<TNumbered> Node = New<TNumbered>();
  const TProperties All = GetProperties(Node.Get());
  EXPECT_EQ(NamesOf(All),
            "NAME Opacity ClipChildren Width Height Name Children LoadingChildren Parent Mode Id ");
  EXPECT_EQ(GetPropertiesNames(Node.Get()).size(), All.size());
  std::string Published, Strings;
  for (const TRef<IProperty>& Property : All) {
    if (Property->IsPublished()) Published += Property->GetName() + " ";
    if (Property->IsString()) Strings += Property->GetName() + " ";
  }
  EXPECT_EQ(Published, "Opacity ClipChildren Name Children Id ");
  EXPECT_EQ(Strings, "Name ");
  EXPECT_TRUE(GetProperties(nullptr).empty());
  TCustomBeaconZonesFencing Custom;  // leaves publishing to its descendants
  for (const TRef<IProperty>& Property : GetProperties(&Custom))
    EXPECT_FALSE(Property->IsPublished()) << Property->GetName();
}

TEST(RttiUtils, ValuesAreReadAndWrittenByNameInEitherCaseTheDerivedClassFirst) {
  const TRef<TNumbered> Node = New<TNumbered>();
  TObject* const Object = Node.Get();
  for (const char* Name : {"name", "OPACITY", "Mode"}) EXPECT_TRUE(HasProperty(Object, Name));
  for (const char* Name : {"Nam", ""}) EXPECT_FALSE(HasProperty(Object, Name));
  EXPECT_FALSE(HasProperty(nullptr, "Name"));
  EXPECT_EQ(GetObjectPropertyValue(Object, "name"), TValue::From(std::int32_t{7}));
  SetObjectPropertyValue(Object, "opacity", TValue::From(0.25F));
  EXPECT_EQ(GetObjectPropertyValue(Object, "OPACITY").As<float>(), 0.25F);

  // What is not there, is of another type, or cannot be written or read, is left alone.
  SetObjectPropertyValue(Object, "Diameter", TValue::From(2.5F));
  SetObjectPropertyValue(Object, "Opacity", TValue::From(2.5));
  SetObjectPropertyValue(Object, "Opacity", TValue());
  SetObjectPropertyValue(Object, "Name", TValue::From(std::int32_t{8}));
  SetObjectPropertyValue(nullptr, "Opacity", TValue::From(1.0F));
  EXPECT_EQ(Node->GetOpacity(), 0.25F);
  TBeaconZonesFencing Component;
  SetObjectPropertyValue(&Component, "OnZoneExit", TValue());
  EXPECT_TRUE(GetObjectPropertyValue(&Component, "OnZoneExit").IsEmpty());
  EXPECT_TRUE(GetObjectPropertyValue(Object, "Diameter").IsEmpty());
  EXPECT_TRUE(GetObjectPropertyValue(nullptr, "Opacity").IsEmpty());
  EXPECT_EQ(New<TProperty>(Object, nullptr)->GetName(), "");
}

// ---------------------------------------------------------------- enumerations and classes

TEST(RttiUtils, EnumerationsHaveNames) {
  EXPECT_EQ(EnumToString(TValue::From(TMeasureUnits::Inches)), "Inches");
  EXPECT_EQ(GetEnumeratedValues(TypeOf<TMeasureUnits>()).size(), 3U);
  for (const std::int64_t Ordinal : {-1LL, 3LL, 1LL << 40})
    EXPECT_EQ(EnumeratedToString(TypeOf<TMeasureUnits>(), Ordinal), "");
  EXPECT_EQ(EnumToString(TValue()) + EnumToString(TValue::From(std::int32_t{1})), "");
}

TEST(RttiUtils, ObjectsAreMadeByTheQualifiedNameOfTheirClass) {
  TRttiContext& Context = GetSharedRttiContext();
  Context.Register(Scene::TLocationNode::ClassInfo());
  for (int I = 0; I < 2; ++I) Context.Register(TNumbered::ClassInfo());
  for (const char* Name : {"system.test.tNUMBERED", "System.Beacon.Fencing.Scene.Beacons.TMap"}) {
    const TRef<TInterfacedObject> Made = CreateInstanceOfClass(Name);
    ASSERT_TRUE(Made);
    EXPECT_TRUE(SameName(Made->GetClassInfo().Name, Name));
  }
  for (const char* Name : {"TNumbered",
                           "System.Beacon.Fencing.Scene.Classes.TLocationNode",
                           "System.Test.TSquare",
                           ""})
    EXPECT_FALSE(CreateInstanceOfClass(Name)) << Name;
}

// ---------------------------------------------------------------- filtering and sorting

TEST(TRttiUtils, FiltersAndSorts) {
  const TRef<Scene::TLayer> Layer = New<Scene::TLayer>();
  const TProperties All = GetProperties(Layer.Get());
  EXPECT_EQ(NamesOf(TRttiUtils::Filter(All, "CHILD")), "ClipChildren Children LoadingChildren ");
  EXPECT_EQ(NamesOf(TRttiUtils::Filter(All, "none of them")), "");
  EXPECT_EQ(TRttiUtils::Filter(All, "").size(), All.size());
  using TNames = std::vector<std::string>;
  for (const auto& [Names, Expected] :
       {std::pair<TNames, const char*>{
            {}, "Children ClipChildren Height Id LoadingChildren Mode Name Opacity Parent Width "},
        {{"name", "ID"},
         "Name Id Children ClipChildren Height LoadingChildren Mode Opacity Parent Width "},
        {{"Width", "missing", "Width", "Name"},
         "Width Name Children ClipChildren Height Id LoadingChildren Mode Opacity Parent "}}) {
    TProperties Sorted = All;
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
  TBeaconZonesFencing Component;
  TBeaconZoneItem* const Zone = Component.GetZones()->Add();
  TBeaconZoneItem* const Other = Component.GetZones()->Add();
  TWatcher Idle(Zone, false);
  {
    TWatcher Watcher(Zone, true);
    Zone->SetDisplayName("Lobby");
    Other->SetDisplayName("Other");
    SetObjectPropertyValue(Zone, "DISPLAYNAME", TValue::From(std::string("Hall")));
    Zone->SetBeaconProximity(TBeaconEditProximity::Immediate);
    EXPECT_EQ(Watcher.Log, "DisplayName: TBeaconZoneItem -> Lobby; DisplayName: Lobby -> Hall; ");
    ASSERT_EQ(Watcher.GetChanges().size(), 2U);
    EXPECT_EQ(Watcher.GetChanges()[1].OldValue, TValue::From(std::string("Lobby")));
  }
  Zone->SetDisplayName("third");
  EXPECT_TRUE(Idle.GetChanges().empty());
  const TValue Refused = TValue::From(std::string("0"));
  EXPECT_THROW(SetObjectPropertyValue(&Component, "BaseEddyNamespace", Refused), EComponentError);
}

}  // namespace
}  // namespace System::Beacon::Fencing
