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

/// One file in memory. Faces are triangles, lines or points.
class ModelFile {
 public:
  /// Throws DocumentError, with a cure but without a place: the file is missing or is no model, or
  /// without `force` it asks for more work than model_check.h lets pass. A thread at a time.
  explicit ModelFile(const std::string& path, bool force = false);
  ~ModelFile();
  ModelFile(const ModelFile&) = delete;
  ModelFile& operator=(const ModelFile&) = delete;

  const aiScene& Scene() const { return *scene_; }
  const std::string& Path() const { return path_; }
  /// All files that were read, with absolute paths: this one, and those that it refers to.
  const std::set<std::string>& Files() const { return files_; }
  /// glTF's 1 is a meter; of other files nothing is known.
  bool IsGltf() const { return !json_.is_null(); }
  /// The text of a glTF file, with its `nodes`, `extras` and lights; null for any other file.
  const Json& Gltf() const { return json_; }
  /// Index in the text's `nodes`; -1 for a node that doesn't stand there, and in other files.
  int GltfIndex(const aiNode& node) const;

  /// A node by the text that NodeName gives for it; null if there is none.
  const aiNode* FindNode(const std::string& name) const;
  /// The node's name where no other one has it, else its way through the tree: "/0/2".
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

/// Files that are read once for many uses.
class ModelFiles {
 public:
  explicit ModelFiles(bool force = false) : force_(force) {}
  /// Throws as ModelFile's constructor.
  const ModelFile& Get(const std::string& path);

 private:
  bool force_;
  std::map<std::string, ModelFile> files_;
};

/// True for the names of files that hold models and no scene documents: .gltf, .glb, .obj, .ply,
/// .fbx and others that Assimp reads.
bool IsModelName(const std::string& path);

}  // namespace host
