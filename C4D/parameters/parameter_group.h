// Tables of parameters. A table is a class whose members are its lines:
//
//     struct MotionParameters : ParameterGroup {
//       MotionParameters() : ParameterGroup("OVOLUME", Changes::kGas) {}
//       Real WIND_SPEED = real(1248, "WIND_SPEED", 0, 0, kUnbounded, "units/s", "Speed of ...");
//       Flag WIND_WORLD = flag(1276, "WIND_WORLD", false, "...").still();
//     };
//
// Each line gives the id, the name, the default, the bounds, the unit and the help text. From it
// come the host's description of the class and the typed handle that readers use. A table says what
// its parameters change, and a line of it may say something else.
#pragma once

#include <vector>

#include "C4D/parameters/condition.h"
#include "host/interface/parameter_lines.h"

namespace nbx {

inline constexpr double kUnbounded = host::line::kUnbounded;

/// What another value of a parameter changes. A change of kGas or kFrames makes a cache stale.
enum class Changes {
  kUnknown,  ///< not a parameter of the table
  kGas,      ///< the simulation, from the time on at which the value differs
  kFrames,   ///< what each frame stores of the gas
  kDetail,   ///< an up-resolution run
  kRun,      ///< the range and the start of a run, and how and where it stores its frames
  kPicture,  ///< only pictures
  kView,     ///< only the panel and the viewport
};

/// Lives as long as the program, at one address: conditions point to lines.
class ParameterGroup {
 public:
  using Flag = Parameter<bool>;
  using Whole = Parameter<std::int32_t>;
  using Real = Parameter<double>;
  using Vector = Parameter<host::Vector>;
  using Time = Parameter<host::BaseTime>;
  using Text = Parameter<std::string>;
  using File = Parameter<host::Filename>;
  using Link = Parameter<host::BaseList2D*>;
  using Links = Parameter<host::LinkList>;
  using Curve = Parameter<host::CurvePoints>;
  using Gradient = Parameter<host::Gradient>;
  using Button = Parameter<std::monostate>;
  /// A choice from the enumerators of a type, which are the values in containers.
  template <class Enum>
  using Choice = Parameter<Enum>;

  ParameterGroup(const ParameterGroup&) = delete;
  ParameterGroup& operator=(const ParameterGroup&) = delete;

  /// The lines as the host takes them, in order.
  std::vector<host::ParameterInfo> infos() const;
  bool contains(std::int32_t id) const { return find(id) != nullptr; }
  Changes changes(std::int32_t id) const;
  /// False if the parameter has no effect while the element is as it is. True for an id that the
  /// group doesn't have.
  bool enabled(std::int32_t id, const host::BaseList2D& element) const {
    return blockers(id, element).empty();
  }
  /// The parameters whose values take away the parameter's effect; none if it is enabled.
  Condition::Ids blockers(std::int32_t id, const host::BaseList2D& element) const;

 protected:
  struct Entry {
    host::ParameterInfo info;
    Changes changes;
    Condition enabled = {};
  };

  /// A line just added, to which more can be said.
  template <class T>
  class Line {
   public:
    Line(Entry& entry, T default_value) : entry_(entry), default_(std::move(default_value)) {}
    operator Parameter<T>() const { return {entry_.info.id, default_}; }

    /// Can't have keyframes: it is read once, at the start of a run.
    Line& still() { return entry_.info.animatable = false, *this; }
    /// No part of the program reads it yet.
    Line& later() { return entry_.info.listed = false, *this; }
    /// A panel shows it, no document holds it.
    Line& shown() { return entry_.info.stored = false, still(); }
    /// The bounds hold for each component.
    Line& bounded(double minimum, double maximum) {
      entry_.info.minimum = minimum;
      entry_.info.maximum = maximum;
      return *this;
    }
    Line& changes(Changes what) { return entry_.changes = what, *this; }
    Line& enabled_if(Condition condition) {
      entry_.enabled = std::move(condition);
      return *this;
    }

   private:
    Entry& entry_;
    T default_;
  };

