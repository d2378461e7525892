#include <fmt/format.h>

#include "platform/messages.h"
#include "platform/xml.h"
#include "platform/xml_characters.h"
#include "platform/xml_scanner.h"

namespace System {
namespace {

using TKind = TXMLToken::TKind;

/// A token; of a start tag also whether what is in the element goes on lines of its own.
struct TPiece {
  TXMLToken Token;
  bool IsLaidOut = false;
};

bool IsCharacters(const TXMLToken& AToken) {
  return AToken.Kind == TKind::CData || (AToken.Kind == TKind::Text && !IsXMLBlank(AToken.Text));
}

/// Elements are laid out that hold other things and no text.
std::vector<TPiece> PiecesOf(std::string_view AText) {
  struct TOpen {
    std::size_t Index;
    bool HasText = false;
    bool HasOthers = false;
  };
  std::vector<TPiece> Result;
  std::vector<TOpen> Open;
  TXMLScanner Scanner(AText);
  for (TXMLToken Token = Scanner.Next(); Token.Kind != TKind::End; Token = Scanner.Next()) {
    if (Token.Kind == TKind::EndTag) {
      Result[Open.back().Index].IsLaidOut = Open.back().HasOthers && !Open.back().HasText;
      Open.pop_back();
    } else if (!Open.empty()) {
      if (IsCharacters(Token))
        Open.back().HasText = true;
      else if (Token.Kind != TKind::Text)
        Open.back().HasOthers = true;
    }
    if (Token.Kind == TKind::StartTag) Open.push_back({Result.size()});
    Result.push_back({Token});
  }
  return Result;
}

class TIndenter {
 public:
  void Add(const TPiece& APiece);
  std::string Finish() { return std::move(FResult += '\n'); }

 private:
  void AddLine(std::string_view AText);
  void Append(std::string_view AText);

  std::string FResult;
  std::size_t FDepth = 0;      // laid out elements around
  std::size_t FKeptWhole = 0;  // elements around that keep what is in them, below those
};

void TIndenter::Add(const TPiece& APiece) {
  const TXMLToken& Token = APiece.Token;
  if (FKeptWhole > 0) {
    Append(Token.Text);
    if (Token.Kind == TKind::StartTag) ++FKeptWhole;
    if (Token.Kind == TKind::EndTag) --FKeptWhole;
    return;
  }
  if (Token.Kind == TKind::Text) return;  // white space
  if (Token.Kind == TKind::EndTag) --FDepth;
  AddLine(Token.Text);
  if (Token.Kind == TKind::StartTag) ++(APiece.IsLaidOut ? FDepth : FKeptWhole);
}

void TIndenter::AddLine(std::string_view AText) {
  if (!FResult.empty()) FResult += '\n';
  FResult.append(2 * FDepth, ' ');
  Append(AText);
}

void TIndenter::Append(std::string_view AText) {
  FResult += AText;
  if (FResult.size() >= MaxXMLSize)
    throw EXMLError(fmt::format(fmt::runtime(Messages::SXMLIndentedTooLong), MaxXMLSize));
}

}  // namespace

std::string IndentXML(std::string_view AText) {
  TIndenter Indenter;
  for (const TPiece& Piece : PiecesOf(WithoutByteOrderMark(AText))) Indenter.Add(Piece);
  return Indenter.Finish();
}

}  // namespace System
