// Scene documents: reading, writing, and error messages.

#include <regex>

#include "host/base/json_place.h"
#include "host/base/whole_file.h"
#include "host/format/document_writer.h"
#include "host/scene/primitive_mesh.h"
#include "host/scene/scene_work.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

// Every key, class and value type, and numbers without a short binary form.
TEST(SceneDocument, WritingGivesTheTextThatWasRead) {
  for (const char* name : {"values.json", "classes.json"}) {
    const std::string text = Data(name);
    const auto document = Read(text);
    EXPECT_EQ(WriteDocument(*document, "/"), text);
    // Evaluating the animation does not change the document.
    document->Open();
    GoToFrame(*document, 5);
    EXPECT_EQ(WriteDocument(*document, "/"), text);
  }
  const std::string plain = WriteDocument(*Read(R"({"materials": [{}]})"), "/");
  EXPECT_NE(plain.find("[\n    {}\n  ]"), std::string::npos) << "objects are on their own lines";
}

// data/commented.json comes back as it is. data/comments_anywhere.txt has comments at every place
// where the parser takes one, and comments_anywhere.json is what is saved of it.
TEST(SceneDocument, CommentsStayWithTheirValues) {
  const std::string text = Data("commented.json"), anywhere = Data("comments_anywhere.txt");
  EXPECT_EQ(WriteDocument(*Read(text), "/"), text);
  const auto document = Read(anywhere);
  const std::string saved = WriteDocument(*document, "/");
  EXPECT_EQ(saved, Data("comments_anywhere.json"));
  EXPECT_EQ(WriteDocument(*Read(saved), "/"), saved);
  std::string windows = std::regex_replace(anywhere, std::regex("\n"), "\r\n");
  EXPECT_EQ(WriteDocument(*Read("\xEF\xBB\xBF" + windows), "/"), saved);
}

TEST(SceneDocument, KeepsTheFormOfItsRate) {
  const FrameRate film(30000, 1001), half(25, 2);
  for (const auto& [text, rate] : {std::pair{"29.97", film},
                                   {"\"30000/1001\"", film},
                                   {"\"60000/2002\"", film},
                                   {"12.5", half}}) {
    const auto document =
        Read("{\"fps\": " + std::string(text) +
             R"(, "objects": [{"type": "box", "parameters": {"start": 3.33666667}}]})");
    EXPECT_EQ(document->GetFps(), rate);
    EXPECT_EQ(document->GetMaxTime(), BaseTime(100 * rate.Denominator(), rate.Numerator()));
    const std::string written = WriteDocument(*document, "/");
    EXPECT_NE(written.find("\"fps\": " + std::string(text) + ","), std::string::npos) << written;
    // Rates with a few digits mean the nearest video rate, and are kept as written.
    EXPECT_EQ(document->GetFirstObject()->GetDataInstance().GetTime(test_plugin::kStart) ==
                  BaseTime::FromFrame(100, rate),
              rate == film);
    document->fps_text.clear();  // like an imported scene
    EXPECT_EQ(Read(WriteDocument(*document, "/"))->GetFps(), rate);
  }
}

TEST(SceneDocument, FilesKeepTheirPlaceWhenTheDocumentMoves) {
  nbx::test::TemporaryFolder folder;
  const auto document =
      ReadObjects(R"({"type": "box", "parameters": {"folder": "cache"}})", folder.path());
  std::filesystem::create_directory(folder.file("sub"));
  WriteDocumentFile(*document, folder.file("sub/copy.json"));
  const auto moved = ReadDocumentFile(folder.file("sub/copy.json"), Classes());
  EXPECT_EQ(moved->GetFirstObject()->GetDataInstance().GetFilename(test_plugin::kFolder).path,
            folder.file("cache"));
  EXPECT_EQ(ErrorOf([&] { WriteDocumentFile(*document, folder.file("no/such/x.json")); }),
            folder.file("no/such/x.json") + ": can't be written: No such file or directory");
}

