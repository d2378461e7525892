#include "platform/xml.h"

#include <fmt/format.h>

#include <new>
#include <pugixml.hpp>
#include <utility>

#include "platform/files.h"
#include "platform/messages.h"
#include "platform/xml_scanner.h"

namespace System {
namespace {

// Comments are kept so that white space beside them is known not to be all that an element holds.
constexpr unsigned ReadOptions = pugi::parse_default | pugi::parse_comments | pugi::parse_pi |
                                 pugi::parse_declaration | pugi::parse_ws_pcdata_single;

bool IsText(const pugi::xml_node& ANode) {
  return ANode.type() == pugi::node_pcdata || ANode.type() == pugi::node_cdata;
}

/// The first node from this one on that is no comment.
pugi::xml_node SkipComments(pugi::xml_node ANode) {
  while (ANode.type() == pugi::node_comment) ANode = ANode.next_sibling();
  return ANode;
}

/// How far the text of a node begins before its name or value.
std::ptrdiff_t HeadLength(pugi::xml_node_type AType) {
  switch (AType) {
    case pugi::node_element:
      return 1;  // <
    case pugi::node_declaration:
    case pugi::node_pi:
      return 2;  // <?
    case pugi::node_cdata:
      return 9;  // <![CDATA[
    default:
      return 0;
  }
}

class TXMLDocument final : public TInterfacedObject, public virtual IXMLDocument {
 public:
  TXMLDocument(std::string AText, std::string AFileName);
  TRef<IXMLNode> GetNode() const override { return NodeOf(FTree); }
  TRef<IXMLNode> GetDocumentElement() const override { return NodeOf(FTree.document_element()); }

  TRef<IXMLNode> NodeOf(const pugi::xml_node& ANode) const;
  std::string PlaceOf(const pugi::xml_node& ANode) const;

 private:
  std::string FText;  // as handed over, to find places in
  std::string FFileName;
  pugi::xml_document FTree;
};

class TXMLNode final : public TInterfacedObject, public virtual IXMLNode {
 public:
  TXMLNode(const TXMLDocument* ADocument, const pugi::xml_node& ANode)
      : FDocument(ADocument), FNode(ANode) {}

  TXMLNodeKind GetKind() const override;
  std::string_view GetNodeName() const override;
  std::string GetText() const override;
  std::optional<std::string_view> GetFirstText() const override;
  std::optional<std::string_view> GetAttribute(std::string_view AName) const override;
  std::vector<TXMLAttribute> GetAttributes() const override;
  TRef<IXMLNode> GetFirstChild() const override {
    return FDocument->NodeOf(SkipComments(FNode.first_child()));
  }
  TRef<IXMLNode> GetNextSibling() const override {
    return FDocument->NodeOf(SkipComments(FNode.next_sibling()));
  }
  bool MoveToNextSibling() override;
  std::size_t GetChildCount() const override;
  std::string GetPlace() const override { return FDocument->PlaceOf(FNode); }

 private:
  TRef<const TXMLDocument> FDocument;
  pugi::xml_node FNode;
};

// -- Document -------------------------------------------------------------------------------------

TXMLDocument::TXMLDocument(std::string AText, std::string AFileName)
    : FText(std::move(AText)), FFileName(std::move(AFileName)) {
  const std::string_view Text = WithoutByteOrderMark(FText);
  TXMLScanner Scanner(Text, FFileName);
  while (Scanner.Next().Kind != TXMLToken::TKind::End) continue;
  const pugi::xml_parse_result Result =
      FTree.load_buffer(Text.data(), Text.size(), ReadOptions, pugi::encoding_utf8);
  if (Result.status == pugi::status_out_of_memory) throw std::bad_alloc();
  if (!Result) {
    throw EXMLError(
        fmt::format("{}: {}",
                    PlaceInText(Text, static_cast<std::size_t>(Result.offset), FFileName),
                    fmt::format(fmt::runtime(Messages::SXMLUnreadable), Result.description())));
  }
}

TRef<IXMLNode> TXMLDocument::NodeOf(const pugi::xml_node& ANode) const {
  if (!ANode) return nullptr;
  return New<TXMLNode>(this, ANode);
}

std::string TXMLDocument::PlaceOf(const pugi::xml_node& ANode) const {
  const std::ptrdiff_t Offset = ANode.offset_debug() - HeadLength(ANode.type());
  return PlaceInText(WithoutByteOrderMark(FText), static_cast<std::size_t>(Offset), FFileName);
}

// -- Node -----------------------------------------------------------------------------------------

TXMLNodeKind TXMLNode::GetKind() const {
  switch (FNode.type()) {
    case pugi::node_document:
      return TXMLNodeKind::Document;
    case pugi::node_element:
      return TXMLNodeKind::Element;
    case pugi::node_declaration:
      return TXMLNodeKind::Declaration;
    case pugi::node_pi:
      return TXMLNodeKind::Instruction;
    default:
      return TXMLNodeKind::Text;
  }
}

std::string_view TXMLNode::GetNodeName() const {
  if (FNode.type() == pugi::node_document) return "#document";
  return IsText(FNode) ? "#text" : FNode.name();
}

std::string TXMLNode::GetText() const {
  std::string Result = FNode.value();
  for (const pugi::xml_node& Child : FNode.children()) {
    if (IsText(Child)) Result += Child.value();
  }
  return Result;
}

std::optional<std::string_view> TXMLNode::GetFirstText() const {
  const pugi::xml_node Child = SkipComments(FNode.first_child());
  if (!IsText(Child)) return std::nullopt;
  return Child.value();
}

std::optional<std::string_view> TXMLNode::GetAttribute(std::string_view AName) const {
  for (const pugi::xml_attribute& Attribute : FNode.attributes()) {
    if (Attribute.name() == AName) return Attribute.value();
  }
  return std::nullopt;
}

std::vector<TXMLAttribute> TXMLNode::GetAttributes() const {
  std::vector<TXMLAttribute> Result;
  for (const pugi::xml_attribute& Attribute : FNode.attributes())
    Result.push_back({Attribute.name(), Attribute.value()});
  return Result;
}

bool TXMLNode::MoveToNextSibling() {
  const pugi::xml_node Next = SkipComments(FNode.next_sibling());
  if (!Next) return false;
  FNode = Next;
  return true;
}

std::size_t TXMLNode::GetChildCount() const {
  std::size_t Result = 0;
  for (pugi::xml_node Child = SkipComments(FNode.first_child()); Child;
       Child = SkipComments(Child.next_sibling()))
    ++Result;
  return Result;
}

}  // namespace

TRef<IXMLDocument> ParseXML(std::string AText, const std::string& AFileName) {
  return New<TXMLDocument>(std::move(AText), AFileName);
}

TRef<IXMLDocument> LoadXMLFile(const std::string& AFileName) {
  return ParseXML(ReadWholeFile(AFileName, MaxXMLSize), AFileName);
}

}  // namespace System
