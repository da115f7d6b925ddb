// Meshes and scenes from model files: positions over time, outer sides, and roles from extras.
#include <csignal>
#include <numbers>

#include "host/format/document_writer.h"
#include "host/import/model_import.h"
#include "host/interface/camera.h"
#include "host/interface/light.h"
#include "host/interface/material.h"
#include "host/model/model_check.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

/// data/arm.gltf contains an arm that makes half a turn around y in one second and carries a
/// triangle whose corner grows; a ring that turns by 170 degrees about x; a skinned triangle whose
/// bone rises; a lamp, a camera and roles.
std::string WriteScene(const nbx::test::TemporaryFolder& folder, const std::string& name,
                       const std::string& generator, const std::string& extras) {
  std::string text = Data("arm.gltf");
  text.replace(text.find("GENERATOR"), 9, generator);
  text.replace(text.find("EXTRAS"), 6, extras);
  std::ofstream(folder.file(name)) << text;
  return folder.file(name);
}

SceneObject& Find(const Document& document, const char* name) {
  return *document.FindByName(name).at(0);
}

/// The point of the mesh at vertex `corner` of the file.
Vector InWorld(const SceneObject& mesh, int corner) {
  const CPolygon& p = mesh.polygons.at(0);
  const std::int32_t index = corner == 0 ? p.a : corner == 1 ? p.c : p.b;  // b and c are swapped
  return mesh.GetMg() * mesh.points.at(static_cast<std::size_t>(index));
}

/// A scene with a mesh from a file in data.
std::unique_ptr<Document> OpenMesh(const std::string& name, const std::string& more = "") {
  auto document =
      ReadObjects(R"({"type": "mesh", "parameters": {"file": ")" + name + "\"" + more + "}}",
                  NBX_HOST_TEST_DATA);
  document->Open();
  return document;
}

// The box from (0, 0, 0) to (1, 2, 3) in right-handed space; in the later files under a node.
TEST(MeshFile, LandsInTheHostsSpaceWithItsOutsideOut) {
  const struct {
    std::string name, more;
    Vector low, high;
  } cases[] = {{"box.obj", "", {0, 0, -3}, {1, 2, 0}},
               {"box.obj", ", \"file_scale\": 10", {0, 0, -30}, {10, 20, 0}},
               {"moved.gltf", "", {1000, 2000, -3300}, {1100, 2200, -3000}},
               {"MIRRORED.GLTF", "", {-100, 0, -300}, {0, 200, 0}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name + c.more);
    const auto document = OpenMesh(c.name, c.more);
    const SceneObject& mesh = *document->GetFirstObject();
    EXPECT_EQ(mesh.GetPointCount(), 8);
    EXPECT_EQ(mesh.GetPolygonCount(), 12);
    const Vector center = mesh.GetMp(), radius = mesh.GetRad();
    EXPECT_EQ(center - radius, c.low);
    EXPECT_EQ(center + radius, c.high);
    const Vector size = c.high - c.low;
    EXPECT_NEAR(SixVolumes(mesh) / (size.x * size.y * size.z), 6, 1e-9);
    for (const CPolygon& p : mesh.polygons) EXPECT_EQ(p.c, p.d);
  }
}

TEST(MeshFile, PartsJoinWithTheirTexturePlacesAndWithoutLinesAndLoosePoints) {
  const auto document = OpenMesh("mixed.obj");
  const SceneObject& mesh = *document->GetFirstObject();
  EXPECT_EQ(mesh.GetPointCount(), 3);
  EXPECT_EQ(mesh.GetRad(), (Vector{0.5, 0.5, 0}));
  // The order of the corners is reversed, and v points down.
  ASSERT_EQ(mesh.uvws.size(), 2U);
  EXPECT_EQ(mesh.uvws[0], UvwPolygon());
  EXPECT_EQ(mesh.uvws[1], (UvwPolygon{{0.25, 0, 0}, {0, 0.5, 0}, {1, 1, 0}, {1, 1, 0}}));
}

