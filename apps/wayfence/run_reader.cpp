#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>

#include "apps/wayfence/run_file.h"
#include "apps/wayfence/run_line.h"
#include "platform/base64.h"
#include "platform/drawing.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;
using TJson = nlohmann::json;

namespace {

// ---------------------------------------------------------------- the header

/// A picture's address whose bytes are a PNG file of a size that a browser shows.
std::string GetPicture(const TRunLine& ALine) {
  constexpr std::string_view Prefix = "data:image/png;base64,";
  std::string Result = ALine.GetText("picture");
  if (!Result.starts_with(Prefix)) ALine.Refuse("'picture' is no PNG picture");
  try {
    const auto [Width, Height] =
        ReadPictureSize(DecodeBase64(Result.substr(Prefix.size())), ALine.GetPlace());
    if (std::max(Width, Height) > MaxRunPictureSide)
      ALine.Refuse(fmt::format("'picture' has more than {} pixels a side", MaxRunPictureSide));
  } catch (const EConvertError&) {
    ALine.Refuse("'picture' is no Base64");
  }
  if (Result.find_first_of(" \t\r\n") != std::string::npos)
    ALine.Refuse("'picture' has blanks in it");
  return Result;
}

TRunRecord::TMap ReadMap(const TRunLine& ALine) {
  TRunRecord::TMap Result;
  Result.Name = ALine.GetText("name");
  Result.Rect = ALine.GetRect("rect");
  Result.Units = ALine.GetText("units");
  constexpr std::array Known{"Centimeters", "Meters", "Inches"};
  if (std::find(Known.begin(), Known.end(), Result.Units) == Known.end())
    ALine.Refuse("'units' is not Centimeters, Meters or Inches");
  if (!ALine.Has("picture")) return Result;
  Result.Picture = GetPicture(ALine);
  Result.PictureRect = ALine.GetRect("pictureRect");
  return Result;
}

/// What a beacon sends, for people: the parts that are there.
std::string IdentityOf(const TRunLine& ALine) {
  std::string Result = ALine.GetText("kind");
  for (const char* Name : {"uuid", "namespace", "instance"})
    if (ALine.Has(Name)) (Result += ' ') += ALine.GetText(Name);
  for (const char* Name : {"major", "minor"})
    if (ALine.Has(Name))
      Result += fmt::format(" {} {:.0f}", Name, ALine.GetNumber(Name, -1e10, 1e10));
  return Result;
}

std::vector<TPointF> OutlineOf(const TRunLine& ALine) {
  std::vector<TPointF> Result;
  for (const TJson& Point : ALine.GetArray("outline"))
    Result.push_back(ALine.GetPoint(Point, "outline"));
  return Result;
}

void ReadHeader(const TRunLine& ALine, TRunRecord& ARun) {
  if (!ALine.Has("run") || ALine.GetInteger("run", 0, 1'000'000) != 1)
    ALine.Refuse("this is no run file that is understood: its first line has no \"run\": 1");
  ARun.Project = ALine.GetText("project");
  ARun.Source = ALine.GetText("source");
  const auto ForEach = [&ALine](const char* AName, const auto& ARead) {
    const TJson& Items = ALine.GetArray(AName);
    if (Items.size() > MaxRunItems)
      ALine.Refuse(fmt::format("'{}' holds more than {}", AName, MaxRunItems));
    for (const TJson& Item : Items) ARead(TRunLine(Item, ALine.GetPlace()));
  };
  const auto MapOf = [&ARun](const TRunLine& AItem) {
    return AItem.GetIndex("map", ARun.Maps.size());
  };
  ForEach("maps", [&](const TRunLine& AItem) { ARun.Maps.push_back(ReadMap(AItem)); });
  if (ARun.Maps.empty()) ALine.Refuse("the run has no map");
  ForEach("beacons", [&](const TRunLine& AItem) {
    ARun.Beacons.push_back(
        {AItem.GetText("name"), MapOf(AItem), AItem.GetPoint("x", "y"), IdentityOf(AItem)});
  });
  ForEach("zones", [&](const TRunLine& AItem) {
    ARun.Zones.push_back({AItem.GetText("name"), MapOf(AItem), OutlineOf(AItem)});
  });
  ForEach("edges", [&](const TRunLine& AItem) {
    ARun.Edges.push_back({MapOf(AItem), AItem.GetPoint("from"), AItem.GetPoint("to")});
  });
  ForEach("pois", [&](const TRunLine& AItem) {
    const bool IsPathNode = !AItem.Has("type") || AItem.GetText("type") == "poiPathNode";
    ARun.Pois.push_back(
        {AItem.GetText("name"), MapOf(AItem), AItem.GetPoint("x", "y"), IsPathNode});
  });
}

// ---------------------------------------------------------------- events

/// Takes the events in, line by line, and follows which floor and which zones the device is on.
class TEventReader {
 public:
  explicit TEventReader(TRunRecord& ARun) : FRun(ARun) {
    constexpr std::size_t MaxOfOneName = 100;
    for (std::size_t I = 0; I < FRun.Zones.size(); ++I)
      if (auto& Zones = FZones[FRun.Zones[I].Name]; Zones.size() < MaxOfOneName)
        Zones.push_back(static_cast<int>(I));
    FIsInside.resize(FRun.Zones.size());
  }

