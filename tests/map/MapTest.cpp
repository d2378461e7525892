// Maps, beacons and zones: what they are made with, accept, announce, contain and draw.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "platform/errors.h"
#include "support/raised.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

const std::string Unit = "System.Beacon.Fencing.Scene.Beacons.";

TRef<TInterfacedObject> Load(const std::string& AName) {
  TLoadedResource Loaded = [](TInterfacedObject&) {};
  TRef<TInterfacedObject> Result = GetDefaultClassLoader(AName, Loaded);
  EXPECT_FALSE(Loaded);
  return Result;
}

/// The names of the properties that a class adds and stores, in their order.
std::string StoredNames(const TClassInfo& AClass) {
  std::string Result;
  for (const TPropertyInfo& Property : AClass.Properties)
    if (Property.IsPublished) Result += std::string(Property.Name) + ' ';
  return Result;
}

TEST(MapClasses, AreMadeByNameAndStoreTheirPropertiesInOrder) {
  struct TCase {
    const char* Class;
    const char* Base;
    const char* Stored;
  };
  for (const TCase& C :
       {TCase{"TMap", "TRectangle", "RepresentationDisplacement DescriptionList MeasureUnits "},
        TCase{"TBEACON",
              "TRectangle",
              "GUID Major Minor ManufacturerID EddyNamespace EddyInstance KindofBeacon "
              "DescriptionList UseToPositioning "},
        TCase{"TZone", "TRectangle", "DescriptionList "},
        TCase{"TCircularZone", "TEllipse", "DescriptionList "},
        TCase{"tpathzone", "TPolygonShape", "DescriptionList "},
        TCase{"TBeaconsLayer", "TLayer", ""},
        TCase{"TZonesLayer", "TLayer", ""},
        TCase{"TPathsLayer", "TLayer", ""},
        TCase{"TMapPath", "TConnectedControlPointsShape", ""},
        TCase{"TMapPathNode", "TSceneNode", "DescriptionList ControlPointIndex "},
        TCase{"TConnectingNodes", "TSceneNode", "Connections "}}) {
    SCOPED_TRACE(C.Class);
    const auto Made = Load(Unit + C.Class);
    ASSERT_TRUE(Made);
    const TClassInfo& Class = Made->GetClassInfo();
    EXPECT_TRUE(SameName(Class.Name, Unit + C.Class));
    EXPECT_EQ(Class.Base->GetShortName(), C.Base);
    EXPECT_EQ(StoredNames(Class), C.Stored);
  }
  EXPECT_TRUE(Load("System.Beacon.Fencing.Scene.Classes.TScene"));
  EXPECT_TRUE(Load("System.Beacon.Fencing.Scene.Classes.tcamera"));
  for (const char* Unknown : {"TMap", "", "System.Beacon.Fencing.Scene.Classes.TLayer"})
    EXPECT_FALSE(Load(Unknown)) << Unknown;
}

