#include "host/scene/mesh_file.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"
#include "host/model/model_animation.h"
#include "host/model/model_check.h"
#include "host/scene/builtin_classes.h"

namespace host {
namespace {

using Point = aiVector3t<double>;
/// The vertices of one mesh, one row per shape.
using Poses = std::vector<std::vector<Point>>;

/// Collects the polygons of a file in the host's space.
class MeshBuilder {
 public:
  MeshBuilder(SceneObject& mesh, double scale) : mesh_(mesh), scale_(scale) {}

  /// Adds all meshes under the node, in the space of the root.
  void AddTree(const aiScene& scene, const aiNode& node, const Matrix4& parent) {
    const Matrix4 to_world = parent * Matrix4(node.mTransformation);
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
      const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
      Poses poses(1);
      for (unsigned v = 0; v < mesh.mNumVertices; ++v)
        poses[0].push_back(to_world * Point(mesh.mVertices[v]));
      // A mirroring transform flips the polygons once more.
      AddMesh(mesh, poses, to_world.Determinant() < 0);
    }
    for (unsigned i = 0; i < node.mNumChildren; ++i) AddTree(scene, *node.mChildren[i], to_world);
  }

  /// Adds the meshes of one node, in its own space, with one shape per frame.
  void AddNode(const aiScene& scene, const aiNode& node, const ModelAnimation& animation,
               const std::vector<double>& frames) {
    for (double frame : frames) mesh_.shapes.push_back({frame, {}});
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
      const aiMesh& mesh = *scene.mMeshes[node.mMeshes[i]];
      Poses poses;
      for (const double frame : frames) poses.push_back(animation.Pose(mesh, node, frame));
      AddMesh(mesh, poses, false);
    }
    mesh_.points = mesh_.shapes.front().points;
    if (frames.size() == 1) mesh_.shapes.clear();
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

  void AddMesh(const aiMesh& mesh, const Poses& poses, bool mirrored) {
    // Lines and points are skipped, together with the vertices that only they use.
    std::vector<std::int32_t> point_of(mesh.mNumVertices, -1);
    const auto point = [&](unsigned vertex) {
      if (point_of[vertex] < 0) point_of[vertex] = AddPoint(poses, vertex);
      return point_of[vertex];
    };
    const bool has_uvws = mesh.HasTextureCoords(0);
    const auto uvw = [&](unsigned vertex) {
      const aiVector3D t = has_uvws ? mesh.mTextureCoords[0][vertex] : aiVector3D();
      return has_uvws ? Vector{t.x, 1.0 - t.y, 0} : Vector{};
    };
    if (has_uvws) mesh_.uvws.resize(mesh_.polygons.size());
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
      const aiFace& face = mesh.mFaces[i];
      if (face.mNumIndices != 3) continue;
      const unsigned a = face.mIndices[0], b = face.mIndices[mirrored ? 1 : 2],
                     c = face.mIndices[mirrored ? 2 : 1];
      const std::int32_t pa = point(a), pb = point(b), pc = point(c);
      mesh_.polygons.push_back({pa, pb, pc, pc});
      if (!mesh_.uvws.empty() || has_uvws) mesh_.uvws.push_back({uvw(a), uvw(b), uvw(c), uvw(c)});
    }
  }

  Vector ToHost(const Point& p) {
    const Vector v{p.x * scale_, p.y * scale_, -p.z * scale_};
    finite_ = finite_ && IsFinite(v);
    return v;
  }

  /// The index of the point. Points that coincide in all shapes share an index.
  std::int32_t AddPoint(const Poses& poses, unsigned vertex) {
    std::vector<Vector> places;
    for (const std::vector<Point>& pose : poses) places.push_back(ToHost(pose[vertex]));
    const Place key{places[0].x, places[0].y, places[0].z};
    const auto [begin, end] = index_of_.equal_range(key);
    for (auto found = begin; found != end; ++found)
      if (IsAt(found->second, places)) return found->second;
    const std::int32_t next = count_++;
    index_of_.emplace(key, next);
    if (mesh_.shapes.empty())
      mesh_.points.push_back(places[0]);
    else
      for (std::size_t k = 0; k < places.size(); ++k) mesh_.shapes[k].points.push_back(places[k]);
    return next;
  }