// data/mistakes.json contains parts of scenes, each with its error, which starts with the place.
// FOLDER means the folder of the data, and a star some text.
TEST(SceneDocument, MistakesAreReportedWithTheirPlace) {
  const std::string folder = NBX_HOST_TEST_DATA;
  for (const Json& group : Json::parse(Data("mistakes.json")))
    for (const Json& mistake : group["mistakes"]) {
      const Json& part = mistake[0];
      std::string text = group["scene"].dump();
      text.replace(text.find("\"HERE\""), 6,
                   part.is_string() ? part.get<std::string>() : part.dump());
      std::string error = ErrorOf([&] { Read(text, folder)->Open(); });
      EXPECT_EQ(error.find('\n'), std::string::npos) << error;
      for (std::size_t at; (at = error.find(folder)) != std::string::npos;)
        error.replace(at, folder.size(), "FOLDER");
      const std::string expected = group["place"].get<std::string>() + std::string(mistake[1]);
      EXPECT_LT(error.size(), 300u) << "too long to read";
      const std::size_t star = expected.find('*');
      if (star != std::string::npos && error.starts_with(expected.substr(0, star)) &&
          error.ends_with(expected.substr(star + 1)))
        error = expected;
      EXPECT_EQ(error, expected) << text;
    }
  const std::string nested(100000, '[');
  EXPECT_EQ(ErrorOf([&] { Read("{\"fps\": " + nested); }), "the text is nested too deeply");
}

TEST(SceneDocument, NumbersOutOfBoundsTakeTheNearerBoundWithAWarning) {
  const auto document = ReadObjects(R"(
    {"type": "box", "parameters": {"edge_length": 0.4}},
    {"type": "box", "parameters": {"edge_length": 1e6}},
    {"type": "box", "keyframes": {"parameters.edge_length": [[0, 1], [1, 1000001]]}})");
  EXPECT_EQ(
      document->warnings,
      (std::vector<std::string>{
          "objects[0].parameters.edge_length: 0.4 is below 0.5, which is used instead",
          "objects[2].keyframes.parameters.edge_length[1][1]: 1000001 is above 1000000, which "
          "is used instead"}));
  document->Open();
  GoToFrame(*document, 1);
  std::vector<double> edges;
  for (const SceneObject* object : document->AllObjects())
    edges.push_back(object->GetDataInstance().GetReal(test_plugin::kSize));
  EXPECT_EQ(edges, (std::vector<double>{0.5, 1e6, 1e6}));
}

TEST(WholeFile, ReplacesAFileOrLeavesItAlone) {
  const nbx::test::TemporaryFolder folder;
  const std::string path = folder.file("file");
  std::ofstream(path) << "old";
  { WholeFile(path).Write("half"); }
  EXPECT_EQ(nbx::test::read_file(path), "old");
  using Entry = std::filesystem::directory_iterator;
  EXPECT_EQ(std::distance(Entry(folder.path()), Entry()), 1) << "a temporary file is left";
  {
    const WholeFile file(path);
    file.Write("new");
    file.Commit();
  }
  EXPECT_EQ(nbx::test::read_file(path), "new");
  EXPECT_THROW(WholeFile(folder.file("no/file")).Write("x"), std::filesystem::filesystem_error);
}

TEST(SceneDocument, ExcessiveScenesAreRefusedBeforeWorkStarts) {
  // Each line of the file has the objects of a scene and the start of its error, empty if it is
  // fine.
  for (const Json& scene : Json::parse(Data("excessive.json"))) {
    const auto message = scene[1].get<std::string>();
    const std::string error = ErrorOf([&] {
      CheckWork(*Read(Json{{"objects", scene[0]}}.dump()));
    });
    EXPECT_EQ(error.substr(0, message.size()), message) << scene;
    EXPECT_EQ(error.empty(), message.empty()) << error;
  }
  for (const char* type : {"sphere\"", "cube\"", "torus\"", "plane\"", "cylinder\"",
                           R"(cylinder", "parameters": {"caps": false})"}) {
    const auto document = ReadObjects(R"({"type": ")" + std::string(type) + "}");
    document->Open();
    const SceneObject& object = *document->Objects().front();
    EXPECT_EQ(PrimitivePolygons(object.GetType(), object.GetDataInstance()),
              object.GetCache()->GetPolygonCount())
        << type;
  }
}

}  // namespace
}  // namespace host::test
