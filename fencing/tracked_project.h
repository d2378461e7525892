// A project as the map component works on it.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/threads.h"
#include "positioning/System.Beacon.Fencing.PositionCalculator.h"

namespace System::Beacon::Fencing {

class TCustomBeaconMapFencing;
class TTrackedProject;

/// Takes the estimates of one calculator. Lives as long as the project that it belongs to.
class TEstimateReceiver final : public TObject {
 public:
  TEstimateReceiver(TCustomBeaconMapFencing& AOwner,
                    TTrackedProject& AProject,
                    std::int32_t AMapIndex)
      : FOwner(AOwner), FProject(AProject), FMapIndex(AMapIndex) {}

  /// On the calculator's thread; calculator units.
  void Estimated(const TPointF& AEstimatedPoint, const TPointF& APointToPath);

 private:
  TCustomBeaconMapFencing& FOwner;
  TTrackedProject& FProject;
  const std::int32_t FMapIndex;
};

/// What estimates positions on one map. The calculator goes first.
struct TMapCalculator {
  std::unique_ptr<TEstimateReceiver> Receiver;
  TPathSegments Segments;  ///< map units
  std::unique_ptr<TPositionCalculator> Calculator;
};

/// The record of one project text, its calculators, and what the component has found out since it
/// was loaded: with another text all of that goes. Made and freed on the main thread; the project
/// is shared with the threads that work on it.
class TTrackedProject : public std::enable_shared_from_this<TTrackedProject> {
 public:
  using TZones = TArray<TRef<IDesignZone>>;

  TTrackedProject(TFencingProject AProject, std::string AText)
      : Project(std::move(AProject)), Text(std::move(AText)) {}

  /// A map of the project, the current one; nothing without one.
  TFencingMap* GetMap(std::int32_t AMapIndex);
  TFencingMap* GetCurrentMap() { return GetMap(Project.CurrentMapIndex); }
  /// The calculator of a map; nothing while there is none.
  TMapCalculator* GetCalculator(std::int32_t AMapIndex);
  TMapCalculator* GetCurrentCalculator() { return GetCalculator(Project.CurrentMapIndex); }
  /// Takes the handlers off all calculators: no estimate is handled any more. Main thread.
  void Disconnect();

  // Positions, calculator units. Any thread.
  void SetLastPoints(TPointF APoint, TPointF APathPoint);
  TPointF GetLastPoint() const;
  TPointF GetLastPathPoint() const;
  void SetLastCalculatedPosition(TPointF AValue);
  TPointF GetLastCalculatedPosition() const;

  // The zones that the application was told of. Any thread.
  TZones GetLastZones() const;
  void SetLastZones(TZones AValue);

  // The route that is shown, by the index of its point of interest. Any thread.
  std::optional<std::int32_t> GetRoute() const;
  void SetRoute(std::optional<std::int32_t> AValue);
  /// Takes the route away when it is still that one: one arrival tells of it. What is shown of it
  /// is cleared later.
  bool TakeRoute(std::int32_t AValue);
  /// Undoes that, unless the application has set or cleared a route since.
  void PutRouteBack(std::int32_t AValue);
  /// Shows no route any more when an arrival has left that to be done. Main thread.
  void ClearShownRoute();

  TFencingProject Project;  ///< what the runtime map works on, but for the current map: see there
  const std::string Text;
  /// One for each map; written before the threads run.
  std::vector<TMapCalculator> Calculators;
  /// Which of them is at work. Timer thread.
  std::int32_t CalculatorAtWork = -1;
  /// Its handler is not running any more: estimates come from one place at a time. Timer thread.
  void EndWork();

  // Guarded by the component's lock of map changes.
  std::int32_t ChangeMapAttempts = 0;
  std::int32_t LastNearestMap = 0;

 private:
  template <class T>
  T Read(T TTrackedProject::*AField) const {
    const std::lock_guard Guard(FLock);
    return this->*AField;
  }

  mutable std::mutex FLock;  // guards what follows
  TPointF FLastPoint, FLastPathPoint, FLastCalculatedPosition;
  TZones FLastZones;
  std::optional<std::int32_t> FRoute;
  bool FIsArrivalShown = false;  // the route was taken away, and is still shown
};

}  // namespace System::Beacon::Fencing
