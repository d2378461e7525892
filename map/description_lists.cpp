#include <algorithm>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "platform/base64.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

constexpr char Separator = ':';

/// Cuts the text up to the next separator off a text; whether there was any text left.
bool NextField(std::string_view& AText, std::string_view& AField) {
  if (AText.empty()) return false;
  AField = AText.substr(0, AText.find(Separator));
  AText.remove_prefix(std::min(AField.size() + 1, AText.size()));
  return true;
}

}  // namespace

std::string DescriptionListToString(std::span<const TStringPair> AList) {
  std::string Result(1, Separator);
  for (const auto& [Key, Value] : AList)
    Result += EncodeBase64(Key) + Separator + EncodeBase64(Value) + Separator;
  return Result;
}

TDescriptionList StringToDescriptionList(std::string_view AText) {
  TDescriptionList Result;
  std::string_view Ignored, Key, Value;
  NextField(AText, Ignored);
  while (NextField(AText, Key) && NextField(AText, Value))
    Result.emplace_back(DecodeBase64(Key), DecodeBase64(Value));
  return Result;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
