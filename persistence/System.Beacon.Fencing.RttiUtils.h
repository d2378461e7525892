// One way to see an object's properties: list them in a fixed order, read and write one by name,
// turn enumeration values into names, and make an object from its class name. Nothing here raises
// errors of its own; what a getter or setter raises passes through. Any thread, as far as the
// object itself allows.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ref.h"
#include "platform/reflection.h"

namespace System::Beacon::Fencing {

// ---------------------------------------------------------------- descriptors

/// One property of one object, which must outlive it.
class IProperty : public virtual IInterface {
 public:
  /// Writes through the setter. Ignored when the property cannot be written or is of another type.
  virtual void SetValue(const TValue& AValue) = 0;
  /// The empty value when the property cannot be read.
  virtual TValue GetValue() const = 0;
  virtual std::string GetName() const = 0;
  virtual bool IsString() const = 0;
  /// Nothing for a descriptor without a property.
  virtual const TTypeInfo* GetType() const = 0;
  virtual bool IsPublished() const = 0;

 protected:
  ~IProperty() = default;
};

class TProperty final : public TInterfacedObject, public virtual IProperty {
 public:
  /// Without an entry the descriptor has no name and no value.
  TProperty(TObject* AObject, const TPropertyInfo* AEntry) : FObject(AObject), FEntry(AEntry) {}

  void SetValue(const TValue& AValue) override;
  TValue GetValue() const override;
  std::string GetName() const override;
  bool IsString() const override;
  const TTypeInfo* GetType() const override;
  bool IsPublished() const override;

 private:
  TObject* const FObject;
  const TPropertyInfo* const FEntry;
};

using TProperties = std::vector<TRef<IProperty>>;

/// All properties: the object's own class first, then each base up to the root; within a class in
/// the order of its table.
TProperties GetProperties(TObject* AObject);
std::vector<std::string> GetPropertiesNames(TObject* AObject);
/// Whether the class or a base has a property of that name, letter case ignored.
bool HasProperty(TObject* AObject, std::string_view AName);
bool DoesObjectContainProperty(TObject* AObject, std::string_view AName);
TValue GetObjectPropertyValue(TObject* AObject, std::string_view AName);
void SetObjectPropertyValue(TObject* AObject, std::string_view AName, const TValue& AValue);

// ---------------------------------------------------------------- enumerations

/// The name of the value's ordinal; empty for anything that is no enumeration value.
std::string EnumToString(const TValue& AValue);
std::string EnumeratedToString(const TTypeInfo& AEnumeration, std::int64_t AOrdinal);
/// All names, in ordinal order.
std::vector<std::string> GetEnumeratedValues(const TTypeInfo& AEnumeration);

// ---------------------------------------------------------------- classes

/// Classes that are known by name. Any thread.
class TRttiContext {
 public:
  /// Adds a class; adding it again does nothing. The table lives as long as the process.
  void Register(const TClassInfo& AClass);
  /// By qualified name, letter case ignored; nothing when it is not known.
  const TClassInfo* FindClass(std::string_view AQualifiedName) const;

 private:
  mutable std::mutex FLock;                                        // guards FClasses
  std::map<std::string, const TClassInfo*, std::less<>> FClasses;  // by lower-case name
};

/// The one context of the process. Holds the classes of stored scenes from the start; others are
/// added by plain calls.
TRttiContext& GetSharedRttiContext();

/// A new object of a registered class that can be made without arguments; else nothing.
TRef<TInterfacedObject> CreateInstanceOfClass(std::string_view AQualifiedName);

/// The interface `T` when the object itself implements it; false for no object. Never touches
/// reference counts.
template <class T>
bool TransparentSupports(TObject* AObject, T*& AInterface) {
  AInterface = dynamic_cast<T*>(AObject);
  return AInterface != nullptr;
}

/// Exchanges two arrays.
template <class T>
void SwapArrays(T& A, T& B) noexcept {
  std::swap(A, B);
}

// ---------------------------------------------------------------- filtering and sorting

struct TRttiUtils {
  /// By name, letter case ignored, in the collation of the global locale.
  struct TPropertyComparer {
    bool operator()(const TRef<IProperty>& A, const TRef<IProperty>& B) const;
  };

  /// Those whose name contains the text, letter case ignored, in their order.
  static TProperties Filter(const TProperties& AProperties, std::string_view AText);
  static void Sort(TProperties& AProperties);
  /// Those that are named come first, in the order of the names; the rest follow by name. Of two
  /// descriptors with the same listed name the later one is kept.
  static void Sort(const std::vector<std::string>& ANames, TProperties& AProperties);
};

// ---------------------------------------------------------------- change tracking

/// Watches one object: while it lives, every virtual setter of a property that is entered appends a
/// change record. The object must outlive it. One thread at a time.
class TObjectInterceptor : public TObject, private ISetterObserver {
 public:
  struct TChange {
    std::string Property;
    TValue OldValue;  ///< read before the setter stored anything
    TValue NewValue;
  };

  /// Watches only when `AIsTracking`.
  TObjectInterceptor(TObject* AObject, bool AIsTracking);
  ~TObjectInterceptor() override;

  const std::vector<TChange>& GetChanges() const noexcept { return FChanges; }

 protected:
  /// Called after each record; here: nothing.
  virtual void PropertyChanged(const std::string& AProperty,
                               const TValue& AOldValue,
                               const TValue& ANewValue);

 private:
  void SetterEntered(const TPropertyInfo& AProperty, const TValue& ANewValue) override;

  TObject* const FObject;
  const bool FIsTracking;
  std::vector<TChange> FChanges;
};

}  // namespace System::Beacon::Fencing