TEST(DescriptionLists, AreTextAndBack) {
  struct TCase {
    const char* Text;
    TDescriptionList List;
    const char* Again;  // the text that the list has; nothing: the same
  };
  for (const TCase& C : {TCase{":", {}, nullptr},
                         TCase{"", {}, ":"},
                         TCase{":S2V5:VmFsdWU=:", {{"Key", "Value"}}, nullptr},
                         TCase{":Og==:w6k=:Og==::", {{":", "é"}, {":", ""}}, nullptr},
                         TCase{":::", {{"", ""}}, nullptr},
                         TCase{"S2V5:S2V5:VmFsdWU=:S2V5:", {{"Key", "Value"}}, ":S2V5:VmFsdWU=:"},
                         TCase{"S2V5", {}, ":"}}) {
    EXPECT_EQ(StringToDescriptionList(C.Text), C.List) << C.Text;
    EXPECT_EQ(DescriptionListToString(C.List), C.Again ? C.Again : C.Text);
  }
  const TDescriptionList Long{{std::string(200, 'k'), std::string(100'000, 'v')}};
  EXPECT_EQ(StringToDescriptionList(DescriptionListToString(Long)), Long);
  EXPECT_THROW(StringToDescriptionList(":S2V5:?:"), EConvertError);
}

TEST(TBeacon, KeepsItsIdentityUnlessTheNewOneIsOne) {
  constexpr const char* BadManufacturer = "Manufacturer ID should be -1 or a four digits hex value";
  struct TCase {
    const char* Property;
    const char* Value;
    const char* Message;  // nothing: accepted
    int MID;
  };
  const auto Beacon = New<TBeacon>();
  for (const TCase& C : {TCase{"ManufacturerID", "4C", nullptr, 0x4C},
                         TCase{"ManufacturerID", "004c", nullptr, 0x4C},
                         TCase{"ManufacturerID", "ffff", nullptr, 0xFFFF},
                         TCase{"ManufacturerID", "12345", BadManufacturer, 0xFFFF},
                         TCase{"ManufacturerID", "", BadManufacturer, 0xFFFF},
                         TCase{"ManufacturerID", "xyz", BadManufacturer, 0xFFFF},
                         TCase{"ManufacturerID", "-2", BadManufacturer, 0xFFFF},
                         TCase{"ManufacturerID", "-1", nullptr, -1},
                         TCase{"EddyNamespace", "0011223344556677889A", nullptr, -1},
                         TCase{"EddyNamespace", "00112233", "Invalid Eddystone namespace", -1},
                         TCase{"EddyInstance", "00112233445g", "Invalid Eddystone instance", -1},
                         TCase{"EddyInstance", "001122334455", nullptr, -1}}) {
    const TValue Old = Beacon->GetProperty(C.Property);
    const auto Set = [&] { Beacon->SetProperty(C.Property, TValue::From(std::string(C.Value))); };
    if (C.Message) {
      EXPECT_EQ(Raised<EComponentError>(Set), C.Message);
    } else {
      Set();
    }
    EXPECT_EQ(Beacon->GetProperty(C.Property),
              C.Message ? Old : TValue::From(std::string(C.Value)));
    EXPECT_EQ(Beacon->GetMID(), C.MID) << C.Value;
  }
}

TEST(TBeacon, AsksForAllItsCirclesToBeDrawnAnew) {
  const auto Beacon = New<TBeacon>();
  Beacon->SetDisplacement({10, 10});
  const auto Reach = [&](TBeaconVisualizationSet AModes) {
    Beacon->SetVisualizationMode(AModes);
    const TRectF Rect = Beacon->GetRepaintRect(false, 0.25F);
    EXPECT_EQ(Rect.GetCentre(), (TPointF{10, 10}));
    return Rect.GetWidth() / 2.0F;
  };
  using enum TBeaconVisualizationMode;
  EXPECT_EQ(Reach(Beacon->GetVisualizationMode()), 1.5F);
  EXPECT_EQ(Reach({SolidCircle}), 0.75F);  // the square with its margin
  Beacon->SetSignalDistance(7.0F);
  EXPECT_EQ(Reach({ThreeDistances}), 1.5F);
  EXPECT_EQ(Reach({ThreeDistances, SignalDistance}), 7.0F);
}

TEST(MapObjects, AnnounceUnitsThatChangeAndEveryDescription) {
  std::string Log;
  const auto Map = New<TMap>();
  Map->ConnectPropertyChange(
      [&Log](INode*, const std::string& AName, const TValue&, const TValue&) {
        Log += AName + "; ";
      });
  Map->SetMeasureUnits(TMeasureUnits::Inches);
  Map->SetMeasureUnits(TMeasureUnits::Inches);
  Map->SetDescriptionList(":");
  Map->SetDescriptionList(":");
  EXPECT_EQ(Log, "MeasureUnits; DescriptionList; DescriptionList; ");
}

TEST(Zones, OfThreeKindsTellWhatIsUnderThem) {
  const auto Rectangle = New<TZone>();
  const auto Circle = New<TCircularZone>();
  const auto Polygon = New<TPathZone>();
  Polygon->SetControlPoints(std::vector<TPointF>{{0, 0}, {1, 0}, {0, 1}});
  std::vector<TRef<IDesignZone>> Zones{Rectangle, Circle, Polygon};
  struct TCase {
    TPointF Point;
    const char* Zones;
  };
  for (const TCase& C : {TCase{{10, 5.5F}, "110"},
                         TCase{{6, 4}, "111"},
                         TCase{{1, 1}, "101"},
                         TCase{{-1, 1}, "000"}}) {
    std::string Found;
    for (const TRef<IDesignZone>& Zone : Zones) {
      Supports<IShape>(Zone)->SetRect({0, 0, 20, 10});
      Found += Zone->IsUnderGlobalPoint(C.Point) ? '1' : '0';
    }
    EXPECT_EQ(Found, C.Zones) << C.Point.X;
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene::Beacons
