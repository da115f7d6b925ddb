#include "C4D/parameters/parameter_reader.h"

#include "util/exception.h"

namespace nbx {

namespace {

template <class T>
const T& default_of(const host::ClassDescription& table, std::int32_t id) {
  const host::ParameterInfo* info = table.Find(id);
  if (const T* value = info ? std::get_if<T>(&info->default_value) : nullptr) return *value;
  throw Exception("the table of \"" + table.name + "\" has no parameter " + std::to_string(id) +
                  " of the kind that is read");
}

}  // namespace

bool ParameterReader::flag(std::int32_t id) const {
  return values_.GetBool(id, default_of<bool>(table_, id));
}

std::int32_t ParameterReader::whole(std::int32_t id) const {
  return values_.GetLong(id, default_of<std::int32_t>(table_, id));
}

double ParameterReader::real(std::int32_t id) const {
  return values_.GetReal(id, default_of<double>(table_, id));
}

host::Vector ParameterReader::vector(std::int32_t id) const {
  return values_.GetVector(id, default_of<host::Vector>(table_, id));
}

host::BaseTime ParameterReader::time(std::int32_t id) const {
  return values_.GetTime(id, default_of<host::BaseTime>(table_, id));
}

host::Filename ParameterReader::file(std::int32_t id) const {
  return values_.GetFilename(id, default_of<host::Filename>(table_, id));
}

host::CurvePoints ParameterReader::curve(std::int32_t id) const {
  return values_.GetCurve(id, default_of<host::CurvePoints>(table_, id));
}

host::Gradient ParameterReader::gradient(std::int32_t id) const {
  return values_.GetGradient(id, default_of<host::Gradient>(table_, id));
}

host::LinkList ParameterReader::links(std::int32_t id) const {
  static_cast<void>(default_of<host::LinkList>(table_, id));
  return values_.GetLinks(id);
}

host::BaseList2D* ParameterReader::link(std::int32_t id) const {
  static_cast<void>(default_of<host::BaseList2D*>(table_, id));
  return values_.GetLink(id);
}

}  // namespace nbx
