// Scene documents: reading, writing, and what is said about mistakes.
#include <gtest/gtest.h>

#include "host/document_writer.h"
#include "host/json_place.h"
#include "host/primitive_mesh.h"
#include "host/scene_work.h"
#include "support/support.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

// Every key and every type of value; numbers that have no short binary form.
const char* const kFullScene = R"({"fps": 30, "start": -10, "end": 250, "preview_start": 0,
  "preview_end": 50, "objects": [
    {"type": "null", "name": "Rig", "enabled": false, "visible_in_render": false, "rotation": [10.1, -20.2, 30.3],
     "scale": [1.0, -2.0, 0.3333333333333333], "keyframes": {"position": {"interpolation": "smooth",
       "keys": [[0, [0.1, 0.2, 0.3]], [12.5, [1e-300, 1.7976931348623157e+308, -0.1]]]}},
     "children": [
       {"type": "box", "name": "Twin", "position": [0.1, 2.0, 3.0], "parameters": {
          "active": false, "steps": 2147483647, "mode": "fancy",
          "wind": [0.1, 0.2, 0.30000000000000004], "start": 0.3333333333333333,
          "label": "two\nlines \"quoted\" é", "folder": "caches/a b", "target": "Floor",
          "shape": [[0.1, -1.0], {"x": 0.2, "y": 1e-300, "in": "linear", "bias": 0.75}],
          "colors": [[0.0, [0.1, 2.0, 0.0]],
                     {"at": 0.5, "color": [1.0, 1.0, 1.0], "alpha": 0.25, "mode": "smooth"}],
          "parts": ["Floor", "objects[0].children[0]", "Hot"]},
        "keyframes": {"parameters.edge_length": [[0, 1.5], [10, 2.5]]},
        "tags": [{"type": "source", "name": "Hot",
                  "keyframes": {"parameters.amount": [[-5, 0.1]]}}]},
       {"type": "box", "name": "Twin", "visible_in_render": true, "parameters": {"target": "objects[0].children[1]"}}]},
    {"type": "mesh", "name": "Floor", "polygons": [[0, 1, 2], [0, 1, 2, 4]],
     "points": [[0.0, 0.0, 0.0], [0.1, 0.0, 0.0], [0.1, 0.1, 0.0], [0.0, 0.1, 0.0],
                [0.0, 0.1, 0.5]]}]})";

const char* const kLayout = R"({
  "fps": 25,
  "start": 0,
  "end": 100,
  "objects": [
    {
      "type": "null",
      "name": "Rig",
      "position": [0.1, 2.0, 3.0]
    }
  ]
}
)";

TEST(SceneDocument, WritingGivesTheTextThatWasRead) {
  const auto document = Read(kFullScene);
  const std::string written = WriteDocument(*document, "/");
  EXPECT_EQ(nlohmann::json::parse(written), nlohmann::json::parse(kFullScene));
  EXPECT_EQ(WriteDocument(*Read(written), "/"), written);
  EXPECT_EQ(WriteDocument(*Read(kLayout), "/"), kLayout);
  // The state at some time of the animation isn't the document's.
  document->Open();
  GoToFrame(*document, 5);
  EXPECT_EQ(WriteDocument(*document, "/"), written);
}

TEST(SceneDocument, KeepsTheFormOfItsRate) {
  const struct {
    const char* text;
    FrameRate rate;
  } cases[] = {{"29.97", {30000, 1001}},
               {"\"30000/1001\"", {30000, 1001}},
               {"\"60000/2002\"", {30000, 1001}},
               {"12.5", {25, 2}},
               {"25", 25}};
  for (const auto& [text, rate] : cases) {
    const auto document =
        Read("{\"fps\": " + std::string(text) +
             R"(, "objects": [{"type": "box", "parameters": {"start": 3.33666667}}]})");
    EXPECT_EQ(document->GetFps(), rate);
    EXPECT_EQ(document->GetMaxTime(), BaseTime(100 * rate.Denominator(), rate.Numerator()));
    const std::string written = WriteDocument(*document, "/");
    EXPECT_NE(written.find("\"fps\": " + std::string(text) + ","), std::string::npos) << written;
    // Seconds with a few digits mean the frame that they are nearest to, and are kept as such.
    const BaseTime start =
        document->GetFirstObject()->GetDataInstance().GetTime(test_plugin::kStart);
    EXPECT_EQ(start == BaseTime::FromFrame(100, rate), rate == FrameRate(30000, 1001));
    document->fps_text.clear();  // as in an imported scene
    EXPECT_EQ(Read(WriteDocument(*document, "/"))->GetFps(), rate);
  }
}

