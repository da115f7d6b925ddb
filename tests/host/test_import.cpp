// Scenes from files of modelling programs: where things land at each time, and what extras make of
// them.
#include <cmath>
#include <fstream>
#include <numbers>

#include <gtest/gtest.h>

#include "host/document_writer.h"
#include "host/interface/camera.h"
#include "host/interface/light.h"
#include "host/interface/material.h"
#include "host/model_import.h"
#include "support/support.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

/// The numbers that a glTF text refers to.
class Numbers {
 public:
  /// The index of a new accessor of floats.
  int Add(const std::vector<float>& numbers, const char* type, std::size_t size) {
    return Append(numbers, 5126, type, size);
  }
  int AddBytes(const std::vector<std::uint8_t>& numbers, const char* type, std::size_t size) {
    return Append(numbers, 5121, type, size);
  }
  std::string Text() const {
    return R"("buffers": [{"uri": "numbers.bin", "byteLength": )" + std::to_string(bytes.size()) +
           "}], \"bufferViews\": [" + views_ + "], \"accessors\": [" + accessors_ + "]";
  }
  std::string bytes;

 private:
  template <class T>
  int Append(const std::vector<T>& numbers, int component, const char* type, std::size_t size) {
    const std::string comma = count_ == 0 ? "" : ", ";
    views_ += comma + R"({"buffer": 0, "byteOffset": )" + std::to_string(bytes.size()) +
              ", \"byteLength\": " + std::to_string(numbers.size() * sizeof(T)) + "}";
    accessors_ += comma + "{\"bufferView\": " + std::to_string(count_) +
                  ", \"componentType\": " + std::to_string(component) +
                  ", \"count\": " + std::to_string(numbers.size() / size) + ", \"type\": \"" +
                  type + "\"}";
    bytes.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(T));
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return count_++;
  }
  std::string views_, accessors_;
  int count_ = 0;
};

/// An arm that turns half around y in one second and carries a triangle that grows a corner; a
/// ring that turns 170 degrees about x; a skinned triangle whose bone rises; lamp, eye and roles.
std::string WriteScene(const nbx::test::TemporaryFolder& folder, const std::string& name,
                       const std::string& generator, const std::string& extras) {
  Numbers numbers;
  const float angle = static_cast<float>(85 * std::numbers::pi / 180);
  const int points = numbers.Add({0, 0, 0, 1, 0, 0, 0, 1, 0}, "VEC3", 3);
  const int deltas = numbers.Add({0, 0, 0, 0, 0, 0, 0, 0, 2}, "VEC3", 3);
  const int times = numbers.Add({0, 1}, "SCALAR", 1);
  const int weights = numbers.Add({0, 1}, "SCALAR", 1);
  const int half_turn = numbers.Add({0, 0, 0, 1, 0, 1, 0, 0}, "VEC4", 4);
  const int pitch = numbers.Add({0, 0, 0, 1, std::sin(angle), 0, 0, std::cos(angle)}, "VEC4", 4);
  const int rise = numbers.Add({0, 0, 0, 0, 4, 0}, "VEC3", 3);
  const int joints = numbers.AddBytes(std::vector<std::uint8_t>(12, 0), "VEC4", 4);
  const int bound = numbers.Add({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}, "VEC4", 4);
  const int unit = numbers.Add({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, "MAT4", 16);
  const auto n = [](int index) { return std::to_string(index); };
  const auto sampler = [&](int output) {
    return "{\"input\": " + n(times) + ", \"output\": " + n(output) + "}";
  };
  std::ofstream(folder.file(name))
      << R"({"asset": {"version": "2.0", "generator": ")" + generator +
             R"("}, "scene": 0, "scenes": [{"nodes": [0, 2, 3, 4, 5, 7]}], "nodes": [
      {"name": "Arm", "translation": [1, 2, 3], "children": [1]},
      {"name": "Grow", "mesh": 0},
      {"name": "Ring", "mesh": 1},
      {"name": "Lamp", "translation": [0, 1, 0], "extensions": {"KHR_lights_punctual": {"light": 0}}},
      {"name": "Eye", "camera": 0, "translation": [0, 0, 5]},
      {"name": "Skinned", "mesh": 2, "skin": 0, "translation": [7, 7, 7]},
      {"name": "Bone", "translation": [0, 0, 0]},
      {"name": "Domain", "children": [6], "extras": )" +
             extras + R"(}],
    "meshes": [{"primitives": [{"attributes": {"POSITION": )" +
             n(points) + R"(}, "material": 0, "targets": [{"POSITION": )" + n(deltas) + R"(}]}]},
      {"primitives": [{"attributes": {"POSITION": )" +
             n(points) + R"(}}]},
      {"primitives": [{"attributes": {"POSITION": )" +
             n(points) + R"(, "JOINTS_0": )" + n(joints) + R"(, "WEIGHTS_0": )" + n(bound) +
             R"(}}]}],
    "skins": [{"joints": [6], "inverseBindMatrices": )" +
             n(unit) + R"(}],
    "materials": [{"name": "Copper", "pbrMetallicRoughness":
      {"baseColorFactor": [0.5, 0.25, 1, 1], "metallicFactor": 0.5, "roughnessFactor": 0.3}}],
    "cameras": [{"type": "perspective", "perspective": {"aspectRatio": 2, "yfov": 1, "znear": 0.1}}],
    "extensionsUsed": ["KHR_lights_punctual"], "extensions": {"KHR_lights_punctual": {"lights": [
      {"type": "spot", "color": [1, 0.5, 0], "intensity": 6830, "spot": {"outerConeAngle": 0.5}}]}},
    "animations": [{"channels": [
      {"sampler": 0, "target": {"node": 0, "path": "rotation"}},
      {"sampler": 1, "target": {"node": 2, "path": "rotation"}},
      {"sampler": 2, "target": {"node": 1, "path": "weights"}},
      {"sampler": 3, "target": {"node": 6, "path": "translation"}}], "samplers": [)" +
             sampler(half_turn) + ", " + sampler(pitch) + ", " + sampler(weights) + ", " +
             sampler(rise) + "]}], " + numbers.Text() + "}";
  std::ofstream(folder.file("numbers.bin"), std::ios::binary) << numbers.bytes;
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
                ": the file has animation but no frame rate; give it with --fps N");
}

}  // namespace
}  // namespace host::test
