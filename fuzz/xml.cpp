// XML: what the scanner lets pass is read, and indenting changes no tree.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/xml.h"
#include "platform/xml_scanner.h"

namespace {

using namespace System;

bool IsWellFormed(std::string_view AText) {
  try {
    TXMLScanner Scanner(WithoutByteOrderMark(AText));
    while (Scanner.Next().Kind != TXMLToken::TKind::End) continue;
    return true;
  } catch (const EXMLError&) {
    return false;
  }
}

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

void RequireSame(const TRef<IXMLNode>& A, const TRef<IXMLNode>& B) {
  Require(A->GetKind() == B->GetKind() && A->GetNodeName() == B->GetNodeName() &&
          A->GetText() == B->GetText() && A->GetChildCount() == B->GetChildCount() &&
          A->GetAttributes().size() == B->GetAttributes().size());
  for (const TXMLAttribute& Attribute : A->GetAttributes())
    Require(B->GetAttribute(Attribute.Name) == Attribute.Value);
  TRef<IXMLNode> Other = B->GetFirstChild();
  for (TRef<IXMLNode> Child = A->GetFirstChild(); Child; Child = Child->GetNextSibling()) {
    RequireSame(Child, Other);
    Other = Other->GetNextSibling();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  const std::string Text(reinterpret_cast<const char*>(AData), ASize);
  TRef<IXMLDocument> Document;
  try {
    Document = ParseXML(Text);
  } catch (const EXMLError&) {
    Require(!IsWellFormed(Text));
    return 0;
  }
  const std::string Indented = IndentXML(Text);
  Require(IndentXML(Indented) == Indented);
  RequireSame(Document->GetNode(), ParseXML(Indented)->GetNode());
  return 0;
}
