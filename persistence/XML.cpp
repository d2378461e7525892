#include "persistence/System.Beacon.Fencing.XML.h"
#include "platform/reflection.h"

namespace System::Beacon::Fencing {

std::string FormatXML(const std::string& AXML) {
  return IndentXML(AXML);
}

TRef<IXMLNode> OpenXMLFromFile(const std::string& AFileName, TRef<IXMLDocument>& ADocument) {
  ADocument = LoadXMLFile(AFileName);
  return ADocument->GetNode();
}

TRef<IXMLNode> OpenXMLFromString(const std::string& AXML, TRef<IXMLDocument>& ADocument) {
  ADocument = ParseXML(AXML);
  return ADocument->GetNode();
}

std::string GetValueFromXMLRootChildNode(const std::string& AXML, const std::string& ANodeName) {
  TRef<IXMLDocument> Document;
  TRef<IXMLNode> Node = OpenXMLFromString(AXML, Document)->GetFirstChild();
  while (Node && !SameName(Node->GetNodeName(), ANodeName)) Node = Node->GetNextSibling();
  const TRef<IXMLNode> Child = Node ? Node->GetFirstChild() : nullptr;
  return Child ? Child->GetText() : std::string();
}

}  // namespace System::Beacon::Fencing
