// Animation in a model file, and the resulting shapes of meshes.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <assimp/scene.h>

#include "host/interface/vector.h"

namespace host {

using Matrix4 = aiMatrix4x4t<double>;

/// All animations of a file together. If several animate the same node, the first one counts. A
/// frame is the time in seconds times the frame rate.
class ModelAnimation {
 public:
  ModelAnimation(const aiScene& scene, double fps);

  bool IsEmpty() const { return nodes_.empty() && morphs_.empty(); }
  /// Frames of the first and the last key. (0, 0) without animation. Frames within a thousandth of
  /// an integer are rounded.
  std::pair<double, double> Range() const { return range_; }
  bool Moves(const aiNode& node) const { return nodes_.count(node.mName.C_Str()) != 0; }
  /// The frames of the node's keys, sorted and without duplicates. Empty if the node doesn't move.
  std::vector<double> KeyFrames(const aiNode& node) const;

  /// The matrix from the node's space to its parent's space, or to the space of the file. Between
  /// keys, positions and scales are interpolated linearly, rotations along the shortest arc.
  Matrix4 Local(const aiNode& node, double frame) const;
  Matrix4 Global(const aiNode& node, double frame) const;

  /// True if animated bones or morph targets deform the node's meshes.
  bool Deforms(const aiNode& node) const;
  /// The vertices of a mesh of the node, in the node's space, deformed by its bones and morph
  /// targets.
  std::vector<aiVector3t<double>> Pose(const aiMesh& mesh, const aiNode& node, double frame) const;

 private:
  /// The frame of a key.
  double ToFrame(double ticks, double ticks_per_second) const;
  std::vector<double> MorphWeights(const aiMesh& mesh, const aiNode& node, double frame) const;

  struct NodeChannel {
    const aiNodeAnim* keys;
    double ticks_per_second;
  };
  struct MorphChannel {
    const aiMeshMorphAnim* keys;
    double ticks_per_second;
  };
  const aiScene& scene_;
  double fps_;
  std::map<std::string, NodeChannel> nodes_;
  std::map<std::string, MorphChannel> morphs_;
  std::pair<double, double> range_{0, 0};
};

}  // namespace host
