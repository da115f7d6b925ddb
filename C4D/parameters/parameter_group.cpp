#include "C4D/parameters/parameter_group.h"

#include <algorithm>

namespace nbx {

std::vector<host::ParameterInfo> ParameterGroup::infos() const {
  std::vector<host::ParameterInfo> all;
  for (const Entry& entry : entries_) all.push_back(entry.info);
  return all;
}

Changes ParameterGroup::changes(std::int32_t id) const {
  const Entry* entry = find(id);
  return entry ? entry->changes : Changes::kUnknown;
}

Condition::Ids ParameterGroup::blockers(std::int32_t id, const host::BaseList2D& element) const {
  const Entry* entry = find(id);
  return entry ? entry->enabled.blockers(ParameterReader(element)) : Condition::Ids();
}

const ParameterGroup::Entry* ParameterGroup::find(std::int32_t id) const {
  const auto found =
      std::ranges::find_if(entries_, [id](const Entry& entry) { return entry.info.id == id; });
  return found == entries_.end() ? nullptr : &*found;
}

ParameterGroup::Entry& ParameterGroup::add(host::ParameterInfo info) {
  return entries_.emplace_back(Entry{std::move(info), changes_});
}

ParameterGroup::Line<host::BaseList2D*> ParameterGroup::link(std::int32_t id, const char* name,
                                                             host::LinkTarget target,
                                                             const char* help) {
  host::BaseList2D* const none = nullptr;
  Entry& entry = add(host::line::Any(id, symbol(name), none, "", help));
  entry.info.target = target;
  return {entry, none};
}

ParameterGroup::Line<host::CurvePoints> ParameterGroup::straight_curve(std::int32_t id,
                                                                       const char* name,
                                                                       host::CurvePoints points,
                                                                       const char* help) {
  for (host::CurvePoint& p : points) p.in_mode = p.out_mode = host::CurveMode::Linear;
  return curve(id, name, points, help);
}

}  // namespace nbx