  bool IsAt(std::size_t index, const std::vector<Vector>& places) const {
    for (std::size_t k = 1; k < places.size(); ++k)
      if (!(mesh_.shapes[k].points[index] == places[k])) return false;
    return true;
  }

  SceneObject& mesh_;
  double scale_;
  bool finite_ = true;
  std::int32_t count_ = 0;
  std::unordered_multimap<Place, std::int32_t, PlaceHash> index_of_;
};

double CountPolygons(const aiScene& scene, const aiNode& node) {
  double count = 0;
  for (unsigned i = 0; i < node.mNumMeshes; ++i) count += scene.mMeshes[node.mMeshes[i]]->mNumFaces;
  for (unsigned i = 0; i < node.mNumChildren; ++i)
    count += CountPolygons(scene, *node.mChildren[i]);
  return count;
}

/// A single frame for a mesh that isn't deformed, otherwise every frame of the animation.
std::vector<double> FramesOf(const ModelAnimation& animation, const aiScene& scene,
                             const aiNode& node, bool force) {
  const auto [first, last] = animation.Range();
  if (!animation.Deforms(node)) return {first};
  double points = 0;
  for (unsigned i = 0; i < node.mNumMeshes; ++i)
    points += scene.mMeshes[node.mMeshes[i]]->mNumVertices;
  if (!force)
    RefuseBeyond(points * (std::ceil(last) - std::floor(first) + 1), kMostModelPoints,
                 "points of shapes");
  std::vector<double> frames;
  for (double frame = std::floor(first); frame <= std::ceil(last); ++frame) frames.push_back(frame);
  return frames;
}

/// Opens the file of the mesh object. Throws DocumentError.
const ModelFile& OpenFile(const std::string& path, const std::string& place,
                          const Document& document, ModelFiles& files) {
  try {
    return files.Get(path);
  } catch (const DocumentError& error) {
    throw DocumentError(place, error.what() + ("; paths are relative to the scene's folder " +
                                               Quoted(document.folder)));
  }
}

/// Adds the polygons of the node, or of the whole file if `node` is null.
void AddPolygons(const ModelFile& file, const aiNode* node, const Document& document,
                 MeshBuilder& builder) {
  const aiScene& scene = file.Scene();
  if (!node) {
    if (!document.force)
      RefuseBeyond(CountPolygons(scene, *scene.mRootNode), kMostModelPolygons, "polygons");
    builder.AddTree(scene, *scene.mRootNode, {});
    return;
  }
  const ModelAnimation animation(scene, document.fps.Value());
  builder.AddNode(scene, *node, animation, FramesOf(animation, scene, *node, document.force));
}

}  // namespace

void LoadMesh(SceneObject& object, const Document& document, ModelFiles& files) {
  const BaseContainer& data = object.GetDataInstance();
  const Filename file = data.GetFilename(kMeshFile);
  const std::string place = document.PlaceOf(object), node_name = data.GetString(kMeshFileNode);
  if (object.inline_mesh && file.path.empty()) return;
  if (object.inline_mesh)
    throw DocumentError(place, "the mesh has a \"file\" and \"points\"; remove one of them");
  if (file.path.empty())
    throw DocumentError(place,
                        "the mesh has no polygons; give parameters.file, or \"points\" and "
                        "\"polygons\"");

  const std::string path = document.Resolve(file).path, file_place = place + ".parameters.file";
  const ModelFile& model = OpenFile(path, file_place, document, files);
  const aiNode* node = node_name.empty() ? nullptr : model.FindNode(node_name);
  if (!node && !node_name.empty())
    throw DocumentError(place + ".parameters.file_node",
                        Quoted(path) + " has no node " + Quoted(node_name));
  object.points.clear();
  object.polygons.clear();
  object.uvws.clear();
  object.shapes.clear();
  const double scale = data.GetReal(kMeshFileScale);
  MeshBuilder builder(object, scale != 0 ? scale : model.IsGltf() ? 100 : 1);
  const auto fail = [&](const std::string& what) {
    throw DocumentError(file_place, Quoted(path) + what);
  };
  try {
    AddPolygons(model, node, document, builder);
  } catch (const DocumentError& error) {
    fail(std::string(": ") + error.what());
  }
  if (object.polygons.empty()) fail(" has no polygons; export it with its faces");
  if (!builder.AllFinite())
    fail(
        " has a point that isn't a finite number; repair the file, or choose a smaller file_scale");
}

}  // namespace host
