// Values that come from the command line: frame ranges, frame rates and parameters.
#include <filesystem>

#include <gtest/gtest.h>

#include "host/document_writer.h"
#include "host/frame_range.h"
#include "host/overrides.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

TEST(FrameRange, ListsFramesOnceAndInOrder) {
  const struct {
    const char* text;
    std::vector<std::int32_t> frames;
  } cases[] = {
      {"7", {7}},       {"0-3", {0, 1, 2, 3}},           {"0-7x3", {0, 3, 6}},
      {"1-2x100", {1}}, {"-5--1", {-5, -4, -3, -2, -1}}, {"9-12,1,5,10-11", {1, 5, 9, 10, 11, 12}},
  };
  for (const auto& [text, frames] : cases) {
    std::string error = "not cleared";
    EXPECT_EQ(ParseFrames(text, error), frames) << text;
    EXPECT_EQ(error, "") << text;
  }
}

TEST(FrameRange, RefusesAllElse) {
  const char* const malformed[] = {"",      "a",   "1-", "1,,2", "1-2x",     "1x2",
                                   "1-2-3", "1.5", " 1", "+1",   "10000001", "0-99999999999"};
  std::string error;
  for (const char* text : malformed) {
    EXPECT_TRUE(ParseFrames(text, error).empty()) << text;
    EXPECT_NE(error.find("is not a frame range"), std::string::npos) << text;
  }
  EXPECT_TRUE(ParseFrames("5-4", error).empty());
  EXPECT_EQ(error, "ends before it begins");
}

// A frame's time has the frame's number, and the instant before it that of the frame before.
TEST(FrameRate, IsTheFractionThatPeopleMean) {
  const struct {
    const char* text;
    std::int64_t numerator, denominator;
  } cases[] = {{"23.976", 24000, 1001},
               {"29.97", 30000, 1001},
               {"59.94", 60000, 1001},
               {"12.5", 25, 2},
               {"1000000/33367", 1000000, 33367},
               {"25", 25, 1},
               {"23.98", 24000, 1001},
               {"119.88", 120000, 1001},
               {"2997", 2997, 1},
               {"60/4", 15, 1},
               {"29.9700299700299", 30000, 1001},
               {"0.001", 1, 1000},
               {"29.5", 59, 2},
               {"14.3568", 8973, 625},
               {"1e4", 10000, 1}};
  const BaseTime instant(1, 1'000'000'000);
  for (const auto& [text, numerator, denominator] : cases) {
    std::string error = "not cleared";
    const auto rate = FrameRate::Parse(text, error);
    ASSERT_TRUE(rate) << text << " " << error;
    EXPECT_EQ(error, "");
    EXPECT_EQ(*rate, FrameRate(numerator, denominator)) << rate->Text();
    EXPECT_EQ(FrameRate::Parse(rate->Text(), error), rate);
    int missed = 0;
    for (std::int64_t frame = -1000; frame <= 100000; ++frame) {
      const BaseTime time = BaseTime::FromFrame(frame, *rate);
      missed += time.GetFrame(*rate) != frame || (time - instant).GetFrame(*rate) != frame - 1 ||
                time.GetFramePosition(*rate) != static_cast<double>(frame);
    }
    EXPECT_EQ(missed, 0) << text;
  }
  const char* const refusals[][2] = {{"0", "is below 0.001"},
                                     {"-5", "is below 0.001"},
                                     {"1e5", "is above 10000"},
                                     {"1/1001", "is below 0.001"},
                                     {"nan", "isn't a number"},
                                     {"1000000007/1000003", "has too large numbers; *"},
                                     {"fast", "isn't a frame rate *"},
                                     {"", "isn't a frame rate *"},
                                     {"30/0", "isn't a frame rate *"},
                                     {"30/", "isn't a frame rate *"},
                                     {"30/1.5", "isn't a frame rate *"},
                                     {"-30/-1", "isn't a frame rate *"}};
  for (const auto& [text, expected] : refusals) {
    std::string error, start = expected;
    EXPECT_FALSE(FrameRate::Parse(text, error)) << text;
    if (start.back() == '*') error.resize(start.size() - 1), start.pop_back();
    EXPECT_EQ(error, start) << text;
  }
}

const char* const kTwoBoxes = R"(
  {"type": "box", "name": "A.1", "tags": [{"type": "source"}, {"type": "source"}],
   "keyframes": {"parameters.edge_length": [[0, 1], [10, 9]]}},
  {"type": "null", "name": "B", "children": [{"type": "box", "name": "C"}]})";

/// Edges of the two boxes, and the amounts of the first one's tags.
std::vector<double> Numbers(const Document& document) {
  const auto objects = document.AllObjects();
  const BaseTag* tag = objects[0]->GetFirstTag();
  return {objects[0]->GetDataInstance().GetReal(test_plugin::kSize),
          objects[2]->GetDataInstance().GetReal(test_plugin::kSize),
          tag->GetDataInstance().GetReal(test_plugin::kAmount),
          tag->GetNext()->GetDataInstance().GetReal(test_plugin::kAmount)};
}

