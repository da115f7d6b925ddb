// Scene documents: reading, writing, and what is said about mistakes.
#include <gtest/gtest.h>

#include "host/document_writer.h"
#include "support/support.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

// Every key and every type of value; numbers that have no short binary form.
const char* const kFullScene = R"({
  "fps": 30,
  "start": -10,
  "end": 250,
  "preview_start": 0,
  "preview_end": 50,
  "objects": [
    {
      "type": "null",
      "name": "Rig",
      "enabled": false,
      "rotation": [10.1, -20.2, 30.3],
      "scale": [1.0, -2.0, 0.3333333333333333],
      "keyframes": {
        "position": {
          "interpolation": "smooth",
          "keys": [[0, [0.1, 0.2, 0.3]], [12.5, [1e-300, 1.7976931348623157e+308, -0.1]]]
        }
      },
      "children": [
        {
          "type": "box",
          "name": "Twin",
          "position": [0.1, 2.0, 3.0],
          "parameters": {
            "active": false,
            "steps": 2147483647,
            "mode": "fancy",
            "wind": [0.1, 0.2, 0.30000000000000004],
            "start": 0.3333333333333333,
            "label": "two\nlines \"quoted\" é",
            "folder": "caches/a b",
            "target": "Floor"
          },
          "keyframes": {
            "parameters.edge_length": [[0, 1.5], [10, 2.5]]
          },
          "tags": [
            {
              "type": "source",
              "name": "Hot",
              "parameters": {
                "amount": 0.0
              }
            },
            {
              "type": "source",
              "keyframes": {
                "parameters.amount": [[-5, 0.1]]
              }
            }
          ]
        },
        {
          "type": "box",
          "name": "Twin",
          "parameters": {
            "target": "objects[0].children[1]"
          }
        }
      ]
    },
    {
      "type": "mesh",
      "name": "Floor",
      "points": [
        [0.0, 0.0, 0.0],
        [0.1, 0.0, 0.0],
        [0.1, 0.1, 0.0],
        [0.0, 0.1, 0.0],
        [0.0, 0.1, 0.5]
      ],
      "polygons": [[0, 1, 2], [0, 1, 2, 4]]
    }
  ]
}
)";

TEST(SceneDocument, WritingGivesTheTextThatWasRead) {
  const auto document = Read(kFullScene);
  EXPECT_EQ(WriteDocument(*document, "/"), kFullScene);
  // The state at some time of the animation isn't the document's.
  document->Open();
  GoToFrame(*document, 5);
  EXPECT_EQ(WriteDocument(*document, "/"), kFullScene);
}

TEST(SceneDocument, HoldsWhatItsTextSays) {
  const auto document = Read(kFullScene);
  EXPECT_EQ(document->GetFps(), 30);
  EXPECT_EQ(document->GetMinTime(), BaseTime(-1, 3));
  EXPECT_EQ(document->GetLoopMaxTime(), BaseTime(5, 3));
  SceneObject* rig = document->GetFirstObject();
  EXPECT_FALSE(rig->GetDeformMode());
  SceneObject* box = rig->GetDown();
  ASSERT_EQ(box->GetType(), test_plugin::kBox);
  EXPECT_EQ(box->GetUp(), rig);
  EXPECT_EQ(box->GetNext()->GetNext(), nullptr);

  const BaseContainer& data = box->GetDataInstance();
  EXPECT_EQ(data.GetBool(test_plugin::kActive, true), false);
  EXPECT_EQ(data.GetLong(test_plugin::kSteps), 2147483647);
  EXPECT_EQ(data.GetLong(test_plugin::kMode), 20);
  EXPECT_EQ(data.GetVector(test_plugin::kWind), (Vector{0.1, 0.2, 0.1 + 0.2}));
  EXPECT_EQ(data.GetTime(test_plugin::kStart), BaseTime(1, 3));
  EXPECT_EQ(data.GetLink(test_plugin::kTarget), rig->GetNext());
  EXPECT_EQ(document->Resolve(data.GetFilename(test_plugin::kFolder)).path, "/caches/a b");
  // The twin's parameters were left at their defaults, but for a link to itself.
  const BaseContainer& twin = box->GetNext()->GetDataInstance();
  EXPECT_EQ(twin.GetReal(test_plugin::kSize), 2.0);
  EXPECT_EQ(twin.GetLink(test_plugin::kTarget), box->GetNext());
  EXPECT_EQ(twin.GetReal(12345, 0.25), 0.25);

  BaseTag* hot = box->GetFirstTag();
  EXPECT_EQ(hot->GetName(), "Hot");
  EXPECT_EQ(hot->GetObject(), box);
  EXPECT_TRUE(hot->GetNext()->IsAnimated(test_plugin::kAmount));
  PolygonObject* floor = ToPoly(rig->GetNext());
  ASSERT_NE(floor, nullptr);
  EXPECT_EQ(floor->GetPolygonR()[0], (CPolygon{0, 1, 2, 2}));
  EXPECT_EQ(floor->GetPolygonR()[1], (CPolygon{0, 1, 2, 4}));
  EXPECT_EQ(ToPoly(box), nullptr);
}

