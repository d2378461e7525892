// The component framework: assignable objects, owned collections with change notification, and
// components with an owner, free notification and the loading and design states.
// Everything here belongs to one thread at a time, normally the main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/enum_set.h"
#include "platform/errors.h"
#include "platform/method.h"
#include "platform/object.h"
#include "platform/reflection.h"

namespace System {

/// Raises `EComponentError` with one of the fixed texts.
[[noreturn]] void RaiseComponentError(std::string_view AMessage);

// ---------------------------------------------------------------- TPersistent

/// An object that can take over the contents of another.
class TPersistent : public TObject {
 public:
  FENCING_CLASS_INFO()

  /// Takes the contents of `ASource`: `ASource` is asked to assign itself to this object.
  /// Raises `EComponentError` for nothing and for a source that does not know this class.
  virtual void Assign(TPersistent* ASource);

 protected:
  /// Copies this object's contents into `ADest`; here: raises the assignment error.
  virtual void AssignTo(TPersistent* ADest);
  [[noreturn]] void RaiseAssignError(const TPersistent* ADest) const;
};

// ---------------------------------------------------------------- collections

class TCollection;

/// One item of a collection, which owns it. Not moved to another collection.
class TCollectionItem : public TPersistent {
 public:
  FENCING_CLASS_INFO()

  /// `ACollection` becomes the owner once the item is wholly made; see `TCollection::Add`.
  explicit TCollectionItem(TCollection* ACollection) noexcept : FCollection(ACollection) {}

  TCollection* GetCollection() const noexcept { return FCollection; }
  /// A number that no other item of the collection has had.
  int GetID() const noexcept { return FID; }
  /// The place in the collection. Moving an item notifies the collection.
  int GetIndex() const;
  void SetIndex(int AIndex);

  /// The text by which tools show the item; by default the class's short name.
  virtual std::string GetDisplayName() const;
  /// By default notifies the collection and stores nothing.
  virtual void SetDisplayName(const std::string& AValue);

 protected:
  /// Notifies the collection: of this item, or of all.
  void Changed(bool AAllItems);

 private:
  friend class TCollection;
  TCollection* const FCollection;
  int FID = -1;  // -1 until the item has been added
};

/// Makes the items of a collection.
using TCollectionItemClass = std::unique_ptr<TCollectionItem> (*)(TCollection* ACollection);

/// The item class for items of class `T`.
template <class T>
std::unique_ptr<TCollectionItem> MakeItem(TCollection* ACollection) {
  return std::make_unique<T>(ACollection);
}

/// An ordered list of items of one class, which it owns.
class TCollection : public TPersistent {
 public:
  FENCING_CLASS_INFO()

  explicit TCollection(TCollectionItemClass AItemClass) : FItemClass(AItemClass) {}
  ~TCollection() override;

  /// Makes an item, adds it at the end (or at `AIndex`) and notifies. When the item's constructor
  /// raises, the collection is as it was. Indexes out of range raise `EComponentError`.
  TCollectionItem* Add();
  TCollectionItem* Insert(int AIndex);
  void Delete(int AIndex);
  void Clear();

  int GetCount() const noexcept { return static_cast<int>(FItems.size()); }
  TCollectionItem* GetItem(int AIndex) const;
  /// The item at `AIndex` takes the contents of `AValue`.
  void SetItem(int AIndex, TCollectionItem* AValue);

  /// Between the two, no notification is sent; the last `EndUpdate` sends one for all items.
  void BeginUpdate() noexcept { ++FUpdateCount; }
  void EndUpdate();

  /// Takes copies of the items of another collection in place of its own.
  void Assign(TPersistent* ASource) override;

 protected:
  /// Called after a change of one item, or of several (nothing), unless updates are held back.
  virtual void Update(TCollectionItem* AItem);
  /// Runs `AChange`, which changes the list of items; overrides may guard it.
  virtual void ChangeContents(const std::function<void()>& AChange);
  void Changed();

 private:
  friend class TCollectionItem;
  void CheckIndex(int AIndex, int ALimit) const;
  int IndexOf(const TCollectionItem* AItem) const;
  void Move(int AFrom, int ATo);

  const TCollectionItemClass FItemClass;
  std::vector<std::unique_ptr<TCollectionItem>> FItems;
  int FUpdateCount = 0;
  int FNextID = 0;
};

/// A collection that knows the object it belongs to.
class TOwnedCollection : public TCollection {
 public:
  FENCING_CLASS_INFO()

  TOwnedCollection(TPersistent* AOwner, TCollectionItemClass AItemClass)
      : TCollection(AItemClass), FOwner(AOwner) {}
  TPersistent* GetOwner() const noexcept { return FOwner; }

 private:
  TPersistent* const FOwner;
};

// ---------------------------------------------------------------- TComponent

enum class TComponentStateFlag : std::uint8_t { Loading, Designing, Destroying };
using TComponentState = TSet<TComponentStateFlag>;

enum class TOperation : std::uint8_t { Insert, Remove };

/// A part of an application. An owner frees the components it owns, last to first; one without an
/// owner belongs to whoever made it. Components with an owner are made with `new`.
class TComponent : public TPersistent {
 public:
  FENCING_CLASS_INFO()

  explicit TComponent(TComponent* AOwner);
  ~TComponent() override;

  TComponent* GetOwner() const noexcept { return FOwner; }
  int GetComponentCount() const noexcept { return static_cast<int>(FComponents.size()); }
  TComponent* GetComponent(int AIndex) const;
  /// Among the components of one owner a name is unique, letter case ignored; empty is none.
  const std::string& GetName() const noexcept { return FName; }
  void SetName(const std::string& AValue);
  TComponentState GetComponentState() const noexcept { return FState; }

  /// Asks that `AComponent` be told (`Notification`) when this component is destroyed.
  void FreeNotification(TComponent* AComponent);
  void RemoveFreeNotification(TComponent* AComponent);

  /// Streaming: properties are set between the two; `EndLoading` calls `Loaded`.
  void BeginLoading() { FState.Include(TComponentStateFlag::Loading); }
  void EndLoading();
  /// Ends a streaming that failed: `Loaded` is not called.
  void CancelLoading() { FState.Exclude(TComponentStateFlag::Loading); }
  /// In the design state a component holds its properties but does not act.
  void SetDesigning(bool AValue);

 protected:
  /// Called after the last property was streamed in; overrides call the inherited one first.
  virtual void Loaded();
  /// Tells that `AComponent` was made with this owner, or is being destroyed.
  virtual void Notification(TComponent* AComponent, TOperation AOperation);

 private:
  TComponent* const FOwner;
  std::string FName;
  TComponentState FState;
  std::vector<TComponent*> FComponents;    // owned
  std::vector<TComponent*> FFreeNotifies;  // both directions: to be told, and telling
};

}  // namespace System
