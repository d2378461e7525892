#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "apps/wayfence/json_line.h"
#include "apps/wayfence/report_page.h"

namespace Wayfence {

using namespace System;

namespace {

/// Values as a JSON array, written one after the other.
class TColumn {
 public:
  void Add(std::string_view AValue) {
    if (!FText.empty()) FText += ',';
    FText += AValue;
  }
  void Add(std::int64_t AValue) { Add(fmt::format_int(AValue).c_str()); }
  /// To the thousandth.
  void AddDecimal(double AValue) { Add(fmt::format("{:.9g}", std::round(AValue * 1e3) / 1e3)); }
  std::string ToText() const { return "[" + FText + "]"; }

 private:
  std::string FText;
};

/// Times as whole milliseconds, each from the one before.
class TTimes {
 public:
  void Add(double ASeconds) {
    const std::int64_t Time = std::llround(ASeconds * 1e3);
    FColumn.Add(Time - FLast);
    FLast = Time;
  }
  std::string ToText() const { return FColumn.ToText(); }

 private:
  TColumn FColumn;
  std::int64_t FLast = 0;
};

template <class TItems, class TToText>
std::string ArrayOf(const TItems& AItems, const TToText& AToText) {
  TColumn Result;
  for (const auto& Item : AItems) Result.Add(AToText(Item));
  return Result.ToText();
}

std::string RectToJson(const TRectF& ARect) {
  TColumn Result;
  for (const float Edge : {ARect.Left, ARect.Top, ARect.Right, ARect.Bottom})
    Result.AddDecimal(Edge);
  return Result.ToText();
}

TJsonLine Placed(const std::string& AName, int AMap) {
  TJsonLine Result;
  Result.Text("name", AName).Number("map", AMap);
  return Result;
}

/// Pictures by number; equal ones have the same.
class TPictures {
 public:
  int IndexOf(const std::string& APicture) {
    if (APicture.empty()) return -1;
    const auto [Found, IsNew] = FIndexes.try_emplace(APicture, static_cast<int>(FIndexes.size()));
    if (IsNew) FColumn.Add(JsonString(APicture));
    return Found->second;
  }
  std::string ToText() const { return FColumn.ToText(); }

