// Meshes from files: where they land, which side is outside, and what is said of bad ones.
#include <fstream>

#include <gtest/gtest.h>

#include "support/support.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

/// data/box.obj: a box from (0, 0, 0) to (1, 2, 3) of a right-handed space.
std::string BoxObj() { return nbx::test::read_file(NBX_HOST_TEST_DATA "/box.obj"); }

/// data/box.gltf: the same box under a node that moves or mirrors it.
std::string BoxGltf(const std::string& node) {
  std::string text = nbx::test::read_file(NBX_HOST_TEST_DATA "/box.gltf");
  return text.replace(text.find("NODE"), 4, node);
}

/// A document with one mesh from a file of that name and text.
std::unique_ptr<Document> OpenMesh(const nbx::test::TemporaryFolder& folder,
                                   const std::string& name, const std::string& text,
                                   const std::string& more = "") {
  std::ofstream(folder.file(name), std::ios::binary) << text;
  auto document = ReadObjects(
      R"({"type": "mesh", "parameters": {"file": ")" + name + "\"" + more + "}}", folder.path());
  document->Open();
  return document;
}

/// Six times the volume that the polygons enclose; above 0 if their outer sides look outwards.
double SixVolumes(const SceneObject& mesh) {
  double sum = 0;
  for (const CPolygon& p : mesh.polygons)
    sum += Dot(mesh.points[static_cast<std::size_t>(p.a)],
               Cross(mesh.points[static_cast<std::size_t>(p.b)],
                     mesh.points[static_cast<std::size_t>(p.c)]));
  return sum;
}

TEST(MeshFile, LandsInTheHostsSpaceWithItsOutsideOut) {
  const std::string moved = R"("translation": [10, 20, 30])";
  const std::string mirrored = R"("scale": [-1, 1, 1])";
  const struct {
    std::string name, text, more;
    Vector low, high;
  } cases[] = {
      {"box.obj", BoxObj(), "", {0, 0, -3}, {1, 2, 0}},
      {"box.obj", BoxObj(), ", \"file_scale\": 10", {0, 0, -30}, {10, 20, 0}},
      {"box.gltf", BoxGltf(moved), "", {1000, 2000, -3300}, {1100, 2200, -3000}},
      {"BOX.GLTF", BoxGltf(mirrored), "", {-100, 0, -300}, {0, 200, 0}},
  };
  nbx::test::TemporaryFolder folder;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name + c.more);
    const auto document = OpenMesh(folder, c.name, c.text, c.more);
    const SceneObject& mesh = *document->GetFirstObject();
    EXPECT_EQ(mesh.GetPointCount(), 8);
    EXPECT_EQ(mesh.GetPolygonCount(), 12);
    const Vector centre = mesh.GetMp(), radius = mesh.GetRad();
    EXPECT_EQ(centre - radius, c.low);
    EXPECT_EQ(centre + radius, c.high);
    const Vector size = c.high - c.low;
    EXPECT_NEAR(SixVolumes(mesh), 6 * size.x * size.y * size.z, 1e-9 * size.x * size.y * size.z);
    for (const CPolygon& p : mesh.polygons) EXPECT_EQ(p.c, p.d);
  }
}

TEST(MeshFile, PartsJoinWithTheirTexturePlacesAndWithoutLinesAndLoosePoints) {
  nbx::test::TemporaryFolder folder;
  const auto document = OpenMesh(folder, "mixed.obj",
                                 "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 9 9 9\nl 1 4\no plain\nf 1 2 3\n"
                                 "o painted\nvt 0.25 1\nvt 1 0\nvt 0 0.5\nf 1/1 2/2 3/3\n");
  const SceneObject& mesh = *document->GetFirstObject();
  EXPECT_EQ(mesh.GetPointCount(), 3);
  EXPECT_EQ(mesh.GetRad(), (Vector{0.5, 0.5, 0}));
  // Corners go the other way round, and v runs downwards.
  ASSERT_EQ(mesh.uvws.size(), 2U);
  EXPECT_EQ(mesh.uvws[0], UvwPolygon());
  EXPECT_EQ(mesh.uvws[1], (UvwPolygon{{0.25, 0, 0}, {0, 0.5, 0}, {1, 1, 0}, {1, 1, 0}}));
}

TEST(MeshFile, MistakesNameTheFileAndTheCure) {
  nbx::test::TemporaryFolder folder;
  const std::string place = "objects[0].parameters.file: ";
  const struct {
    const char *name, *text, *message;
  } mistakes[] = {
      {"cut.glb", "glTF\2", "can't be read as a mesh ("},
      {"points.obj", "v 0 0 0\nv 1 0 0\nl 1 2\n", "has no polygons; export it with its faces"},
      {"nan.obj", "v 0 0 0\nv 1 nan 0\nv 0 1 0\nf 1 2 3\n", "has a point that isn't a finite"},
  };
  for (const auto& [name, text, message] : mistakes) {
    const std::string error = ErrorOf([&, n = name, t = text] { OpenMesh(folder, n, t); });
    const std::string start = place + "\"" + folder.file(name) + "\" " + message;
    EXPECT_EQ(error.substr(0, start.size()), start);
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  }
  const auto open = [&folder](const std::string& object) {
    return ErrorOf([&] { ReadObjects(object, folder.path())->Open(); });
  };
  EXPECT_EQ(open(R"({"type": "mesh", "parameters": {"file": "none.obj"}})"),
            place + "there is no file \"" + folder.file("none.obj") +
                "\"; paths count from the scene's folder \"" + folder.path() + "\"");
  EXPECT_EQ(open(R"({"type": "null", "children": [{"type": "mesh"}]})"),
            "objects[0].children[0]: the mesh has no polygons; give parameters.file, or \"points\" "
            "and \"polygons\"");
}

}  // namespace
}  // namespace host::test