TEST(Overrides, ReachTheNamedObjectsAndTheirTags) {
  const struct {
    std::vector<std::string> settings;
    std::vector<double> numbers;
  } cases[] = {
      {{}, {1, 2, 0, 0}},
      {{"A.1.edge_length=3"}, {3, 2, 0, 0}},
      {{"C.edge_length=4", "C.edge_length=5"}, {1, 5, 0, 0}},
      {{"*.edge_length=6"}, {6, 6, 0, 0}},
      {{"A.1.amount=7"}, {1, 2, 7, 7}},
      {{"*.amount=-8.5", "*.edge_length=1e2"}, {100, 100, -8.5, -8.5}},
  };
  for (const auto& [settings, numbers] : cases) {
    const auto document = ReadObjects(kTwoBoxes);
    ApplyOverrides(*document, settings);
    document->Open();
    EXPECT_EQ(Numbers(*document), numbers) << (settings.empty() ? "" : settings[0]);
  }
}

TEST(Overrides, HoldForAllTimeAndAreSaved) {
  const auto document = ReadObjects(kTwoBoxes);
  ApplyOverrides(*document, {"A.1.edge_length=2"});
  document->Open();
  GoToFrame(*document, 10);
  EXPECT_EQ(Numbers(*document)[0], 2);
  // 2 is the default; what the user has set is written all the same.
  EXPECT_NE(WriteDocument(*document, "/").find("\"edge_length\": 2.0"), std::string::npos);
}

TEST(Overrides, TakeEveryTypeOfValue) {
  const auto document = ReadObjects(kTwoBoxes);
  ApplyOverrides(*document, {"C.active=false", "C.steps=4", "C.mode=fancy", "C.wind=1,2.5,-3",
                             "C.start=1.5", "C.label=a=b \"c\"", "C.folder=here", "C.target=A.1"});
  const BaseContainer& data = document->FindByName("C")[0]->GetDataInstance();
  EXPECT_FALSE(data.GetBool(test_plugin::kActive, true));
  EXPECT_EQ(data.GetLong(test_plugin::kMode), 20);
  EXPECT_EQ(data.GetVector(test_plugin::kWind), (Vector{1, 2.5, -3}));
  EXPECT_EQ(data.GetTime(test_plugin::kStart), BaseTime(3, 2));
  EXPECT_EQ(data.GetString(test_plugin::kLabel), "a=b \"c\"");
  EXPECT_EQ(data.GetFilename(test_plugin::kFolder).path,
            (std::filesystem::current_path() / "here").string());
  EXPECT_EQ(data.GetLink(test_plugin::kTarget), document->GetFirstObject());
  ApplyOverrides(*document, {"C.target=", "C.shape=[[0, 1], [2, 3]]", "C.edge_length=0"});
  EXPECT_EQ(data.GetCurve(test_plugin::kShape), (CurvePoints{{0, 1}, {2, 3}}));
  EXPECT_EQ(
      document->warnings,
      std::vector<std::string>{"--set C.edge_length=0: 0 is below 0.5, which is taken instead"});
  EXPECT_EQ(data.GetLink(test_plugin::kTarget), nullptr);
}

TEST(Overrides, SwitchesHaveSeveralWords) {
  const auto document = ReadObjects(kTwoBoxes);
  const BaseContainer& data = document->FindByName("C")[0]->GetDataInstance();
  for (const auto& [on, off] :
       {std::pair{"true", "false"}, {"1", "0"}, {"on", "off"}, {"Yes", "NO"}})
    for (const bool is : {false, true}) {
      ApplyOverrides(*document, {std::string("C.active=") + (is ? on : off)});
      EXPECT_EQ(data.GetBool(test_plugin::kActive, !is), is) << on;
    }
}

TEST(Overrides, MistakesAreToldWithTheSetting) {
  const struct {
    const char *setting, *message;
  } mistakes[] = {
      {"A.1.edge_length", "expected OBJECT.parameter=VALUE"},
      {"D.edge_length=1", "no object is named \"D\", did you mean \"B\"?"},
      {"*.amuont=1", "unknown parameter \"amuont\", did you mean \"amount\"?"},
      {"C.edge_length=big", "expected a number, found \"big\""},
      {"C.active=2", "expected true or false, found 2"},
  };
  for (const auto& [setting, message] : mistakes) {
    const auto document = ReadObjects(kTwoBoxes);
    EXPECT_EQ(ErrorOf([&, s = setting] { ApplyOverrides(*document, {s}); }),
              std::string("--set ") + setting + ": " + message);
  }
}

}  // namespace
}  // namespace host::test