 private:
  std::unordered_map<std::string, int> FIndexes;
  TColumn FColumn;
};

std::string MapToJson(const TRunRecord::TMap& AMap, TPictures& APictures) {
  return TJsonLine()
      .Text("name", AMap.Name)
      .Text("units", AMap.Units)
      .Json("rect", RectToJson(AMap.Rect))
      .Number("picture", APictures.IndexOf(AMap.Picture))
      .Json("pictureRect", RectToJson(AMap.PictureRect))
      .ToText();
}

/// The points that lie farther than a distance from the one before.
std::vector<TPointF> Thinned(const std::vector<TPointF>& AOutline, float ADistance) {
  std::vector<TPointF> Result;
  for (const TPointF& Point : AOutline)
    if (Result.empty() ||
        std::hypot(Point.X - Result.back().X, Point.Y - Result.back().Y) > ADistance)
      Result.push_back(Point);
  return Result;
}

/// An outline as it can be seen: without what is smaller than half a pixel at the page's largest
/// zoom, and with so many points at most.
std::vector<TPointF> Visible(const std::vector<TPointF>& AOutline,
                             const TRectF& AMap,
                             std::size_t AMost) {
  constexpr float HalfPixels = 50'000.0F;  // along a map
  float Distance = std::max(AMap.GetWidth(), AMap.GetHeight()) / HalfPixels;
  std::vector<TPointF> Result = Thinned(AOutline, Distance);
  while (Result.size() > AMost) {
    Distance = std::max(2.0F * Distance, 1e-3F);
    Result = Thinned(AOutline, Distance);
  }
  return Result;
}

std::string ZoneToJson(const TRunRecord::TZone& AZone, const TRunRecord& ARun) {
  constexpr std::size_t MostOfAll = 50'000, MostOfSmall = 16;
  const std::size_t Most = std::max(MostOfSmall, MostOfAll / ARun.Zones.size());
  const TRectF& Map = ARun.Maps[static_cast<std::size_t>(AZone.Map)].Rect;
  TColumn Outline;
  for (const TPointF& Point : Visible(AZone.Outline, Map, Most)) {
    Outline.AddDecimal(Point.X);
    Outline.AddDecimal(Point.Y);
  }
  return Placed(AZone.Name, AZone.Map).Json("outline", Outline.ToText()).ToText();
}

/// The map, and the ends one after the other.
std::string EdgeToJson(const TRunRecord::TEdge& AEdge) {
  TColumn Result;
  Result.Add(std::int64_t{AEdge.Map});
  for (const TPointF& Point : {AEdge.From, AEdge.To}) {
    Result.AddDecimal(Point.X);
    Result.AddDecimal(Point.Y);
  }
  return Result.ToText();
}

template <class TPlaced>
TJsonLine PlaceToJson(const TPlaced& AItem) {
  TJsonLine Result = Placed(AItem.Name, AItem.Map);
  Result.Decimal("x", AItem.Place.X).Decimal("y", AItem.Place.Y);
  return Result;
}

/// Rows of time, map and place, and what else a row has, as columns.
template <class TRows>
std::string TrackToJson(const TRows& ARows) {
  TTimes Times;
  TColumn Map, X, Y, PathX, PathY;
  for (const auto& Row : ARows) {
    Times.Add(Row.Seconds);
    Map.Add(std::int64_t{Row.Map});
    X.AddDecimal(Row.Place.X);
    Y.AddDecimal(Row.Place.Y);
    if constexpr (requires { Row.OnPath; }) {
      PathX.AddDecimal(Row.OnPath.X);
      PathY.AddDecimal(Row.OnPath.Y);
    }
  }
  return TJsonLine()
      .Json("t", Times.ToText())
      .Json("map", Map.ToText())
      .Json("x", X.ToText())
      .Json("y", Y.ToText())
      .Json("pathX", PathX.ToText())
      .Json("pathY", PathY.ToText())
      .ToText();
}

/// One pair of columns for each beacon.
std::string SignalsToJson(const TRunRecord& ARun) {
  struct TColumns {
    TTimes Times;
    TColumn Rssi;
  };
  std::vector<TColumns> Signals(ARun.Beacons.size());
  for (const TRunRecord::TSignal& Signal : ARun.Signals) {
    TColumns& Columns = Signals[static_cast<std::size_t>(Signal.Beacon)];
    Columns.Times.Add(Signal.Seconds);
    Columns.Rssi.Add(std::int64_t{Signal.Rssi});
  }
  return ArrayOf(Signals, [](const TColumns& AColumns) {
    return TJsonLine()
        .Json("t", AColumns.Times.ToText())
        .Json("rssi", AColumns.Rssi.ToText())
        .ToText();
  });
}

std::string EventToJson(const TRunRecord::TEvent& AEvent) {
  return TJsonLine()
      .Decimal("t", AEvent.Seconds)
      .Text("kind", AEvent.Kind)
      .Text("name", AEvent.Name)
      .Number("map", AEvent.Map)
      .Number("from", AEvent.From)
      .Number("zone", AEvent.Zone)
      .ToText();
}

std::string RunToJson(const TNamedRun& ANamed, TPictures& APictures) {
  const auto& [Name, Run] = ANamed;
  using TMap = TRunRecord::TMap;
  using TBeacon = TRunRecord::TBeacon;
  using TPoi = TRunRecord::TPoi;
  using TZone = TRunRecord::TZone;
  return TJsonLine()
      .Text("name", Name)
      .Text("project", Run.Project)
      .Text("source", Run.Source)
      .Decimal("end", Run.End)
      .Json("maps", ArrayOf(Run.Maps, [&](const TMap& AMap) { return MapToJson(AMap, APictures); }))
      .Json("beacons",
            ArrayOf(Run.Beacons,
                    [](const TBeacon& ABeacon) {
                      return PlaceToJson(ABeacon).Text("identity", ABeacon.Identity).ToText();
                    }))
      .Json("zones",
            ArrayOf(Run.Zones, [&Run = Run](const TZone& AZone) { return ZoneToJson(AZone, Run); }))
      .Json("edges", ArrayOf(Run.Edges, &EdgeToJson))
      .Json("pois",
            ArrayOf(Run.Pois,
                    [](const TPoi& APoi) {
                      return PlaceToJson(APoi).Number("isNode", APoi.IsPathNode ? 1 : 0).ToText();
                    }))
      .Json("positions", TrackToJson(Run.Positions))
      .Json("truth", TrackToJson(Run.Truth))
      .Json("signals", SignalsToJson(Run))
      .Json("events", ArrayOf(Run.Events, &EventToJson))
      .ToText();
}

/// '<' could end the script element, or begin a comment in it; all of them stand in texts.
std::string WithoutTags(const std::string& AJson) {
  std::string Result;
  Result.reserve(AJson.size());
  for (const char Char : AJson)
    if (Char == '<')
      Result += "\\u003c";
    else
      Result += Char;
  return Result;
}

}  // namespace

std::string RunsToJson(const std::vector<TNamedRun>& ARuns) {
  TPictures Pictures;
  TJsonLine Result;
  Result.Json("runs",
              ArrayOf(ARuns, [&](const TNamedRun& ARun) { return RunToJson(ARun, Pictures); }));
  Result.Json("pictures", Pictures.ToText());
  return WithoutTags(Result.ToText());
}

}  // namespace Wayfence
