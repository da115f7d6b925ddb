#include "host/render/render_command.h"

#include <QImage>
#include <algorithm>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfInputFile.h>
#include <ImfIntAttribute.h>
#include <ImfRationalAttribute.h>
#include <ImfStandardAttributes.h>
#include <ImfStringAttribute.h>

#include "tests/host/render/shot.h"

namespace host::test {
namespace {

namespace fs = std::filesystem;

/// The scene of data/floor.json (a lit floor 300 units below the camera, and fog that is missing in
/// odd frames), and a folder for its pictures.
class RenderCommandTest : public testing::Test {
 protected:
  int Run(const std::string& output,
          std::vector<std::pair<std::string, std::string>> options = {}) {
    CommandArguments arguments;
    arguments.Add("scene", NBX_HOST_TEST_DATA "/floor.json");
    arguments.Add("output", folder_.file(output));
    options.insert(options.begin(), {{"threads", "2"}, {"samples", "2"}});
    for (const auto& [name, value] : options) {
      if (name == "frames")
        arguments.AddFrames(name, {std::stoi(value)});
      else
        arguments.Add(name, value);
    }
    return RenderCommand("test 1.2").Execute(arguments, context_);
  }
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path()))
      if (entry.is_regular_file()) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  nbx::test::TemporaryFolder folder_;
  nbx::test::RecordingContext context_{FogHost()};
};

using Names = std::vector<std::string>;

TEST_F(RenderCommandTest, ExrHoldsLayersAndMetadataOfTheWindow) {
  for (const std::string precision : {"half", "float"}) {
    SCOPED_TRACE(precision);
    ASSERT_EQ(kDone, Run("deep/er/a-##.exr", {{"frames", "0"},
                                              {"size", "40x20"},
                                              {"region", "10,5,13,7"},
                                              {"precision", precision}}));
    Imf::InputFile file(folder_.file("deep/er/a-00.exr").c_str());
    const Imf::Header& header = file.header();
    EXPECT_EQ(header.displayWindow(), Imath::Box2i({0, 0}, {39, 19}));
    ASSERT_EQ(header.dataWindow(), Imath::Box2i({10, 5}, {12, 6}));
    EXPECT_EQ(header.typedAttribute<Imf::IntAttribute>("frame").value(), 0);
    EXPECT_EQ(header.typedAttribute<Imf::StringAttribute>("software").value(), "test 1.2");
    EXPECT_EQ(Imf::framesPerSecond(header).n, 24);
    // The origin of the floor is 7 units left of the axis and 300 in front of the camera.
    EXPECT_EQ(Imath::V3f(0, 0, 0) * Imf::worldToCamera(header), Imath::V3f(-7, 0, 300));
    const auto type = precision == "half" ? Imf::HALF : Imf::FLOAT;
    for (const char* name : {"R", "A", "volume.G", "transmittance.B"})
      EXPECT_EQ(header.channels()[name].type, type) << name;
    const char* const names[] = {"R", "A", "transmittance.R", "depth.Z"};
    float values[4][6];
    Imf::FrameBuffer buffer;
    for (int n = 0; n < 4; ++n)
      buffer.insert(names[n], Imf::Slice::Make(Imf::FLOAT, values[n], {10, 5}, 3, 2));
    file.setFrameBuffer(buffer);
    file.readPixels(5, 6);
    for (int i = 0; i < 6; ++i) {
      EXPECT_NEAR(values[0][i], 0.8, 1e-3);
      EXPECT_EQ(values[1][i], 1);
      EXPECT_EQ(values[2][i], 1);
      EXPECT_NEAR(values[3][i], 300, 1e-2);
    }
  }
}

TEST_F(RenderCommandTest, PngGoesThroughTheDisplayCurve) {
  ASSERT_EQ(kDone, Run("b.png", {{"frames", "2"}, {"size", "64x1"}, {"exposure", "-1"}}));
  const QImage image(QString::fromStdString(folder_.file("b.png")));
  ASSERT_EQ(image.size(), QSize(64, 1));
  const double signal = 255 * (1.055 * std::pow(0.4, 1 / 2.4) - 0.055);
  double sum = 0;
  for (int x = 0; x < 64; ++x) sum += qRed(image.pixel(x, 0)) / 64.0;
  EXPECT_NEAR(sum, signal, 0.2);
  EXPECT_EQ(image.text("Frame"), "2");
  EXPECT_NEAR(ToneMapped(0.7 + 1e-7) - ToneMapped(0.7), 1e-7, 1e-12);
  EXPECT_LT(ToneMapped(3), 1);
  // The smallest and the widest picture.
  EXPECT_EQ(kDone, Run("small.png", {{"frames", "0"}, {"size", "1x1"}}));
  EXPECT_EQ(kDone, Run("wide.exr", {{"frames", "0"}, {"size", "16384x1"}, {"samples", "1"}}));
}

TEST_F(RenderCommandTest, MissingDataIsAnErrorUnlessTheUserSaysOtherwise) {
  EXPECT_EQ(kFailed, Run("c.####.png", {{"size", "4x4"}}));
  EXPECT_EQ(Files(), (Names{"c.0000.png"}));
  ASSERT_EQ(context_.errors.size(), 1U);
  EXPECT_EQ(context_.errors[0], "frame 1: no fog today");
  EXPECT_EQ(kDone, Run("c.####.png", {{"size", "4x4"}, {"missing", "skip"}}));
  EXPECT_EQ(Files(), (Names{"c.0000.png", "c.0002.png"}));
  EXPECT_EQ(kDone, Run("c.png", {{"size", "4x4"}, {"missing", "empty"}}));
  EXPECT_EQ(Files(), (Names{"c.0000.png", "c.0001.png", "c.0002.png"}));
  EXPECT_EQ(context_.warnings, (Names{"frame 1: no fog today", "frame 1: no fog today"}));
  EXPECT_EQ(Fog::open_phases, 0) << "every opened phase was closed";
}

TEST_F(RenderCommandTest, AnInterruptLeavesWholeFilesAndMarksPartialOnes) {
  for (const int interrupts : {1, 2}) {
    SCOPED_TRACE(interrupts);
    context_.interrupts = 0;
    context_.on_progress = [&](const std::string& text) {
      if (text.find(" 2") != std::string::npos) context_.interrupts = interrupts;
    };
    const std::string name = interrupts == 1 ? "once.exr" : "twice.exr";
    EXPECT_EQ(kInterrupted, Run(name, {{"size", "80x80"}, {"missing", "empty"}}));
  }
  EXPECT_EQ(Files(), (Names{"once.0000.exr", "twice.0000.partial.exr"}));
  Imf::InputFile partial(folder_.file("twice.0000.partial.exr").c_str());
  EXPECT_EQ(partial.header().typedAttribute<Imf::IntAttribute>("complete").value(), 0);
}

}  // namespace
}  // namespace host::test
