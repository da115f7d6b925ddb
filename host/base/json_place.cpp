#include "host/base/json_place.h"

#include <algorithm>
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

/// The message of the parser without its preamble.
std::string Reason(const std::string& message) {
  const std::size_t at = message.find("syntax error");
  return at == std::string::npos ? message : message.substr(at);
}

}  // namespace

Json ParseJson(const std::string& text) {
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
    return Json::parse(text, check, true, /*ignore_comments=*/true);
  } catch (const Json::parse_error& error) {
    // The parser reports the byte after the one that caused the error.
    const std::size_t byte = error.byte > 0 ? error.byte - 1 : 0;
    throw DocumentError(LineAndColumn(text, std::min(byte, text.size())), Reason(error.what()));
  } catch (const Json::out_of_range&) {
    throw DocumentError("a number in the text is too large");
  }
}

void JsonPlace::Fail(const std::string& what) const { throw DocumentError(place_, what); }

void JsonPlace::Expected(const std::string& what) const {
  std::string found = value_->dump(-1, ' ', false, Json::error_handler_t::replace);
  if (found.size() > 40) found = std::string("a longer ") + value_->type_name();
  Fail("expected " + what + ", found " + found);
}

void JsonPlace::ExpectObject() const {
  if (!value_->is_object()) Expected("an object {...}");
}

void JsonPlace::ExpectKeys(const std::vector<std::string>& allowed, std::string_view what) const {
  ExpectObject();
  for (const auto& [key, value] : value_->items())
    if (std::find(allowed.begin(), allowed.end(), key) == allowed.end())
      Fail("unknown " + std::string(what) + " " + Quoted(key) + DidYouMean(key, allowed));
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
