#include "platform/components.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/messages.h"

namespace System {
namespace {

template <class T>
void RemoveValue(std::vector<T*>& AItems, const T* AItem) {
  AItems.erase(std::remove(AItems.begin(), AItems.end(), AItem), AItems.end());
}

}  // namespace

void RaiseComponentError(std::string_view AMessage) {
  throw EComponentError(std::string(AMessage));
}

// ---------------------------------------------------------------- TPersistent

const TClassInfo& TPersistent::ClassInfo() {
  static const TClassInfo Info{.Name = "System.TPersistent", .Base = &TObject::ClassInfo()};
  return Info;
}

void TPersistent::Assign(TPersistent* ASource) {
  if (ASource)
    ASource->AssignTo(this);
  else
    RaiseAssignError(this);
}

void TPersistent::AssignTo(TPersistent* ADest) {
  RaiseAssignError(ADest);
}

void TPersistent::RaiseAssignError(const TPersistent* ADest) const {
  const std::string_view Source = ADest == this ? "nil" : GetClassInfo().GetShortName();
  const std::string_view Dest = ADest ? ADest->GetClassInfo().GetShortName() : "nil";
  throw EComponentError(fmt::format(fmt::runtime(Messages::SAssignError), Source, Dest));
}

// ---------------------------------------------------------------- TCollectionItem

const TClassInfo& TCollectionItem::ClassInfo() {
  static const TClassInfo Info{.Name = "System.TCollectionItem", .Base = &TPersistent::ClassInfo()};
  return Info;
}

int TCollectionItem::GetIndex() const {
  return FCollection->IndexOf(this);
}

void TCollectionItem::SetIndex(int AIndex) {
  const int Current = GetIndex();
  if (AIndex == Current) return;
  FCollection->CheckIndex(AIndex, FCollection->GetCount());
  FCollection->Move(Current, AIndex);
}

std::string TCollectionItem::GetDisplayName() const {
  return std::string(GetClassInfo().GetShortName());
}

void TCollectionItem::SetDisplayName(const std::string&) {
  Changed(false);
}

void TCollectionItem::Changed(bool AAllItems) {
  if (FID < 0 || FCollection->FUpdateCount > 0) return;
  FCollection->Update(AAllItems ? nullptr : this);
}

// ---------------------------------------------------------------- TCollection

const TClassInfo& TCollection::ClassInfo() {
  static const TClassInfo Info{.Name = "System.TCollection", .Base = &TPersistent::ClassInfo()};
  return Info;
}

TCollection::~TCollection() = default;

TCollectionItem* TCollection::Add() {
  return Insert(GetCount());
}

TCollectionItem* TCollection::Insert(int AIndex) {
  CheckIndex(AIndex, GetCount() + 1);
  std::unique_ptr<TCollectionItem> Item = FItemClass(this);
  TCollectionItem* const Result = Item.get();
  ChangeContents([&] { FItems.insert(FItems.begin() + AIndex, std::move(Item)); });
  Result->FID = FNextID++;
  Changed();
  return Result;
}

void TCollection::Delete(int AIndex) {
  CheckIndex(AIndex, GetCount());
  std::unique_ptr<TCollectionItem> Leaving;
  ChangeContents([&] {
    Leaving = std::move(FItems[static_cast<std::size_t>(AIndex)]);
    FItems.erase(FItems.begin() + AIndex);
  });
  Changed();
}

void TCollection::Clear() {
  if (FItems.empty()) return;
  std::vector<std::unique_ptr<TCollectionItem>> Leaving;
  ChangeContents([&] { Leaving.swap(FItems); });
  Changed();
}

TCollectionItem* TCollection::GetItem(int AIndex) const {
  CheckIndex(AIndex, GetCount());
  return FItems[static_cast<std::size_t>(AIndex)].get();
}

void TCollection::SetItem(int AIndex, TCollectionItem* AValue) {
  GetItem(AIndex)->Assign(AValue);
}

void TCollection::EndUpdate() {
  --FUpdateCount;
  Changed();
}

void TCollection::Assign(TPersistent* ASource) {
  auto* const Source = dynamic_cast<TCollection*>(ASource);
  if (!Source) {
    TPersistent::Assign(ASource);
    return;
  }
  if (Source == this) return;
  BeginUpdate();
  try {
    Clear();
    for (const auto& Item : Source->FItems) Add()->Assign(Item.get());
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TCollection::Update(TCollectionItem*) {}

void TCollection::ChangeContents(const std::function<void()>& AChange) {
  AChange();
}

void TCollection::Changed() {
  if (FUpdateCount == 0) Update(nullptr);
}

void TCollection::CheckIndex(int AIndex, int ALimit) const {
  if (AIndex < 0 || AIndex >= ALimit)
    throw EComponentError(fmt::format(
        fmt::runtime(Messages::SListIndexError), AIndex, GetClassInfo().GetShortName()));
}

int TCollection::IndexOf(const TCollectionItem* AItem) const {
  const auto Found = std::find_if(
      FItems.begin(), FItems.end(), [AItem](const auto& AOwned) { return AOwned.get() == AItem; });
  return Found == FItems.end() ? -1 : static_cast<int>(Found - FItems.begin());
}

void TCollection::Move(int AFrom, int ATo) {
  ChangeContents([&] {
    std::unique_ptr<TCollectionItem> Item = std::move(FItems[static_cast<std::size_t>(AFrom)]);
    FItems.erase(FItems.begin() + AFrom);
    FItems.insert(FItems.begin() + ATo, std::move(Item));
  });
  Changed();
}

const TClassInfo& TOwnedCollection::ClassInfo() {
  static const TClassInfo Info{.Name = "System.TOwnedCollection",
                               .Base = &TCollection::ClassInfo()};
  return Info;
}

// ---------------------------------------------------------------- TComponent

const TClassInfo& TComponent::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.TComponent",
      .Base = &TPersistent::ClassInfo(),
      .CreateComponent = [](TComponent* AOwner) { return std::make_unique<TComponent>(AOwner); }};
  return Info;
}

TComponent::TComponent(TComponent* AOwner) : FOwner(AOwner) {
  if (!FOwner) return;
  FOwner->FComponents.push_back(this);
  if (FOwner->FState.Contains(TComponentStateFlag::Designing))
    FState.Include(TComponentStateFlag::Designing);
  FOwner->Notification(this, TOperation::Insert);
}

TComponent::~TComponent() {
  FState.Include(TComponentStateFlag::Destroying);
  while (!FFreeNotifies.empty()) {
    TComponent* const Told = FFreeNotifies.back();
    RemoveFreeNotification(Told);
    Told->Notification(this, TOperation::Remove);
  }
  while (!FComponents.empty()) delete FComponents.back();
  if (FOwner) {
    RemoveValue(FOwner->FComponents, this);
    FOwner->Notification(this, TOperation::Remove);
  }
}

TComponent* TComponent::GetComponent(int AIndex) const {
  if (AIndex < 0 || AIndex >= GetComponentCount())
    throw EComponentError(fmt::format(
        fmt::runtime(Messages::SListIndexError), AIndex, GetClassInfo().GetShortName()));
  return FComponents[static_cast<std::size_t>(AIndex)];
}

void TComponent::SetName(const std::string& AValue) {
  if (AValue == FName) return;
  if (FOwner && !AValue.empty())
    for (const TComponent* Other : FOwner->FComponents)
      if (Other != this && SameName(Other->FName, AValue))
        throw EComponentError(fmt::format(fmt::runtime(Messages::SDuplicateName), AValue));
  FName = AValue;
}

void TComponent::FreeNotification(TComponent* AComponent) {
  if (!AComponent || AComponent == this) return;
  if (std::find(FFreeNotifies.begin(), FFreeNotifies.end(), AComponent) != FFreeNotifies.end())
    return;
  FFreeNotifies.push_back(AComponent);
  AComponent->FFreeNotifies.push_back(this);
}

void TComponent::RemoveFreeNotification(TComponent* AComponent) {
  if (!AComponent) return;
  RemoveValue(FFreeNotifies, AComponent);
  RemoveValue(AComponent->FFreeNotifies, this);
}

void TComponent::EndLoading() {
  if (FState.Contains(TComponentStateFlag::Loading)) Loaded();
}

void TComponent::SetDesigning(bool AValue) {
  if (AValue)
    FState.Include(TComponentStateFlag::Designing);
  else
    FState.Exclude(TComponentStateFlag::Designing);
}

void TComponent::Loaded() {
  FState.Exclude(TComponentStateFlag::Loading);
}

void TComponent::Notification(TComponent*, TOperation) {}

}  // namespace System