  /// Symbols are the prefix, an underscore and the name.
  ParameterGroup(const char* prefix, Changes changes) : prefix_(prefix), changes_(changes) {}
  ~ParameterGroup() = default;

  template <class T>
  Line<T> any(std::int32_t id, const char* name, const T& value, const char* unit,
              const char* help) {
    return {add(host::line::Any(id, symbol(name), value, unit, help)), value};
  }
  Line<bool> flag(std::int32_t id, const char* name, bool on, const char* help) {
    return any(id, name, on, "", help);
  }
  Line<std::int32_t> whole(std::int32_t id, const char* name, std::int32_t value, double minimum,
                           double maximum, const char* help) {
    return any(id, name, value, "", help).bounded(minimum, maximum);
  }
  Line<double> real(std::int32_t id, const char* name, double value, double minimum, double maximum,
                    const char* unit, const char* help) {
    return any(id, name, value, unit, help).bounded(minimum, maximum);
  }
  Line<host::Vector> vector(std::int32_t id, const char* name, const host::Vector& value,
                            const char* unit, const char* help) {
    return any(id, name, value, unit, help);
  }
  Line<host::BaseTime> time(std::int32_t id, const char* name, const host::BaseTime& value,
                            const char* help) {
    return any(id, name, value, "s", help).still();
  }
  Line<host::Filename> file(std::int32_t id, const char* name, const char* help) {
    return any(id, name, host::Filename(), "", help);
  }
  Line<host::LinkList> links(std::int32_t id, const char* name, const char* help) {
    return any(id, name, host::LinkList(), "", help);
  }
  Line<host::BaseList2D*> link(std::int32_t id, const char* name, host::LinkTarget target,
                               const char* help);
  /// A smooth curve through the points.
  Line<host::CurvePoints> curve(std::int32_t id, const char* name, const host::CurvePoints& points,
                                const char* help) {
    return any(id, name, points, "", help);
  }
  /// A curve that runs straight from point to point.
  Line<host::CurvePoints> straight_curve(std::int32_t id, const char* name,
                                         host::CurvePoints points, const char* help);
  Line<host::Gradient> gradient(std::int32_t id, const char* name, const host::Gradient& value,
                                const char* help) {
    return any(id, name, value, "", help);
  }
  template <class Enum>
  Line<Enum> cycle(std::int32_t id, const char* name, Enum value,
                   std::vector<host::CycleEntry> entries, const char* help) {
    Entry& entry = add(host::line::Any(id, symbol(name), std::int32_t{value}, "", help));
    entry.info.cycle = std::move(entries);
    return {entry, value};
  }
  Line<std::string> shown_text(std::int32_t id, const char* name, const char* help) {
    return any(id, name, std::string(), "", help).shown();
  }
  Line<std::monostate> button(std::int32_t id, const char* name, const char* help) {
    return any(id, name, std::monostate(), "", help).shown();
  }

 private:
  std::string symbol(const char* name) const { return prefix_ + "_" + name; }
  Entry& add(host::ParameterInfo info);
  const Entry* find(std::int32_t id) const;

  std::string prefix_;
  Changes changes_;
  std::vector<Entry> entries_;
};

/// A table of several groups, in their order.
template <class... Groups>
struct JoinedParameters : Groups... {
  std::vector<host::ParameterInfo> infos() const {
    std::vector<host::ParameterInfo> all;
    for (const auto& group : {Groups::infos()...})
      all.insert(all.end(), group.begin(), group.end());
    return all;
  }
  bool enabled(std::int32_t id, const host::BaseList2D& element) const {
    return (Groups::enabled(id, element) && ...);
  }
  Changes changes(std::int32_t id) const {
    Changes found = Changes::kUnknown;
    for (const Changes each : {Groups::changes(id)...})
      if (each != Changes::kUnknown) found = each;
    return found;
  }
  Condition::Ids blockers(std::int32_t id, const host::BaseList2D& element) const {
    Condition::Ids all;
    for (const auto& group : {Groups::blockers(id, element)...})
      all.insert(all.end(), group.begin(), group.end());
    return all;
  }
};

}  // namespace nbx
