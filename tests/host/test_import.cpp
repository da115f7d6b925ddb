// Scenes from files of modelling programs: where things land at each time, and what extras make of
// them.
#include <cmath>
#include <csignal>
#include <fstream>
#include <numbers>

#include <gtest/gtest.h>

#include "host/document_writer.h"
#include "host/interface/camera.h"
#include "host/interface/light.h"
#include "host/interface/material.h"
#include "host/model_check.h"
#include "host/model_import.h"
#include "support/support.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

/// data/arm.gltf: an arm that turns half around y in one second and carries a triangle that grows a
/// corner; a ring that turns 170 degrees about x; a skinned triangle whose bone rises; lamp, eye
/// and roles.
std::string WriteScene(const nbx::test::TemporaryFolder& folder, const std::string& name,
                       const std::string& generator, const std::string& extras) {
  std::string text = nbx::test::read_file(NBX_HOST_TEST_DATA "/arm.gltf");
  text.replace(text.find("GENERATOR"), 9, generator);
  text.replace(text.find("EXTRAS"), 6, extras);
  std::ofstream(folder.file(name)) << text;
  return folder.file(name);
}

SceneObject& Find(const Document& document, const char* name) {
  return *document.FindByName(name).at(0);
}

void ExpectNear(const Vector& a, const Vector& b) {
  EXPECT_LT(Length(a - b), 2e-3) << a.x << " " << a.y << " " << a.z;
}

/// The point of the mesh that its polygon has in the place of the file's vertex `corner`.
Vector InWorld(const SceneObject& mesh, int corner) {
  const CPolygon& p = mesh.polygons.at(0);
  const std::int32_t index = corner == 0 ? p.a : corner == 1 ? p.c : p.b;  // b and c are exchanged
  return mesh.GetMg() * mesh.points.at(static_cast<std::size_t>(index));
}

TEST(Import, ThingsAreWhereTheFileHasThemAtAllTimes) {
  const nbx::test::TemporaryFolder folder;
  const std::string path = WriteScene(folder, "arm.gltf", "", "{}");
  auto imported = ImportModel(path, 10, Classes());
  EXPECT_EQ(imported->end, 10);
  // What is saved, elsewhere, and read again is the same scene.
  const std::string text = WriteDocument(*imported, "/elsewhere");
  auto read = Read(text, "/elsewhere");
  EXPECT_EQ(WriteDocument(*read, "/elsewhere"), text);
  for (Document* document : {imported.get(), read.get()}) {
    document->Open();
    for (const std::int32_t frame : {0, 3, 5, 7, 10}) {
      SCOPED_TRACE(frame);
      GoToFrame(*document, frame);
      const double share = frame / 10.0, turn = std::numbers::pi * share;
      // About y, x turns towards -z in the file, and so towards z here.
      ExpectNear(InWorld(Find(*document, "Grow"), 1),
                 {100 + 100 * std::cos(turn), 200, -300 + 100 * std::sin(turn)});
      const double out = 2 * share;  // of the third corner, along the arm's z
      ExpectNear(InWorld(Find(*document, "Grow"), 2),
                 {100 + 100 * out * std::sin(turn), 300, -300 - 100 * out * std::cos(turn)});
      const double roll = 170 * share * std::numbers::pi / 180;
      ExpectNear(InWorld(Find(*document, "Ring"), 2),
                 {0, 100 * std::cos(roll), -100 * std::sin(roll)});
      ExpectNear(InWorld(Find(*document, "Skinned"), 1), {100, 400 * share, 0});
    }
  }
  const Matrix eye = Find(*imported, "Eye").GetMg();
  ExpectNear(eye.off, {0, 0, -500});
  EXPECT_EQ(eye.v3, (Vector{0, 0, 1}));  // the file's cameras look along -z
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
  // A program with z up leaves the numbers as they are: a place or an extent has y and z exchanged.
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
            place + ": a node can be one object only; leave one of its types out");
  EXPECT_EQ(ErrorOf([&] { ImportModel(folder.file("roles.gltf"), {}, Classes()); }),
            folder.file("roles.gltf") +
                ": the file has animation but no frame rate; give it with --fps RATE");
}

// Files that the import library would die of or be at for ever, and work beyond the bounds.
TEST(Import, DamagedAndEndlessFilesAreRefused) {
  const nbx::test::TemporaryFolder folder;
  const std::string points =
                        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\n"
                        "property float y\nproperty float z\n",
                    faces = "property list uchar int vertex_indices\n",
                    end = "end_header\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
  std::string polygon = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf";
  for (int i = 0; i < 100001; ++i) polygon += i % 3 == 0 ? " 1" : i % 3 == 1 ? " 2" : " 3";
  const float numbers[] = {0, 1e9f, 0, 0, 0, 1, 0, 0};  // two times, two places
  std::ofstream(folder.file("far.bin"), std::ios::binary)
      .write(reinterpret_cast<const char*>(numbers), sizeof numbers);
  const std::string far = R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
    "nodes": [{"name": "a"}], "buffers": [{"uri": "far.bin", "byteLength": 32}], "bufferViews": [
      {"buffer": 0, "byteLength": 8}, {"buffer": 0, "byteOffset": 8, "byteLength": 24}], "accessors": [
      {"bufferView": 0, "componentType": 5126, "count": 2, "type": "SCALAR"},
      {"bufferView": 1, "componentType": 5126, "count": 2, "type": "VEC3"}], "animations": [{
      "channels": [{"sampler": 0, "target": {"node": 0, "path": "translation"}}],
      "samplers": [{"input": 0, "output": 1}]}]})";
  const struct {
    const char* name;
    std::string text;
    const char* error;
  } cases[] = {
      {"many.ply", points + "element face 4000000000\n" + faces + end, "at least 8000000018 bytes"},
      {"open.ply", points + "element face 1\n" + faces, "its head has no end"},
      {"none.ply", points + "element face 1\n" + faces + "end_header\n0 0 0\n1 0 0\n0 1 0\n0\n",
       "can't be read as a mesh (the file is damaged: numOut"},
      {"cut.glb", std::string("glTF\2\0\0\0\x20\0\0\0\0\0\0\x40JSON{}  ", 24),
       "at least 1073741844"},
      {"large.obj", polygon, "it asks for 10000200001 pairs of corners"},
      {"far.gltf", far, "its animation goes to frame 24999999897,"}};
  for (const auto& [name, text, expected] : cases) {
    std::ofstream(folder.file(name), std::ios::binary) << text;
    const std::string error = ErrorOf([&] { ImportModel(folder.file(name), 25, Classes()); });
    EXPECT_NE(error.find(expected), std::string::npos) << error;
    EXPECT_EQ(error.find(folder.file(name)), 0U) << error;
  }
  std::ofstream(folder.file("good.ply")) << points + "element face 1\n" + faces + end;
  EXPECT_EQ(ErrorOf([&] { ImportModel(folder.file("good.ply"), 25, Classes()); }), "");
  EXPECT_EXIT(
      {
        const ModelGuard guard("crash.ply");
        std::raise(SIGSEGV);
      },
      testing::ExitedWithCode(2), "error: \"crash.ply\" is damaged");
}

}  // namespace
}  // namespace host::test
