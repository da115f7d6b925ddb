// Reads parameters of an element by the lines of its class's table.
#pragma once

#include <type_traits>

#include "host/interface/scene.h"

namespace nbx {

/// One line of a table: the id of a parameter, its type and its default.
template <class T>
struct Parameter {
  std::int32_t id = 0;
  T default_value = {};
  operator std::int32_t() const { return id; }
};

/// The parameters of one element at the document's time:
///
///     const ParameterReader p(volume);
///     const double speed = p(OVOLUME.WIND_SPEED);
///
/// A parameter that is missing, or holds a value of another type, reads as its default.
class ParameterReader {
 public:
  explicit ParameterReader(const host::BaseList2D& element)
      : ParameterReader(element.GetDataInstance()) {}
  /// `values` must outlive the reader.
  explicit ParameterReader(const host::BaseContainer& values) : values_(values) {}

  template <class T>
  T operator()(const Parameter<T>& parameter) const {
    const T& fallback = parameter.default_value;
    if constexpr (std::is_enum_v<T>)
      return static_cast<T>(values_.GetLong(parameter.id, fallback));
    else if constexpr (std::is_same_v<T, bool>)
      return values_.GetBool(parameter.id, fallback);
    else if constexpr (std::is_same_v<T, std::int32_t>)
      return values_.GetLong(parameter.id, fallback);
    else if constexpr (std::is_same_v<T, double>)
      return values_.GetReal(parameter.id, fallback);
    else {
      const host::ParameterValue* value = values_.Find(parameter.id);
      const T* typed = value ? std::get_if<T>(value) : nullptr;
      return typed ? *typed : fallback;
    }
  }

 private:
  const host::BaseContainer& values_;
};

}  // namespace nbx
