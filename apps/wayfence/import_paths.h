// Lines of a floor, joined where they meet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "apps/wayfence/import_floor.h"

namespace Wayfence {

/// Lines that hang together, as nodes and what joins them.
struct TPathGraph {
  std::string Name;  ///< of its first line that has one
  std::vector<TPlace> Nodes;
  std::vector<std::pair<std::int32_t, std::int32_t>> Edges;
  /// What is told of the nodes: of a line at its first node, of a point where it lies.
  struct TNote {
    std::int32_t Node = 0;
    const TImportedThing* Thing = nullptr;
    const TImportedPoint* Point = nullptr;  ///< the point that it is told by; null: a line
  };
  std::vector<TNote> Notes;
};

/// Places that are the same when they are at most a centimetre apart.
class TPlaceIndex {
 public:
  std::optional<std::size_t> Find(TPlace APlace) const;
  /// The number of the place, which is a new one when none is there yet.
  std::size_t Add(TPlace APlace);
  const std::vector<TPlace>& GetPlaces() const { return FPlaces; }

 private:
  using TCell = std::pair<std::int64_t, std::int64_t>;
  struct THash {
    std::size_t operator()(const TCell& ACell) const noexcept;
  };

  std::vector<TPlace> FPlaces;
  std::unordered_multimap<TCell, std::size_t, THash> FByCell;  // squares of a centimetre
};

/// Joins the lines of a floor, which is in metres, wherever two of their points are the same. A
/// point that lies on none of theirs is told in `AWarnings`. The result points into the floor.
std::vector<TPathGraph> JoinLines(const TImportedFloor& AFloor, TWarnings& AWarnings);

}  // namespace Wayfence