TEST(SceneDocument, FilesKeepTheirPlaceWhenTheDocumentMoves) {
  nbx::test::TemporaryFolder folder;
  std::ofstream(folder.file("scene.json"))
      << R"({"objects": [{"type": "box", "parameters": {"folder": "cache"}}]})";
  const auto document = ReadDocumentFile(folder.file("scene.json"), Classes());
  std::filesystem::create_directory(folder.file("sub"));
  WriteDocumentFile(*document, folder.file("sub/copy.json"));
  const auto moved = ReadDocumentFile(folder.file("sub/copy.json"), Classes());
  EXPECT_EQ(moved->GetFirstObject()->GetDataInstance().GetFilename(test_plugin::kFolder).path,
            folder.file("cache"));
  EXPECT_EQ(ErrorOf([&] { WriteDocumentFile(*document, folder.file("no/such/x.json")); }),
            folder.file("no/such/x.json") + ": can't be written");
}

TEST(SceneDocument, MistakesOfTheTextAreToldWithTheirPlace) {
  ExpectMistakes({
      {"{\"fps\": 25,\n \"end\" 3}", "2:8: syntax error*"},
      {"{\"fps\": 1e999}", "a number in the text is too large"},
      {"{\"fps\": 25, \"fps\": 30}", "the key \"fps\" stands twice in one object"},
      {R"({"fsp": 25})", "unknown key \"fsp\", did you mean \"fps\"?"},
      {R"({"fps": 0})", "fps: 0 is below 0.001"},
      {R"({"fps": "fast"})", "fps: \"fast\" isn't a frame rate such as 25, 29.97 or 30000/1001"},
      {R"({"fps": [25]})", "fps: expected a frame rate, found [25]"},
      {R"({"start": 5, "end": 4})", "the end lies before the start"},
  });
  std::string nested = "{\"fps\": ";
  for (int i = 0; i < 100000; ++i) nested += "[";
  EXPECT_EQ(ErrorOf([&] { Read(nested); }), "the text is nested too deeply");
}

TEST(SceneDocument, MistakesOfObjectsAreToldWithTheirPlace) {
  const std::vector<Mistake> mistakes = {
      {R"({})", "objects[0]: the key \"type\" is missing"},
      {R"({"type": "bxo"})", "objects[0].type: unknown type \"bxo\", did you mean \"box\"?"},
      {R"({"type": "null"}, {"type": "null", "children": [{"type": "null", "positon": 1}]})",
       "objects[1].children[0]: unknown key \"positon\", did you mean \"position\"?"},
      {R"({"type": "null", "rotation": [1, 2, null]})",
       "objects[0].rotation[2]: expected a number, found null"},
      {R"({"type": "null", "scale": [1, 0, 1]})", "objects[0].scale: no component may be 0"},
      {R"({"type": "null", "tags": [{"type": "sorce"}]})",
       "objects[0].tags[0].type: unknown type \"sorce\", did you mean \"source\"?"},
      {R"({"type": "mesh", "points": [[0, 0, 0]]})",
       "objects[0]: \"points\" and \"polygons\" go together; one of them is missing"},
      {R"({"type": "mesh", "points": [[0, 0, 0]], "polygons": [[0, 0, 1]]})",
       "objects[0].polygons[0][2]: is above 0"},
      {R"({"type": "mesh", "points": [[0, 0, 0]], "polygons": [[0, 0]]})",
       "objects[0].polygons[0]: expected 3 or 4 values, found 2"},
  };
  ExpectMistakes(mistakes, "{\"objects\": [", "]}");
}

TEST(SceneDocument, NumbersOutOfBoundsTakeTheNearerBoundWithAWarning) {
  const auto document = ReadObjects(R"(
    {"type": "box", "parameters": {"edge_length": 0.4}},
    {"type": "box", "parameters": {"edge_length": 1e6}},
    {"type": "box", "keyframes": {"parameters.edge_length": [[0, 1], [1, 1000001]]}})");
  EXPECT_EQ(
      document->warnings,
      (std::vector<std::string>{
          "objects[0].parameters.edge_length: 0.4 is below 0.5, which is taken instead",
          "objects[2].keyframes.parameters.edge_length[1][1]: 1000001 is above 1000000, which "
          "is taken instead"}));
  document->Open();
  GoToFrame(*document, 1);
  std::vector<double> edges;
  for (const SceneObject* object : document->AllObjects())
    edges.push_back(object->GetDataInstance().GetReal(test_plugin::kSize));
  EXPECT_EQ(edges, (std::vector<double>{0.5, 1e6, 1e6}));
}