TEST(Import, ThingsAreWhereTheFileHasThemAtAllTimes) {
  const nbx::test::TemporaryFolder folder;
  const std::string path = WriteScene(folder, "arm.gltf", "", "{}");
  auto imported = ImportModel(path, 10, Classes());
  EXPECT_EQ(imported->end, 10);
  // Saving to another folder and reading again gives the same scene.
  const std::string text = WriteDocument(*imported, "/elsewhere");
  auto read = Read(text, "/elsewhere");
  EXPECT_EQ(WriteDocument(*read, "/elsewhere"), text);
  for (Document* document : {imported.get(), read.get()}) {
    document->Open();
    for (const std::int32_t frame : {0, 3, 5, 7, 10}) {
      SCOPED_TRACE(frame);
      GoToFrame(*document, frame);
      const double share = frame / 10.0, turn = std::numbers::pi * share;
      // About y, x turns toward -z in the file, and so toward z here.
      ExpectNear(InWorld(Find(*document, "Grow"), 1),
                 {100 + 100 * std::cos(turn), 200, -300 + 100 * std::sin(turn)}, 2e-3);
      const double out = 2 * share;  // offset of the third corner along the arm's z
      ExpectNear(InWorld(Find(*document, "Grow"), 2),
                 {100 + 100 * out * std::sin(turn), 300, -300 - 100 * out * std::cos(turn)}, 2e-3);
      const double roll = 170 * share * std::numbers::pi / 180;
      ExpectNear(InWorld(Find(*document, "Ring"), 2),
                 {0, 100 * std::cos(roll), -100 * std::sin(roll)}, 2e-3);
      ExpectNear(InWorld(Find(*document, "Skinned"), 1), {100, 400 * share, 0}, 2e-3);
    }
  }
  const Matrix eye = Find(*imported, "Eye").GetMg();
  ExpectNear(eye.off, {0, 0, -500}, 2e-3);
  EXPECT_EQ(eye.v3, (Vector{0, 0, 1}));  // cameras of the file look along -z
  const BaseContainer& camera = Find(*imported, "Eye").GetDataInstance();
  EXPECT_NEAR(std::tan(camera.GetReal(CAMERA_FIELD_OF_VIEW) * std::numbers::pi / 360),
              2 * std::tan(0.5), 1e-6);
  EXPECT_NEAR(camera.GetReal(CAMERA_NEAR), 10, 1e-6);
  const BaseContainer& lamp = Find(*imported, "Lamp").GetDataInstance();
  EXPECT_NEAR(lamp.GetReal(LIGHT_INTENSITY), 10 / std::numbers::pi, 1e-9);
  EXPECT_EQ(lamp.GetVector(LIGHT_COLOR), (Vector{1, 0.5, 0}));
  EXPECT_NEAR(lamp.GetReal(LIGHT_OUTER_ANGLE), 180 / std::numbers::pi, 1e-6);
  const BaseContainer& copper = imported->GetFirstMaterial()->GetDataInstance();
  EXPECT_EQ(Find(*imported, "Grow").GetFirstTag()->GetDataInstance().GetLink(TEXTURETAG_MATERIAL),
            imported->GetFirstMaterial());
  EXPECT_NEAR(copper.GetVector(MATERIAL_COLOR).y, 0.125, 1e-6);
  EXPECT_NEAR(copper.GetVector(MATERIAL_REFLECTION).x, 0.02 + 0.25, 1e-6);
}

