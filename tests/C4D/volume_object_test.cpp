#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_access.h"
#include "C4D/settings/channel_choice.h"
#include "C4D/settings/shading_settings.h"
#include "C4D/test_document.h"
#include "cache/cache_registry.h"
#include "cache/grid_type.h"
#include "simulation/channel_params.h"
#include "support/support.h"

namespace nbx {
namespace {

const std::string kVolume = R"({"type": "volume", "name": "v", "parameters": {)";

void add(SimFrame& frame, int type, const Vec3i& dims, float value) {
  const FieldHandle grid = acquire_field(dims);
  std::fill_n(grid->data(), grid->count(), value);
  frame.add(grid, type, {4, -5, 6}, {});
}

TEST(VolumeObject, PanelDescribesTheShownFrame) {
  const test::TemporaryFolder folder;
  SimFrame frame;
  add(frame, kGridDensity, {64, 64, 130}, 0.5f), add(frame, kGridVelocityX, {65, 64, 130}, 0.5f);
  frame.frameTime = {{6, 25}, {1, 25}};
  ASSERT_TRUE(getCache(folder.path())->write_through(frame));
  test::TestDocument document(kVolume + R"("version": 0, "frame_stride": 2, "cache_name": ")" +
                              folder.path() + R"(//a/.."}})");
  host::BaseObject& object = document.object("v");
  EXPECT_EQ(object.GetParameter(OVOLUME.VERSION), host::ParameterValue(kVolumeParametersVersion));
  EXPECT_EQ(object.GetDataInstance().GetFilename(OVOLUME.CACHE_NAME).path, folder.path());
  const auto panel = [&] {
    std::string all;
    for (std::int32_t id = OVOLUME.INFO_GRID; id <= OVOLUME.INFO_BURN; ++id) {
      const host::ParameterValue field = object.GetParameter(id);
      const bool* mark = std::get_if<bool>(&field);
      all += mark ? *mark ? "1" : "0" : std::get<std::string>(field) + "|";
    }
    return all;
  };
  EXPECT_EQ(panel(), "|||1F|00000");  // no frame 0
  document->SetTime({3, 25});
  EXPECT_EQ(panel(), "64x64x130 (0.508MV) at (5,-4,7)|4.09MB|6F|1F|11000");
  const test::LogCapture log;
  object.Press(OVOLUME.SIZE);
  EXPECT_TRUE(log.contains("handleButton: unknown button id 1033"));
}

// The bound is that of the contract, and a part of the largest color for the floats.
TEST(VolumeObject, BakedGradientHasTheColorsOfTheGlowingBody) {
  const auto brightest = [](const auto& c) { return std::max({c[0], c[1], c[2]}); };
  for (const char* exposure : {"0.02", R"(900, "fire_compression": 0)"}) {
    test::TestDocument document(kVolume + R"("fire_exposure": )" + exposure + "}}");
    const auto before = shading_params(document.object("v")).fire.ramp;
    document.object("v").Press(OVOLUME.BAKE_FIRE);
    const auto after = shading_params(document.object("v")).fire.ramp;
    ASSERT_TRUE(std::dynamic_pointer_cast<const GradientRamp>(after));
    const float largest = brightest(before->maxColor());
    for (int i = 0; i < 256; ++i) {
      const Color a = before->lookup(i / 255.0f), b = after->lookup(i / 255.0f);
      const float bound = std::max(0.01f * brightest(a), largest / 4096) + 1e-5f * largest;
      for (std::size_t c = 0; c < 3; ++c) ASSERT_NEAR(a[c], b[c], bound) << exposure << " at " << i;
    }
  }
}

TEST(VolumeObject, MeasuresTheGridsOfTheDisplayedChannel) {
  const test::TemporaryFolder folder;
  SimFrame frame;
  for (const int type : {2, 3, 4, 5, 6, 7, 8, 9, 24, 25, 27, 28, 29, 30, 31})
    add(frame, type, {4, 4, 4}, static_cast<float>(type));
  ASSERT_TRUE(getCache(folder.path())->write_through(frame));
  test::TestDocument document(kVolume + R"("cache_name": ")" + folder.path() + R"("}})");
  host::BaseObject& object = document.object("v");
  int drivers = 0;
  for (const auto& [choice, name] : object.GetDescription().Find(OVOLUME.DISPLAY_CHANNEL)->cycle) {
    const bool numbered = name.starts_with("grid_"), velocity = name == "velocity";
    const int type = grid_type_from_name(numbered ? "type" + name.substr(4) : name).value_or(0);
    object.SetParameter(OVOLUME.DISPLAY_CHANNEL, choice);
    EXPECT_TRUE(object.Press(OVOLUME.MEASURE_RANGE));
    const ParameterReader p(object);
    EXPECT_EQ(p(OVOLUME.DISPLAY_RANGE_MIN), velocity ? 5 : type) << name;
    EXPECT_EQ(p(OVOLUME.DISPLAY_RANGE_MAX), velocity ? 7 : name == "none" ? 1 : type) << name;
    if (const int key = channel_key(VolumeChannel{choice}); key != kNoChannel) {
      EXPECT_EQ(default_channel_params(key).grid_type, type) << name;
      ++drivers;
    }
  }
  EXPECT_EQ(drivers, 4);
}

TEST(VolumeObject, ExceptionsStopAtItsEntries) {
  class ThrowingHost final : public host::SmallHost {
   public:
    bool SetWorldPluginData(std::int32_t, const host::BaseContainer&) override {
      throw std::runtime_error("no disk");
    }
  } host;
  set_host_services(&host);
  test::TestDocument document(kVolume + "}}");
  const test::LogCapture log;
  EXPECT_NO_THROW(document.object("v").SetParameter(OVOLUME.DISPLAY_ON, true));
  EXPECT_TRUE(log.contains("exception in VolumeObject::Message: no disk"));
  set_host_services(nullptr);
}

}  // namespace
}  // namespace nbx
