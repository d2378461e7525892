#include <fmt/format.h>

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

std::string ZoneToJson(const TRunRecord::TZone& AZone) {
  TColumn Outline;
  for (const TPointF& Point : AZone.Outline) {
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
      .Json("zones", ArrayOf(Run.Zones, &ZoneToJson))
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
