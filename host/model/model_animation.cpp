#include "host/model/model_animation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace host {
namespace {

/// The keys before and after a time, and the fraction of the way between them.
template <class Key>
struct Between {
  Between(const Key* keys, unsigned count, double ticks) {
    const Key* after = std::upper_bound(keys, keys + count, ticks,
                                        [](double t, const Key& key) { return t < key.mTime; });
    first = after == keys ? keys : after - 1;
    second = after == keys + count ? first : after;
    const double length = second->mTime - first->mTime;
    share = length > 0 ? std::clamp((ticks - first->mTime) / length, 0.0, 1.0) : 0;
  }
  const Key *first, *second;
  double share;
};

aiVector3t<double> Linear(const aiVectorKey* keys, unsigned count, double ticks) {
  const Between<aiVectorKey> at(keys, count, ticks);
  const aiVector3t<double> a(at.first->mValue), b(at.second->mValue);
  return a + (b - a) * at.share;
}

aiQuaterniont<double> Arc(const aiQuatKey* keys, unsigned count, double ticks) {
  const Between<aiQuatKey> at(keys, count, ticks);
  const auto wide = [](const aiQuaternion& q) {
    return aiQuaterniont<double>(q.w, q.x, q.y, q.z).Normalize();
  };
  aiQuaterniont<double> q;
  aiQuaterniont<double>::Interpolate(q, wide(at.first->mValue), wide(at.second->mValue), at.share);
  return q;
}

}  // namespace

double ModelAnimation::ToFrame(double ticks, double ticks_per_second) const {
  const double frame = ticks / ticks_per_second * fps_, whole = std::round(frame);
  return std::fabs(frame - whole) < 1e-3 ? whole : frame;
}

ModelAnimation::ModelAnimation(const aiScene& scene, double fps) : scene_(scene), fps_(fps) {
  double first = std::numeric_limits<double>::infinity(), last = -first;
  const auto note = [&](const auto* keys, unsigned count, double rate) {
    if (count < 2) return;  // constant
    first = std::min(first, ToFrame(keys[0].mTime, rate));
    last = std::max(last, ToFrame(keys[count - 1].mTime, rate));
  };
  for (unsigned a = 0; a < scene.mNumAnimations; ++a) {
    const aiAnimation& animation = *scene.mAnimations[a];
    const double rate = animation.mTicksPerSecond > 0 ? animation.mTicksPerSecond : 25;
    for (unsigned i = 0; i < animation.mNumChannels; ++i) {
      const aiNodeAnim& keys = *animation.mChannels[i];
      if (!nodes_.try_emplace(keys.mNodeName.C_Str(), NodeChannel{&keys, rate}).second) continue;
      note(keys.mPositionKeys, keys.mNumPositionKeys, rate);
      note(keys.mRotationKeys, keys.mNumRotationKeys, rate);
      note(keys.mScalingKeys, keys.mNumScalingKeys, rate);
    }
    for (unsigned i = 0; i < animation.mNumMorphMeshChannels; ++i) {
      const aiMeshMorphAnim& keys = *animation.mMorphMeshChannels[i];
      if (morphs_.try_emplace(keys.mName.C_Str(), MorphChannel{&keys, rate}).second)
        note(keys.mKeys, keys.mNumKeys, rate);
    }
  }
  if (first <= last) range_ = {first, last};
}

std::vector<double> ModelAnimation::KeyFrames(const aiNode& node) const {
  const auto found = nodes_.find(node.mName.C_Str());
  if (found == nodes_.end()) return {};
  const auto& [keys, rate] = found->second;
  std::set<double> frames;
  const auto note = [&, rate = rate](const auto* row, unsigned count) {
    for (unsigned i = 0; count > 1 && i < count; ++i)
      if (const double frame = ToFrame(row[i].mTime, rate); std::isfinite(frame))
        frames.insert(frame);
  };
  note(keys->mPositionKeys, keys->mNumPositionKeys);
  note(keys->mRotationKeys, keys->mNumRotationKeys);
  note(keys->mScalingKeys, keys->mNumScalingKeys);
  return {frames.begin(), frames.end()};
}

