// XML cut into tokens; what is not well-formed is refused on the way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace System {

struct TXMLToken {
  enum class TKind : std::uint8_t {
    StartTag,
    EmptyTag,
    EndTag,
    Text,
    CData,
    Comment,
    Instruction,  ///< or the declaration
    DocumentType,
    End  ///< of the text; it is whole
  };

  TKind Kind = TKind::End;
  std::string_view Text;  ///< as written; the tokens one after the other are the whole text
};

/// The text behind its byte-order mark, if it has one.
std::string_view WithoutByteOrderMark(std::string_view AText) noexcept;

/// "FILE:LINE:COLUMN" of a byte of a text; without "FILE:" where the name is empty.
std::string PlaceInText(std::string_view AText, std::size_t AOffset, std::string_view AFileName);

/// Walks over a text once, in linear time, and holds what platform/xml.h promises about what is
/// read. The caller keeps text and file name.
class TXMLScanner {
 public:
  /// Raises `EXMLError` for a text that is too long or holds what is no character of XML. A
  /// byte-order mark is to be taken off before.
  explicit TXMLScanner(std::string_view AText, std::string_view AFileName = {});

  /// The next token. Raises `EXMLError`; the scanner is of no more use then.
  TXMLToken Next();

 private:
  struct TPair {
    std::string_view Name;
    std::string_view Value;
  };

  TXMLToken::TKind Markup();
  TXMLToken::TKind Comment();
  TXMLToken::TKind CData();
  TXMLToken::TKind DocumentType();
  TXMLToken::TKind Instruction();
  TXMLToken::TKind EndTag();
  TXMLToken::TKind StartTag();
  TXMLToken::TKind CharacterData();
  void Declaration();
  void Attributes();
  void Attribute();
  void CheckNoDuplicates();
  void CheckReferences(std::string_view AText) const;
  std::size_t CheckReference(std::string_view AText) const;
  void CheckEncoding(std::string_view AName) const;
  void CheckWhole() const;
  void CountNode(std::size_t AStart);

  bool Skip(char AChar);
  bool Skip(std::string_view AWord);
  bool SkipSpace();
  void SkipPast(std::string_view AEnd, std::size_t AStart, std::string_view AWhat);
  std::string_view Name();
  std::string_view Quoted();
  std::size_t OffsetOf(std::string_view APart) const { return APart.data() - FText.data(); }
  template <class... TArguments>
  [[noreturn]] void Refuse(std::size_t AOffset,
                           std::string_view AMessage,
                           const TArguments&... AArguments) const;

  std::string_view FText;
  std::string_view FFileName;
  std::size_t FAt = 0;
  std::size_t FNodes = 0;
  bool FHasRoot = false;
  bool FHasDocumentType = false;
  std::vector<std::string_view> FOpen;  // the names of the elements around
  std::vector<TPair> FAttributes;       // of the last tag or declaration, in any order
};

}  // namespace System
