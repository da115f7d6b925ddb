#include "math/curves/spline_stream.h"

#include <cmath>

namespace nbx {

namespace {

constexpr std::int32_t kVersion = 0x52533032;
constexpr std::int32_t kVersionWithoutView = 0x52533031;

// The reals of a point in the order of the stream.
constexpr float ControlPoint::*kReals[] = {&ControlPoint::x,        &ControlPoint::y,
                                           &ControlPoint::inSlope,  &ControlPoint::outSlope,
                                           &ControlPoint::sideBias, &ControlPoint::bias};

bool write_point(ValueWriter& out, const ControlPoint& point) {
  for (const auto member : kReals)
    if (!out.write_real(point.*member)) return false;
  return out.write_long(point.inMode) && out.write_long(point.outMode);
}

bool read_point(ValueReader& in, RationalSpline& spline) {
  ControlPoint point;
  for (const auto member : kReals)
    if (!in.read_real(point.*member) || !std::isfinite(point.*member)) return false;
  if (!in.read_long(point.inMode) || !in.read_long(point.outMode)) return false;
  const int index = spline.addPoint(point.x, point.y, point.inMode, point.outMode);
  spline.setSideBias(index, point.sideBias);
  spline.setBias(index, point.bias);
  return true;
}

}  // namespace

bool write_spline(ValueWriter& out, const RationalSpline& spline, const SplineView& view) {
  const auto count = static_cast<std::int32_t>(spline.points().size());
  if (!out.write_long(kVersion) || !out.write_long(count)) return false;
  for (const ControlPoint& point : spline.points())
    if (!write_point(out, point)) return false;
  if (!out.write_bool(view.valid)) return false;
  for (const double edge : view.rectangle)
    if (!out.write_lreal(edge)) return false;
  return true;
}

bool read_spline(ValueReader& in, RationalSpline& spline, SplineView& view) {
  std::int32_t version = 0, count = 0;
  if (!in.read_long(version) || (version != kVersion && version != kVersionWithoutView))
    return false;
  if (!in.read_long(count) || count < 0) return false;
  RationalSpline new_spline;
  for (std::int32_t i = 0; i < count; ++i)
    if (!read_point(in, new_spline)) return false;
  SplineView new_view = view;
  new_view.valid = version == kVersion;
  if (new_view.valid) {
    bool was_set = false;
    if (!in.read_bool(was_set)) return false;
    for (double& edge : new_view.rectangle)
      if (!in.read_lreal(edge)) return false;
  }
  spline = std::move(new_spline);
  view = new_view;
  return true;
}

}  // namespace nbx
