// The only type of user curve: a function of one variable that the user draws with control points.
// It maps channel values to colors and opacities, limits decay and combustion, and scales noise.
//
// Between two knots it is a cubic Hermite span (Catmull-Rom, linear or given tangents). A bias
// other than 0.5 makes it a rational cubic in Bezier form with weights b, b, 1-b, 1-b, which pulls
// it towards one of its ends (Farin, "NURBS: from Projective Geometry to Practical Use", 1999).
#pragma once

#include <cstdint>
#include <vector>

#include "math/curves/spline_span.h"

namespace nbx {

enum TangentMode : std::int32_t { kLinearTangent = 0, kSmoothTangent = 1, kSlopeTangent = 2 };

/// A point that the user edits. A mode that isn't a TangentMode gives a tangent of 0.
struct ControlPoint {
  std::int32_t id = 0;  // position in the order of x, as of the last rebuild
  float x = 0, y = 0;
  float inSlope = 0, outSlope = 0;  // for kSlopeTangent
  float sideBias = 0.5f;            // stored with the point; doesn't change the curve
  float bias = 0.5f;                // of the span to the right of the point, in (0, 1)
  std::int32_t inMode = kSmoothTangent, outMode = kSmoothTangent;
};

/// A value type. Every change of the points sets `dirty`; rebuild() then computes the knots again.
/// Any number of threads may call const operations.
class RationalSpline {
 public:
  struct Knot {
    float x, y, inTangent, outTangent;
  };
  struct BezierKnot {
    float x, y;
    // Ordinates of the handles at a third of the neighboring spans; in_handle is 0 at the first
    // knot.
    float in_handle, out_handle;
    bool operator==(const BezierKnot&) const = default;
  };

  /// Appends a point and returns its index.
  int addPoint(float x, float y, std::int32_t inMode = kSmoothTangent,
               std::int32_t outMode = kSmoothTangent);
  /// These address a point by its index; an index out of range is ignored.
  void removePoint(int index);
  void setSideBias(int index, float bias);
  void setBias(int index, float bias);
  /// Converts an unbounded slider value to the bias of the point with this `id`: 0 gives 0.5, and
  /// large values approach 0 or 1.
  void setBiasFromSlider(int id, double value);

  const std::vector<ControlPoint>& points() const { return points_; }
  /// For any other change of the points; sets `dirty`.
  std::vector<ControlPoint>& edit_points();

  /// The smallest and the largest x of all points; 0 for an empty spline.
  float minX() const;
  float maxX() const;

  bool dirty() const { return dirty_; }
  /// Sorts the points into knots with strictly rising x and computes tangents, handles and spans.
  void rebuild();

  /// The curve at v; rebuilds a dirty spline first. The curve is constant beyond its ends. An empty
  /// spline is 0. NaN gives NaN if there are two knots or more.
  float eval(float v);
  /// The same for a spline that isn't dirty.
  float evaluate(float v) const;

  // As of the last rebuild, one entry per knot; spans() has one entry less.
  const std::vector<Knot>& knots() const { return knots_; }
  const std::vector<BezierKnot>& bezier() const { return bezier_; }
  const std::vector<float>& bias() const { return bias_; }
  const std::vector<SplineSpan>& spans() const { return spans_; }
  /// For the kernels; valid until the next change.
  SplineTable table() const {
    if (knots_.empty()) return {};
    return {spans_.data(), static_cast<int>(spans_.size()), knots_.front().y, knots_.back().x,
            knots_.back().y};
  }

  /// Adds or subtracts coordinates, slopes and biases, pair by pair in the order of the points; ids
  /// and modes stay. += appends the surplus points of `other`, -= ignores them.
  RationalSpline& operator+=(const RationalSpline& other);
  RationalSpline& operator-=(const RationalSpline& other);

  /// Equal curves: the same handles and biases.
  friend bool operator==(const RationalSpline& a, const RationalSpline& b);
  /// A spline with fewer knots is less; at equal counts all handles and biases must be less. Two
  /// empty splines count as less. This is no strict order: it is only for the host's comparison of
  /// values.
  friend bool operator<(const RationalSpline& a, const RationalSpline& b);

 private:
  void sort_points();
  void compute_tangents();
  void compute_spans();

  std::vector<ControlPoint> points_;  // in the order of creation
  std::vector<Knot> knots_;
  std::vector<BezierKnot> bezier_;
  std::vector<float> bias_;
  std::vector<SplineSpan> spans_;
  bool dirty_ = false;
};

}  // namespace nbx
