// Motion in a model file, and what it does to meshes.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <assimp/scene.h>

#include "host/interface/vector.h"

namespace host {

using Matrix4 = aiMatrix4x4t<double>;

/// All animations of a file at once; of several that move one node the first counts. Frames are
/// seconds times the rate, from the file's time 0 on.
class ModelAnimation {
 public:
  ModelAnimation(const aiScene& scene, double fps);

  bool IsEmpty() const { return nodes_.empty() && morphs_.empty(); }
  /// Frames of the first and the last key; (0, 0) without animation. Those within a thousandth of a
  /// whole number are that.
  std::pair<double, double> Range() const { return range_; }
  bool Moves(const aiNode& node) const { return nodes_.count(node.mName.C_Str()) != 0; }
  /// The frames of the node's keys, ascending, each once; empty if it doesn't move.
  std::vector<double> KeyFrames(const aiNode& node) const;

  /// From the node's space to its parent's, and to that of the file. Between keys positions and
  /// scales run linearly, rotations on the shortest arc.
  Matrix4 Local(const aiNode& node, double frame) const;
  Matrix4 Global(const aiNode& node, double frame) const;

  /// True if the node's meshes change their shape: by bones that move, or by morphs that do.
  bool Deforms(const aiNode& node) const;
  /// The vertices of a mesh of the node in the node's space, with its bones and morphs.
  std::vector<aiVector3t<double>> Pose(const aiMesh& mesh, const aiNode& node, double frame) const;

 private:
  /// The frame of a key, and the other way around.
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
