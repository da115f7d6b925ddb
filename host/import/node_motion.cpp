#include "host/import/node_motion.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "host/model/model_check.h"

namespace host {
namespace {

constexpr double kMostShear = 1e-3;

/// Removes the rounding noise of the file's floats.
Vector Tidy(const Vector& v, double steps) {
  const auto round = [steps](double x) { return std::round(x * steps) / steps + 0.0; };
  return {round(v.x), round(v.y), round(v.z)};
}

Transform Tidy(const Transform& t) {
  return {Tidy(t.position, 1e5), Tidy(t.rotation, 1e5), Tidy(t.scale, 1e6)};
}

/// Keeps the track if its value changes.
void KeepIfMoving(Track& track, std::optional<Track>& kept) {
  const Vector first = std::get<Vector>(track.keys.front().value);
  const bool moves = std::any_of(track.keys.begin(), track.keys.end(), [&](const Key& key) {
    return Length(std::get<Vector>(key.value) - first) > 1e-5 * std::max(1.0, Length(first));
  });
  if (moves) kept = std::move(track);
}

}  // namespace

bool SetTransform(SceneObject& object, const Matrix& matrix) {
  double shear = 0;
  object.transform = Tidy(ToTransform(matrix, {}, shear));
  return shear <= kMostShear;
}

struct NodeMotion::Tracks {
  Track position, rotation, scale;
};

/// With F = diag(1, 1, -1), the matrix M of the file becomes F M F.
Matrix NodeMotion::ToHost(const Matrix4& m) const {
  return {Vector{m.a4, m.b4, -m.c4} * scale_,
          {m.a1, m.b1, -m.c1},
          {m.a2, m.b2, -m.c2},
          {-m.a3, -m.b3, m.c3}};
}

bool NodeMotion::Place(SceneObject& object, const aiNode& node) {
  const double start = animation_.Range().first;
  const bool upright = SetTransform(object, ToHost(animation_.Local(node, start)));
  const std::vector<double> keys = animation_.KeyFrames(node);
  if (keys.empty()) return upright;
  baked_keys_ += keys.back() - keys.front();
  if (!force_) RefuseBeyond(baked_keys_, kMostModelKeys, "keys of rotations");
  Tracks tracks = Bake(node, keys, object.transform.rotation);
  KeepIfMoving(tracks.position, object.position_track);
  KeepIfMoving(tracks.rotation, object.rotation_track);
  KeepIfMoving(tracks.scale, object.scale_track);
  return upright;
}

/// Positions and scales get the node's own keys, rotations one key per frame as well.
NodeMotion::Tracks NodeMotion::Bake(const aiNode& node, const std::vector<double>& keys,
                                    const Vector& rotation) const {
  std::set<double> frames(keys.begin(), keys.end());
  for (double frame = std::ceil(keys.front()); frame < keys.back(); ++frame) frames.insert(frame);
  Tracks tracks;
  Vector former = rotation;
  double shear = 0;
  for (const double frame : frames) {
    const Transform t = Tidy(ToTransform(ToHost(animation_.Local(node, frame)), former, shear));
    former = t.rotation;
    tracks.rotation.keys.push_back({frame, t.rotation});
    if (!std::binary_search(keys.begin(), keys.end(), frame)) continue;
    tracks.position.keys.push_back({frame, t.position});
    tracks.scale.keys.push_back({frame, t.scale});
  }
  return tracks;
}

}  // namespace host
