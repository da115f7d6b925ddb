#include "host/base/json_place.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <set>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"

namespace host {
namespace {

// Far more than scenes need, and safe for recursive functions.
constexpr int kDeepestNesting = 500;

/// "line:column" of a byte, both counted from 1.
std::string LineAndColumn(const std::string& text, std::size_t byte) {
  const std::string_view before = std::string_view(text).substr(0, byte);
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  const std::size_t newline = before.rfind('\n');
  const std::size_t column = newline == std::string_view::npos ? byte : byte - newline - 1;
  return std::to_string(line) + ":" + std::to_string(column + 1);
}

/// The start of the first comment that has no end.
std::size_t OpenComment(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"')
      while (++i < text.size() && text[i] != '"') i += text[i] == '\\' ? 1 : 0;
    if (text.substr(i, 2) == "//") i = std::min(text.find_first_of("\r\n", i), text.size());
    if (text.substr(i, 2) != "/*") continue;
    const std::size_t end = text.find("*/", i + 2);
    if (end == std::string_view::npos) return i;
    i = end + 1;
  }
  return text.size();
}

/// What to do about a syntax error at that byte, as the end of the message.
std::string Cure(std::string_view text, std::size_t byte, const std::string& message) {
  const auto says = [&message](const char* words) {
    return message.find(words) != std::string::npos;
  };
  const char c = byte < text.size() ? text[byte] : '\0';
  const std::size_t before = text.substr(0, byte).find_last_not_of(" \t\r\n");
  const bool after_comma = before != std::string_view::npos && text[before] == ',';
  if ((c == '}' || c == ']') && after_comma) return "; remove the comma before it";
  if (c == '\'') return "; texts are written in double quotes";
  if (c == '#') return "; comments start with //";
  if (c == '.' && byte > 0 && !std::isdigit(static_cast<unsigned char>(text[byte - 1])))
    return "; numbers start with a digit: 0.5";
  if (says("object key - invalid literal")) return "; keys are written in double quotes";
  if (text.substr(byte, 4) == "True" || text.substr(byte, 5) == "False")
    return "; true and false have small letters";
  if (says("unexpected string literal; expected '") || says("unexpected '{'; expected '"))
    return "; a comma is missing before it";
  return {};
}

/// The message of the parser without its preamble, and without what it has read if that is long.
std::string Reason(const std::string& text, std::size_t byte, std::string message) {
  message.erase(0, std::min(message.find("syntax error"), message.size()));
  const std::size_t read = message.find("; last read: '");
  const std::size_t rest = std::max(message.rfind("'; expected "), read);
  if (read != std::string::npos && message.size() - read > 100)
    message = message.substr(0, read) + (rest > read ? message.substr(rest + 1) : "");
  return message + Cure(text, byte, message);
}

Json Parse(const std::string& text, bool with_comments) {
  std::vector<std::set<std::string>> open;  // keys of each object that is being read
  const auto check = [&open](int depth, Json::parse_event_t event, Json& value) {
    if (depth > kDeepestNesting) throw DocumentError("the text is nested too deeply");
    if (event == Json::parse_event_t::object_start) open.emplace_back();
    if (event == Json::parse_event_t::object_end) open.pop_back();
    if (event == Json::parse_event_t::key && !open.back().insert(value).second)
      throw DocumentError("the key " + value.dump() + " occurs twice in one object");
    return true;
  };
  try {
    return Json::parse(text, check, true, with_comments);
  } catch (const Json::parse_error& error) {
    // The parser reports the byte after the one that caused the error.
    std::size_t byte = std::min(error.byte > 0 ? error.byte - 1 : 0, text.size());
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
      throw DocumentError("the text is empty");
    if (std::string_view(error.what()).find("missing closing '*/'") != std::string_view::npos)
      byte = OpenComment(text);
    throw DocumentError(LineAndColumn(text, byte), Reason(text, byte, error.what()));
  } catch (const Json::out_of_range&) {
    throw DocumentError("a number in the text is too large");
  }
}

}  // namespace

Json ParseJson(const std::string& text) { return Parse(text, false); }
Json ParseCommentedJson(const std::string& text) { return Parse(text, true); }

void JsonPlace::Fail(const std::string& what) const { throw DocumentError(place_, what); }

void JsonPlace::Expected(const std::string& what) const {
  std::string found = value_->dump(-1, ' ', false, Json::error_handler_t::replace);
  if (found.size() > 40) found = std::string("a longer ") + value_->type_name();
  Fail("expected " + what + ", found " + found);
}

void JsonPlace::ExpectObject() const {
  if (!value_->is_object()) Expected("an object {...}");
}

void JsonPlace::ExpectKeys(const std::vector<std::string>& allowed, std::string_view what,
                           const std::function<std::string(const std::string& key)>& hint) const {
  ExpectObject();
  for (const auto& [key, value] : value_->items()) {
    if (std::find(allowed.begin(), allowed.end(), key) != allowed.end()) continue;
    const std::string end = hint ? hint(key) : "";
    Fail("unknown " + std::string(what) + " " + Quoted(key) +
         (end.empty() ? DidYouMean(key, allowed) : end));
  }
}

JsonPlace JsonPlace::At(const std::string& key) const {
  return {value_->at(key), place_.empty() ? key : place_ + "." + key};
}

void JsonPlace::ExpectArray() const {
  if (!value_->is_array()) Expected("an array [...]");
}

void JsonPlace::ExpectLength(std::size_t least, std::size_t most) const {
  ExpectArray();
  if (Size() >= least && Size() <= most) return;
  const std::string length =
      least == most ? std::to_string(least) : std::to_string(least) + " or " + std::to_string(most);
  Fail("expected " + length + " values, found " + std::to_string(Size()));
}

JsonPlace JsonPlace::At(std::size_t index) const {
  return {value_->at(index), place_ + "[" + std::to_string(index) + "]"};
}

bool JsonPlace::Bool() const {
  if (!value_->is_boolean()) Expected("true or false");
  return value_->get<bool>();
}

std::string JsonPlace::Text() const {
  if (!value_->is_string()) Expected("a text in quotes");
  return value_->get<std::string>();
}

double JsonPlace::Number() const {
  if (!value_->is_number()) Expected("a number");
  return value_->get<double>();
}

std::int32_t JsonPlace::Whole(std::int32_t least, std::int32_t most) const {
  if (!value_->is_number() || std::floor(Number()) != Number()) Expected("a whole number");
  if (Number() < least) Fail("is below " + std::to_string(least));
  if (Number() > most) Fail("is above " + std::to_string(most));
  return static_cast<std::int32_t>(Number());
}

FrameRate JsonPlace::Rate() const {
  if (!value_->is_number() && !value_->is_string()) Expected("a frame rate");
  std::string error;
  const auto rate =
      value_->is_number() ? FrameRate::FromReal(Number(), error) : FrameRate::Parse(Text(), error);
  if (!rate) Fail(value_->dump() + " " + error);
  return *rate;
}

Vector JsonPlace::VectorValue() const {
  if (!value_->is_array()) Expected("a vector [x, y, z]");
  ExpectLength(3, 3);
  return {At(0).Number(), At(1).Number(), At(2).Number()};
}

}  // namespace host
