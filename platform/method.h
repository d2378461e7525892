// Handlers as values: who is called, and on which object.
#pragma once

#include <atomic>
#include <concepts>
#include <functional>
#include <type_traits>
#include <utility>

#include "platform/object.h"

namespace System {

/// Root of the holders that keep a callable for a `TMethod`; counted, on any thread.
class TCallableBase : public TObject {
 public:
  void AddRef() const noexcept { FRefCount.fetch_add(1, std::memory_order_relaxed); }
  void Release() const noexcept {
    if (FRefCount.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 private:
  mutable std::atomic<int> FRefCount{1};
};

/// A handler whose arguments are not known: code and receiver, 16 bytes. Two are equal when both
/// parts are. Keeps the callable behind it, if there is one. Lists of handlers of different kinds
/// are made of these.
class TAnyMethod {
 public:
  /// The code part: one writable object per bound method or kind of callable, so that no linker
  /// folds two of them into one. Handlers of one signature extend it by their entry point.
  struct TCodeBase {
    bool IsCounted;  // the receiver is a holder of a callable
  };

  TAnyMethod() = default;
  TAnyMethod(const TAnyMethod& AOther) noexcept : TAnyMethod(AOther.FCode, AOther.FReceiver) {
    if (FCode && FCode->IsCounted) Holder()->AddRef();
  }
  TAnyMethod(TAnyMethod&& AOther) noexcept
      : FCode(std::exchange(AOther.FCode, nullptr)),
        FReceiver(std::exchange(AOther.FReceiver, nullptr)) {}
  TAnyMethod& operator=(TAnyMethod AOther) noexcept {
    std::swap(FCode, AOther.FCode);
    std::swap(FReceiver, AOther.FReceiver);
    return *this;
  }
  ~TAnyMethod() {
    if (FCode && FCode->IsCounted) Holder()->Release();
  }

  explicit operator bool() const noexcept { return FCode != nullptr; }
  bool operator==(const TAnyMethod& AOther) const noexcept {
    return FCode == AOther.FCode && FReceiver == AOther.FReceiver;
  }
  TObject* GetReceiver() const noexcept { return FReceiver; }

 protected:
  TAnyMethod(TCodeBase* ACode, TObject* AReceiver) noexcept : FCode(ACode), FReceiver(AReceiver) {}

  TCodeBase* FCode = nullptr;
  TObject* FReceiver = nullptr;

 private:
  template <class TSignature>
  friend class TMethod;

  const TCallableBase* Holder() const noexcept {
    return static_cast<const TCallableBase*>(FReceiver);
  }
};

template <class TSignature>
class TMethod;

/// A handler: 16 bytes, comparable. Made by `Bind` from a member function (the receiver is not
/// owned and must outlive the handler), or from any callable, which is kept in a counted holder.
/// Two handlers are equal when code and receiver are. Calling an empty handler does nothing.
template <class... TArguments>
class TMethod<void(TArguments...)> : public TAnyMethod {
 public:
  struct TCode : TCodeBase {
    void (*Invoke)(TObject*, TArguments...);
  };

  TMethod() = default;
  TMethod(TCode* ACode, TObject* AReceiver) noexcept : TAnyMethod(ACode, AReceiver) {}

  template <class TCallable>
    requires(!std::derived_from<std::remove_cvref_t<TCallable>, TAnyMethod> &&
             std::invocable<std::remove_cvref_t<TCallable>&, TArguments...>)
  TMethod(TCallable&& ACallable)
      : TAnyMethod(
            &THolder<std::remove_cvref_t<TCallable>>::Code,
            new THolder<std::remove_cvref_t<TCallable>>(std::forward<TCallable>(ACallable))) {}

  void operator()(TArguments... AArguments) const {
    Call(*this, std::forward<TArguments>(AArguments)...);
  }
  /// Calls a handler that was a `TMethod` of this signature.
  static void Call(const TAnyMethod& AMethod, TArguments... AArguments) {
    if (AMethod.FCode)
      static_cast<TCode*>(AMethod.FCode)
          ->Invoke(AMethod.FReceiver, std::forward<TArguments>(AArguments)...);
  }

 private:
  template <class TCallable>
  struct THolder final : TCallableBase {
    explicit THolder(TCallable ACallable) : Callable(std::move(ACallable)) {}
    static void Invoke(TObject* AReceiver, TArguments... AArguments) {
      std::invoke(static_cast<THolder*>(AReceiver)->Callable,
                  std::forward<TArguments>(AArguments)...);
    }
    TCallable Callable;
    static inline TCode Code{{true}, &Invoke};
  };
};

namespace Detail {

template <class TClass, class TSignature, auto AMember>
struct TBound;

template <class TClass, class... TArguments, auto AMember>
struct TBound<TClass, void(TArguments...), AMember> {
  static void Invoke(TObject* AReceiver, TArguments... AArguments) {
    (static_cast<TClass*>(AReceiver)->*AMember)(std::forward<TArguments>(AArguments)...);
  }
  static inline typename TMethod<void(TArguments...)>::TCode Code{{false}, &Invoke};
};

template <class TClass, class... TArguments>
auto ReceiverOf(void (TClass::*)(TArguments...)) -> TClass*;
template <class TClass, class... TArguments>
auto SignatureOf(void (TClass::*)(TArguments...)) -> void (*)(TArguments...);

}  // namespace Detail

/// The handler that calls a member function of `AReceiver`: `Bind<&TPainter::NodeMoved>(this)`.
template <auto AMember>
auto Bind(decltype(Detail::ReceiverOf(AMember)) AReceiver) {
  using TClass = std::remove_pointer_t<decltype(Detail::ReceiverOf(AMember))>;
  using TSignature = std::remove_pointer_t<decltype(Detail::SignatureOf(AMember))>;
  return TMethod<TSignature>(&Detail::TBound<TClass, TSignature, AMember>::Code, AReceiver);
}

/// A notification with nothing but its sender.
using TNotifyEvent = TMethod<void(TObject* ASender)>;

/// The place of one handler. It is set and called on the main thread; whether it is assigned may
/// be asked on any thread.
template <class TSignature>
class TEventSlot {
 public:
  const TMethod<TSignature>& Get() const noexcept { return FMethod; }
  void Set(TMethod<TSignature> AMethod) noexcept {
    FMethod = std::move(AMethod);
    FIsAssigned.store(static_cast<bool>(FMethod), std::memory_order_release);
  }
  bool IsAssigned() const noexcept { return FIsAssigned.load(std::memory_order_acquire); }

 private:
  TMethod<TSignature> FMethod;
  std::atomic<bool> FIsAssigned{false};
};

}  // namespace System
