// One value of a scene's JSON text, with its place in the text for error messages.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/frame_rate.h"
#include "host/interface/vector.h"

namespace host {

/// Keeps the order of the keys.
using Json = nlohmann::ordered_json;

/// Parses a JSON text. Throws DocumentError: "3:17: ..." for broken text, with line and column, or
/// for a key that stands twice in one object.
Json ParseJson(const std::string& text);

/// Reads throw DocumentError if the value isn't what is asked for: "fps: expected a whole number,
/// found \"fast\"".
class JsonPlace {
 public:
  JsonPlace(const Json& value, std::string place) : value_(&value), place_(std::move(place)) {}

  const Json& Value() const { return *value_; }
  const std::string& Place() const { return place_; }
  [[noreturn]] void Fail(const std::string& what) const;

  /// An object whose keys are all among these; the first other one is told, with its nearest name.
  void ExpectKeys(const std::vector<std::string>& allowed, std::string_view what = "key") const;
  bool Has(const char* key) const { return value_->contains(key); }
  JsonPlace At(const std::string& key) const;  ///< of an object that has the key
  void ExpectObject() const;

  void ExpectArray() const;
  void ExpectLength(std::size_t least, std::size_t most) const;  ///< of an array
  std::size_t Size() const { return value_->size(); }
  JsonPlace At(std::size_t index) const;

  bool Bool() const;
  std::string Text() const;
  double Number() const;
  std::int32_t Whole(std::int32_t least, std::int32_t most) const;
  FrameRate Rate() const;      ///< a number, or a fraction in quotes
  Vector VectorValue() const;  ///< [x, y, z]

 private:
  [[noreturn]] void Expected(const std::string& what) const;

  const Json* value_;
  std::string place_;
};

}  // namespace host
