// Counted references: the count lives inside the object, a reference is one pointer.
#pragma once

#include <atomic>
#include <compare>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

#include "platform/object.h"

namespace System {

/// Root of every interface. Interfaces hold no data and extend each other by `public virtual`.
/// Counting is atomic: references may be taken and dropped on any thread.
class IInterface {
 public:
  virtual void AddRef() const noexcept = 0;
  virtual void Release() const noexcept = 0;
  /// The object behind the interface; two interfaces are the same when their objects are.
  virtual const TObject* GetObject() const noexcept = 0;

 protected:
  ~IInterface() = default;
};

/// A counted object. The last `Release` puts the count back to one, runs `BeforeDestruction`
/// while overrides still answer, then deletes.
class TInterfacedObject : public TObject, public virtual IInterface {
 public:
  void AddRef() const noexcept final { FRefCount.fetch_add(1, std::memory_order_relaxed); }
  void Release() const noexcept final;
  const TObject* GetObject() const noexcept final { return this; }

  /// Runs once, after the whole object is constructed and before anyone else sees it.
  virtual void AfterConstruction() {}
  /// Runs once, before destruction; a reference taken meanwhile must be dropped before it returns.
  virtual void BeforeDestruction() noexcept {}

 protected:
  TInterfacedObject() = default;
  TInterfacedObject(const TInterfacedObject&) = delete;
  TInterfacedObject& operator=(const TInterfacedObject&) = delete;
  ~TInterfacedObject() override = default;

 private:
  mutable std::atomic<int> FRefCount{1};
};

/// A counted reference to a `T` (an interface or a counted class); may be empty.
template <class T>
class TRef {
 public:
  TRef() = default;
  TRef(std::nullptr_t) {}
  TRef(T* AObject) : FObject(AObject) {
    if (FObject) FObject->AddRef();
  }
  TRef(const TRef& AOther) : TRef(AOther.FObject) {}
  TRef(TRef&& AOther) noexcept : FObject(std::exchange(AOther.FObject, nullptr)) {}
  template <class U>
    requires std::is_convertible_v<U*, T*> TRef(const TRef<U>& AOther)
        : TRef(static_cast<T*>(AOther.Get())) {}
    template <class U>
      requires std::is_convertible_v<U*, T*> TRef(TRef<U>&& AOther)
    noexcept : FObject(AOther.Detach()) {}
    ~TRef() {
      if (FObject) FObject->Release();
    }
    TRef& operator=(TRef AOther) noexcept {
      std::swap(FObject, AOther.FObject);
      return *this;
    }

    T* Get() const noexcept {
      return FObject;
    }
    T* operator->() const noexcept {
      return FObject;
    }
    T& operator*() const noexcept {
      return *FObject;
    }
    explicit operator bool() const noexcept {
      return FObject != nullptr;
    }
    bool operator==(const TRef& AOther) const noexcept {
      return FObject == AOther.FObject;
    }
    bool operator==(std::nullptr_t) const noexcept {
      return FObject == nullptr;
    }

    /// Takes over a count that the caller holds.
    static TRef Adopt(T* AObject) noexcept {
      TRef Result;
      Result.FObject = AObject;
      return Result;
    }
    /// Hands the count to the caller and becomes empty.
    T* Detach() noexcept {
      return std::exchange(FObject, nullptr);
    }

   private:
    T* FObject = nullptr;
};

/// Makes a counted object: construct, `AfterConstruction`, hand over.
template <class T, class... TArguments>
TRef<T> New(TArguments&&... AArguments) {
  TRef<T> Result = TRef<T>::Adopt(new T(std::forward<TArguments>(AArguments)...));
  Result->AfterConstruction();
  return Result;
}

/// The interface `T` of an object, or nothing; never touches the count.
template <class T, class U>
T* Supports(U* AObject) noexcept {
  return dynamic_cast<T*>(AObject);
}
template <class T, class U>
T* Supports(const TRef<U>& AObject) noexcept {
  return dynamic_cast<T*>(AObject.Get());
}

/// Whether two interface pointers belong to the same object (two empty ones do).
inline bool IsSame(const IInterface* A, const IInterface* B) noexcept {
  if (!A || !B) return A == B;
  return A == B || A->GetObject() == B->GetObject();
}

}  // namespace System

template <class T>
struct std::hash<System::TRef<T>> {
  std::size_t operator()(const System::TRef<T>& ARef) const noexcept {
    return std::hash<T*>{}(ARef.Get());
  }
};