TEST(SceneDocument, WritesWhatAPluginChanged) {
  const auto document = ReadObjects(R"({"type": "box"})");
  EXPECT_EQ(WriteDocument(*document, "/").find("parameters"), std::string::npos);
  document->GetFirstObject()->GetDataInstance().SetReal(test_plugin::kSize, 7);
  const std::string text = WriteDocument(*document, "/");
  EXPECT_NE(text.find("\"edge_length\": 7.0"), std::string::npos) << text;
  EXPECT_EQ(WriteDocument(*Read(text), "/"), text);
}

TEST(SceneDocument, FilesKeepTheirPlaceWhenTheDocumentMoves) {
  nbx::test::TemporaryFolder folder;
  std::ofstream(folder.file("scene.json"))
      << R"({"objects": [{"type": "box", "parameters": {"folder": "cache"}}]})";
  const auto document = ReadDocumentFile(folder.file("scene.json"), Classes());
  EXPECT_EQ(document->GetDocumentName(), "scene.json");
  EXPECT_EQ(document->GetDocumentPath().path, folder.path());

  WriteDocumentFile(*document, folder.file("copy.json"));
  EXPECT_NE(nbx::test::read_file(folder.file("copy.json")).find("\"folder\": \"cache\""),
            std::string::npos);
  std::filesystem::create_directory(folder.file("sub"));
  WriteDocumentFile(*document, folder.file("sub/copy.json"));
  const auto moved = ReadDocumentFile(folder.file("sub/copy.json"), Classes());
  EXPECT_EQ(moved->GetFirstObject()->GetDataInstance().GetFilename(test_plugin::kFolder).path,
            folder.file("cache"));
  EXPECT_EQ(ErrorOf([&] { WriteDocumentFile(*document, folder.file("no/such/x.json")); }),
            folder.file("no/such/x.json") + ": can't be written");
}

struct Mistake {
  const char* text;
  const char* message;
};

TEST(SceneDocument, MistakesOfTheTextAreToldWithTheirPlace) {
  const Mistake mistakes[] = {
      {"", "1:1: syntax error"},
      {"{\"fps\": 25,\n \"end\" 3}", "2:8: syntax error"},
      {"{\"fps\": 25}\n\nx", "3:1: syntax error"},
      {"{\"fps\": 1e999}", "a number in the text is too large"},
      {"{\"fps\": 25, \"fps\": 30}", "the key \"fps\" stands twice in one object"},
      {"[]", "expected an object {...}, found []"},
      {R"({"fsp": 25})", "unknown key \"fsp\", did you mean \"fps\"?"},
      {R"({"fps": 0})", "fps: is below 1"},
      {R"({"fps": "fast"})", "fps: expected a whole number, found \"fast\""},
      {R"({"start": 5, "end": 4})", "the end lies before the start"},
      {R"({"objects": {}})", "objects: expected an array [...], found {}"},
  };
  for (const auto& [text, message] : mistakes) {
    const std::string error = ErrorOf([&, t = text] { Read(t); });
    EXPECT_EQ(error.substr(0, std::string(message).size()), message) << text << "\n" << error;
  }
  std::string nested = "{\"fps\": ";
  for (int i = 0; i < 100000; ++i) nested += "[";
  EXPECT_EQ(ErrorOf([&] { Read(nested); }), "the text is nested too deeply");
}