Matrix4 ModelAnimation::Local(const aiNode& node, double frame) const {
  const auto found = nodes_.find(node.mName.C_Str());
  if (found == nodes_.end()) return Matrix4(node.mTransformation);
  const auto& [keys, rate] = found->second;
  const double ticks = frame / fps_ * rate;
  aiVector3t<double> scale, position;
  aiQuaterniont<double> rotation;
  Matrix4(node.mTransformation).Decompose(scale, rotation, position);
  if (keys->mNumScalingKeys > 0) scale = Linear(keys->mScalingKeys, keys->mNumScalingKeys, ticks);
  if (keys->mNumRotationKeys > 0)
    rotation = Arc(keys->mRotationKeys, keys->mNumRotationKeys, ticks);
  if (keys->mNumPositionKeys > 0)
    position = Linear(keys->mPositionKeys, keys->mNumPositionKeys, ticks);
  return Matrix4(scale, rotation, position);
}

Matrix4 ModelAnimation::Global(const aiNode& node, double frame) const {
  const Matrix4 local = Local(node, frame);
  return node.mParent ? Global(*node.mParent, frame) * local : local;
}

bool ModelAnimation::Deforms(const aiNode& node) const {
  for (unsigned i = 0; i < node.mNumMeshes; ++i) {
    const aiMesh& mesh = *scene_.mMeshes[node.mMeshes[i]];
    if (mesh.mNumBones > 0 && !nodes_.empty()) return true;
    if (mesh.mNumAnimMeshes > 0 && morphs_.count(node.mName.C_Str()) != 0) return true;
  }
  return false;
}

std::vector<double> ModelAnimation::MorphWeights(const aiMesh& mesh, const aiNode& node,
                                                 double frame) const {
  std::vector<double> weights;
  for (unsigned i = 0; i < mesh.mNumAnimMeshes; ++i)
    weights.push_back(mesh.mAnimMeshes[i]->mWeight);
  const auto found = morphs_.find(node.mName.C_Str());
  if (found == morphs_.end() || found->second.keys->mNumKeys == 0) return weights;
  const auto& [keys, rate] = found->second;
  const Between<aiMeshMorphKey> at(keys->mKeys, keys->mNumKeys, frame / fps_ * rate);
  const auto add = [&](const aiMeshMorphKey& key, double share) {
    for (unsigned i = 0; i < key.mNumValuesAndWeights; ++i)
      if (key.mValues[i] < weights.size()) weights[key.mValues[i]] += share * key.mWeights[i];
  };
  std::fill(weights.begin(), weights.end(), 0.0);
  add(*at.first, 1 - at.share);
  add(*at.second, at.share);
  return weights;
}

std::vector<aiVector3t<double>> ModelAnimation::Pose(const aiMesh& mesh, const aiNode& node,
                                                     double frame) const {
  std::vector<aiVector3t<double>> points;
  for (unsigned v = 0; v < mesh.mNumVertices; ++v) points.emplace_back(mesh.mVertices[v]);
  const std::vector<double> weights = MorphWeights(mesh, node, frame);
  for (unsigned i = 0; i < mesh.mNumAnimMeshes; ++i) {
    const aiAnimMesh& shape = *mesh.mAnimMeshes[i];
    if (weights[i] == 0 || !shape.mVertices) continue;
    for (unsigned v = 0; v < std::min(mesh.mNumVertices, shape.mNumVertices); ++v)
      points[v] += aiVector3t<double>(shape.mVertices[v] - mesh.mVertices[v]) * weights[i];
  }
  if (mesh.mNumBones == 0) return points;

  // Linear blend skinning: each bone moves the vertices from the bind pose.
  std::vector<aiVector3t<double>> skinned(points.size());
  std::vector<double> sums(points.size());
  const Matrix4 to_node = Global(node, frame).Inverse();
  for (unsigned b = 0; b < mesh.mNumBones; ++b) {
    const aiBone& bone = *mesh.mBones[b];
    const aiNode* joint = scene_.mRootNode->FindNode(bone.mName);
    if (!joint) continue;
    const Matrix4 carry = to_node * Global(*joint, frame) * Matrix4(bone.mOffsetMatrix);
    for (unsigned i = 0; i < bone.mNumWeights; ++i) {
      const auto [vertex, weight] = bone.mWeights[i];
      if (vertex >= points.size()) continue;
      skinned[vertex] += carry * points[vertex] * static_cast<double>(weight);
      sums[vertex] += weight;
    }
  }
  for (std::size_t v = 0; v < points.size(); ++v)
    if (sums[v] > 0) points[v] = skinned[v] / sums[v];
  return points;
}

}  // namespace host
