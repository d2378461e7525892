#include <algorithm>
#include <utility>
#include <vector>

#include "positioning/System.Beacon.Fencing.PathFinder.h"

namespace System::Beacon::Fencing {
namespace {

bool IsNode(std::int32_t ANode, std::size_t ACount) {
  return ANode >= 0 && static_cast<std::size_t>(ANode) < ACount;
}

double WeightOf(const TPathPoint& A, const TPathPoint& B) {
  return A.second == B.second ? TRouteCalculator::Distance(A.first, B.first)
                              : TRouteCalculator::CostBetweenMaps;
}

}  // namespace

double TContiguityMatrix::TRow::operator[](std::int32_t AColumn) const {
  const auto Found = std::lower_bound(
      FLinks.begin(), FLinks.end(), AColumn, [](const TLink& ALink, std::int32_t ANode) {
        return ALink.Node < ANode;
      });
  return Found != FLinks.end() && Found->Node == AColumn ? Found->Weight : 0.0;
}

TContiguityMatrix::TRows TContiguityMatrix::GetRows() const {
  TRows Result;
  Result.FFirst = FFirst.begin();
  Result.FLinks = FLinks.begin();
  Result.FLength = FFirst.IsEmpty() ? 0 : static_cast<std::int32_t>(FFirst.GetLength()) - 1;
  return Result;
}

void TContiguityMatrix::Assign(const TArray<TPathPoint>& APoints, const TArray<TPathEdge>& AEdges) {
  const std::size_t Count = APoints.GetLength();
  std::vector<std::size_t> Degrees(Count + 1, 0);  // then: where each row begins
  const auto ForEachLink = [&](auto&& AVisit) {
    for (const auto& [A, B] : AEdges)
      if (IsNode(A, Count) && IsNode(B, Count) && A != B) AVisit(A, B), AVisit(B, A);
  };
  ForEachLink([&](std::int32_t A, std::int32_t) { ++Degrees[A + 1]; });
  for (std::size_t I = 0; I < Count; ++I) Degrees[I + 1] += Degrees[I];
  std::vector<TLink> Links(Degrees[Count]);
  std::vector<std::size_t> Next(Degrees.begin(), Degrees.end());
  ForEachLink([&](std::int32_t A, std::int32_t B) {
    Links[Next[A]++] = {B, WeightOf(APoints[A], APoints[B])};
  });

  std::vector<std::int32_t> RowFirst{0};
  std::vector<TLink> RowLinks;
  RowFirst.reserve(Count + 1);
  RowLinks.reserve(Links.size());
  for (std::size_t Row = 0; Row < Count; ++Row) {
    const auto First = Links.begin() + static_cast<std::ptrdiff_t>(Degrees[Row]);
    const auto Last = Links.begin() + static_cast<std::ptrdiff_t>(Degrees[Row + 1]);
    std::sort(First, Last, [](const TLink& A, const TLink& B) { return A.Node < B.Node; });
    for (auto I = First; I != Last; ++I)
      if (I->Weight != 0.0 && (I == First || I->Node != (I - 1)->Node)) RowLinks.push_back(*I);
    RowFirst.push_back(static_cast<std::int32_t>(RowLinks.size()));
  }
  FFirst = TArray<std::int32_t>(std::move(RowFirst));
  FLongestLink = 0.0;
  for (const TLink& Link : RowLinks)
    if (Link.Weight < TRouteCalculator::Unreached)
      FLongestLink = std::max(FLongestLink, Link.Weight);
  FLinks = TArray<TLink>(std::move(RowLinks));
}

}  // namespace System::Beacon::Fencing
