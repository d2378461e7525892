#include "apps/wayfence/example_project.h"

#include <array>
#include <initializer_list>

#include "platform/drawing.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing::Scene::Beacons;

namespace {

constexpr float Width = 20.0F;
constexpr float Height = 12.0F;
constexpr float PixelsPerMetre = 40.0F;
// Of zones.
constexpr TAlphaColor Blue{0xFF7DA7D9}, Teal{0xFF7CC4B0}, Amber{0xFFE8B84B}, Rose{0xFFD99AB5},
    Sand{0xFFD8CDB0};
constexpr const char* UUID = "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6";
constexpr const char* Namespace = "00112233445566778899";

struct TWall {
  TPointF From;
  TPointF To;
};

/// A floor with its rooms tinted and its walls drawn, as the bytes of a PNG file.
std::string DrawFloor(std::initializer_list<TRectF> ARooms, std::initializer_list<TWall> AWalls) {
  TDrawing Drawing(static_cast<int>(Width * PixelsPerMetre),
                   static_cast<int>(Height * PixelsPerMetre));
  Drawing.Clear(TAlphaColor{0xFFFAFAF5});
  Drawing.SetMatrix(TMatrix::Scaling(PixelsPerMetre, PixelsPerMetre));
  Drawing.SetFill({.Color = TAlphaColor{0xFFE6ECF2}});
  for (const TRectF& Room : ARooms) {
    TPath Path;
    Path.AddRect(Room);
    Drawing.Fill(Path);
  }
  Drawing.SetPen({.Paint = {.Color = TAlphaColor{0xFF5A6470}}, .Width = 5.0F});
  TPath Walls;
  Walls.AddRect({0.1F, 0.1F, Width - 0.1F, Height - 0.1F});
  for (const TWall& Wall : AWalls) {
    Walls.MoveTo(Wall.From);
    Walls.LineTo(Wall.To);
  }
  Drawing.Stroke(Walls);
  return EncodePng(*Drawing.GetPicture());
}

void AddBeacons(TMapBuilder& AMap, const std::string& AName, int AMajor) {
  constexpr std::array<TPointF, 6> Places{{{1, 1}, {10, 1}, {19, 1}, {1, 11}, {10, 11}, {19, 11}}};
  for (std::size_t I = 0; I < Places.size(); ++I) {
    const int Number = static_cast<int>(I) + 1;
    AMap.AddBeacon(AName + " " + std::to_string(Number), Places[I], UUID, AMajor, Number);
  }
}

/// A way from a point of the path to a place in a room, and on to the wall: a position beyond the
/// end of a path would be fitted to another one.
void AddWay(TMapPath& APath, int AFrom, const TNamedPoint& APlace, const TNamedPoint& AWall) {
  const auto Place = TMapBuilder::AddBranch(APath, AFrom, APlace);
  TMapBuilder::AddBranch(APath, Place->GetControlPointIndex(), AWall);
}

void FurnishGroundFloor(TMapBuilder AMap) {
  AMap.SetPicture("ground.png",
                  DrawFloor({{6, 0, 13, 4.5F}, {13, 0, 20, 4.5F}, {6, 7.5F, 20, 12}},
                            {{{6, 0}, {6, 4.5F}},
                             {{6, 4.5F}, {9, 4.5F}},
                             {{10, 4.5F}, {16, 4.5F}},
                             {{17, 4.5F}, {20, 4.5F}},
                             {{13, 0}, {13, 4.5F}},
                             {{6, 12}, {6, 7.5F}},
                             {{6, 7.5F}, {12, 7.5F}},
                             {{13, 7.5F}, {20, 7.5F}}}));
  Describe(*AMap.GetMap(), "level", "0");
  const auto Lobby = AMap.AddZone("Lobby", {0, 0, 6, 12});
  Lobby->SetFillColor(Sand);
  Describe(*Lobby, "opening hours", "8 to 18");
  AMap.AddZone("Meeting room", {6, 0, 13, 4.5F})->SetFillColor(Blue);
  AMap.AddZone("Kitchen", {13, 0, 20, 4.5F})->SetFillColor(Teal);
  AMap.AddCircularZone("Reception", {3, 3}, 1.5F)->SetFillColor(Amber);
  constexpr std::array<TPointF, 6> Workshop{
      {{6, 7.5F}, {20, 7.5F}, {20, 12}, {10, 12}, {10, 10}, {6, 10}}};
  AMap.AddPathZone("Workshop", Workshop)->SetFillColor(Rose);
  AddBeacons(AMap, "Ground", 1);
  AMap.AddEddystone("Reception desk", {3, 3}, Namespace, "000000000001");
  AMap.AddEddystone("Coffee machine", {16.5F, 1}, Namespace, "000000000002");
  const auto Hall = AMap.AddPath("Hall",
                                 {{"Entrance", {0, 6}},
                                  {"Lobby centre", {4, 6}},
                                  {"Meeting room door", {9.5F, 6}},
                                  {"Workshop door", {12.5F, 6}},
                                  {"Kitchen door", {16.5F, 6}},
                                  {"Stairs, ground floor", {19, 6}},
                                  {"Side entrance", {20, 6}}});
  Describe(*TMapBuilder::GetNode(*Hall, 0), "category", "exit");
  TMapBuilder::AddBranch(*Hall, 1, {"Reception desk front", {3, 4.5F}});
  AddWay(*Hall, 2, {"Meeting table", {9.5F, 2.5F}}, {"Meeting room window", {9.5F, 0}});
  AddWay(*Hall, 3, {"Workbench", {12.5F, 10}}, {"Workshop window", {12.5F, Height}});
  AddWay(*Hall, 4, {"Coffee machine", {16.5F, 2}}, {"Kitchen window", {16.5F, 0}});
}

void FurnishUpperFloor(TMapBuilder AMap) {
  AMap.SetPicture("upper.png",
                  DrawFloor({{0, 0, 10, 4.5F}, {10, 0, 20, 4.5F}, {0, 7.5F, 14, 12}},
                            {{{0, 4.5F}, {4, 4.5F}},
                             {{5, 4.5F}, {14, 4.5F}},
                             {{15, 4.5F}, {20, 4.5F}},
                             {{10, 0}, {10, 4.5F}},
                             {{0, 7.5F}, {6, 7.5F}},
                             {{7, 7.5F}, {14, 7.5F}},
                             {{14, 7.5F}, {14, 12}}}));
  Describe(*AMap.GetMap(), "level", "1");
  AMap.AddZone("Office", {0, 0, 10, 4.5F})->SetFillColor(Blue);
  AMap.AddZone("Laboratory", {10, 0, 20, 4.5F})->SetFillColor(Teal);
  const auto Library = AMap.AddZone("Library", {0, 7.5F, 14, 12});
  Library->SetFillColor(Rose);
  Describe(*Library, "quiet", "yes");
  AMap.AddCircularZone("Sofa", {17, 10}, 1.5F)->SetFillColor(Amber);
  AddBeacons(AMap, "Upper", 2);
  AMap.AddEddystone("Bookshelf", {6.5F, 11}, Namespace, "000000000003");
  const auto Gallery = AMap.AddPath("Gallery",
                                    {{"Window", {0, 6}},
                                     {"Office door", {4.5F, 6}},
                                     {"Library door", {6.5F, 6}},
                                     {"Laboratory door", {14.5F, 6}},
                                     {"Stairs, upper floor", {19, 6}},
                                     {"East window", {20, 6}}});
  AddWay(*Gallery, 1, {"Desk", {4.5F, 2}}, {"Office window", {4.5F, 0}});
  AddWay(*Gallery, 2, {"Bookshelf", {6.5F, 10}}, {"Library window", {6.5F, Height}});
  AddWay(*Gallery, 3, {"Microscope", {14.5F, 2}}, {"Laboratory window", {14.5F, 0}});
}

}  // namespace

TProjectBuilder MakeExampleProject() {
  TProjectBuilder Result("Example office");
  FurnishGroundFloor(Result.AddMap("Ground floor", Width, Height));
  FurnishUpperFloor(Result.AddMap("Upper floor", Width, Height));
  Result.Connect("Stairs, ground floor", "Stairs, upper floor");
  return Result;
}

std::string_view GetExampleWalk() {
  return R"({
  "speed": 1.2,
  "interval": 0.1,
  "points": [
    {"map": 0, "x": 1.0, "y": 6.0, "wait": 5.0},
    {"node": "Meeting table", "wait": 10.0},
    {"node": "Coffee machine", "wait": 5.0},
    {"node": "Bookshelf", "wait": 10.0}
  ]
}
)";
}

}  // namespace Wayfence