TEST(SceneDocument, MistakesOfObjectsAreToldWithTheirPlace) {
  const Mistake mistakes[] = {
      {R"({})", "objects[0]: the key \"type\" is missing"},
      {R"({"type": "bxo"})", "objects[0].type: unknown type \"bxo\", did you mean \"box\"?"},
      {R"({"type": "null", "points": []})", "objects[0]: unknown key \"points\""},
      {R"({"type": "null"}, {"type": "null", "children": [{"type": "null", "positon": 1}]})",
       "objects[1].children[0]: unknown key \"positon\", did you mean \"position\"?"},
      {R"({"type": "null", "rotation": [1, 2, null]})",
       "objects[0].rotation[2]: expected a number, found null"},
      {R"({"type": "null", "scale": [1, 0, 1]})", "objects[0].scale: no component may be 0"},
      {R"({"type": "null", "enabled": 1})", "objects[0].enabled: expected true or false, found 1"},
      {R"({"type": "null", "tags": [{"type": "sorce"}]})",
       "objects[0].tags[0].type: unknown type \"sorce\", did you mean \"source\"?"},
      {R"({"type": "mesh", "points": [[0, 0, 0]]})",
       "objects[0]: \"points\" and \"polygons\" go together; one of them is missing"},
      {R"({"type": "mesh", "points": [[0, 0, 0]], "polygons": [[0, 0, 1]]})",
       "objects[0].polygons[0][2]: is above 0"},
      {R"({"type": "mesh", "points": [[0, 0, 0]], "polygons": [[0, 0]]})",
       "objects[0].polygons[0]: expected 3 or 4 values, found 2"},
  };
  for (const auto& [text, message] : mistakes)
    EXPECT_EQ(ErrorOf([&, t = text] { ReadObjects(t); }), message) << text;
}

TEST(SceneDocument, MistakesOfParametersAreToldWithTheirPlace) {
  const Mistake mistakes[] = {
      {R"({"edge_lenght": 2})", "unknown parameter \"edge_lenght\", did you mean \"edge_length\"?"},
      {R"({"elephant": 2})", "unknown parameter \"elephant\""},
      {R"({"edge_length": 0.4})", ".edge_length: 0.4 is below 0.5"},
      {R"({"edge_length": 1000001})", ".edge_length: 1000001 is above 1e+06"},
      {R"({"steps": 1.5})", ".steps: expected a whole number, found 1.5"},
      {R"({"steps": 2147483648})", ".steps: is above 2147483647"},
      {R"({"mode": "fncy"})", ".mode: unknown choice \"fncy\", did you mean \"fancy\"?"},
      {R"({"mode": "none"})", ".mode: unknown choice \"none\", choose from plain, fancy"},
      {R"({"wind": 3})", ".wind: expected a vector [x, y, z], found 3"},
      {R"({"start": 1e7})", ".start: is more than a million seconds"},
      {R"({"target": "Bux"})", ".target: no object is named \"Bux\", did you mean \"Box\"?"},
      {R"({"target": "A"})",
       ".target: several objects are named \"A\"; name it by its place, as in \"objects[1]\""},
  };
  for (const auto& [text, message] : mistakes) {
    const std::string objects =
        std::string(R"({"type": "box", "parameters": )") + text +
        R"(}, {"type": "null", "name": "A"}, {"type": "null", "name": "A"})";
    const std::string place =
        message[0] == '.' ? "objects[0].parameters" : "objects[0].parameters: ";
    EXPECT_EQ(ErrorOf([&] { ReadObjects(objects); }), place + message) << text;
  }
}

}  // namespace
}  // namespace host::test
