#include "platform/reflection.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace System {
namespace {

char Lower(char AChar) noexcept {
  return AChar >= 'A' && AChar <= 'Z' ? static_cast<char>(AChar - 'A' + 'a') : AChar;
}

struct TObserverTable {
  std::mutex Lock;  // guards Observers
  std::multimap<const TObject*, ISetterObserver*> Observers;

  static TObserverTable& Instance() {
    static TObserverTable Table;
    return Table;
  }
};

}  // namespace

const TClassInfo& TObject::ClassInfo() {
  static const TClassInfo Info{.Name = "System.TObject"};
  return Info;
}

std::int64_t TValue::GetOrdinal() const {
  if (const auto* Number = std::get_if<std::int64_t>(&FData)) return *Number;
  if (const auto* Boolean = std::get_if<bool>(&FData)) return *Boolean ? 1 : 0;
  return 0;
}

std::string_view TClassInfo::GetShortName() const {
  return Name.substr(Name.rfind('.') + 1);  // npos + 1 is 0
}

bool SameName(std::string_view A, std::string_view B) noexcept {
  return std::equal(
      A.begin(), A.end(), B.begin(), B.end(), [](char X, char Y) { return Lower(X) == Lower(Y); });
}

const TPropertyInfo* FindProperty(const TClassInfo& AClass, std::string_view AName) {
  for (const TClassInfo* Class = &AClass; Class; Class = Class->Base)
    for (const TPropertyInfo& Property : Class->Properties)
      if (SameName(Property.Name, AName)) return &Property;
  return nullptr;
}

TPropertyInfo EventProperty(std::string_view AName, bool AIsPublished) {
  static const TTypeInfo Event{TTypeKind::Event, "event"};
  return {AName, &Event, nullptr, nullptr, AIsPublished};
}

std::atomic<int> Detail::SetterObservers{0};

void AddSetterObserver(TObject& AObject, ISetterObserver& AObserver) {
  TObserverTable& Table = TObserverTable::Instance();
  const std::lock_guard Guard(Table.Lock);
  Table.Observers.emplace(&AObject, &AObserver);
  ++Detail::SetterObservers;
}

void RemoveSetterObserver(TObject& AObject, ISetterObserver& AObserver) {
  TObserverTable& Table = TObserverTable::Instance();
  const std::lock_guard Guard(Table.Lock);
  const auto [First, Last] = Table.Observers.equal_range(&AObject);
  const auto Found = std::find_if(
      First, Last, [&AObserver](const auto& AEntry) { return AEntry.second == &AObserver; });
  if (Found == Last) return;
  Table.Observers.erase(Found);
  --Detail::SetterObservers;
}

void Detail::TellSetterObservers(TObject& AObject,
                                 std::string_view AProperty,
                                 const TValue& ANewValue) {
  const TPropertyInfo* const Property = FindProperty(AObject.GetClassInfo(), AProperty);
  if (!Property) return;
  std::vector<ISetterObserver*> Told;
  {
    TObserverTable& Table = TObserverTable::Instance();
    const std::lock_guard Guard(Table.Lock);
    const auto [First, Last] = Table.Observers.equal_range(&AObject);
    for (auto I = First; I != Last; ++I) Told.push_back(I->second);
  }
  for (ISetterObserver* Observer : Told) Observer->SetterEntered(*Property, ANewValue);
}

}  // namespace System
