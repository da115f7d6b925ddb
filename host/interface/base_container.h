// The host's storage for parameter values: a map from ids to values.
//
// Every element of a scene has one. Readers pass a default for missing ids, so a plug-in works with
// documents that were written before a parameter existed.
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

/// A path. In a container, a relative path is relative to the folder of the document
/// (BaseDocument::Resolve), elsewhere to the current folder.
struct Filename {
  std::string path;
  friend bool operator==(const Filename&, const Filename&) = default;
};

/// How a curve arrives at a point, or leaves it.
enum class CurveMode : std::int32_t {
  Linear = 0,  ///< straight to the neighbor
  Smooth = 1,  ///< along the chord from neighbor to neighbor; level at the curve's ends
};

/// A point of a user-defined curve. `bias`, above 0 and below 1, pulls the segment to the right of
/// the point toward one of its ends. 0.5 is neutral.
struct CurvePoint {
  double x = 0, y = 0;
  CurveMode in_mode = CurveMode::Smooth, out_mode = CurveMode::Smooth;
  double bias = 0.5;
  friend bool operator==(const CurvePoint&, const CurvePoint&) = default;
};

/// A function of one variable. The points may be in any order.
using CurvePoints = std::vector<CurvePoint>;

/// Elements of the document, in any order.
using LinkList = std::vector<BaseList2D*>;

/// One value. The alternatives are in the order of ParameterType. A button has no value.
using ParameterValue =
    std::variant<bool, std::int32_t, double, Vector, BaseTime, std::string, Filename, BaseList2D*,
                 CurvePoints, Gradient, LinkList, std::monostate>;

/// Not thread-safe: only the thread that evaluates the document may use the containers of its
/// elements.
class BaseContainer {
 public:
  /// The value with this id, or `fallback` if there is none or it has another type. Bool, long and
  /// real convert to each other: a real loses its fraction and is clamped to the range of a long,
  /// and any number except 0 is true.
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
  /// The linked elements, owned by their document. None is null.
  LinkList GetLinks(std::int32_t id) const { return Get<LinkList>(id, {}); }
  /// The linked element, owned by its document. Null if there is none.
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
  /// Null if there is no value with this id. Valid until the id is removed.
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
