#include "apps/wayfence/json_members.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/errors.h"

namespace Wayfence {

using System::EFileError;
using System::Beacon::Fencing::TJsonNode;
using TKind = TJsonNode::TKind;

TJsonMembers::TJsonMembers(const TJsonNode& AObject,
                           std::string_view AWhat,
                           const std::string& AFileName)
    : FObject(AObject), FWhat(AWhat), FFileName(AFileName) {
  if (AObject.Kind != TKind::Object) Refuse(fmt::format("{} is an object, {{ … }}", FWhat));
}

const TJsonNode* TJsonMembers::Find(std::string_view AName) {
  if (std::find(FAsked.begin(), FAsked.end(), AName) == FAsked.end()) FAsked.push_back(AName);
  for (const TJsonNode& Child : FObject.Children)
    if (Child.Name == AName) return &Child;
  return nullptr;
}

void TJsonMembers::Read(std::string_view AName, double& AValue, double AFrom, double ATo) {
  const TJsonNode* const Node = Find(AName);
  if (!Node) return;
  const bool IsNumber = Node->Kind == TKind::Integer || Node->Kind == TKind::Number;
  if (!IsNumber || !(Node->Number >= AFrom && Node->Number <= ATo))
    Refuse(*Node, fmt::format("{} of {} is a number from {} to {}", AName, FWhat, AFrom, ATo));
  AValue = Node->Number;
}

void TJsonMembers::Read(std::string_view AName, int& AValue, int AFrom, int ATo) {
  const TJsonNode* const Node = Find(AName);
  if (!Node) return;
  if (Node->Kind != TKind::Integer || Node->Integer < AFrom || Node->Integer > ATo)
    Refuse(*Node,
           fmt::format("{} of {} is a whole number from {} to {}", AName, FWhat, AFrom, ATo));
  AValue = static_cast<int>(Node->Integer);
}

void TJsonMembers::Read(std::string_view AName, std::string& AValue) {
  const TJsonNode* const Node = Find(AName);
  if (!Node) return;
  if (Node->Kind != TKind::String || Node->String.empty())
    Refuse(*Node, fmt::format("{} of {} is a text in quotes", AName, FWhat));
  AValue = Node->String;
}

const std::vector<TJsonNode>& TJsonMembers::GetArray(std::string_view AName) {
  static const std::vector<TJsonNode> None;
  const TJsonNode* const Node = Find(AName);
  if (!Node) return None;
  if (Node->Kind != TKind::Array)
    Refuse(*Node, fmt::format("{} of {} is an array, [ … ]", AName, FWhat));
  return Node->Children;
}

void TJsonMembers::Require(std::string_view AName) {
  if (!Find(AName)) Refuse(fmt::format("{} has no member '{}'", FWhat, AName));
}

void TJsonMembers::RefuseOthers() const {
  for (const TJsonNode& Child : FObject.Children)
    if (std::find(FAsked.begin(), FAsked.end(), Child.Name) == FAsked.end())
      Refuse(Child,
             fmt::format("{} has no member '{}'; it has {}",
                         FWhat,
                         Child.Name,
                         fmt::join(FAsked.begin(), FAsked.end(), ", ")));
}

void TJsonMembers::Refuse(std::string_view AWhat) const {
  Refuse(FObject, AWhat);
}

void TJsonMembers::Refuse(const TJsonNode& ANode, std::string_view AWhat) const {
  throw EFileError(fmt::format("{}:{}: {}", FFileName, ANode.Line, AWhat));
}

}  // namespace Wayfence
