#include "host/model/model_file.h"

#include <algorithm>
#include <assimp/Importer.hpp>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <vector>

#include <assimp/DefaultIOSystem.h>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"
#include "host/model/model_check.h"

namespace host {
namespace {

std::string ExtensionOf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension;
}

/// The JSON text of a .gltf file, or of the first chunk of a .glb file (after a 12-byte header, the
/// length and the type of the chunk). Empty if there is none.
std::string GltfText(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(file)), {});
  if (text.compare(0, 4, "glTF") != 0) return text;
  std::uint32_t length = 0;
  if (text.size() < 20) return {};
  std::memcpy(&length, text.data() + 12, sizeof length);
  return text.substr(20, length);
}

/// Records which files the importer reads.
class NotingFiles final : public Assimp::DefaultIOSystem {
 public:
  explicit NotingFiles(std::set<std::string>& files) : files_(files) {}
  Assimp::IOStream* Open(const char* name, const char* mode) override {
    Assimp::IOStream* stream = DefaultIOSystem::Open(name, mode);
    if (stream) files_.insert(std::filesystem::absolute(name).lexically_normal().string());
    return stream;
  }

 private:
  std::set<std::string>& files_;
};

/// Calls visit(node, path) for the node and everything under it.
template <class Visit>
void Walk(const aiNode& node, const std::string& way, Visit visit) {
  visit(node, way);
  for (unsigned i = 0; i < node.mNumChildren; ++i)
    Walk(*node.mChildren[i], way + "/" + std::to_string(i), visit);
}

}  // namespace

ModelFile::ModelFile(const std::string& path, bool force)
    : path_(path), importer_(std::make_unique<Assimp::Importer>()) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored))
    throw DocumentError("there is no file " + Quoted(path));
  CheckClaims(path);
  // Read only the nodes of the file, without helper nodes for single steps of a transform.
  importer_->SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
  importer_->SetIOHandler(new NotingFiles(files_));  // the importer owns it
  try {
    const ModelGuard guard(path);
    scene_ = importer_->ReadFile(path, 0);
    if (scene_ && !force) CheckPolygons(*scene_);
    if (scene_) scene_ = importer_->ApplyPostProcessing(aiProcess_Triangulate);
  } catch (const std::bad_alloc&) {
    throw DocumentError(Quoted(path) + " needs more memory than available; use a smaller file");
  }
  if (!scene_ || !scene_->mRootNode)
    throw DocumentError(Quoted(path) + " can't be read as a mesh (" + importer_->GetErrorString() +
                        "); use a valid OBJ, PLY, STL, glTF or FBX file");
  const std::string extension = ExtensionOf(path);
  if (extension != ".gltf" && extension != ".glb") return;
  try {
    ReadGltf();
  } catch (const Json::exception&) {
    throw DocumentError(Quoted(path) + " has an invalid list of nodes; export it again");
  }
}

ModelFile::~ModelFile() = default;

void ModelFile::ReadGltf() {
  json_ = Json::parse(GltfText(path_), nullptr, false);
  if (!json_.is_object()) json_ = Json::object();
  // The importer keeps the order of the nodes. If the scene has several top nodes, it adds a node
  // above them.
  const Json::json_pointer place("/scenes/" + std::to_string(json_.value("scene", 0)) + "/nodes");
  const Json tops = json_.contains(place) ? json_.at(place) : Json::array();
  const aiNode& root = *scene_->mRootNode;
  if (tops.size() == 1) MapNode(root, tops.at(0).get<int>());
  if (tops.size() > 1 && tops.size() == root.mNumChildren)
    for (unsigned i = 0; i < root.mNumChildren; ++i)
      MapNode(*root.mChildren[i], tops.at(i).get<int>());
}

void ModelFile::MapNode(const aiNode& node, int index) {
  gltf_index_[&node] = index;
  const Json& json = json_.at("nodes").at(index);
  const Json children = json.value("children", Json::array());
  for (unsigned i = 0; i < node.mNumChildren && i < children.size(); ++i)
    MapNode(*node.mChildren[i], children.at(i).get<int>());
}

int ModelFile::GltfIndex(const aiNode& node) const {
  const auto found = gltf_index_.find(&node);
  return found == gltf_index_.end() ? -1 : found->second;
}

const aiNode* ModelFile::FindNode(const std::string& name) const {
  const aiNode* found = nullptr;
  Walk(*scene_->mRootNode, "", [&](const aiNode& node, const std::string& way) {
    if (!found && (name == node.mName.C_Str() || (name.front() == '/' && name == way)))
      found = &node;
  });
  return found;
}

std::string ModelFile::NodeName(const aiNode& node) const {
  std::string way_there;
  int same = 0;
  Walk(*scene_->mRootNode, "", [&](const aiNode& other, const std::string& way) {
    if (&other == &node) way_there = way;
    same += other.mName == node.mName ? 1 : 0;
  });
  return same == 1 && node.mName.length > 0 ? node.mName.C_Str() : way_there;
}

const ModelFile& ModelFiles::Get(const std::string& path) {
  const auto found = files_.find(path);
  return found == files_.end() ? files_.try_emplace(path, path, force_).first->second
                               : found->second;
}

bool IsModelName(const std::string& path) {
  static const std::vector<std::string> known = {".gltf", ".glb", ".obj", ".ply", ".fbx",
                                                 ".stl",  ".dae", ".3ds", ".off", ".x3d"};
  return std::find(known.begin(), known.end(), ExtensionOf(path)) != known.end();
}

}  // namespace host
