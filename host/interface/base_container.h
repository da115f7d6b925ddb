// The host's store of parameter values: a map from an id to a value.
//
// Every scene element carries one. Readers ask with the value to take if the id is missing, so a
// plug-in works on documents that were written before a parameter existed.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "host/interface/base_time.h"
#include "host/interface/gradient.h"
#include "host/interface/vector.h"

namespace host {

class BaseList2D;

/// A path. In a container a relative one counts from the folder of the document
/// (BaseDocument::Resolve); elsewhere from the current folder.
struct Filename {
  std::string path;
  friend bool operator==(const Filename&, const Filename&) = default;
};

/// How a curve comes to a point, or leaves it.
enum class CurveMode : std::int32_t {
  Linear = 0,  ///< straight to the neighbor
  Smooth = 1,  ///< along the chord from neighbor to neighbor; level at the curve's ends
};

/// A point of a curve that the user draws. `bias`, above 0 and below 1, pulls the span to the right
/// of the point towards one of its ends; at 0.5 it pulls to neither.
struct CurvePoint {
  double x = 0, y = 0;
  CurveMode in_mode = CurveMode::Smooth, out_mode = CurveMode::Smooth;
  double bias = 0.5;
  friend bool operator==(const CurvePoint&, const CurvePoint&) = default;
};

/// A function of one variable, in any order of its points.
using CurvePoints = std::vector<CurvePoint>;

/// Elements of the document, in any order.
using LinkList = std::vector<BaseList2D*>;

/// One value. The order of the alternatives is that of ParameterType; a button has none.
using ParameterValue =
    std::variant<bool, std::int32_t, double, Vector, BaseTime, std::string, Filename, BaseList2D*,
                 CurvePoints, Gradient, LinkList, std::monostate>;

/// No locks: the thread that evaluates the document, and no other, may use the containers of its
/// elements.
class BaseContainer {
 public:
  /// The value under `id`, or `fallback` if there is none or it is of another kind. Bool, long and
  /// real are read as one another: a real as a long loses its fraction and stays within its range,
  /// anything but 0 is true.
  bool GetBool(std::int32_t id, bool fallback = false) const { return Number<bool>(id, fallback); }
  std::int32_t GetLong(std::int32_t id, std::int32_t fallback = 0) const {
    return Number<std::int32_t>(id, fallback);
  }
  double GetReal(std::int32_t id, double fallback = 0) const {
    return Number<double>(id, fallback);
  }
  Vector GetVector(std::int32_t id, const Vector& fallback = {}) const {
    return Get<Vector>(id, fallback);
  }
  BaseTime GetTime(std::int32_t id, const BaseTime& fallback = {}) const {
    return Get<BaseTime>(id, fallback);
  }
  std::string GetString(std::int32_t id, const std::string& fallback = {}) const {
    return Get<std::string>(id, fallback);
  }
  Filename GetFilename(std::int32_t id, const Filename& fallback = {}) const {
    return Get<Filename>(id, fallback);
  }
  CurvePoints GetCurve(std::int32_t id, const CurvePoints& fallback = {}) const {
    return Get<CurvePoints>(id, fallback);
  }
  Gradient GetGradient(std::int32_t id, const Gradient& fallback = {}) const {
    return Get<Gradient>(id, fallback);
  }
  /// Elements owned by their document, none of them null.
  LinkList GetLinks(std::int32_t id) const { return Get<LinkList>(id, {}); }
  /// The element linked to, owned by its document; null if there is none.
  BaseList2D* GetLink(std::int32_t id) const { return Get<BaseList2D*>(id, nullptr); }

  void SetBool(std::int32_t id, bool value) { Set(id, value); }
  void SetLong(std::int32_t id, std::int32_t value) { Set(id, value); }
  void SetReal(std::int32_t id, double value) { Set(id, value); }
  void SetVector(std::int32_t id, const Vector& value) { Set(id, value); }
  void SetTime(std::int32_t id, const BaseTime& value) { Set(id, value); }
  void SetString(std::int32_t id, const std::string& value) { Set(id, value); }
  void SetFilename(std::int32_t id, const Filename& value) { Set(id, value); }
  void SetCurve(std::int32_t id, const CurvePoints& value) { Set(id, value); }
  void SetGradient(std::int32_t id, const Gradient& value) { Set(id, value); }
  void SetLinks(std::int32_t id, const LinkList& value) { Set(id, value); }
  void SetLink(std::int32_t id, BaseList2D* value) { Set(id, value); }

  void Set(std::int32_t id, ParameterValue value) {
    values_.insert_or_assign(id, std::move(value));
  }
  /// Null if there is no value under `id`; valid until the id is removed.
  const ParameterValue* Find(std::int32_t id) const {
    const auto found = values_.find(id);
    return found == values_.end() ? nullptr : &found->second;
  }
  /// All values, by id.
  const std::map<std::int32_t, ParameterValue>& Values() const { return values_; }
  void Remove(std::int32_t id) { values_.erase(id); }

  friend bool operator==(const BaseContainer&, const BaseContainer&) = default;

 private:
  template <class T>
  T Get(std::int32_t id, const T& fallback) const {
    const ParameterValue* value = Find(id);
    const T* typed = value ? std::get_if<T>(value) : nullptr;
    return typed ? *typed : fallback;
  }
  template <class T>
  T Number(std::int32_t id, T fallback) const {
    const ParameterValue* value = Find(id);
    if (!value) return fallback;
    if (const auto* b = std::get_if<bool>(value)) return static_cast<T>(*b);
    if (const auto* n = std::get_if<std::int32_t>(value)) return static_cast<T>(*n);
    if (const auto* r = std::get_if<double>(value)) return FromReal<T>(*r);
    return fallback;
  }

  template <class T>
  static T FromReal(double real) {
    if constexpr (std::is_same_v<T, std::int32_t>)
      return std::isnan(real) ? 0 : static_cast<T>(std::clamp(real, -2147483648.0, 2147483647.0));
    else
      return static_cast<T>(real);
  }

  std::map<std::int32_t, ParameterValue> values_;
};

}  // namespace host