  void Read(const TRunLine& ALine) {
    const double Seconds = ALine.GetTime();
    FRun.End = std::max(FRun.End, Seconds);
    const std::string Event = ALine.GetText("event");
    if (Event == "Position") return AddPosition(ALine, Seconds);
    if (Event == "Signal")
      FRun.Signals.push_back({Seconds,
                              ALine.GetIndex("beacon", FRun.Beacons.size()),
                              ALine.GetInteger("rssi", MinRunRssi, MaxRunRssi)});
    else if (Event == "Truth")
      FRun.Truth.push_back(
          {Seconds, ALine.GetIndex("map", FRun.Maps.size()), ALine.GetPoint("x", "y")});
    else if (Event == "MapChange")
      AddMapChange(ALine, Seconds);
    else if (Event == "ArrivedToPOI")
      FRun.Events.push_back({Seconds, Event, ALine.GetText("poi"), MapOf(ALine), -1, -1});
    else if (Event == "ZoneEnter" || Event == "ZoneExit")
      AddZone(ALine, Seconds, Event);
  }

 private:
  /// -1: the event was on no map.
  int MapOf(const TRunLine& ALine, const char* AName = "map") const {
    return ALine.GetInteger(AName, -1, static_cast<int>(FRun.Maps.size()) - 1);
  }

  void AddPosition(const TRunLine& ALine, double ASeconds) {
    FMap = ALine.GetIndex("map", FRun.Maps.size());
    const TPointF Place = ALine.GetPoint("x", "y");
    const TPointF OnPath = ALine.Has("pathX") ? ALine.GetPoint("pathX", "pathY") : Place;
    FRun.Positions.push_back({ASeconds, FMap, Place, OnPath});
  }

  void AddMapChange(const TRunLine& ALine, double ASeconds) {
    FMap = MapOf(ALine, "to");
    FRun.Events.push_back({ASeconds, "MapChange", {}, FMap, MapOf(ALine, "from"), -1});
  }

  void AddZone(const TRunLine& ALine, double ASeconds, const std::string& AEvent) {
    const std::string Name = ALine.GetText("zone");
    const int Zone = Find(Name, ALine.Has("map") ? MapOf(ALine) : FMap, AEvent == "ZoneExit");
    int Map = FMap;
    if (Zone >= 0) {
      FIsInside[static_cast<std::size_t>(Zone)] = AEvent == "ZoneEnter";
      Map = FRun.Zones[static_cast<std::size_t>(Zone)].Map;
    }
    FRun.Events.push_back({ASeconds, AEvent, Name, Map, -1, Zone});
  }

  /// Of the zones of one name: one that the device is in, or is not yet in; if possible on that
  /// map.
  int Find(const std::string& AName, int AMap, bool AIsInside) const {
    const auto Found = FZones.find(AName);
    if (Found == FZones.end()) return -1;
    const auto Rank = [&](int AZone) {
      const auto Index = static_cast<std::size_t>(AZone);
      return (FIsInside[Index] == AIsInside ? 2 : 0) + (FRun.Zones[Index].Map == AMap ? 1 : 0);
    };
    return *std::max_element(Found->second.begin(), Found->second.end(), [&](int A, int B) {
      return Rank(A) < Rank(B);
    });
  }

  TRunRecord& FRun;
  std::map<std::string, std::vector<int>> FZones;
  std::vector<bool> FIsInside;
  int FMap = 0;
};

template <class TItem>
void SortByTime(std::vector<TItem>& AItems) {
  std::stable_sort(AItems.begin(), AItems.end(), [](const TItem& A, const TItem& B) {
    return A.Seconds < B.Seconds;
  });
}

// ---------------------------------------------------------------- lines

/// Takes the first line off a text.
std::string_view TakeLine(std::string_view& AText) {
  const std::size_t End = std::min(AText.find('\n'), AText.size());
  const std::string_view Result = AText.substr(0, End);
  AText.remove_prefix(std::min(End + 1, AText.size()));
  return Result;
}

TJson ParseLine(std::string_view ALine, std::size_t AMaxSize, const std::string& APlace) {
  if (ALine.size() > AMaxSize)
    throw EFileError(
        fmt::format("{}: the line is longer than {} bytes; this is no run file", APlace, AMaxSize));
  TJson Result = TJson::parse(ALine, nullptr, false);
  if (Result.is_discarded())
    throw EFileError(fmt::format(
        "{}: this is no JSON; a run file begins with {{\"run\": 1 and has an object on each line",
        APlace));
  return Result;
}

}  // namespace

TRunRecord ParseRun(std::string_view AText, const std::string& AFileName) {
  std::string_view Rest = AText;
  TRunRecord Result;
  int Number = 1;
  const auto Place = [&] { return fmt::format("{}:{}", AFileName, Number); };
  ReadHeader(TRunLine(ParseLine(TakeLine(Rest), MaxRunHeaderSize, Place()), Place()), Result);
  TEventReader Events(Result);
  while (!Rest.empty()) {
    ++Number;
    const bool IsWhole = Rest.find('\n') != std::string_view::npos;
    const std::string_view Line = TakeLine(Rest);
    if (Line.empty()) continue;
    if (!IsWhole && Line.size() <= MaxRunLineSize && !TJson::accept(Line)) {
      Result.TornLine = Number;  // whoever wrote it was interrupted
      break;
    }
    const TJson Json = ParseLine(Line, MaxRunLineSize, Place());
    Events.Read(TRunLine(Json, Place()));
  }
  SortByTime(Result.Positions);
  SortByTime(Result.Truth);
  SortByTime(Result.Signals);
  SortByTime(Result.Events);
  return Result;
}

TRunRecord ReadRun(const std::string& AFileName) {
  return ParseRun(ReadWholeFile(AFileName, MaxRunSize), AFileName);
}

}  // namespace Wayfence
