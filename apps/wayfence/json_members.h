// The members of a JSON object, asked one by one, so that those nobody asks for are found.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "persistence/json_tree.h"

namespace Wayfence {

/// Every function raises `EFileError` "FILE:LINE: what is wrong". What it looks at outlives it.
class TJsonMembers {
 public:
  /// `AWhat` names the object in messages: "a walk". Refuses what is no object.
  TJsonMembers(const System::Beacon::Fencing::TJsonNode& AObject,
               std::string_view AWhat,
               const std::string& AFileName);

  /// The member, or nothing when there is none.
  const System::Beacon::Fencing::TJsonNode* Find(std::string_view AName);
  /// Leaves the value alone when there is no such member.
  void Read(std::string_view AName, double& AValue, double AFrom, double ATo);
  void Read(std::string_view AName, int& AValue, int AFrom, int ATo);
  void Read(std::string_view AName, std::string& AValue);
  /// Nothing when there is no such member.
  const std::vector<System::Beacon::Fencing::TJsonNode>& GetArray(std::string_view AName);

  /// Refuses the object when none of its members has the name.
  void Require(std::string_view AName);
  /// Refuses members that were not asked for.
  void RefuseOthers() const;
  [[noreturn]] void Refuse(std::string_view AWhat) const;

 private:
  [[noreturn]] void Refuse(const System::Beacon::Fencing::TJsonNode& ANode,
                           std::string_view AWhat) const;

  const System::Beacon::Fencing::TJsonNode& FObject;
  std::string_view FWhat;
  const std::string& FFileName;
  std::vector<std::string_view> FAsked;
};

}  // namespace Wayfence
