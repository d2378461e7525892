// Lists that grow at both ends.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <random>

#include "scene/child_list.h"

namespace System::Beacon::Fencing::Scene {
namespace {

TEST(TChildList, FindsItemsByTheirNumbersHoweverTheyComeAndGo) {
  std::mt19937 Random(5);
  TChildList<int> List;
  std::deque<int> Wanted;
  std::map<int, std::uint32_t> Numbers;
  const auto Renumber = [&](std::size_t AFirst) {
    for (std::size_t I = AFirst; I < List.size(); ++I) Numbers[List[I]] = List.GetNumber(I);
  };
  for (int Step = 1; Step <= 20'000; ++Step) {
    const auto Kind = Random() % 100;
    const bool IsShrinking = Step / 1000 % 2 == 1;
    if (!Wanted.empty() && Kind < (IsShrinking ? 60 : 40)) {
      const std::size_t At = Kind % 4 == 0 ? Random() % Wanted.size() : 0;
      Wanted.erase(Wanted.begin() + static_cast<std::ptrdiff_t>(At));
      Renumber(List.Erase(At));
    } else if (Kind % 3 == 0) {
      Wanted.push_back(Step);
      List.PushBack(Step);
      Renumber(List.size() - 1);
    } else {
      Wanted.push_front(Step);
      List.PushFront(Step);
      Numbers[Step] = List.GetNumber(0);
    }
    ASSERT_TRUE(std::equal(List.begin(), List.end(), Wanted.begin(), Wanted.end())) << Step;
    for (std::size_t I = 0; I < Wanted.size(); ++I)
      ASSERT_EQ(List.GetIndex(Numbers[Wanted[I]]), static_cast<int>(I)) << Step;
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
