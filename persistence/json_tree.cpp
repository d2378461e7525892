#include "persistence/json_tree.h"

#include <fmt/format.h>

#include <iterator>
#include <nlohmann/json.hpp>

#include "platform/errors.h"
#include "platform/reflection.h"

namespace System::Beacon::Fencing {
namespace {

/// Reads characters and counts the lines that it has passed.
class TLineIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  TLineIterator(const char* AAt, int* ALine) : FAt(AAt), FLine(ALine) {}
  reference operator*() const { return *FAt; }
  TLineIterator& operator++() {
    if (*FAt++ == '\n') ++*FLine;
    return *this;
  }
  bool operator==(const TLineIterator& AOther) const { return FAt == AOther.FAt; }
  bool operator!=(const TLineIterator& AOther) const { return FAt != AOther.FAt; }

 private:
  const char* FAt;
  int* FLine;
};

/// Builds the tree from the parser's events.
class TBuilder final : public nlohmann::json_sax<nlohmann::json> {
 public:
  TBuilder(const std::string& AFileName, const int& ALine) : FFileName(AFileName), FLine(ALine) {}

  TJsonNode Root;

  bool null() override { return Add(TJsonNode::TKind::Null) != nullptr; }
  bool boolean(bool AValue) override {
    Add(TJsonNode::TKind::Boolean)->Boolean = AValue;
    return true;
  }
  bool number_integer(number_integer_t AValue) override { return AddInteger(AValue); }
  bool number_unsigned(number_unsigned_t AValue) override {
    if (AValue > static_cast<std::uint64_t>(INT64_MAX)) {
      Add(TJsonNode::TKind::Number)->Number = static_cast<double>(AValue);
      return true;
    }
    return AddInteger(static_cast<std::int64_t>(AValue));
  }
  bool number_float(number_float_t AValue, const string_t&) override {
    Add(TJsonNode::TKind::Number)->Number = AValue;
    return true;
  }
  bool string(string_t& AValue) override {
    Add(TJsonNode::TKind::String)->String = std::move(AValue);
    return true;
  }
  bool binary(binary_t&) override { return false; }
  bool key(string_t& AValue) override {
    FKey = std::move(AValue);
    FKeyLine = FLine;
    if (FOpen.back()->Children.size() == MaxJsonMembers)
      Refuse(fmt::format("an object of more than {} members", MaxJsonMembers));
    for (const TJsonNode& Sibling : FOpen.back()->Children)
      if (SameName(Sibling.Name, FKey)) Refuse(fmt::format("\"{}\" stands here twice", FKey));
    return true;
  }
  bool start_object(std::size_t) override { return Open(TJsonNode::TKind::Object); }
  bool start_array(std::size_t) override { return Open(TJsonNode::TKind::Array); }
  bool end_object() override { return Close(); }
  bool end_array() override { return Close(); }

  bool parse_error(std::size_t,
                   const std::string& AToken,
                   const nlohmann::detail::exception& AError) override {
    const std::string Text = AError.what();
    const std::size_t Start = Text.find("syntax error");
    Refuse(Start == std::string::npos
               ? fmt::format("'{}' cannot be read: {}", AToken.substr(0, 40), Text)
               : "this is no JSON: " + Text.substr(Start));
  }

 private:
  [[noreturn]] void Refuse(const std::string& AWhat) const {
    throw EFileError(fmt::format("{}:{}: {}", FFileName, FLine, AWhat));
  }
  TJsonNode* Add(TJsonNode::TKind AKind) {
    if (++FValues > MaxJsonValues) Refuse(fmt::format("more than {} values", MaxJsonValues));
    TJsonNode* Result = &Root;
    if (!FOpen.empty()) {
      FOpen.back()->Children.emplace_back();
      Result = &FOpen.back()->Children.back();
    }
    Result->Kind = AKind;
    const bool IsMember = !FOpen.empty() && FOpen.back()->Kind == TJsonNode::TKind::Object;
    Result->Line = IsMember ? FKeyLine : FLine;
    if (IsMember) Result->Name = std::move(FKey);
    return Result;
  }
  bool AddInteger(std::int64_t AValue) {
    TJsonNode& Node = *Add(TJsonNode::TKind::Integer);
    Node.Integer = AValue;
    Node.Number = static_cast<double>(AValue);
    return true;
  }
  bool Open(TJsonNode::TKind AKind) {
    if (FOpen.size() == MaxJsonDepth)
      Refuse(fmt::format("nested more than {} levels deep", MaxJsonDepth));
    FOpen.push_back(Add(AKind));
    return true;
  }
  bool Close() {
    FOpen.pop_back();
    return true;
  }

  const std::string& FFileName;
  const int& FLine;
  std::vector<TJsonNode*> FOpen;  // only the last of siblings is ever open: pointers stay valid
  std::size_t FValues = 0;
  std::string FKey;
  int FKeyLine = 0;
};

}  // namespace

TJsonNode ParseJson(std::string_view AText, const std::string& AFileName) {
  if (AText.size() > MaxJsonSize)
    throw EFileError(fmt::format("{}: longer than {} MiB", AFileName, MaxJsonSize >> 20));
  int Line = 1;
  TBuilder Builder(AFileName, Line);
  const char* const First = AText.data();
  nlohmann::json::sax_parse(TLineIterator(First, &Line),
                            TLineIterator(First + AText.size(), &Line),
                            &Builder,
                            nlohmann::json::input_format_t::json,
                            true,
                            true);
  return std::move(Builder.Root);
}

}  // namespace System::Beacon::Fencing
