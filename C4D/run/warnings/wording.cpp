#include "C4D/run/warnings/wording.h"

#include <sstream>

namespace nbx {

namespace {

std::string point_text(const Vec3d& p) {
  return "(" + number_text(p[0]) + ", " + number_text(p[1]) + ", " + number_text(p[2]) + ")";
}

struct ValueText {
  std::string operator()(bool on) const { return on ? "on" : "off"; }
  std::string operator()(std::int32_t n) const { return std::to_string(n); }
  std::string operator()(double x) const { return number_text(x); }
  template <class Other>
  std::string operator()(const Other&) const {
    return "what it is";
  }
};

}  // namespace

std::string number_text(double x) {
  std::ostringstream out;
  out << x + 0.0;  // no -0
  return out.str();
}

std::string box_text(const WorldBox& box) {
  return point_text(box.lo) + " to " + point_text(box.hi);
}

std::string list_text(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i)
    text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
  return text;
}

std::string parameter_name(const host::BaseList2D& element, std::int32_t id) {
  const host::ParameterInfo* info = element.GetDescription().Find(id);
  return info ? info->Name() : std::string();
}

std::string setting_text(const host::BaseList2D& element, std::int32_t id) {
  const host::ParameterInfo* info = element.GetDescription().Find(id);
  const host::ParameterValue* value = element.GetDataInstance().Find(id);
  if (!info) return {};
  const host::ParameterValue& shown = value ? *value : info->default_value;
  for (const host::CycleEntry& entry : info->cycle)
    if (shown == host::ParameterValue(entry.value)) return info->Name() + " is " + entry.name;
  return info->Name() + " is " + std::visit(ValueText(), shown);
}

std::string emitter_subject(const std::string& name) { return "emitter \"" + name + "\": "; }

}  // namespace nbx
