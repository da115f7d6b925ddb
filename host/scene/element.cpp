#include "host/scene/element.h"

#include <algorithm>

#include "host/scene/builtin_classes.h"
#include "host/scene/primitive_mesh.h"
#include "host/scene/texture.h"

namespace host {

void ElementState::Evaluate(double frame) {
  for (const auto& [id, track] : tracks) data.Set(id, track.Evaluate(frame));
}

ParameterValue ElementState::Shown(std::int32_t parameter) const {
  if (const ParameterValue* value = data.Find(parameter)) return *value;
  const ParameterInfo* info = type->description.Find(parameter);
  return info ? info->default_value : std::monostate();
}

BaseObject* SceneTag::GetObject() const { return object_; }

Transform SceneObject::TransformAt(double frame) const {
  Transform at = transform;
  const auto follow = [frame](const std::optional<Track>& track, Vector& value) {
    if (track) value = std::get<Vector>(track->Evaluate(frame));
  };
  follow(position_track, at.position);
  follow(rotation_track, at.rotation);
  follow(scale_track, at.scale);
  return at;
}

void SceneObject::TakeShape(double frame) {
  const auto after =
      std::upper_bound(shapes.begin(), shapes.end(), frame,
                       [](double f, const MeshShape& shape) { return f < shape.frame; });
  if (after == shapes.begin() || after == shapes.end()) {
    points = after == shapes.begin() ? shapes.front().points : shapes.back().points;
    return;
  }
  const MeshShape &a = *std::prev(after), &b = *after;
  const double share = (frame - a.frame) / (b.frame - a.frame);
  for (std::size_t i = 0; i < points.size(); ++i)
    points[i] = a.points[i] + (b.points[i] - a.points[i]) * share;
}

Matrix SceneObject::MatrixAt(double frame) const {
  const Matrix own = ToMatrix(TransformAt(frame));
  return up_ ? up_->MatrixAt(frame) * own : own;
}

const Particles& SceneObject::GetParticles() const {
  if (state_.type->id != kParticleGroup || !children_.empty()) return particles;
  const BaseList2D* system = state_.data.GetLink(kGroupSystem);
  const bool is_system = system && system->GetType() == kParticleSystem;
  return is_system ? static_cast<const SceneObject*>(system)->particles : particles;
}

void SceneObject::Evaluate(double frame) {
  transform = TransformAt(frame);
  state_.Evaluate(frame);
  if (!shapes.empty()) TakeShape(frame);
  for (const auto& tag : tags_) tag->State().Evaluate(frame);
}

bool SceneTag::IsSelected(std::int32_t polygon) const {
  const auto after =
      std::upper_bound(selected.begin(), selected.end(), polygon,
                       [](std::int32_t index, const auto& range) { return index < range.first; });
  return after != selected.begin() && polygon <= std::prev(after)->second;
}

void SceneShader::Update(const std::string& place) {
  if (texture_ && made_from_ == state_.data) return;
  const std::string file = state_.document->Resolve(state_.data.GetFilename(kShaderFile)).path;
  texture_ = MakeTexture(state_.type->id, state_.data, file, place);
  made_from_ = state_.data;
}

void SceneObject::UpdateCache() {
  if (!IsPrimitive(state_.type->id) || (cache_ && made_from_ == state_.data)) return;
  PrimitiveMesh mesh = MakePrimitive(state_.type->id, state_.data);
  if (!cache_) {
    cache_ = std::make_unique<SceneObject>();
    cache_->state_.document = state_.document;
    cache_->state_.type = &MeshClass();
    cache_->up_ = this;
  }
  cache_->state_.name = state_.name;
  cache_->points = std::move(mesh.points);
  cache_->polygons = std::move(mesh.polygons);
  cache_->uvws = std::move(mesh.uvws);
  made_from_ = state_.data;
}

std::pair<Vector, Vector> SceneObject::Bounds() const {
  if (cache_) return cache_->Bounds();
  if (const auto* part = static_cast<const ObjectData*>(state_.plugin_part.get())) {
    Vector center, radius;
    part->GetDimension(*this, center, radius);
    return {center, radius};
  }
  if (points.empty()) return {};
  Vector low = points.front(), high = low;
  for (const Vector& p : points) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  return {(low + high) * 0.5, (high - low) * 0.5};
}

}  // namespace host