TEST(SceneDocument, MistakesOfParametersAreToldWithTheirPlace) {
  const std::vector<Mistake> mistakes = {
      {R"({"edge_lenght": 2})",
       ": unknown parameter \"edge_lenght\", did you mean \"edge_length\"?"},
      {R"({"steps": 1.5})", ".steps: expected a whole number, found 1.5"},
      {R"({"steps": 2147483648})", ".steps: is above 2147483647"},
      {R"({"mode": "fncy"})", ".mode: unknown choice \"fncy\", did you mean \"fancy\"?"},
      {R"({"mode": "none"})", ".mode: unknown choice \"none\", choose from plain, fancy"},
      {R"({"start": 1e7})", ".start: is more than a million seconds"},
      {R"({"shape": [{"x": 0, "y": 0, "in": "bent"}]})",
       ".shape[0].in: expected linear or smooth, found \"bent\""},
      {R"({"shape": [{"x": 0, "y": 0, "bias": 1}]})", ".shape[0].bias: isn't between 0 and 1"},
      {R"({"colors": [[0.5, [0, 0, 0]], [0.4, [0, 0, 0]]]})",
       ".colors[1]: the positions of knots must not descend"},
      {R"({"colors": [[0, [0, -1, 0]]]})", ".colors[0][1]: a color has no part below 0"},
      {R"({"parts": ["Box", "Bax"]})",
       ".parts[1]: no object or tag is named \"Bax\", did you mean \"Box\"?"},
      {R"({"press": 1})", ": unknown parameter \"press\""},
      {R"({"target": "Bux"})", ".target: no object is named \"Bux\", did you mean \"Box\"?"},
      {R"({"target": "A"})",
       ".target: several objects are named \"A\"; name it by its place, as in \"objects[1]\""},
  };
  ExpectMistakes(mistakes, R"({"objects": [{"type": "box", "parameters": )",
                 R"(}, {"type": "null", "name": "A"}, {"type": "null", "name": "A"}]})",
                 "objects[0].parameters");
}

TEST(SceneDocument, WorkBeyondAllMeasureIsToldBeforeItIsBegun) {
  const std::string fine = R"({"type": "sphere", "parameters": {"segments": 4096, "rings": 4000}})";
  const auto emitter = [](const std::string& parameters) {
    return R"({"type": "particle_emitter", "parameters": {)" + parameters + "}}";
  };
  const struct {
    std::string objects, message;
  } cases[] = {
      {fine, ""},
      {R"({"type": "null", "children": [{"type": "cube"}, )" + fine + "]}, " +
           R"({"type": "plane", "parameters": {"segments": 2000}})",
       "objects[0].children[1]: the scene asks for 20384006 polygons, more than 20000000; "},
      {emitter(R"("rate": 1e6, "life": 4)"), ""},
      {emitter(R"("rate": 1e6, "life": 4, "life_variation": 0.5)"),
       "objects[0]: the scene asks "
       "for 6000000 particles at once"},
      {emitter(R"("rate": 1e9, "life": 9, "end": 0.001)"), ""},
      {R"({"type": "particle_emitter", "parameters": {"life": 9},
           "keyframes": {"parameters.rate": [[0, 1], [5, 1e6]]}})",
       "objects[0]: the scene asks for 9000000 particles at once"},
      {R"({"type": "particle_emitter", "enabled": false, "parameters": {"rate": 1e9}})", ""},
      {emitter(R"("rate": 1, "life": 1, "start": -900000)"),
       "objects[0]: the scene asks for 2272500000 steps of particles before its first frame"},
  };
  for (const auto& [objects, message] : cases) {
    const auto document = ReadObjects(objects);
    const std::string error = ErrorOf([&] { CheckWork(*document); });
    EXPECT_EQ(error.substr(0, message.size()), message) << objects;
    EXPECT_EQ(error.empty(), message.empty()) << error;
  }
  for (const char* type : {"sphere", "cube", "torus", "plane", "cylinder"})
    for (const char* caps : {"", R"(, "parameters": {"caps": false})"}) {
      if (*caps && type != std::string("cylinder")) continue;
      const auto document = ReadObjects("{\"type\": \"" + std::string(type) + "\"" + caps + "}");
      document->Open();
      const SceneObject& object = *document->Objects().front();
      EXPECT_EQ(PrimitivePolygons(object.GetType(), object.GetDataInstance()),
                object.GetCache()->GetPolygonCount())
          << type << caps;
    }
}

}  // namespace
}  // namespace host::test
