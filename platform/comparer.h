// Orders as objects.
#pragma once

namespace System {

/// An order of `T`s.
template <class T>
class TComparer {
 public:
  virtual ~TComparer() = default;
  /// -1 when `ALeft` comes first, 1 when `ARight` does, else 0.
  virtual int Compare(const T& ALeft, const T& ARight) const = 0;
};

/// By `<`.
template <class T>
constexpr int CompareValues(const T& ALeft, const T& ARight) {
  return ALeft < ARight ? -1 : static_cast<int>(ARight < ALeft);
}

}  // namespace System
