#include <algorithm>
#include <iterator>
#include <locale>

#include "persistence/System.Beacon.Fencing.RttiUtils.h"
#include "persistence/stored_classes.h"

namespace System::Beacon::Fencing {
namespace {

std::string LowerCase(std::string_view AText) {
  std::string Result(AText);
  for (char& Char : Result)
    if (Char >= 'A' && Char <= 'Z') Char = static_cast<char>(Char - 'A' + 'a');
  return Result;
}

const TPropertyInfo* FindPropertyOf(TObject* AObject, std::string_view AName) {
  return AObject ? FindProperty(AObject->GetClassInfo(), AName) : nullptr;
}

}  // namespace

// ---------------------------------------------------------------- TProperty

void TProperty::SetValue(const TValue& AValue) {
  if (FEntry && FEntry->Set && AValue.GetType() == FEntry->Type) FEntry->Set(*FObject, AValue);
}

TValue TProperty::GetValue() const {
  return FEntry && FEntry->Get ? FEntry->Get(*FObject) : TValue();
}

std::string TProperty::GetName() const {
  return FEntry ? std::string(FEntry->Name) : "";
}

bool TProperty::IsString() const {
  return FEntry && FEntry->Type->Kind == TTypeKind::String;
}

const TTypeInfo* TProperty::GetType() const {
  return FEntry ? FEntry->Type : nullptr;
}

bool TProperty::IsPublished() const {
  return FEntry && FEntry->IsPublished;
}

TProperties GetProperties(TObject* AObject) {
  TProperties Result;
  if (!AObject) return Result;
  for (const TClassInfo* Class = &AObject->GetClassInfo(); Class; Class = Class->Base)
    for (const TPropertyInfo& Entry : Class->Properties)
      Result.push_back(New<TProperty>(AObject, &Entry));
  return Result;
}

std::vector<std::string> GetPropertiesNames(TObject* AObject) {
  std::vector<std::string> Result;
  for (const TRef<IProperty>& Property : GetProperties(AObject))
    Result.push_back(Property->GetName());
  return Result;
}

bool HasProperty(TObject* AObject, std::string_view AName) {
  return FindPropertyOf(AObject, AName) != nullptr;
}

bool DoesObjectContainProperty(TObject* AObject, std::string_view AName) {
  return HasProperty(AObject, AName);
}

TValue GetObjectPropertyValue(TObject* AObject, std::string_view AName) {
  return New<TProperty>(AObject, FindPropertyOf(AObject, AName))->GetValue();
}

void SetObjectPropertyValue(TObject* AObject, std::string_view AName, const TValue& AValue) {
  New<TProperty>(AObject, FindPropertyOf(AObject, AName))->SetValue(AValue);
}

// ---------------------------------------------------------------- enumerations

std::string EnumToString(const TValue& AValue) {
  return AValue.IsEmpty() ? "" : EnumeratedToString(*AValue.GetType(), AValue.GetOrdinal());
}

std::string EnumeratedToString(const TTypeInfo& AEnumeration, std::int64_t AOrdinal) {
  const auto Count = static_cast<std::int64_t>(AEnumeration.Names.size());
  if (AOrdinal < 0 || AOrdinal >= Count) return "";
  return std::string(AEnumeration.Names[static_cast<std::size_t>(AOrdinal)]);
}

std::vector<std::string> GetEnumeratedValues(const TTypeInfo& AEnumeration) {
  return {AEnumeration.Names.begin(), AEnumeration.Names.end()};
}

// ---------------------------------------------------------------- classes

void TRttiContext::Register(const TClassInfo& AClass) {
  const std::lock_guard Guard(FLock);
  FClasses.emplace(LowerCase(AClass.Name), &AClass);
}

const TClassInfo* TRttiContext::FindClass(std::string_view AQualifiedName) const {
  const std::lock_guard Guard(FLock);
  const auto Found = FClasses.find(LowerCase(AQualifiedName));
  return Found == FClasses.end() ? nullptr : Found->second;
}

TRttiContext& GetSharedRttiContext() {
  static TRttiContext Context;
  static std::once_flag IsFilled;
  std::call_once(IsFilled, [] { RegisterStoredClasses(Context); });
  return Context;
}

TRef<TInterfacedObject> CreateInstanceOfClass(std::string_view AQualifiedName) {
  const TClassInfo* const Class = GetSharedRttiContext().FindClass(AQualifiedName);
  return Class && Class->Create ? Class->Create() : nullptr;
}

// ---------------------------------------------------------------- filtering and sorting

bool TRttiUtils::TPropertyComparer::operator()(const TRef<IProperty>& A,
                                               const TRef<IProperty>& B) const {
  const std::string X = LowerCase(A->GetName()), Y = LowerCase(B->GetName());
  const std::locale Locale;
  const auto& Collation = std::use_facet<std::collate<char>>(Locale);
  return Collation.compare(X.data(), X.data() + X.size(), Y.data(), Y.data() + Y.size()) < 0;
}

TProperties TRttiUtils::Filter(const TProperties& AProperties, std::string_view AText) {
  const std::string Text = LowerCase(AText);
  TProperties Result;
  std::copy_if(AProperties.begin(),
               AProperties.end(),
               std::back_inserter(Result),
               [&Text](const TRef<IProperty>& AProperty) {
                 return LowerCase(AProperty->GetName()).find(Text) != std::string::npos;
               });
  return Result;
}

void TRttiUtils::Sort(TProperties& AProperties) {
  std::stable_sort(AProperties.begin(), AProperties.end(), TPropertyComparer());
}

void TRttiUtils::Sort(const std::vector<std::string>& ANames, TProperties& AProperties) {
  Sort(AProperties);
  TProperties Slots(ANames.size() + AProperties.size());
  for (std::size_t P = 0; P < AProperties.size(); ++P) {
    const std::string Name = AProperties[P]->GetName();
    const auto Named = std::find_if(
        ANames.begin(), ANames.end(), [&Name](const std::string& A) { return SameName(A, Name); });
    const auto Slot = static_cast<std::size_t>(Named - ANames.begin());
    Slots[Named != ANames.end() ? Slot : ANames.size() + P] = AProperties[P];
  }
  std::erase(Slots, nullptr);
  AProperties = std::move(Slots);
}

// ---------------------------------------------------------------- TObjectInterceptor

TObjectInterceptor::TObjectInterceptor(TObject* AObject, bool AIsTracking)
    : FObject(AObject), FIsTracking(AIsTracking && AObject) {
  if (FIsTracking) AddSetterObserver(*FObject, *this);
}

TObjectInterceptor::~TObjectInterceptor() {
  if (FIsTracking) RemoveSetterObserver(*FObject, *this);
}

void TObjectInterceptor::SetterEntered(const TPropertyInfo& AProperty, const TValue& ANewValue) {
  if (!AProperty.Get) return;
  FChanges.push_back({std::string(AProperty.Name), AProperty.Get(*FObject), ANewValue});
  const TChange Change = FChanges.back();  // the handler may cause further records
  PropertyChanged(Change.Property, Change.OldValue, Change.NewValue);
}

void TObjectInterceptor::PropertyChanged(const std::string&, const TValue&, const TValue&) {}

}  // namespace System::Beacon::Fencing
