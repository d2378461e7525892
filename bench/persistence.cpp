// Objects written as XML and read back.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <locale>
#include <pugixml.hpp>
#include <sstream>
#include <string>

#include "persistence/System.Beacon.Fencing.RttiUtils.h"
#include "persistence/System.Beacon.Fencing.Serializer.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;

/// A scene of a layer of so many rectangles.
TRef<Scene::TScene> MakeScene(std::int64_t ACount) {
  const TRef<Scene::TScene> Result = New<Scene::TScene>();
  const TRef<Scene::TLayer> Layer = New<Scene::TLayer>();
  for (std::int64_t I = 0; I < ACount; ++I) {
    const TRef<Scene::TRectangle> Rectangle = New<Scene::TRectangle>();
    const auto Size = static_cast<float>(I % 1000);
    Rectangle->SetRect({0.0F, 0.1F * Size, Size, 0.3F * Size});
    Rectangle->SetDisplacement({0.7F * Size, 12.0F});
    Layer->AddChild(Rectangle);
  }
  Result->AddChild(Layer);
  return Result;
}

// ---------------------------------------------------------------- write

/// The same text through a stream, number by number and character by character.
class TPlainWriter {
 public:
  TPlainWriter() {
    FOut.imbue(std::locale::classic());
    FOut.precision(15);
    FOut << std::uppercase;
  }
  std::string Finish() const { return FOut.str(); }

  void Write(TObject& AObject) {
    const std::string Class(AObject.GetClassInfo().Name);
    FOut << "<object class = \"" << Class.substr(Class.rfind('.') + 1) << "\" qualified_class = \""
         << Class << "\">";
    for (const TRef<IProperty>& Property : GetProperties(&AObject)) {
      if (!Property->IsPublished()) continue;
      const TValue Value = Property->GetValue();
      FOut << "<" << Property->GetName();
      if (Property->GetType()->Kind == TTypeKind::Array)
        FOut << " count = \"" << std::get<std::vector<TValue>>(Value.GetData()).size() << "\"";
      FOut << ">";
      Write(Value);
      FOut << "</" << Property->GetName() << ">";
    }
    FOut << "</object>";
  }

 private:
  void Write(const TValue& AValue) {
    switch (AValue.GetType()->Kind) {
      case TTypeKind::Boolean:
        FOut << (AValue.As<bool>() ? "True" : "False");
        break;
      case TTypeKind::Single:
        FOut << double{AValue.As<float>()};
        break;
      case TTypeKind::String:
        for (const char C : AValue.As<std::string>()) WriteEscaped(C);
        break;
      case TTypeKind::Color: {
        const auto Colour = AValue.As<TAlphaColor>();
        FOut << int{Colour.GetRed()} << '|' << int{Colour.GetGreen()} << '|'
             << int{Colour.GetBlue()} << '|' << int{Colour.GetAlpha()};
        break;
      }
      case TTypeKind::GUID:
        FOut << GUIDToString(AValue.As<TGUID>());
        break;
      case TTypeKind::Point:
        FOut << double{AValue.As<TPointF>().X} << '|' << double{AValue.As<TPointF>().Y};
        break;
      case TTypeKind::Rect: {
        const auto R = AValue.As<TRectF>();
        FOut << double{R.Left} << '|' << double{R.Top} << '|' << double{R.Right} << '|'
             << double{R.Bottom};
        break;
      }
      case TTypeKind::Array:
        for (const TValue& Element : std::get<std::vector<TValue>>(AValue.GetData()))
          Write(const_cast<TObject&>(*std::get<TRef<IInterface>>(Element.GetData())->GetObject()));
        break;
      default:
        std::abort();
    }
  }

  void WriteEscaped(char AChar) {
    if (AChar == '<')
      FOut << "&lt;";
    else if (AChar == '&')
      FOut << "&amp;";
    else
      FOut << AChar;
  }

  std::ostringstream FOut;
};

void Write(benchmark::State& AState) {
  const TRef<Scene::TScene> Scene = MakeScene(AState.range(0));
  for (auto _ : AState) benchmark::DoNotOptimize(SerializeToXML(*Scene));
}
BENCHMARK(Write)->Name("Write objects/ours")->Arg(10000)->Arg(100000);

void WritePlainly(benchmark::State& AState) {
  const TRef<Scene::TScene> Scene = MakeScene(AState.range(0));
  for (auto _ : AState) {
    TPlainWriter Writer;
    Writer.Write(*Scene);
    benchmark::DoNotOptimize(Writer.Finish());
  }
}
BENCHMARK(WritePlainly)->Name("Write objects/plain")->Arg(10000);

// ---------------------------------------------------------------- read

void Read(benchmark::State& AState) {
  const std::string Text = SerializeToXML(*MakeScene(AState.range(0)));
  for (auto _ : AState) {
    TRef<TInterfacedObject> Object;
    TRef<IInterface> Interface;
    if (!UnserializeFromXMLString(Object, Interface, Text)) AState.SkipWithError("not read");
    benchmark::DoNotOptimize(Object);
    AState.PauseTiming();
    Object = nullptr;
    Interface = nullptr;
    AState.ResumeTiming();
  }
  AState.SetBytesProcessed(AState.iterations() * static_cast<std::int64_t>(Text.size()));
}
BENCHMARK(Read)->Name("Read objects/ours")->Arg(10000)->Arg(35000)->Arg(100000);  // 35000: 20 MB

/// The tree of the XML library alone: no checks of ours, no objects.
void ParseOnly(benchmark::State& AState) {
  const std::string Text = SerializeToXML(*MakeScene(AState.range(0)));
  for (auto _ : AState) {
    pugi::xml_document Document;
    if (!Document.load_buffer(Text.data(), Text.size())) AState.SkipWithError("not read");
    benchmark::DoNotOptimize(Document);
  }
  AState.SetBytesProcessed(AState.iterations() * static_cast<std::int64_t>(Text.size()));
}
BENCHMARK(ParseOnly)->Name("Read objects/plain")->Arg(10000)->Arg(35000)->Arg(100000);

}  // namespace
