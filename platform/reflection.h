// Class and property tables: what a class is called, what it descends from, and its properties
// with their types, getters and setters. One hand-written table per class.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "platform/color.h"
#include "platform/enum_set.h"
#include "platform/geometry.h"
#include "platform/guid.h"
#include "platform/object.h"
#include "platform/ref.h"

namespace System {

// ---------------------------------------------------------------- types

enum class TTypeKind : std::uint8_t {
  Boolean,
  Word,
  Integer,
  Int64,
  Single,
  Double,
  String,
  Enumeration,
  Set,
  Color,
  GUID,
  Point,
  Rect,
  StringPair,
  IntegerPair,
  Object,
  Interface,
  Array,
  Event
};

/// A value type. There is one object per type: types are equal when their addresses are.
struct TTypeInfo {
  TTypeKind Kind;
  std::string_view Name;
  std::span<const std::string_view> Names = {};  ///< of an enumeration's ordinals, from 0
  const TTypeInfo* Element = nullptr;            ///< of a set or an array
  /// Of an interface: whether the object behind another one offers it.
  bool (*IsOfferedBy)(const IInterface* AInterface) = nullptr;
};

/// Specialised beside every enumeration that is a property: `Type`, the type's name, and `Names`,
/// an array of the names of its ordinals.
template <class TEnum>
struct TEnumNames;

/// Specialised beside every interface that is a property: `Value`, the interface's name.
template <class T>
struct TInterfaceName;

template <class T>
struct TTypeOf;

/// The type information of `T`.
template <class T>
const TTypeInfo& TypeOf() {
  return TTypeOf<std::remove_cvref_t<T>>::Info();
}

class TValue;
using TStringPair = std::pair<std::string, std::string>;
using TIntegerPair = std::pair<std::int32_t, std::int32_t>;

// ---------------------------------------------------------------- values

/// A value of any property type, with its type; or empty. Objects are not owned, interfaces are
/// counted. A plain value otherwise.
class TValue {
 public:
  using TData = std::variant<std::monostate,
                             bool,
                             std::int64_t,
                             double,
                             std::string,
                             TAlphaColor,
                             TGUID,
                             TPointF,
                             TRectF,
                             TStringPair,
                             TIntegerPair,
                             TObject*,
                             TRef<IInterface>,
                             std::vector<TValue>>;

  TValue() = default;
  TValue(const TTypeInfo& AType, TData AData) : FType(&AType), FData(std::move(AData)) {}

  /// The value of a C++ object of a property type.
  template <class T>
  static TValue From(const T& AValue) {
    return TValue(TypeOf<T>(), TTypeOf<T>::ToData(AValue));
  }
  /// The C++ object back; only for a value of that type.
  template <class T>
  T As() const {
    return TTypeOf<T>::FromData(FData);
  }

  bool IsEmpty() const { return FType == nullptr; }
  const TTypeInfo* GetType() const { return FType; }
  const TData& GetData() const { return FData; }
  /// The ordinal of an enumeration, the bits of a set, the value of an integer or a Boolean;
  /// 0 for any other.
  std::int64_t GetOrdinal() const;

  bool operator==(const TValue&) const = default;

 private:
  const TTypeInfo* FType = nullptr;
  TData FData;
};

// ---------------------------------------------------------------- properties and classes

/// One property of a class. `Get` or `Set` may be missing: it cannot be read or written.
struct TPropertyInfo {
  std::string_view Name;
  const TTypeInfo* Type;
  TValue (*Get)(TObject& AObject);
  void (*Set)(TObject& AObject, const TValue& AValue);
  bool IsPublished;
};

class TComponent;

/// A class: its qualified name, its base, how it is made, and its own properties in the order
/// in which they are stored.
struct TClassInfo {
  std::string_view Name;
  const TClassInfo* Base = nullptr;
  /// Makes a counted object; missing for abstract classes, components and collections.
  TRef<TInterfacedObject> (*Create)() = nullptr;
  /// Makes a component with the given owner; missing for every other class.
  std::unique_ptr<TComponent> (*CreateComponent)(TComponent* AOwner) = nullptr;
  std::vector<TPropertyInfo> Properties = {};

