#include "platform/xml_scanner.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "platform/messages.h"
#include "platform/reflection.h"
#include "platform/xml.h"
#include "platform/xml_characters.h"

namespace System {
namespace {

constexpr auto npos = std::string_view::npos;

std::size_t LineNumber(std::string_view AText, std::size_t AOffset) {
  return 1 + static_cast<std::size_t>(std::count(AText.begin(), AText.begin() + AOffset, '\n'));
}

/// A name as it stands in a message, which is not to be as long as the text.
std::string_view Shortened(std::string_view AName) {
  std::size_t Length = std::min<std::size_t>(AName.size(), 60);
  while (Length < AName.size() && (AName[Length] & 0xC0) == 0x80) --Length;
  return AName.substr(0, Length);
}

bool IsPredefined(std::string_view AEntity) {
  return AEntity == "lt" || AEntity == "gt" || AEntity == "amp" || AEntity == "quot" ||
         AEntity == "apos";
}

bool IsOtherUnicode(std::string_view AText) {
  return AText.starts_with("\xFF\xFE") || AText.starts_with("\xFE\xFF") ||
         AText.starts_with(std::string_view("\0\0\xFE\xFF", 4)) ||
         AText.starts_with(std::string_view("<\0", 2)) ||
         AText.starts_with(std::string_view("\0<", 2));
}

}  // namespace

std::string_view WithoutByteOrderMark(std::string_view AText) noexcept {
  return AText.starts_with("\xEF\xBB\xBF") ? AText.substr(3) : AText;
}

std::string PlaceInText(std::string_view AText, std::size_t AOffset, std::string_view AFileName) {
  const std::string_view Before = AText.substr(0, AOffset);
  const std::string_view Line = Before.substr(Before.rfind('\n') + 1);  // npos + 1 is 0
  const auto Column = 1 + std::count_if(Line.begin(), Line.end(), [](char AByte) {
                        return (AByte & 0xC0) != 0x80;
                      });
  return fmt::format("{}{}{}:{}",
                     AFileName,
                     AFileName.empty() ? "" : ":",
                     LineNumber(AText, Before.size()),
                     Column);
}

TXMLScanner::TXMLScanner(std::string_view AText, std::string_view AFileName)
    : FText(AText), FFileName(AFileName) {
  if (FText.size() > MaxXMLSize) Refuse(0, Messages::SXMLTooLong, MaxXMLSize);
  if (IsOtherUnicode(FText)) Refuse(0, Messages::SXMLOtherUnicode);
  const std::size_t Wrong = FindNoXMLCharacter(FText);
  if (Wrong == npos) return;
  const TUTF8Character Character = DecodeUTF8(FText.substr(Wrong));
  if (Character.Length == 0) Refuse(Wrong, Messages::SXMLNoUTF8);
  Refuse(Wrong, Messages::SXMLCharacter, static_cast<std::uint32_t>(Character.Code));
}

TXMLToken TXMLScanner::Next() {
  if (FAt == FText.size()) {
    CheckWhole();
    return {};
  }
  const std::size_t Start = FAt;
  const TXMLToken::TKind Kind = FText[FAt] == '<' ? Markup() : CharacterData();
  return {Kind, FText.substr(Start, FAt - Start)};
}

// -- Kinds of tokens ------------------------------------------------------------------------------

TXMLToken::TKind TXMLScanner::Markup() {
  ++FAt;
  if (Skip('/')) return EndTag();
  CountNode(FAt - 1);
  if (Skip('?')) return Instruction();
  if (!Skip('!')) return StartTag();
  if (Skip("--")) return Comment();
  if (Skip("[CDATA[")) return CData();
  if (Skip("DOCTYPE")) return DocumentType();
  Refuse(FAt - 2, Messages::SXMLNoName);
}

TXMLToken::TKind TXMLScanner::Comment() {
  const std::size_t Start = FAt - 4;
  SkipPast("--", Start, "comment");
  if (!Skip('>')) Refuse(FAt - 2, Messages::SXMLDashes);
  return TXMLToken::TKind::Comment;
}

TXMLToken::TKind TXMLScanner::CData() {
  const std::size_t Start = FAt - 9;
  if (FOpen.empty()) Refuse(Start, Messages::SXMLTextOutside);
  SkipPast("]]>", Start, "CDATA section");
  return TXMLToken::TKind::CData;
}

TXMLToken::TKind TXMLScanner::DocumentType() {
  if (FHasRoot || !FOpen.empty() || FHasDocumentType) Refuse(FAt - 9, Messages::SXMLDocumentType);
  FHasDocumentType = true;
  if (!SkipSpace()) Refuse(FAt, Messages::SXMLNoSpace);
  Name();
  const bool IsSpaced = SkipSpace();
  const bool IsPublic = IsSpaced && Skip("PUBLIC");
  if (IsPublic || (IsSpaced && Skip("SYSTEM"))) {
    for (int I = IsPublic ? 2 : 1; I > 0; --I) {
      if (!SkipSpace()) Refuse(FAt, Messages::SXMLNoSpace);
      Quoted();
    }
    SkipSpace();
  }
  if (FText.substr(FAt, 1) == "[") Refuse(FAt, Messages::SXMLSubset);
  if (!Skip('>')) Refuse(FAt, Messages::SXMLExpected, ">");
  return TXMLToken::TKind::DocumentType;
}

TXMLToken::TKind TXMLScanner::Instruction() {
  const std::size_t Start = FAt - 2;
  const std::string_view Target = Name();
  if (SameName(Target, "xml")) {
    if (Start != 0 || Target != "xml") Refuse(Start, Messages::SXMLDeclaration);
    Declaration();
    return TXMLToken::TKind::Instruction;
  }
  const bool IsSpaced = SkipSpace();
  if (!IsSpaced && !FText.substr(FAt).starts_with("?>")) Refuse(FAt, Messages::SXMLNoSpace);
  SkipPast("?>", Start, "instruction");
  return TXMLToken::TKind::Instruction;
}

void TXMLScanner::Declaration() {
  Attributes();
  if (!Skip("?>")) Refuse(FAt, Messages::SXMLExpected, "?>");
  bool HasVersion = false;
  for (const TPair& Pair : FAttributes) {
    const bool IsVersion = Pair.Name == "version" && Pair.Value.starts_with("1.") &&
                           Pair.Value.find_first_not_of("0123456789", 2) == npos;
    const bool IsStandalone =
        Pair.Name == "standalone" && (Pair.Value == "yes" || Pair.Value == "no");
    HasVersion = HasVersion || IsVersion;
    if (Pair.Name == "encoding")
      CheckEncoding(Pair.Value);
    else if (!IsVersion && !IsStandalone)
      Refuse(OffsetOf(Pair.Name), Messages::SXMLDeclaration);
  }
  if (!HasVersion) Refuse(0, Messages::SXMLDeclaration);
}

/// UTF-16 may be named by a text that was converted when it was handed over.
void TXMLScanner::CheckEncoding(std::string_view AName) const {
  for (const std::string_view Known : {"UTF-8", "US-ASCII", "UTF-16"}) {
    if (SameName(AName, Known)) return;
  }
  Refuse(OffsetOf(AName), Messages::SXMLEncoding, Shortened(AName));
}

TXMLToken::TKind TXMLScanner::EndTag() {
  const std::size_t Start = FAt - 2;
  if (!FOpen.empty() && Skip(FOpen.back()) && Skip('>')) {  // as nearly all are written
    FOpen.pop_back();
    return TXMLToken::TKind::EndTag;
  }
  FAt = Start + 2;
  const std::string_view Closed = Name();
  if (FOpen.empty()) Refuse(Start, Messages::SXMLNothingToEnd, Shortened(Closed));
  const std::string_view Open = FOpen.back();
  if (Closed != Open) {
    const std::size_t Line = LineNumber(FText, OffsetOf(Open));
    Refuse(Start, Messages::SXMLWrongEnd, Shortened(Closed), Shortened(Open), Line);
  }
  SkipSpace();
  if (!Skip('>')) Refuse(FAt, Messages::SXMLExpected, ">");
  FOpen.pop_back();
  return TXMLToken::TKind::EndTag;
}

TXMLToken::TKind TXMLScanner::StartTag() {
  const std::size_t Start = FAt - 1;
  const std::string_view Opened = Name();
  if (FOpen.empty() && FHasRoot) Refuse(Start, Messages::SXMLSecondRoot, Shortened(Opened));
  if (FOpen.size() == MaxXMLDepth) Refuse(Start, Messages::SXMLTooDeep, MaxXMLDepth);
  FHasRoot = true;
  Attributes();
  const bool IsEmpty = Skip('/');
  if (!Skip('>')) Refuse(FAt, Messages::SXMLExpected, ">");
  if (IsEmpty) return TXMLToken::TKind::EmptyTag;
  FOpen.push_back(Opened);
  return TXMLToken::TKind::StartTag;
}

TXMLToken::TKind TXMLScanner::CharacterData() {
  const std::size_t Start = FAt;
  FAt = std::min(FText.find('<', Start), FText.size());
  const std::string_view Text = FText.substr(Start, FAt - Start);
  if (FOpen.empty()) {
    const std::size_t Wrong = Text.find_first_not_of(" \t\r\n");
    if (Wrong != npos) Refuse(Start + Wrong, Messages::SXMLTextOutside);
    return TXMLToken::TKind::Text;
  }
  CountNode(Start);
  const std::size_t SectionEnd = Text.find("]]>");
  if (SectionEnd != npos) Refuse(Start + SectionEnd, Messages::SXMLSectionEnd);
  CheckReferences(Text);
  return TXMLToken::TKind::Text;
}

// -- Attributes and references --------------------------------------------------------------------

/// Up to the end of the tag, which is left to the caller.
void TXMLScanner::Attributes() {
  FAttributes.clear();
  for (;;) {
    const bool IsSpaced = SkipSpace();
    if (FAt == FText.size() || FText[FAt] == '>' || FText[FAt] == '/' || FText[FAt] == '?') break;
    if (!IsSpaced) Refuse(FAt, Messages::SXMLNoSpace);
    Attribute();
  }
  if (FAttributes.size() > 1) CheckNoDuplicates();
}

void TXMLScanner::Attribute() {
  CountNode(FAt);
  const std::string_view AttributeName = Name();
  SkipSpace();
  if (!Skip('=')) Refuse(FAt, Messages::SXMLExpected, "=");
  SkipSpace();
  const std::string_view Value = Quoted();
  const std::size_t Less = Value.find('<');
  if (Less != npos) Refuse(OffsetOf(Value) + Less, Messages::SXMLLess);
  CheckReferences(Value);
  FAttributes.push_back({AttributeName, Value});
}

/// By sorting, since a tag may hold millions.
void TXMLScanner::CheckNoDuplicates() {
  std::sort(FAttributes.begin(), FAttributes.end(), [](const TPair& A, const TPair& B) {
    const int Order = A.Name.compare(B.Name);
    return Order != 0 ? Order < 0 : A.Name.data() < B.Name.data();
  });
  const auto Twice = std::adjacent_find(
      FAttributes.begin(), FAttributes.end(), [](const TPair& A, const TPair& B) {
        return A.Name == B.Name;
      });
  if (Twice != FAttributes.end())
    Refuse(OffsetOf(Twice[1].Name), Messages::SXMLDuplicate, Shortened(Twice->Name));
}

void TXMLScanner::CheckReferences(std::string_view AText) const {
  std::size_t At = AText.find('&');
  while (At != npos) At = AText.find('&', At + CheckReference(AText.substr(At)));
}

/// Looks at what an ampersand begins, and returns how many bytes it has looked at.
std::size_t TXMLScanner::CheckReference(std::string_view AText) const {
  if (AText.starts_with("&#")) {
    const bool IsHexadecimal = AText.substr(2, 1) == "x";
    std::uint32_t Code = 0;
    const char* const Digits = AText.data() + (IsHexadecimal ? 3 : 2);
    const char* const End = AText.data() + AText.size();
    const auto Number = std::from_chars(Digits, End, Code, IsHexadecimal ? 16 : 10);
    const bool IsWhole = Number.ec == std::errc() && Number.ptr != End && *Number.ptr == ';';
    if (!IsWhole || !IsXMLCharacter(Code)) Refuse(OffsetOf(AText), Messages::SXMLReference);
    return static_cast<std::size_t>(Number.ptr - AText.data());
  }
  const std::string_view Entity = AText.substr(1, XMLNameLength(AText.substr(1)));
  const bool IsReference = !Entity.empty() && AText.substr(1 + Entity.size(), 1) == ";";
  if (IsReference && !IsPredefined(Entity))
    Refuse(OffsetOf(AText), Messages::SXMLEntity, Shortened(Entity));
  return 1 + Entity.size();
}

// -- Pieces of a token ----------------------------------------------------------------------------

bool TXMLScanner::Skip(char AChar) {
  if (FAt == FText.size() || FText[FAt] != AChar) return false;
  ++FAt;
  return true;
}

bool TXMLScanner::Skip(std::string_view AWord) {
  if (!FText.substr(FAt).starts_with(AWord)) return false;
  FAt += AWord.size();
  return true;
}

bool TXMLScanner::SkipSpace() {
  const std::size_t Start = FAt;
  while (FAt < FText.size() && IsXMLSpace(FText[FAt])) ++FAt;
  return FAt != Start;
}

void TXMLScanner::SkipPast(std::string_view AEnd, std::size_t AStart, std::string_view AWhat) {
  const std::size_t End = FText.find(AEnd, FAt);
  if (End == npos) Refuse(AStart, Messages::SXMLNoEnd, AWhat);
  FAt = End + AEnd.size();
}

std::string_view TXMLScanner::Name() {
  const std::string_view Result = FText.substr(FAt, XMLNameLength(FText.substr(FAt)));
  if (Result.empty()) Refuse(FAt, Messages::SXMLNoName);
  FAt += Result.size();
  return Result;
}

std::string_view TXMLScanner::Quoted() {
  const std::size_t Start = FAt;
  const std::string_view Quote = FText.substr(FAt, 1);
  if (Quote != "\"" && Quote != "'") Refuse(FAt, Messages::SXMLNoQuote);
  ++FAt;
  SkipPast(Quote, Start, "value in quotes");
  return FText.substr(Start + 1, FAt - Start - 2);
}

void TXMLScanner::CheckWhole() const {
  if (!FOpen.empty())
    Refuse(OffsetOf(FOpen.back()) - 1, Messages::SXMLNotClosed, Shortened(FOpen.back()));
  if (!FHasRoot) Refuse(FText.size(), Messages::SXMLNoRoot);
}

void TXMLScanner::CountNode(std::size_t AStart) {
  if (++FNodes > MaxXMLNodes) Refuse(AStart, Messages::SXMLTooMany, MaxXMLNodes);
}

template <class... TArguments>
void TXMLScanner::Refuse(std::size_t AOffset,
                         std::string_view AMessage,
                         const TArguments&... AArguments) const {
  throw EXMLError(fmt::format("{}: {}",
                              PlaceInText(FText, AOffset, FFileName),
                              fmt::format(fmt::runtime(AMessage), AArguments...)));
}

}  // namespace System
