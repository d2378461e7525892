#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "scene/System.Beacon.Fencing.Scene.Events.h"

namespace System::Beacon::Fencing::Scene {

TEventList::~TEventList() {
  DeleteStorage(FStorage);
}

// ---------------------------------------------------------------- storage

TEventList::TStorage* TEventList::NewStorage(std::uint32_t ACapacity) {
  static_assert(sizeof(TStorage) % alignof(TEvent) == 0);
  void* const Memory =
      ::operator new(sizeof(TStorage) + ACapacity * (sizeof(TEvent) + sizeof(std::uint16_t)));
  auto* const Result = new (Memory) TStorage{ACapacity};
  auto* const Handlers = reinterpret_cast<TEvent*>(Result + 1);
  std::uninitialized_value_construct_n(Handlers, ACapacity);
  std::uninitialized_value_construct_n(reinterpret_cast<std::uint16_t*>(Handlers + ACapacity),
                                       ACapacity);
  return Result;
}

void TEventList::DeleteStorage(TStorage* AStorage) noexcept {
  if (!AStorage) return;
  std::destroy_n(reinterpret_cast<TEvent*>(AStorage + 1), AStorage->Capacity);
  ::operator delete(AStorage);
}

void TEventList::Grow() {
  constexpr std::uint32_t FirstCapacity = 2;
  TStorage* const Larger = NewStorage(FStorage ? 2 * FStorage->Capacity : FirstCapacity);
  TEvent* const OldEvents = Events();
  std::uint16_t* const OldIds = Ids();
  TStorage* const Old = std::exchange(FStorage, Larger);
  std::move(OldEvents, OldEvents + FCount, Events());
  std::copy_n(OldIds, FCount, Ids());
  DeleteStorage(Old);
}

// ---------------------------------------------------------------- adding

void TEventList::AddEvent(std::uint16_t AnId, TEvent AnEvent) {
  if (!FStorage || Count() == FStorage->Capacity) Grow();
  const std::int32_t Last = ContainsIdBackwards(AnId);
  std::int32_t At = FCount;
  if (Last >= 0 && IsEnabledMask(Calling))
    EnableMask(HasStrays);
  else if (Last >= 0)
    At = Last + 1;
  std::move_backward(Events() + At, Events() + FCount, Events() + FCount + 1);
  std::move_backward(Ids() + At, Ids() + FCount, Ids() + FCount + 1);
  Events()[At] = std::move(AnEvent);
  Ids()[At] = AnId;
  ++FCount;
}

void TEventList::AddEvent(TEventMask AMask, std::uint16_t AnId, TEvent AnEvent) {
  AddEvent(AnId, std::move(AnEvent));
  EnableMask(AMask);
}

// ---------------------------------------------------------------- removing
//
// A handler that goes may take the last reference of a callable with it, whose destructor may
// use the list: it goes when the list is in order again.

void TEventList::RemoveEvent(TEventMask AMask, std::uint16_t AnId, const TEvent& AnEvent) {
  TEvent* const Found = std::find(Events(), Events() + FCount, AnEvent);
  if (!AnEvent || Found == Events() + FCount) return;
  const TEvent Dropped = std::exchange(*Found, TEvent());
  if (IsEnabledMask(Calling)) return EnableMask(HasCleared);
  const std::ptrdiff_t At = Found - Events();
  std::move(Found + 1, Events() + FCount, Found);
  std::move(Ids() + At + 1, Ids() + FCount, Ids() + At);
  --FCount;
  if (ContainsId(AnId) < 0) DisableMask(AMask);
}

template <class TIsDropped>
void TEventList::RemoveAll(TIsDropped&& AIsDropped) {
  std::vector<TEvent> Dropped;
  for (std::int32_t I = 0; I < FCount; ++I)
    if (Events()[I] && AIsDropped(I)) Dropped.push_back(std::exchange(Events()[I], TEvent()));
  if (Dropped.empty()) return;
  if (IsEnabledMask(Calling))
    EnableMask(HasCleared);
  else
    CleanUp();
}

void TEventList::RemoveEvent(std::uint16_t AnId, const TObject* AnObject) {
  RemoveAll(
      [&](std::int32_t I) { return Ids()[I] == AnId && Events()[I].GetReceiver() == AnObject; });
}

void TEventList::RemoveEvent(const TObject* AnObject) {
  RemoveAll([&](std::int32_t I) { return Events()[I].GetReceiver() == AnObject; });
}

// ---------------------------------------------------------------- keeping order

void TEventList::TidyUp() noexcept {
  if (IsEnabledMask(HasCleared)) {
    DisableMask(HasCleared);
    CleanUp();
  }
  if (IsEnabledMask(HasStrays)) {
    Regroup();
    DisableMask(HasStrays);
  }
}

void TEventList::CleanUp() noexcept {
  std::int32_t Kept = 0;
  for (std::int32_t I = 0; I < FCount; ++I)
    if (Events()[I]) Swap(Kept++, I);
  FCount = Kept;
}

/// By exchanging entries whose ids are the wrong way round: not a stable order.
void TEventList::Regroup() noexcept {
  for (std::int32_t I = 0; I < FCount - 1; ++I)
    for (std::int32_t J = I + 1; J < FCount; ++J)
      if (Ids()[J] < Ids()[I]) Swap(I, J);
}

void TEventList::Swap(std::int32_t I, std::int32_t J) noexcept {
  std::swap(Events()[I], Events()[J]);
  std::swap(Ids()[I], Ids()[J]);
}

std::int32_t TEventList::ContainsId(std::uint16_t AnId) const noexcept {
  const std::uint16_t* const Found = std::find(Ids(), Ids() + FCount, AnId);
  return Found == Ids() + FCount ? -1 : static_cast<std::int32_t>(Found - Ids());
}

std::int32_t TEventList::ContainsIdBackwards(std::uint16_t AnId) const noexcept {
  std::int32_t Result = FCount - 1;
  while (Result >= 0 && Ids()[Result] != AnId) --Result;
  return Result;
}

}  // namespace System::Beacon::Fencing::Scene