  /// What follows the last point of the qualified name.
  std::string_view GetShortName() const;
};

/// The property of that name, letter case ignored: of the class itself or the nearest base.
const TPropertyInfo* FindProperty(const TClassInfo& AClass, std::string_view AName);

/// Whether two ASCII names are equal, letter case ignored.
bool SameName(std::string_view A, std::string_view B) noexcept;

namespace Detail {

template <class TMember>
struct TMemberOf;
template <class TOwner, class TResult>
struct TMemberOf<TResult (TOwner::*)()> {
  using TClass = TOwner;
  using TType = std::remove_cvref_t<TResult>;
};
template <class TOwner, class TResult>
struct TMemberOf<TResult (TOwner::*)() const> : TMemberOf<TResult (TOwner::*)()> {};
template <class TOwner, class TResult>
struct TMemberOf<TResult (TOwner::*)() const noexcept> : TMemberOf<TResult (TOwner::*)()> {};

template <auto AGetter>
TValue GetProperty(TObject& AObject) {
  using TMember = TMemberOf<decltype(AGetter)>;
  using TType = typename TMember::TType;
  return TValue::From<TType>((static_cast<typename TMember::TClass&>(AObject).*AGetter)());
}

template <auto AGetter, auto ASetter>
void SetProperty(TObject& AObject, const TValue& AValue) {
  using TMember = TMemberOf<decltype(AGetter)>;
  (static_cast<typename TMember::TClass&>(AObject).*ASetter)(AValue.As<typename TMember::TType>());
}

}  // namespace Detail

/// A row of a class table: the property read and written through two member functions.
template <auto AGetter, auto ASetter>
TPropertyInfo Property(std::string_view AName, bool AIsPublished) {
  using TType = typename Detail::TMemberOf<decltype(AGetter)>::TType;
  return {AName,
          &TypeOf<TType>(),
          &Detail::GetProperty<AGetter>,
          &Detail::SetProperty<AGetter, ASetter>,
          AIsPublished};
}
template <auto AGetter>
TPropertyInfo ReadOnlyProperty(std::string_view AName, bool AIsPublished) {
  using TType = typename Detail::TMemberOf<decltype(AGetter)>::TType;
  return {AName, &TypeOf<TType>(), &Detail::GetProperty<AGetter>, nullptr, AIsPublished};
}
template <auto AGetter, auto ASetter>
TPropertyInfo Published(std::string_view AName) {
  return Property<AGetter, ASetter>(AName, true);
}
template <auto AGetter, auto ASetter>
TPropertyInfo Public(std::string_view AName) {
  return Property<AGetter, ASetter>(AName, false);
}
/// The row of an event: it has a name and a place in the order, its handler is no value.
TPropertyInfo EventProperty(std::string_view AName, bool AIsPublished);

// ---------------------------------------------------------------- watched setters

/// Hears of virtual setters that were entered; see `SetterEntered`.
class ISetterObserver {
 public:
  virtual void SetterEntered(const TPropertyInfo& AProperty, const TValue& ANewValue) = 0;

