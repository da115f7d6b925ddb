#include "cache/cache_info.h"

#include <cmath>

#include "cache/frame_bytes.h"
#include "cache/frame_names.h"
#include "cache/grid_type.h"
#include "support/support.h"

namespace nbx {
namespace {

using test::Bytes;

TEST(GridType, NamesAndTheirInverse) {
  EXPECT_EQ(grid_type_name(kGridBurn), "burn");
  EXPECT_EQ(grid_type_name(kGridSecondVelocityZ), "second_velocity_z");
  for (int type = -1; type <= 256; ++type)
    EXPECT_EQ(grid_type_from_name(grid_type_name(type)), type);
  for (const char* name : {"", "Density", "type_", "type_1x", "type_99999999999", "velocity"})
    EXPECT_FALSE(grid_type_from_name(name)) << name;
  EXPECT_EQ(staggered_axis(kGridVelocityY), 1);
  EXPECT_EQ(staggered_axis(kGridSecondVelocityX), 0);
  EXPECT_EQ(staggered_axis(kGridFuel), -1);
}

class CacheInfoTest : public testing::Test {
 protected:
  std::string put(const std::string& name, const std::string& bytes) {
    test::write_file(folder.file(name), bytes);
    return folder.file(name);
  }

  test::TemporaryFolder folder;
  test::LogCapture log;
  const std::string runs = Bytes().i32({-27, -8}).f32({0}).text();
};

TEST_F(CacheInfoTest, OneFile) {
  const std::string payload = Bytes().i32({-24}).f32({0}).i32({3}).f32({-1, NAN, 5}).text();
  const std::string path =
      put("f.bcf", test::header() + test::record(2, 1, {3, 3, 3}, payload) +
                       test::record(5, 0, {1, 1, 1}, Bytes().f32({NAN}).text()));
  const FrameFileInfo info = read_frame_file_info(path, true);
  EXPECT_TRUE(info.good());
  EXPECT_EQ(info.bytes, 12u + 2 * 226 + payload.size() + 4);
  EXPECT_EQ(info.frameTime.frame(), 3);
  EXPECT_EQ(info.box, (IntBox{{0, 5, 8}, {0, 5, 8}}));
  ASSERT_EQ(info.grids.size(), 2u);
  EXPECT_DOUBLE_EQ(info.grids[0].compression(), 108.0 / 24);
  const ValueSummary& v = *info.grids[0].values;
  EXPECT_EQ((std::array{v.min, v.max, static_cast<float>(v.nans)}),
            (std::array{-1.0f, 5.0f, 1.0f}));
  EXPECT_DOUBLE_EQ(v.mean, 4.0 / 26);
  EXPECT_EQ(info.grids[1].values->max, 0);
  EXPECT_FALSE(read_frame_file_info(path, false).grids[0].values);
}

TEST_F(CacheInfoTest, EachKindOfDamageIsFound) {
  const std::string record = test::record(2, 0, {1, 1, 2}, Bytes().f32({1, 2}).text());
  std::string trailer = record;
  trailer.back() = 1;
  const auto info = [&](const std::string& bytes) {
    return read_frame_file_info(put("f.bcf", bytes), true);
  };
  EXPECT_TRUE(info(test::header() + record).good());
  EXPECT_FALSE(info(test::header() + trailer).grids[0].damage.empty());
  EXPECT_FALSE(info(test::header() + test::record(2, 5, {1, 1, 1}, "")).grids[0].damage.empty());
  const FrameFileInfo cut = info(test::header() + record + record.substr(0, 100));
  EXPECT_FALSE(cut.damage.empty());
  EXPECT_TRUE(cut.grids.size() == 1 && cut.grids[0].damage.empty());
  EXPECT_FALSE(info(test::header() + record.substr(0, 225)).damage.empty());
  EXPECT_NE(info("nothing").damage.find("Unrecognized"), std::string::npos);
  EXPECT_FALSE(read_frame_file_info(folder.file("missing"), true).damage.empty());
}

TEST_F(CacheInfoTest, Directory) {
  const std::string good = test::header() + test::record(2, 0, {1, 1, 1}, Bytes().f32({1}).text());
  std::uint64_t bytes = 0;
  for (const int frame : {10, -2, -1, 4, 5, 8}) {
    const std::string content = frame == 4 ? "foreign file" : good;
    put(frame_file_name("a", frame, 0), content);
    bytes += frame == 4 ? 0 : content.size();
  }
  put(frame_file_name("b", 5, 0), good);  // the same number under another prefix
  put(frame_file_name("a", 5, 1), good);
  put("LastSimState.bcf", good);
  put("CacheLock.lck", "");
  const CacheInfo cache = *read_cache_info(folder.path(), true);
  std::vector<int> numbers;
  for (const auto& [number, info] : cache.frames) {
    numbers.push_back(number);
    EXPECT_EQ(info.good(), number != 4);
  }
  EXPECT_EQ(numbers, (std::vector<int>{-2, -1, 4, 5, 5, 8, 10}));
  EXPECT_EQ(cache.gaps(), (std::vector<std::pair<int, int>>{{0, 3}, {6, 7}, {9, 9}}));
  EXPECT_EQ(cache.others.size(), 2u);
  EXPECT_EQ(cache.bytes, bytes + 3 * good.size());
  EXPECT_FALSE(read_cache_info(folder.file("missing"), false));
}

}  // namespace
}  // namespace nbx
