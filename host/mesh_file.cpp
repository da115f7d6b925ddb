#include "host/mesh_file.h"

#include <array>
#include <assimp/Importer.hpp>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include "host/document_error.h"
#include "host/nearest_name.h"
#include "host/own_classes.h"

namespace host {
namespace {

using Transform4 = aiMatrix4x4t<double>;

/// Collects the polygons of a file in the host's space.
class MeshBuilder {
 public:
  MeshBuilder(SceneObject& mesh, double scale) : mesh_(mesh), scale_(scale) {}

  void AddNode(const aiScene& scene, const aiNode& node, const Transform4& parent) {
    const Transform4 to_world = parent * Transform4(node.mTransformation);
    for (unsigned i = 0; i < node.mNumMeshes; ++i)
      AddMesh(*scene.mMeshes[node.mMeshes[i]], to_world);
    for (unsigned i = 0; i < node.mNumChildren; ++i) AddNode(scene, *node.mChildren[i], to_world);
  }

  bool AllFinite() const { return finite_; }

 private:
  using Place = std::array<double, 3>;
  struct PlaceHash {
    std::size_t operator()(const Place& p) const {
      const std::hash<double> hash;
      return hash(p[0]) ^ (hash(p[1]) * 0x9e3779b97f4a7c15U) ^ (hash(p[2]) * 0xc2b2ae3d27d4eb4fU);
    }
  };

  void AddMesh(const aiMesh& mesh, const Transform4& to_world) {
    // Lines and points are left out, and with them the vertices that only they use.
    std::vector<std::int32_t> point_of(mesh.mNumVertices, -1);
    const auto point = [&](unsigned vertex) {
      if (point_of[vertex] < 0)
        point_of[vertex] = AddPoint(to_world * aiVector3t<double>(mesh.mVertices[vertex]));
      return point_of[vertex];
    };
    // A mirror in the file's tree turns the polygons over once more.
    const bool reversed = to_world.Determinant() >= 0;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
      const aiFace& face = mesh.mFaces[i];
      if (face.mNumIndices != 3) continue;
      const std::int32_t p0 = point(face.mIndices[0]), p1 = point(face.mIndices[1]),
                         p2 = point(face.mIndices[2]);
      mesh_.polygons.push_back(reversed ? CPolygon{p0, p2, p1, p1} : CPolygon{p0, p1, p2, p2});
    }
  }

  /// The index of the point, which is a new one unless there is one at the same place.
  std::int32_t AddPoint(const aiVector3t<double>& file_point) {
    const Vector p{file_point.x * scale_, file_point.y * scale_, -file_point.z * scale_};
    finite_ = finite_ && IsFinite(p);
    const auto next = static_cast<std::int32_t>(mesh_.points.size());
    const auto [found, is_new] = index_of_.try_emplace({p.x, p.y, p.z}, next);
    if (is_new) mesh_.points.push_back(p);
    return found->second;
  }

  SceneObject& mesh_;
  double scale_;
  bool finite_ = true;
  std::unordered_map<Place, std::int32_t, PlaceHash> index_of_;
};

bool IsGltf(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension == ".gltf" || extension == ".glb";
}

}  // namespace

void LoadMesh(SceneObject& object, const Document& document) {
  const Filename file = object.GetDataInstance().GetFilename(kMeshFile);
  const std::string place = document.PlaceOf(object);
  if (object.inline_mesh) {
    if (file.path.empty()) return;
    throw DocumentError(place, "the mesh has a \"file\" and \"points\"; leave one of them out");
  }
  if (file.path.empty())
    throw DocumentError(place,
                        "the mesh has no polygons; give parameters.file, or \"points\" and "
                        "\"polygons\"");

  const std::string path = document.Resolve(file).path;
  const std::string file_place = place + ".parameters.file";
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored))
    throw DocumentError(file_place, "there is no file " + Quoted(path) +
                                        "; paths count from the scene's folder " +
                                        Quoted(document.folder));

  Assimp::Importer importer;
  const aiScene* scene = importer.ReadFile(path, aiProcess_Triangulate);
  if (!scene || !scene->mRootNode)
    throw DocumentError(file_place, Quoted(path) + " can't be read as a mesh (" +
                                        importer.GetErrorString() +
                                        "); give a sound OBJ, PLY, STL, glTF or FBX file");

  double scale = object.GetDataInstance().GetReal(kMeshFileScale);
  if (scale == 0) scale = IsGltf(path) ? 100 : 1;
  object.points.clear();
  object.polygons.clear();
  MeshBuilder builder(object, scale);
  builder.AddNode(*scene, *scene->mRootNode, {});

  if (object.polygons.empty())
    throw DocumentError(file_place, Quoted(path) + " has no polygons; export it with its faces");
  if (!builder.AllFinite())
    throw DocumentError(file_place, Quoted(path) +
                                        " has a point that isn't a finite number; mend the file, "
                                        "or choose a smaller file_scale");
}

}  // namespace host