 protected:
  ~ISetterObserver() = default;
};

/// Registers an observer of one object. The observer leaves before it or the object dies.
void AddSetterObserver(TObject& AObject, ISetterObserver& AObserver);
void RemoveSetterObserver(TObject& AObject, ISetterObserver& AObserver);

namespace Detail {
extern std::atomic<int> SetterObservers;
void TellSetterObservers(TObject& AObject, std::string_view AProperty, const TValue& ANewValue);
}  // namespace Detail

/// Called first thing by a virtual setter of a property. Costs one test while nobody watches.
template <class T>
void SetterEntered(TObject& AObject, std::string_view AProperty, const T& ANewValue) {
  if (Detail::SetterObservers.load(std::memory_order_relaxed) > 0)
    Detail::TellSetterObservers(AObject, AProperty, TValue::From(ANewValue));
}

// ---------------------------------------------------------------- the property types

namespace Detail {

template <class T, class TStored, TTypeKind AKind>
struct TPlainType {
  static TValue::TData ToData(const T& AValue) { return static_cast<TStored>(AValue); }
  static T FromData(const TValue::TData& AData) { return static_cast<T>(std::get<TStored>(AData)); }
};

}  // namespace Detail

#define FENCING_PLAIN_TYPE(T, TStored, AKind, AName)                     \
  template <>                                                            \
  struct TTypeOf<T> : Detail::TPlainType<T, TStored, TTypeKind::AKind> { \
    static const TTypeInfo& Info() {                                     \
      static const TTypeInfo Value{TTypeKind::AKind, AName};             \
      return Value;                                                      \
    }                                                                    \
  }

FENCING_PLAIN_TYPE(bool, bool, Boolean, "Boolean");
FENCING_PLAIN_TYPE(std::uint16_t, std::int64_t, Word, "Word");
FENCING_PLAIN_TYPE(std::int32_t, std::int64_t, Integer, "Integer");
FENCING_PLAIN_TYPE(std::int64_t, std::int64_t, Int64, "Int64");
FENCING_PLAIN_TYPE(float, double, Single, "Single");
FENCING_PLAIN_TYPE(double, double, Double, "Double");
FENCING_PLAIN_TYPE(std::string, std::string, String, "string");
FENCING_PLAIN_TYPE(TAlphaColor, TAlphaColor, Color, "TAlphaColor");
FENCING_PLAIN_TYPE(TGUID, TGUID, GUID, "TGUID");
FENCING_PLAIN_TYPE(TPointF, TPointF, Point, "TPointF");
FENCING_PLAIN_TYPE(TRectF, TRectF, Rect, "TRectF");
FENCING_PLAIN_TYPE(TStringPair, TStringPair, StringPair, "TPair<string,string>");
FENCING_PLAIN_TYPE(TIntegerPair, TIntegerPair, IntegerPair, "TPair<Integer,Integer>");
#undef FENCING_PLAIN_TYPE

template <class TEnum>
  requires std::is_enum_v<TEnum>
struct TTypeOf<TEnum> {
  static const TTypeInfo& Info() {
    static const TTypeInfo Value{
        TTypeKind::Enumeration, TEnumNames<TEnum>::Type, TEnumNames<TEnum>::Names};
    return Value;
  }
  static TValue::TData ToData(TEnum AValue) { return static_cast<std::int64_t>(AValue); }
  static TEnum FromData(const TValue::TData& AData) {
    return static_cast<TEnum>(std::get<std::int64_t>(AData));
  }
};

template <class TEnum>
struct TTypeOf<TSet<TEnum>> {
  static const TTypeInfo& Info() {
    static const TTypeInfo Value{TTypeKind::Set, TEnumNames<TEnum>::Type, {}, &TypeOf<TEnum>()};
    return Value;
  }
  static TValue::TData ToData(TSet<TEnum> AValue) { return std::int64_t{AValue.GetBits()}; }
  static TSet<TEnum> FromData(const TValue::TData& AData) {
    return TSet<TEnum>::FromBits(static_cast<std::uint8_t>(std::get<std::int64_t>(AData)));
  }
};

/// An object that the holder of the property owns (an option set, a collection).
template <class T>
  requires std::is_base_of_v<TObject, T>
struct TTypeOf<T*> {
  static const TTypeInfo& Info() {
    static const TTypeInfo Value{TTypeKind::Object, T::ClassInfo().GetShortName()};
    return Value;
  }
  static TValue::TData ToData(T* AValue) { return static_cast<TObject*>(AValue); }
  static T* FromData(const TValue::TData& AData) {
    return static_cast<T*>(std::get<TObject*>(AData));
  }
};

/// A counted reference. An object that does not offer the interface reads back as nothing.
template <class T>
  requires std::is_base_of_v<IInterface, T>
struct TTypeOf<TRef<T>> {
  static const TTypeInfo& Info() {
    static const TTypeInfo Value{
        TTypeKind::Interface, TInterfaceName<T>::Value, {}, nullptr, [](const IInterface* AOther) {
          return dynamic_cast<const T*>(AOther) != nullptr;
        }};
    return Value;
  }
  static TValue::TData ToData(const TRef<T>& AValue) { return TRef<IInterface>(AValue); }
  static TRef<T> FromData(const TValue::TData& AData) {
    return TRef<T>(Supports<T>(std::get<TRef<IInterface>>(AData)));
  }
};

template <class T>
struct TTypeOf<std::vector<T>> {
  static const TTypeInfo& Info() {
    static const TTypeInfo Value{TTypeKind::Array, "TArray", {}, &TypeOf<T>()};
    return Value;
  }
  static TValue::TData ToData(const std::vector<T>& AValues) {
    std::vector<TValue> Result;
    Result.reserve(AValues.size());
    for (const T& Value : AValues) Result.push_back(TValue::From<T>(Value));
    return Result;
  }
  static std::vector<T> FromData(const TValue::TData& AData) {
    std::vector<T> Result;
    for (const TValue& Value : std::get<std::vector<TValue>>(AData))
      Result.push_back(Value.As<T>());
    return Result;
  }
};

}  // namespace System
