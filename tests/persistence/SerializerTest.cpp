// Objects as XML text: exact bytes, round trips of random scenes, and what is refused.
#include "persistence/System.Beacon.Fencing.Serializer.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <filesystem>
#include <limits>
#include <random>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "persistence/System.Beacon.Fencing.RttiUtils.h"
#include "persistence/value_text.h"
#include "platform/files.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

using namespace Scene;

using TTables = std::vector<std::vector<std::int32_t>>;
using TNodeList = std::vector<TRef<INode>>;

/// One property of every type.
class TSample final : public TInterfacedObject {
 public:
  FENCING_CLASS_INFO()
  TSample() { ++Living; }
  ~TSample() override { --Living; }
  template <class T>
  T Get() const {
    return std::get<T>(FValues);
  }
  template <class T>
  void Set(const T& AValue) {
    std::get<T>(FValues) = AValue;
  }
  static inline int Living = 0;

 private:
  std::tuple<TPointF,
             TAlphaColor,
             TStringPair,
             TIntegerPair,
             TRectF,
             bool,
             std::int32_t,
             TGUID,
             float,
             std::string,
             TMeasureUnits,
             TTables,
             TNodeList,
             TRef<INode>,
             std::int64_t>
      FValues;
};

template <class T>
TPropertyInfo Row(const char* AName, bool AIsPublished = true) {
  return Property<&TSample::Get<T>, &TSample::Set<T>>(AName, AIsPublished);
}

const TClassInfo& TSample::ClassInfo() {
  static const TClassInfo Info{.Name = "System.Test.TSample",
                               .Base = &TInterfacedObject::ClassInfo(),
                               .Create = []() -> TRef<TInterfacedObject> { return New<TSample>(); },
                               .Properties = {Row<TPointF>("Point"),
                                              Row<TAlphaColor>("Colour"),
                                              Row<TStringPair>("Names"),
                                              Row<TIntegerPair>("Numbers"),
                                              Row<TRectF>("Rect"),
                                              Row<bool>("Flag"),
                                              Row<std::int32_t>("Integer"),
                                              Row<TGUID>("GUID"),
                                              Row<float>("Single"),
                                              Row<std::string>("Text"),
                                              Row<TMeasureUnits>("Units"),
                                              Row<TTables>("Tables"),
                                              Row<TNodeList>("Nodes"),
                                              Row<TRef<INode>>("Node"),
                                              Row<std::int64_t>("Wide", false)}};
  return Info;
}

template <class... T>
std::vector<const TClassInfo*> ClassesOf() {
  return {&T::ClassInfo()...};
}

/// The classes of scenes that can be made by name.
namespace Map = Scene::Beacons;
const auto SceneClasses = ClassesOf<TNode,
                                    TLayer,
                                    TScene,
                                    TCamera,
                                    TRectangle,
                                    TEllipse,
                                    Scene::TSegment,
                                    TPolygonShape,
                                    Map::TMap,
                                    Map::TBeacon,
                                    Map::TBeaconsLayer,
                                    Map::TZonesLayer,
                                    Map::TPathsLayer,
                                    Map::TZone,
                                    Map::TCircularZone,
                                    Map::TPathZone,
                                    Map::TMapPath,
                                    Map::TMapPathNode,
                                    Map::TConnectingNodes>;

struct SerializerTest : testing::Test {
  SerializerTest() { GetSharedRttiContext().Register(TSample::ClassInfo()); }
  bool Read(const std::string& AXML, const std::vector<TCreator>& ACreators = {}) {
    return UnserializeFromXMLString(Object, Interface, AXML, ACreators);
  }
  /// An object element with something in it.
  static std::string Element(const TClassInfo& AClass, const std::string& AContent) {
    return fmt::format(R"(<object class = "{}" qualified_class = "{}">{}</object>)",
                       AClass.GetShortName(),
                       AClass.Name,
                       AContent);
  }
  static std::string Sample(const std::string& AContent) {
    return Element(TSample::ClassInfo(), AContent);
  }

  TRef<TInterfacedObject> Object;
  TRef<IInterface> Interface;
};

