// Bundles as one text.
#include <fmt/format.h>

#include <utility>

#include "persistence/System.Beacon.Fencing.Bundle.h"
#include "persistence/System.Beacon.Fencing.XML.h"
#include "persistence/bundle_names.h"
#include "persistence/messages.h"
#include "persistence/value_text.h"
#include "platform/base64.h"
#include "platform/reflection.h"

namespace System::Beacon::Fencing {
namespace {

constexpr std::string_view End = "</bundle>";

void AppendFile(std::string& AText,
                std::string_view APath,
                std::string_view AnId,
                std::string_view ABytes) {
  AText += "<file path = \"";
  AppendXMLText(AText, APath);
  AText.append("\" id = \"").append(AnId).append("\">");
  AText.append(EncodeBase64(ABytes)).append("</file>");
}

/// The first child that is an element: the bundle, behind a declaration or instructions.
TRef<IXMLNode> FindBundle(const TRef<IXMLNode>& ANode) {
  TRef<IXMLNode> Result = ANode ? ANode->GetFirstChild() : nullptr;
  while (Result && Result->GetKind() != TXMLNodeKind::Element) Result = Result->GetNextSibling();
  return Result;
}

bool IsFile(const TRef<IXMLNode>& ANode) {
  return ANode->GetKind() == TXMLNodeKind::Element && SameName(ANode->GetNodeName(), "file");
}

std::string GetNeeded(const TRef<IXMLNode>& ANode, std::string_view AName) {
  const auto Value = ANode->GetAttribute(AName);
  if (Value) return std::string(*Value);
  throw EXMLError(fmt::format(
      "{}: {}",
      ANode->GetPlace(),
      fmt::format(fmt::runtime(Messages::SBundleAttribute), ANode->GetNodeName(), AName)));
}

std::string DecodeText(const TRef<IXMLNode>& ANode) {
  const TRef<IXMLNode> Text = ANode->GetFirstChild();
  if (!Text) return {};
  try {
    return DecodeBase64(Text->GetText());
  } catch (const EConvertError& Error) {
    throw EConvertError(fmt::format("{}: {}", Text->GetPlace(), Error.what()));
  }
}

}  // namespace

std::string TBundle::SerializeToXML() {
  std::string Result = "<bundle>";
  for (const auto& [Path, Id] : FPathToId) {
    std::string Space;
    AppendFile(Result, Path, IsBundleId(Id) ? Id : GenerateUUId(), GetContent(Id, Space));
    if (Result.size() + End.size() > MaxXMLSize)
      throw EFileError(fmt::format(fmt::runtime(Messages::SBundleTextLarge), MaxXMLSize));
  }
  return Result.append(End);
}

bool TBundle::UnserializeFromXML(const std::string& AnXML) {
  TRef<IXMLDocument> Document;
  if (!UnserializeFromXMLNode(OpenXMLFromString(AnXML, Document))) return false;
  FContainsMemoryFiles = true;
  return true;
}

bool TBundle::UnserializeFromXMLFile(const std::string& AFile) {
  TRef<IXMLDocument> Document;
  if (!UnserializeFromXMLNode(OpenXMLFromFile(AFile, Document))) return false;
  FContainsMemoryFiles = true;
  return true;
}

bool TBundle::UnserializeFromXMLNode(const TRef<IXMLNode>& ANode) {
  const TRef<IXMLNode> Bundle = FindBundle(ANode);
  if (!Bundle) return false;
  std::vector<TNewFile> Files;
  for (TRef<IXMLNode> Child = Bundle->GetFirstChild(); Child; Child = Child->GetNextSibling()) {
    if (!IsFile(Child)) continue;
    Files.push_back(ReadFileElement(Child));
    CheckBundleFileCount(Files.size());
  }
  StoreInMemory(std::move(Files));
  return true;
}

TBundle::TNewFile TBundle::ReadFileElement(const TRef<IXMLNode>& ANode) {
  TNewFile Result{GetNeeded(ANode, "path"), GetNeeded(ANode, "id"), DecodeText(ANode)};
  // To find a place takes a walk over the text.
  if (!IsBundlePath(Result.Path)) CheckBundlePath(Result.Path, ANode->GetPlace());
  if (!IsBundleId(Result.Id)) CheckBundleId(Result.Id, ANode->GetPlace());
  return Result;
}

}  // namespace System::Beacon::Fencing
