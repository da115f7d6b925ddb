// Values from the command line (frame ranges, frame rates, parameters), and the output on a
// terminal.
#include <algorithm>
#include <sstream>

#include "host/format/document_writer.h"
#include "host/format/overrides.h"
#include "host/program/frame_range.h"
#include "host/program/terminal.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

TEST(FrameRange, ListsFramesOnceAndInOrder) {
  const std::pair<const char*, std::vector<std::int32_t>> cases[] = {
      {"0-3", {0, 1, 2, 3}},
      {"1-2x100", {1}},
      {"-5--1", {-5, -4, -3, -2, -1}},
      {"9-12,1,5,10-14x4", {1, 5, 9, 10, 11, 12, 14}}};
  std::string error;
  for (const auto& [text, frames] : cases) {
    EXPECT_EQ(ParseFrames(text, error), frames) << text;
    EXPECT_EQ(error, "") << text;
  }
}

// The time of a frame has the frame's number. The instant before has the number of the previous
// frame.
TEST(FrameRate, IsTheFractionThatPeopleMean) {
  std::istringstream rates(
      "23.976 24000 1001  23.98 24000 1001  29.97 30000 1001  29.9700299700299 30000 1001 "
      "59.94 60000 1001  119.88 120000 1001  12.5 25 2  1000000/33367 1000000 33367  25 25 1 "
      "2997 2997 1  60/4 15 1  0.001 1 1000  29.5 59 2  14.3568 8973 625  1e4 10000 1");
  const BaseTime instant(1, 1'000'000'000);
  std::string text, error;
  for (std::int64_t numerator, denominator; rates >> text >> numerator >> denominator;) {
    const auto rate = FrameRate::Parse(text, error);
    ASSERT_TRUE(rate) << text << " " << error;
    EXPECT_EQ(*rate, FrameRate(numerator, denominator)) << rate->Text();
    EXPECT_EQ(FrameRate::Parse(rate->Text(), error), rate);
    EXPECT_EQ(error, "");
    int missed = 0;
    for (std::int64_t frame = -1000; frame <= 100000; ++frame) {
      const BaseTime time = BaseTime::FromFrame(frame, *rate);
      missed += time.GetFrame(*rate) != frame || (time - instant).GetFrame(*rate) != frame - 1 ||
                time.GetFramePosition(*rate) != static_cast<double>(frame);
    }
    EXPECT_EQ(missed, 0) << text;
  }
}

const std::string kTwoBoxes = Data("two_boxes.json");

/// Edges of the two boxes, and the amounts of the tags of the first one.
std::vector<double> Numbers(const Document& document) {
  const auto objects = document.AllObjects();
  const BaseTag* tag = objects[0]->GetFirstTag();
  return {objects[0]->GetDataInstance().GetReal(test_plugin::kSize),
          objects[2]->GetDataInstance().GetReal(test_plugin::kSize),
          tag->GetDataInstance().GetReal(test_plugin::kAmount),
          tag->GetNext()->GetDataInstance().GetReal(test_plugin::kAmount)};
}

TEST(Overrides, ReachTheNamedObjectsAndTheirTagsForAllTime) {
  const std::pair<std::vector<std::string>, std::vector<double>> cases[] = {
      {{"A.1.edge_length=3"}, {3, 2, 0, 0}},
      {{"C.edge_length=4", "C.edge_length=5"}, {9, 5, 0, 0}},
      {{"A.1.amount=7"}, {9, 2, 7, 7}},
      {{"*.amount=-8.5", "*.edge_length=1e2"}, {100, 100, -8.5, -8.5}},
  };
  for (const auto& [settings, numbers] : cases) {
    const auto document = Read(kTwoBoxes);
    ApplyOverrides(*document, settings);
    document->Open();
    GoToFrame(*document, 10);
    EXPECT_EQ(Numbers(*document), numbers) << settings[0];
  }
  // 2 is the default, but values set by the user are always written.
  const auto document = Read(kTwoBoxes);
  ApplyOverrides(*document, {"A.1.edge_length=2"});
  EXPECT_NE(WriteDocument(*document, "/").find("\"edge_length\": 2.0"), std::string::npos);
}

TEST(Overrides, TakeEveryTypeOfValue) {
  const auto document = Read(kTwoBoxes);
  ApplyOverrides(*document, {"C.steps=4", "C.mode=fancy", "C.wind=1,2.5,-3", "C.start=1.5",
                             "C.label=a=b \"c\"", "C.target=A.1", "C.shape=[[0, 1], [2, 3]]",
                             "C.edge_length=0"});
  EXPECT_EQ(WriteDocument(*document, "/"), Data("every_type.json"));
  EXPECT_EQ(
      document->warnings,
      std::vector<std::string>{"--set C.edge_length=0: 0 is below 0.5, which is used instead"});
  ApplyOverrides(*document, {"C.target=", "C.folder=here"});
  const BaseContainer& data = document->FindByName("C")[0]->GetDataInstance();
  EXPECT_EQ(data.GetLink(test_plugin::kTarget), nullptr);
  EXPECT_EQ(data.GetFilename(test_plugin::kFolder).path,
            (std::filesystem::current_path() / "here").string());
  bool on = true;
  for (const char* word : {"false", "true", "0", "1", "off", "on", "NO", "Yes"}) {
    ApplyOverrides(*document, {std::string("C.active=") + word});
    EXPECT_EQ(data.GetBool(test_plugin::kActive, on), !on) << word;
    on = !on;
  }
}

// Progress is one line that is redrawn. Other output starts below it.
TEST(Terminal, RedrawsItsProgressAndEndsItBeforeOtherLines) {
  for (const bool quiet : {false, true}) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    {
      Terminal terminal(true, true);
      terminal.SetQuiet(quiet);
      terminal.Progress("frame 1", false);
      terminal.Progress("frame 2", true);
      terminal.Warning("hot");
      terminal.Note("a note");
      terminal.Progress(std::string(500, 'x'), true);
      terminal.Result("done");
      EXPECT_TRUE(terminal.Finish());
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "done\n");
    const std::string text = testing::internal::GetCapturedStderr();
    const std::string warning = "nimbrix: \033[1;33mwarning:\033[0m hot\n";
    const std::string head =
        quiet ? warning : "\r\033[Kframe 1\r\033[Kframe 2\n" + warning + "a note\n\r\033[Kxxx";
    EXPECT_EQ(text.substr(0, head.size()), head);
    EXPECT_EQ(text.back(), '\n');
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), quiet ? 1 : 4);
  }
}

}  // namespace
}  // namespace host::test
