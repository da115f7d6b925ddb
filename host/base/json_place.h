// A JSON value together with its place in the text, for error messages.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "host/interface/frame_rate.h"
#include "host/interface/vector.h"

namespace host {

/// Preserves the order of the keys.
using Json = nlohmann::ordered_json;

/// Parses a JSON text. Throws DocumentError for broken text ("3:17: ...", with line and column) and
/// for duplicate keys in an object.
Json ParseJson(const std::string& text);
/// The same for a text that may contain comments, which it skips.
Json ParseCommentedJson(const std::string& text);

/// Read access throws DocumentError if the value has the wrong type: "fps: expected a whole number,
/// found \"fast\"".
class JsonPlace {
 public:
  JsonPlace(const Json& value, std::string place) : value_(&value), place_(std::move(place)) {}

  const Json& Value() const { return *value_; }
  const std::string& Place() const { return place_; }
  [[noreturn]] void Fail(const std::string& what) const;

  /// Fails unless the value is an object whose keys are all allowed. The message names the first
  /// other key, and ends with what `hint` says about it, or else with the nearest allowed one.
  void ExpectKeys(const std::vector<std::string>& allowed, std::string_view what = "key",
                  const std::function<std::string(const std::string& key)>& hint = {}) const;
  bool Has(const char* key) const { return value_->contains(key); }
  JsonPlace At(const std::string& key) const;  ///< the key must exist
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
