#include "platform/hex.h"
#include "platform/random.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace System::Beacon::Fencing::Scene {

const TClassInfo& TEntity::ClassInfo() {
  static const TClassInfo Info{.Name = "System.Beacon.Fencing.Scene.Classes.TEntity",
                               .Base = &TInterfacedObject::ClassInfo(),
                               .Properties = {Published<&TEntity::GetId, &TEntity::SetId>("Id")}};
  return Info;
}

TEntity::TEntity() : FId(NewGUID()), FName(BytesToHex(FId.Bytes)) {}

void TEntity::SetName(const std::string& AName) {
  if (AName == FName) return;
  const std::string OldName = std::exchange(FName, AName);
  ChangedName(OldName);
}

void TEntity::ReassignId() {
  FId = NewGUID();
}

void TEntity::SetProperty(std::string_view AName, const TValue& AValue) {
  const TPropertyInfo* const Property = FindProperty(GetClassInfo(), AName);
  if (Property && Property->Set) Property->Set(*this, AValue);
}

TValue TEntity::GetProperty(std::string_view AName) const {
  const TPropertyInfo* const Property = FindProperty(GetClassInfo(), AName);
  return Property && Property->Get ? Property->Get(const_cast<TEntity&>(*this)) : TValue();
}

bool TEntity::ContainsProperty(std::string_view AName) const {
  return FindProperty(GetClassInfo(), AName) != nullptr;
}

bool TEntity::AllowDesignProperty(std::string_view AName) const {
  return !SameName(AName, "RefCount");
}

}  // namespace System::Beacon::Fencing::Scene
