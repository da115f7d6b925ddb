// Values of parameters, as the plug-in's readers take them from an element of a document.
#pragma once

#include "host/interface/parameter_info.h"
#include "host/interface/scene.h"

namespace nbx {

/// The parameters of one element at the document's time. Each default has one place, the table of
/// the class: it holds where the container has no value, or one of another kind. A parameter is
/// read as the kind that its table gives it. Any other kind, and an id that the table lacks, throws
/// Exception, since the code is wrong then.
class ParameterReader {
 public:
  explicit ParameterReader(const host::BaseList2D& element)
      : ParameterReader(element.GetDataInstance(), element.GetDescription()) {}
  /// Both must outlive the reader.
  ParameterReader(const host::BaseContainer& values, const host::ClassDescription& table)
      : values_(values), table_(table) {}

  bool flag(std::int32_t id) const;
  std::int32_t whole(std::int32_t id) const;  ///< a whole number or a choice
  double real(std::int32_t id) const;
  host::Vector vector(std::int32_t id) const;
  host::BaseTime time(std::int32_t id) const;
  host::Filename file(std::int32_t id) const;
  host::CurvePoints curve(std::int32_t id) const;
  host::Gradient gradient(std::int32_t id) const;
  host::LinkList links(std::int32_t id) const;    ///< none of them null
  host::BaseList2D* link(std::int32_t id) const;  ///< may be null

 private:
  const host::BaseContainer& values_;
  const host::ClassDescription& table_;
};

}  // namespace nbx
