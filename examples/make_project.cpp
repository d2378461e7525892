// Makes a project in code: a floor with beacons, zones and paths, written as a bundle.
#include <cstdio>

#include "map/project_builder.h"

using namespace System;
using namespace System::Beacon::Fencing::Scene::Beacons;

int main(int AnArgumentCount, char** AnArguments) {
  const char* const FileName = AnArgumentCount > 1 ? AnArguments[1] : "shop.xml";
  constexpr const char* UUID = "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6";
  try {
    TProjectBuilder Project("Shop");
    TMapBuilder Floor = Project.AddMap("Ground floor", 12, 8);  // metres
    if (AnArgumentCount > 2) Floor.SetPicture(AnArguments[2]);

    Describe(*Floor.AddZone("Entrance", {0, 0, 3, 8}), "greeting", "Welcome!");
    Floor.AddCircularZone("Till", {10, 2}, 1.5F);
    Floor.AddBeacon("Door", {0.5F, 4}, UUID, 1, 1);  // major 1, minor 1
    Floor.AddBeacon("Till", {10, 1}, UUID, 1, 2);
    Floor.AddBeacon("Shelf", {11.5F, 7.5F}, UUID, 1, 3);
    Floor.AddEddystone("Window", {6, 0.5F}, "00112233445566778899", "000000000001");

    const auto Aisle =
        Floor.AddPath("Aisle", {{"Way in", {1, 4}}, {"Crossing", {6, 4}}, {"Shelf", {11, 4}}});
    TMapBuilder::AddBranch(*Aisle, 1, {"Queue", {6, 2}});

    TMapBuilder Cellar = Project.AddMap("Cellar", 12, 8);
    Cellar.AddPath("Stock", {{"Stairs", {1, 1}}, {"Wine", {10, 7}}});
    Project.Connect("Shelf", "Stairs");

    Project.Save(FileName);  // a .zip is an archive, anything else XML
  } catch (const EGeneralError& Error) {
    std::fprintf(stderr, "%s\n", Error.what());
    return 1;
  }
  std::printf("wrote %s; 'wayfence check %s' looks it over\n", FileName, FileName);
}
