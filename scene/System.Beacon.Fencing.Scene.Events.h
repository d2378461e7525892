// Lists of event handlers, and how they are called. Scene thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/method.h"

namespace System::Beacon::Fencing::Scene {

using TEventMask = std::uint32_t;

/// The handlers of one owner, of all kinds. A kind is an id (16 bits) and a filter bit (8 or
/// higher) that is set when handlers of the kind may be there and cleared lazily. Outside emissions
/// the handlers of a kind stand together, in the order in which they were added; the same handler
/// may be there more than once.
///
/// A handler that is removed during an emission is cleared in its place and not called any more;
/// one that is added is put at the end of the list, and called in the same emission only when its
/// kind reaches the end. Whether an emission is running is one bit: the end of an emission that was
/// started inside another tidies the list up while the outer one walks on.
///
/// Nothing fails, but for want of memory. 16 bytes as long as no handler was added.
class TEventList {
 public:
  using TEvent = TAnyMethod;

  TEventList() = default;
  TEventList(const TEventList&) = delete;
  TEventList& operator=(const TEventList&) = delete;
  ~TEventList();

  void AddEvent(std::uint16_t AnId, TEvent AnEvent);
  /// The same, and sets the filter bit of the kind.
  void AddEvent(TEventMask AMask, std::uint16_t AnId, TEvent AnEvent);
  /// Removes the first handler that is equal, whatever its kind; clears the filter bit when no
  /// handler of the kind is left (not during an emission).
  void RemoveEvent(TEventMask AMask, std::uint16_t AnId, const TEvent& AnEvent);
  /// Removes the handlers of one receiver: of one kind, or of all.
  void RemoveEvent(std::uint16_t AnId, const TObject* AnObject);
  void RemoveEvent(const TObject* AnObject);

  /// Around an emission.
  void BeginCall() noexcept { EnableMask(Calling); }
  void EndCall() {
    DisableMask(Calling);
    if (IsEnabledMask(HasCleared | HasStrays)) TidyUp();
  }

  /// Exchanges two entries.
  void Swap(std::int32_t I, std::int32_t J) noexcept;
  /// Drops the entries that were cleared.
  void CleanUp() noexcept;
  /// The first (last) index of a kind; -1 when there is none.
  std::int32_t ContainsId(std::uint16_t AnId) const noexcept;
  std::int32_t ContainsIdBackwards(std::uint16_t AnId) const noexcept;

  /// Whether any of the bits is set.
  bool IsEnabledMask(TEventMask AMask) const noexcept { return (FMask & AMask) != 0; }
  void EnableMask(TEventMask AMask) noexcept { FMask |= AMask; }
  void DisableMask(TEventMask AMask) noexcept { FMask &= ~AMask; }

  std::int32_t GetEventCount() const noexcept { return FCount; }
  std::span<const std::uint16_t> GetIdList() const noexcept { return {Ids(), Count()}; }
  /// Parallel to `GetIdList`.
  std::span<const TEvent> GetEventList() const noexcept { return {Events(), Count()}; }

 private:
  // One allocation: the capacity, so many handlers, so many ids.
  struct alignas(TEvent) TStorage {
    std::uint32_t Capacity;
  };
  static constexpr TEventMask Calling = 1;
  static constexpr TEventMask HasCleared = 2;
  static constexpr TEventMask HasStrays = 4;  // entries that are out of their kind's run

  std::size_t Count() const noexcept { return static_cast<std::size_t>(FCount); }
  TEvent* Events() const noexcept {
    return FStorage ? reinterpret_cast<TEvent*>(FStorage + 1) : nullptr;
  }
  std::uint16_t* Ids() const noexcept {
    return FStorage ? reinterpret_cast<std::uint16_t*>(Events() + FStorage->Capacity) : nullptr;
  }
  static TStorage* NewStorage(std::uint32_t ACapacity);
  static void DeleteStorage(TStorage* AStorage) noexcept;
  void Grow();
  template <class TIsDropped>
  void RemoveAll(TIsDropped&& AIsDropped);
  void Regroup() noexcept;
  void TidyUp() noexcept;

  TEventMask FMask = 0;
  std::int32_t FCount = 0;
  TStorage* FStorage = nullptr;
};

/// Calls the handlers of a kind that takes these arguments. Whoever owns the list keeps it alive
/// meanwhile. What a handler raises ends the emission.
template <class... TArguments>
struct TEventCall {
  using TMethodType = TMethod<void(TArguments...)>;

  static void Call(TEventList& AList, TEventMask AMask, int AnId, TArguments... AArguments) {
    if (!AList.IsEnabledMask(AMask)) return;
    const auto Id = static_cast<std::uint16_t>(AnId);
    const std::int32_t First = AList.ContainsId(Id);
    if (First < 0) return AList.DisableMask(AMask);
    AList.BeginCall();
    const std::unique_ptr<TEventList, TEnd> End(&AList);
    for (std::int32_t I = First; I < AList.GetEventCount() && AList.GetIdList()[I] == Id; ++I) {
      const TEventList::TEvent Handler = AList.GetEventList()[I];  // may be removed meanwhile
      TMethodType::Call(Handler, AArguments...);
    }
  }

 private:
  struct TEnd {
    void operator()(TEventList* AList) const { AList->EndCall(); }
  };
};
/// The kinds without arguments.
using TEventCall0 = TEventCall<>;

}  // namespace System::Beacon::Fencing::Scene