TEST(Import, ExtrasMakeObjectsAndTags) {
  const nbx::test::TemporaryFolder folder;
  const auto import = [&](const std::string& roles, const std::string& generator = "") {
    return ImportModel(WriteScene(folder, "roles.gltf", generator, "{\"nimbrix\": " + roles + "}"),
                       10, Classes());
  };
  const std::string roles = R"({"box": {"active": 0, "steps": 3.0, "edge_length": 4,
      "wind": [1, 2, 3], "target": "Ring"}, "source": {"amount": 1}})";
  for (const char* generator : {"", "Khronos glTF Blender I/O"}) {
    const auto document = import(roles, generator);
    const SceneObject& domain = Find(*document, "Domain");
    EXPECT_EQ(domain.GetType(), test_plugin::kBox);
    const BaseContainer& data = domain.GetDataInstance();
    EXPECT_EQ(data.Find(test_plugin::kActive)->index(), 0U);
    EXPECT_FALSE(data.GetBool(test_plugin::kActive, true));
    EXPECT_EQ(data.GetLong(test_plugin::kSteps), 3);
    EXPECT_EQ(data.GetReal(test_plugin::kSize), 4);
    EXPECT_EQ(data.GetVector(test_plugin::kWind), (Vector{1, 2, 3}));  // it has no unit
    EXPECT_EQ(data.GetLink(test_plugin::kTarget), &Find(*document, "Ring"));
    EXPECT_EQ(domain.GetFirstTag()->GetDataInstance().GetReal(test_plugin::kAmount), 1);
    EXPECT_EQ(domain.GetDown()->GetName(), "Bone");
  }
  // Files of z-up programs: y and z of positions and sizes are swapped.
  const std::string light = R"({"particle_emitter": {"size": [1, 2, 3]}})";
  EXPECT_EQ(Find(*import(light, "a Blender"), "Domain").GetDataInstance().GetVector(1006),
            (Vector{1, 3, 2}));
  EXPECT_EQ(Find(*import(light), "Domain").GetDataInstance().GetVector(1006), (Vector{1, 2, 3}));

  const std::string place = folder.file("roles.gltf") + ": nodes[7].extras.nimbrix";
  const auto error = [&](const char* text) { return ErrorOf([&] { import(text); }); };
  EXPECT_EQ(error(R"({"bax": {}})"), place + ": unknown type \"bax\", did you mean \"box\"?");
  EXPECT_EQ(error(R"({"box": {"stops": 1}})"),
            place + ".box: unknown parameter \"stops\", did you mean \"steps\"?");
  EXPECT_EQ(error(R"({"box": {}, "null": {}})"),
            place + ": a node can only be one object; remove one of its types");
  EXPECT_EQ(ErrorOf([&] { ImportModel(folder.file("roles.gltf"), {}, Classes()); }),
            folder.file("roles.gltf") +
                ": the file is animated but has no frame rate; pass one with --fps RATE");
}

// Files that would crash the import library or block it forever, and files beyond the limits.
TEST(Import, DamagedAndEndlessFilesAreRefused) {
  const nbx::test::TemporaryFolder folder;
  std::string polygon = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf";
  for (int i = 0; i < 33334; ++i) polygon += " 1 2 3";
  std::ofstream(folder.file("large.obj")) << polygon;
  const std::string data = NBX_HOST_TEST_DATA "/";
  const std::pair<std::string, const char*> cases[] = {
      {data + "many.ply", "at least 8000000018 bytes"},
      {data + "open.ply", "its header has no end"},
      {data + "none.ply", "can't be read as a mesh (the file is damaged: numOut"},
      {data + "head.glb", "at least 1073741844"},
      {folder.file("large.obj"), "it needs 10000400004 pairs of corners"},
      {data + "far.gltf", "its animation reaches frame 24999999897,"}};
  for (const auto& [path, expected] : cases) {
    const std::string error = ErrorOf([&, p = path] { ImportModel(p, 25, Classes()); });
    EXPECT_NE(error.find(expected), std::string::npos) << error;
    EXPECT_EQ(error.find(path), 0U) << error;
  }
  EXPECT_EQ(ErrorOf([&] { ImportModel(data + "good.ply", 25, Classes()); }), "");
  EXPECT_EXIT(
      {
        const ModelGuard guard("crash.ply");
        std::raise(SIGSEGV);
      },
      testing::ExitedWithCode(2), "error: \"crash.ply\" is damaged");
}

}  // namespace
}  // namespace host::test
