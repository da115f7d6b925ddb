// Files of modeling programs, as Assimp reads them.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "host/base/json_place.h"

struct aiNode;
struct aiScene;

namespace Assimp {
class Importer;
}

namespace host {

/// A file in memory. Faces are triangles, lines or points.
class ModelFile {
 public:
  /// Throws DocumentError, with advice but without a place, if the file is missing, isn't a model,
  /// or exceeds the limits in model_check.h (unless `force`). Only one thread at a time may call
  /// it.
  explicit ModelFile(const std::string& path, bool force = false);
  ~ModelFile();
  ModelFile(const ModelFile&) = delete;
  ModelFile& operator=(const ModelFile&) = delete;

  const aiScene& Scene() const { return *scene_; }
  const std::string& Path() const { return path_; }
  /// Absolute paths of all files that were read: this one and those it refers to.
  const std::set<std::string>& Files() const { return files_; }
  /// True for glTF, where a length of 1 is a meter. Other formats don't define their unit.
  bool IsGltf() const { return !json_.is_null(); }
  /// The JSON text of a glTF file. Null for any other file.
  const Json& Gltf() const { return json_; }
  /// Index in the `nodes` of the JSON text. -1 for a node that isn't there, and in other files.
  int GltfIndex(const aiNode& node) const;

  /// The node with a name returned by NodeName. Null if there is none.
  const aiNode* FindNode(const std::string& name) const;
  /// The name of the node if it is unique, otherwise its path through the tree: "/0/2".
  std::string NodeName(const aiNode& node) const;

 private:
  void ReadGltf();
  void MapNode(const aiNode& node, int index);

  std::string path_;
  std::unique_ptr<Assimp::Importer> importer_;
  const aiScene* scene_ = nullptr;
  Json json_;
  std::set<std::string> files_;
  std::map<const aiNode*, int> gltf_index_;
};

/// A cache of model files that are used several times.
class ModelFiles {
 public:
  explicit ModelFiles(bool force = false) : force_(force) {}
  /// Throws like the constructor of ModelFile.
  const ModelFile& Get(const std::string& path);

 private:
  bool force_;
  std::map<std::string, ModelFile> files_;
};

/// True for names of model files, as opposed to scene documents: .gltf, .glb, .obj, .ply, .fbx and
/// others that Assimp reads.
bool IsModelName(const std::string& path);

}  // namespace host
