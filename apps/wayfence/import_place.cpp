#include "apps/wayfence/import_place.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "platform/errors.h"

namespace Wayfence {
namespace {

constexpr double MaxSide = 1e5;  // metres

/// The rectangle about places; Left is above Right while there are none.
struct TBox {
  double Left = std::numeric_limits<double>::infinity();
  double Top = std::numeric_limits<double>::infinity();
  double Right = -std::numeric_limits<double>::infinity();
  double Bottom = -std::numeric_limits<double>::infinity();

  void Add(TPlace APlace) {
    Left = std::min(Left, APlace.X);
    Right = std::max(Right, APlace.X);
    Top = std::min(Top, APlace.Y);
    Bottom = std::max(Bottom, APlace.Y);
  }
  bool IsEmpty() const { return Left > Right; }
};

TBox BoxOf(TImportedFloor& AFloor) {
  TBox Result;
  ForEachPlace(AFloor, [&Result](TPlace APlace) { Result.Add(APlace); });
  return Result;
}

/// Longitude and latitude to metres east and south of an origin: the equirectangular projection
/// with the radii of curvature of the WGS 84 ellipsoid at the origin, east along the parallel
/// (the prime vertical) and south along the meridian. Right to millimetres over a building.
class TLocalPlane {
 public:
  explicit TLocalPlane(TPlace AnOrigin) : FOrigin(AnOrigin) {
    constexpr double SemiMajorAxis = 6378137.0;  // metres
    constexpr double Flattening = 1.0 / 298.257223563;
    constexpr double SquaredEccentricity = Flattening * (2.0 - Flattening);
    const double Latitude = AnOrigin.Y * Degree;
    const double Sine = std::sin(Latitude);
    const double W2 = 1.0 - SquaredEccentricity * Sine * Sine;
    const double PrimeVertical = SemiMajorAxis / std::sqrt(W2);
    FEast = PrimeVertical * std::cos(Latitude) * Degree;
    FNorth = PrimeVertical * (1.0 - SquaredEccentricity) / W2 * Degree;
  }

  TPlace Project(TPlace APlace) const {
    return {(APlace.X - FOrigin.X) * FEast, (FOrigin.Y - APlace.Y) * FNorth};
  }

 private:
  static constexpr double Degree = std::numbers::pi / 180.0;

  const TPlace FOrigin;
  double FEast = 0.0;  // metres for each degree
  double FNorth = 0.0;
};

/// Whether these can be longitudes and latitudes.
bool IsOnEarth(const TBox& ABox) {
  return ABox.Left >= -180.0 && ABox.Right <= 180.0 && ABox.Top >= -90.0 && ABox.Bottom <= 90.0;
}

TPlace Downwards(TPlace APlace, bool AIsYUp) {
  return {APlace.X, AIsYUp ? -APlace.Y : APlace.Y};
}

/// Where on the plan in metres the map of a floor begins.
TPlace CornerOf(const TBox& ABox, const TPlacing& APlacing) {
  if (APlacing.Origin) return Downwards(*APlacing.Origin, APlacing.IsYUp);
  if (APlacing.SizeOfMaps) return {0.0, APlacing.IsYUp ? -APlacing.SizeOfMaps->Y : 0.0};
  return ABox.IsEmpty() ? TPlace() : TPlace{ABox.Left, ABox.Top};
}

void ProjectFloor(TImportedFloor& AFloor, const TPlacing& APlacing) {
  const TBox Box = BoxOf(AFloor);
  if (!IsOnEarth(Box))
    throw System::EFileError(
        fmt::format("{}: floor '{}' reaches beyond 180 degrees of longitude or 90 of latitude; see "
                    "whether its coordinates are metres",
                    AFloor.Thing.Source,
                    AFloor.Thing.Name));
  const TPlace NorthWest{Box.Left, Box.Bottom};
  const TLocalPlane Plane(APlacing.Origin.value_or(Box.IsEmpty() ? TPlace() : NorthWest));
  ForEachPlace(AFloor, [&Plane](TPlace& APlace) { APlace = Plane.Project(APlace); });
}

void MoveFloor(TImportedFloor& AFloor, const TPlacing& APlacing) {
  ForEachPlace(AFloor, [&](TPlace& APlace) { APlace = Downwards(APlace, APlacing.IsYUp); });
  AFloor.Corner = CornerOf(BoxOf(AFloor), APlacing);
  const TPlace Corner = AFloor.Corner;
  ForEachPlace(AFloor, [Corner](TPlace& APlace) {
    APlace = {APlace.X - Corner.X, APlace.Y - Corner.Y};
  });
}

void SizeFloor(TImportedFloor& AFloor, const TPlacing& APlacing) {
  const TBox Box = BoxOf(AFloor);
  AFloor.Width = APlacing.SizeOfMaps ? APlacing.SizeOfMaps->X : Box.Right;
  AFloor.Height = APlacing.SizeOfMaps ? APlacing.SizeOfMaps->Y : Box.Bottom;
  const std::string& Source = AFloor.Thing.Source;
  if (!(AFloor.Width > 0.0 && AFloor.Height > 0.0))
    throw System::EFileError(fmt::format(
        "{}: floor '{}' has no area right of and below its origin; say how large it is with --size "
        "WIDTHxHEIGHT",
        Source,
        AFloor.Thing.Name));
  for (const double Coordinate : {-Box.Left, -Box.Top, Box.Right, Box.Bottom})
    if (Coordinate > MaxSide)
      throw System::EFileError(
          fmt::format("{}: floor '{}' reaches {:.0f} m from its origin, more than {:.0f}; see that "
                      "its coordinates are what --coordinates and --origin say",
                      Source,
                      AFloor.Thing.Name,
                      Coordinate,
                      MaxSide));
}

}  // namespace

bool AreDegrees(TImportedFloors& AFloors) {
  constexpr double MaxExtent = 0.1;
  TBox Box;
  for (TImportedFloor& Floor : AFloors)
    ForEachPlace(Floor, [&Box](TPlace APlace) { Box.Add(APlace); });
  return IsOnEarth(Box) && Box.Right - Box.Left < MaxExtent && Box.Bottom - Box.Top < MaxExtent;
}

void PlaceFloor(TImportedFloor& AFloor, bool AAreDegrees, const TPlacing& APlacing) {
  if (AAreDegrees)
    ProjectFloor(AFloor, APlacing);
  else
    MoveFloor(AFloor, APlacing);
  SizeFloor(AFloor, APlacing);
  if (AAreDegrees && APlacing.IsYUp) AFloor.Corner.Y = -AFloor.Height;
}

TPlace PlaceOnMap(const TImportedFloor& AFloor, TPlace APlace, const TPlacing& APlacing) {
  const TPlace Place = Downwards(APlace, APlacing.IsYUp);
  return {Place.X - AFloor.Corner.X, Place.Y - AFloor.Corner.Y};
}

}  // namespace Wayfence