TEST_F(SerializerTest, EveryTypeHasItsTextAndComesBack) {
  const std::string Key(58, 'k');
  const std::vector<std::tuple<const char*, TValue, std::string>> Cases{
      {"Point", TValue::From(TPointF{12.5F, 3}), ">12.5|3<"},
      {"Colour", TValue::From(TAlphaColor{0xFFAA99BB}), ">170|153|187|255<"},
      {"Names", TValue::From(TStringPair{"N1", "N2"}), ">:TjE=|:TjI=<"},
      {"Names",
       TValue::From(TStringPair{"", Key}),
       ">:|:" + EncodeToBase64(Key).substr(0, 76) + "&#13;\naw==<"},
      {"Numbers", TValue::From(TIntegerPair{-1, 7}), ">-1|7<"},
      {"Rect", TValue::From(TRectF{-0.5F, 0, 10, 1E30F}), ">-0.5|0|10|1.00000001504747E30<"},
      {"Single", TValue::From(1E-4F), ">9.99999974737875E-5<"},
      {"Flag", TValue::From(true), ">True<"},
      {"Flag", TValue::From(false), ">False<"},
      {"Integer", TValue::From(std::numeric_limits<std::int32_t>::min()), ">-2147483648<"},
      {"GUID", TValue::From(TGUID{{0xAB}}), ">{AB000000-0000-0000-0000-000000000000}<"},
      {"Units", TValue::From(TMeasureUnits::Meters), ">Meters<"},
      {"Text", TValue::From(std::string("' <\"&\r\n>")), ">&apos; &lt;&quot;&amp;&#13;\n&gt;<"},
      {"Text", TValue::From(std::string(" a b\t\n")), ">&#32;a b&#9;&#10;<"},
      {"Text", TValue::From(std::string(" ")), ">&#32;<"},
      {"Tables",
       TValue::From(TTables{{0, 1}, {}}),
       R"( count = "2"><item><array count = "2"><item>0</item><item>1</item></array></item>)"
       R"(<item><array count = "0"></array></item><)"},
      {"Nodes", TValue::From(TNodeList{nullptr}), R"( count = "1"><item></item><)"},
      {"Node", TValue::From(TRef<INode>()), "><"},
  };
  for (const auto& [Name, Value, Text] : Cases) {
    const TRef<TSample> Written = New<TSample>();
    SetObjectPropertyValue(Written.Get(), Name, Value);
    const std::string XML = SerializeToXML(*Written);
    EXPECT_NE(XML.find(fmt::format("<{}{}/{}>", Name, Text, Name)), std::string::npos) << XML;
    ASSERT_TRUE(Read(XML) && IsSame(Interface.Get(), Object.Get()));
    EXPECT_EQ(GetObjectPropertyValue(Object.Get(), Name), Value) << Text;
  }
}

