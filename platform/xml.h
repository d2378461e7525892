// XML: texts become trees of nodes that know their place, or are refused.
//
// What is read is well-formed XML 1.0 in UTF-8, with or without a byte-order mark, within the
// bounds below. A document type is skipped and nothing that it names is fetched; one with
// declarations of its own is refused, and so is every entity but the five predefined ones and
// character references. One leniency: an ampersand that begins no reference stands for itself ("Tom
// & Jerry"), since some writers do not escape it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/errors.h"
#include "platform/ref.h"

namespace System {

inline constexpr std::size_t MaxXMLSize = 256U << 20;    ///< bytes of a text
inline constexpr std::size_t MaxXMLDepth = 256;          ///< elements within each other
inline constexpr std::size_t MaxXMLNodes = 12'000'000U;  ///< with attributes; 64 bytes each at most

/// A text that is no XML, or more than is read: "FILE:LINE:COLUMN: what is wrong", without "FILE:"
/// where the text has no name. Lines and columns count from 1, columns in characters.
class EXMLError : public EFileError {
 public:
  using EFileError::EFileError;
};

struct TXMLAttribute {
  std::string_view Name;
  std::string_view Value;
};

/// Text is also that of a CDATA section.
enum class TXMLNodeKind : std::uint8_t { Document, Element, Text, Declaration, Instruction };

/// A node of a document, and a share in its life. Comments are no nodes, nor is white space beside
/// elements, instructions or comments; it is text where an element holds nothing else. Two
/// references may stand for one node without being the same. Views are good as long as the document
/// or one of its nodes is held. Any thread: nothing but `MoveToNextSibling` changes anything.
class IXMLNode : public virtual IInterface {
 public:
  virtual TXMLNodeKind GetKind() const = 0;
  /// The name of an element, the target of an instruction, "xml" of the declaration; otherwise
  /// "#text" or "#document".
  virtual std::string_view GetNodeName() const = 0;
  /// The characters of a text or of an instruction; of other nodes those of the texts directly in
  /// them, joined.
  virtual std::string GetText() const = 0;
  /// The characters of the first child when that is a text. Makes no node of it.
  virtual std::optional<std::string_view> GetFirstText() const = 0;
  /// The value of an attribute of exactly that name, if there is one.
  virtual std::optional<std::string_view> GetAttribute(std::string_view AName) const = 0;
  /// The attributes in their order; those of the declaration count as such.
  virtual std::vector<TXMLAttribute> GetAttributes() const = 0;
  /// The first child, empty when there is none.
  virtual TRef<IXMLNode> GetFirstChild() const = 0;
  /// The next child of the same parent, empty after the last one.
  virtual TRef<IXMLNode> GetNextSibling() const = 0;
  /// Becomes the next child of the same parent; false, and the same as before, after the last one.
  /// For walks that keep no node: it saves making one for each.
  virtual bool MoveToNextSibling() = 0;
  /// Counts them by a walk over all.
  virtual std::size_t GetChildCount() const = 0;
  /// Where the node begins, as at the head of an `EXMLError`: "FILE:LINE:COLUMN". Walks the text.
  virtual std::string GetPlace() const = 0;

 protected:
  ~IXMLNode() = default;
};

/// A text that was read. Lives as long as it or one of its nodes is held.
class IXMLDocument : public virtual IInterface {
 public:
  /// The node above the top-level nodes: the declaration, instructions, the root element.
  virtual TRef<IXMLNode> GetNode() const = 0;
  virtual TRef<IXMLNode> GetDocumentElement() const = 0;

 protected:
  ~IXMLDocument() = default;
};

/// Reads a text; `AFileName` is only used in messages. Raises `EXMLError`. Takes time and memory in
/// proportion to the text.
TRef<IXMLDocument> ParseXML(std::string AText, const std::string& AFileName = {});

/// Reads a file. Raises `EFileError` when it cannot be read, `EXMLError` when it is no XML.
TRef<IXMLDocument> LoadXMLFile(const std::string& AFileName);

/// The same document with one element a line, two blanks deeper than the one around it. Tags,
/// texts and comments stay as they are written; an element that holds text keeps all that is in it
/// on its line. Raises `EXMLError`, also when the result would be longer than can be read.
std::string IndentXML(std::string_view AText);

}  // namespace System