TEST(Floats, HaveFifteenDigitsOfTheirExactValue) {
  std::mt19937 Random(1);
  std::vector<float> Numbers{
      0.001F, 0.01F, 0.1F, 999999.94F, 0.00999999978F, 1.0000001F, 524287.97F};
  for (int I = 0; I < 200'000; ++I)
    Numbers.push_back(std::ldexp(static_cast<float>(Random()), -static_cast<int>(Random() % 44)));
  for (const float Number : Numbers) {
    std::string Text;
    AppendFloat(Text, -Number);
    std::string Expected = fmt::format("{:.15G}", double{-Number});
    if (const std::size_t Mark = Expected.find("E-0"); Mark != std::string::npos)
      Expected.erase(Mark + 2, 1);
    if (const std::size_t Mark = Expected.find("E+"); Mark != std::string::npos)
      Expected.erase(Mark + 1, 1);
    ASSERT_EQ(Text, Expected);
  }
}

TEST_F(SerializerTest, TextsOfOtherWritersAreRead) {
  const std::initializer_list<std::tuple<const char*, const char*, TValue>> Cases{
      {"Integer", "$fF", TValue::From(std::int32_t{255})},
      {"Integer", "$FFFFFFFF", TValue::From(std::int32_t{-1})},
      {"flag", "TRUE", TValue::From(true)},
      {"flag", "-2", TValue::From(true)},
      {"FLAG", "0", TValue::From(false)},
      {"Single", "1e-70", TValue::From(0.0F)},
      {"Single", "-1E-400", TValue::From(-0.0F)},
      {"Single", "1e-99999999999999999999", TValue::From(0.0F)},
      {"Single", "1000e-1000", TValue::From(0.0F)},
      {"Single", "1e3", TValue::From(1000.0F)},
      {"Units", "inches", TValue::From(TMeasureUnits::Inches)},
      {"Names", "TjE=|:Tj\nI=", TValue::From(TStringPair{"N1", "N2"})},
      {"Text", "<![CDATA[<a>]]>", TValue::From(std::string("<a>"))}};
  for (const auto& [Name, Text, Value] : Cases) {
    ASSERT_TRUE(Read(Sample(fmt::format("<{}>{}</{}><Other/>", Name, Text, Name))));
    EXPECT_EQ(GetObjectPropertyValue(Object.Get(), Name), Value) << Text;
  }
  // What is not counted, or has no content, is left out; so is what a reader may not set.
  ASSERT_TRUE(Read(Sample("<Tables count='1'><item/><item/></Tables><Wide/>")));
  EXPECT_EQ(dynamic_cast<TSample&>(*Object).Get<TTables>().size(), 1U);
  ASSERT_TRUE(Read(Sample("<Tables><item/></Tables>")));
  EXPECT_TRUE(dynamic_cast<TSample&>(*Object).Get<TTables>().empty());
  ASSERT_TRUE(Read(Element(TNode::ClassInfo(),
                           "<LoadingChildren>True</LoadingChildren><Mode>1</Mode>"
                           "<Children count='2'><object class='TNo'/><item/></Children>")));
  EXPECT_FALSE(dynamic_cast<TNode&>(*Object).GetLoadingChildren());
}

// ---------------------------------------------------------------- random scenes

/// Trees of nodes whose published properties all hold random values.
class TRandomScenes {
 public:
  explicit TRandomScenes(unsigned ASeed) : FRandom(ASeed) {}

  TRef<TNode> Make(int ADepth) {
    const auto Classes = SceneClasses();
    const TRef<TNode> Result(dynamic_cast<TNode*>(Classes[Below(Classes.size())]->Create().Get()));
    for (const TRef<IProperty>& Property : GetProperties(Result.Get())) {
      FGreatestInteger = Property->GetName() == "Commands" ? 1 : 0xFFFFFFFF;
      if (Property->IsPublished() && Property->GetName() != "Children")
        SetUnlessRefused(*Property, Value(*Property->GetType()));
    }
    for (std::size_t I = ADepth > 0 ? Below(4) : 0; I > 0; --I) Result->AddChild(Make(ADepth - 1));
    return Result;
  }

 private:
  /// Identities of beacons refuse most texts.
  static void SetUnlessRefused(IProperty& AProperty, const TValue& AValue) {
    try {
      AProperty.SetValue(AValue);
    } catch (const EGeneralError&) {
    }
  }
  std::size_t Below(std::size_t ACount) { return FRandom() % ACount; }
  std::int32_t Integer() { return static_cast<std::int32_t>(FRandom() & FGreatestInteger); }
  float Float() {
    static constexpr float Awkward[] = {0, -0.0F, FLT_MAX, -FLT_MAX, FLT_MIN, 1E-45F, 1E15F};
    if (Below(2) == 0) return Awkward[Below(std::size(Awkward))];
    return std::ldexp(static_cast<float>(FRandom()) / 2E9F - 1, static_cast<int>(Below(80)) - 40);
  }
  std::string Text() {
    static constexpr std::string_view Characters = "<>&\"'\r\n\t ];#13a";
    std::string Result;
    do {
      Result += Characters[Below(Characters.size())];
      if (Below(8) == 0) Result += "\U0001F600";
    } while (Below(8) > 0);
    return Result;
  }
  TValue::TData Data(const TTypeInfo& AType) {
    if (AType.Kind == TTypeKind::Boolean) return Below(2) == 1;
    if (AType.Kind == TTypeKind::Integer) return std::int64_t{Integer()};
    if (AType.Kind == TTypeKind::Single) return double{Float()};
    if (AType.Kind == TTypeKind::String) return Text();
    if (AType.Kind == TTypeKind::Enumeration) return std::int64_t(Below(AType.Names.size()));
    if (AType.Kind == TTypeKind::Color) return TAlphaColor{static_cast<std::uint32_t>(FRandom())};
    if (AType.Kind == TTypeKind::GUID) return TGUID{{static_cast<std::uint8_t>(FRandom())}};
    if (AType.Kind == TTypeKind::Point) return TPointF{Float(), Float()};
    if (AType.Kind == TTypeKind::Rect) return TRectF{Float(), Float(), Float(), Float()};
    if (AType.Kind == TTypeKind::StringPair) return TStringPair{Text(), Text()};
    if (AType.Kind == TTypeKind::IntegerPair) return TIntegerPair{Integer(), Integer()};
    EXPECT_EQ(AType.Kind, TTypeKind::Array) << "no values of " << AType.Name;
    std::vector<TValue> Elements(Below(6));
    for (TValue& Element : Elements) Element = Value(*AType.Element);
    return Elements;
  }
  TValue Value(const TTypeInfo& AType) { return {AType, Data(AType)}; }

  std::mt19937 FRandom;
  std::uint32_t FGreatestInteger = 0;
};

TEST_F(SerializerTest, RandomScenesAreWrittenReadAndWrittenAgainToTheSameBytes) {
  for (unsigned Seed = 1; Seed <= 200; ++Seed) {
    const std::string Written = SerializeToXML(*TRandomScenes(Seed).Make(4));
    for (const std::string& Text : {Written, FormatXML(Written), "\xEF\xBB\xBF" + Written}) {
      ASSERT_TRUE(Read(Text) && Object);
      ASSERT_EQ(SerializeToXML(*Object), Written) << "seed " << Seed;
    }
  }
}

TEST_F(SerializerTest, ExcludedPropertiesAreLeftOutEverywhere) {
  const TRef<TLayer> Layer = New<TLayer>();
  Layer->AddChild(New<TLayer>());
  const std::vector<std::string> Exclusion{"name", "ID", "opacity"};
  const std::string Inner =
      Element(TLayer::ClassInfo(),
              R"(<ClipChildren>False</ClipChildren><Children count = "0"></Children>)");
  EXPECT_EQ(SerializeToXML(*Layer, Exclusion),
            Element(TLayer::ClassInfo(),
                    R"(<ClipChildren>False</ClipChildren><Children count = "1">)" + Inner +
                        "</Children>"));
}

// ---------------------------------------------------------------- creators and refusals

TEST_F(SerializerTest, CreatorsAreAskedInTurnAndToldWhenAllIsLoaded) {
  std::string Log;
  const auto Creator = [&Log](const std::string& AName, const char* AMade) -> TCreator {
    return [&Log, AName, AMade](const std::string& AClass, TLoadedResource& ALoaded) {
      Log += AName + "? ";
      ALoaded = [&Log, AName](TInterfacedObject& ALayer) {
        Log += AName + ": " + dynamic_cast<TNode&>(ALayer).GetName() + " ";
      };
      return AClass == AMade ? New<TLayer>() : TRef<TInterfacedObject>();
    };
  };
  const std::vector<TCreator> Creators{Creator("A", "Other.TInner"), Creator("B", "Other.TOuter")};
  EXPECT_TRUE(Read(R"(<object qualified_class="Other.TOuter"><Children count="2">)"
                   R"(<object class="Other.TInner"/><object qualified_class="Other.TInner">)"
                   "<Name>in</Name></object></Children><Name>out</Name></object>",
                   Creators));
  EXPECT_EQ(Log, "A? B? A? B? A? A: in B: out ");
  EXPECT_EQ(dynamic_cast<TNode&>(*Object).GetChildCount(), 1);
}

TEST_F(SerializerTest, RefusedTextsSayWhereAndLeaveNothing) {
  const auto Nodes = [](const std::string& AContent) {
    return Element(TNode::ClassInfo(), "\n<Children count='1'>" + AContent + "</Children>");
  };
  std::vector<std::pair<std::string, std::string>> Cases{
      {"<object>", "1:1: <object> is not closed"},
      {"<!DOCTYPE object [<!ENTITY a 'b'>]><object>&a;</object>",
       "1:18: a document type with declarations of its own is not read"},
      {Sample("\n<Text><b/></Text>"), "2:7: <b>: a value should stand here, no element"},
      {Sample("\n<Tables count='2000000000'><item/></Tables>"),
       "2:1: <Tables>: count is 2000000000, but the element holds 1; correct count or add what is "
       "missing"},
      {Sample("\n<Tables count='1'><item><item/></item></Tables>"),
       "2:25: <item>: <array> should stand here"},
      {Nodes("1"), "2:21: <#text>: <object> should stand here"},
      {Nodes("<item>1</item>"), "2:21: <item>: <object> should stand here"},
      {Nodes(Sample("")), "2:21: <object>: a TSample cannot stand here, since it is no INode"},
      {Element(TPolygonShape::ClassInfo(), "\n<Commands count='1'><item>256</item></Commands>"),
       "2:1: <Commands>: Command 0 of a polygon is 256; use 0 to move to a point or 1 to draw a "
       "line to it"},
  };
  constexpr const char* Number = "'{}' is no number; write one such as 12.5 or 1E-5";
  constexpr const char* Whole = "'{}' is no whole number from -2147483648 to 2147483647";
  constexpr const char* Colour =
      "'{}' is no colour; write red|green|blue|alpha, each from 0 to 255";
  for (const auto& [Name, Value, Message] :
       std::initializer_list<std::tuple<const char*, const char*, const char*>>{
           {"Single", "nan", Number},
           {"Single", "1E39", Number},
           {"Single", "0.001E+400", Number},
           {"Point", "1,5|2", "'1,5' is no number; write one such as 12.5 or 1E-5"},
           {"Point", "1|2|3", "'{}' is not 2 values with '|' between them"},
           {"Rect", "1|2", "'{}' is not 4 values with '|' between them"},
           {"Integer", "2147483648", Whole},
           {"Integer", "$", Whole},
           {"Colour", "1|2|3|256", Colour},
           {"Flag", "yes", "'{}' is no Boolean; write True or False"},
           {"Units", "Feet", "'{}' is no TMeasureUnits; write one of Centimeters, Meters, Inches"},
           {"Names",
            ":x|:",
            "the Base64 text is cut short: digits and padding come in groups of four"},
           {"Node", "1", "Property type is invalid"},
           {"Wide", "1", "Property type is invalid"}})
    Cases.emplace_back(
        Sample(fmt::format("\n <{0}>{1}</{0}>", Name, Value)),
        fmt::format("2:2: <{}>: {}", Name, fmt::format(fmt::runtime(Message), Value)));
  for (const auto& Case : Cases) {
    ASSERT_TRUE(Read(Sample("")));
    EXPECT_EQ(Raised<EXMLError>([&] { Read(Case.first); }), Case.second);
    EXPECT_FALSE(Object || Interface || TSample::Living > 0) << Case.second;
  }
  for (const auto& [Text, Result] : {std::pair<const char*, bool>{" \n", false},
                                     {"<object class='TNo'/>", false},
                                     {"<scene><object/></scene>", true}}) {
    EXPECT_EQ(Read(Text), Result) << Text;
    EXPECT_FALSE(Object || Interface) << Text;
  }
}

TEST_F(SerializerTest, WhatCouldNotBeReadIsNotWritten) {
  const TRef<TSample> Sample = New<TSample>();
  const auto Refused = [](TObject& AObject) {
    return Raised<EConvertError>([&] { SerializeToXML(AObject); });
  };
  Sample->Set(TMeasureUnits{3});
  EXPECT_EQ(Refused(*Sample), "TSample.Units: the value 3 of TMeasureUnits has no name");
  Sample->Set(std::string("a\0", 2));
  EXPECT_EQ(Refused(*Sample),
            "TSample.Text: byte 2 of the text begins no character that XML can hold; take it out");
  Sample->Set(std::nanf(""));
  EXPECT_EQ(Refused(*Sample), "TSample.Single: nan cannot be written; a number has to be finite");
  TRef<TNode> Deep = New<TNode>();
  for (int I = 0; I < 200; ++I) {
    const TRef<TNode> Parent = New<TNode>();
    Parent->AddChild(std::exchange(Deep, Parent));
  }
  EXPECT_EQ(Refused(*Deep),
            "TNode.Children: what is written would be nested deeper than the 256 elements that can "
            "be read");
}

// ---------------------------------------------------------------- texts

TEST_F(SerializerTest, TextsAreKeptAsLines) {
  const std::string Path = testing::TempDir() + "SerializerTest.txt";
  struct TCase {
    std::string Written, InFile;
  };
  for (const TCase& Case : std::initializer_list<TCase>{
           {"", ""}, {"é", "é\r\n"}, {"a\rb\n\r\nc", "a\r\nb\r\n\r\nc\r\n"}, {"a\r\n", "a\r\n"}}) {
    SaveStringToPath(Case.Written, Path);
    EXPECT_EQ(ReadWholeFile(Path, 100), Case.InFile);
    EXPECT_EQ(LoadStringFromPath(Path), Case.InFile);
  }
  ReplaceFile(Path, "\xEF\xBB\xBFx\ny");
  EXPECT_EQ(LoadStringFromPath(Path), "x\r\ny\r\n");
  ReplaceFile(Path, std::string("\xFF\xFEx\0", 4));
  EXPECT_EQ(Raised<EFileError>([&] { LoadStringFromPath(Path); }),
            Path + ": the file is UTF-16; save it as UTF-8");
  std::filesystem::remove(Path);
}

}  // namespace
}  // namespace System::Beacon::Fencing
