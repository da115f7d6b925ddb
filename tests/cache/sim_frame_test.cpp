#include "cache/sim_frame.h"

#include "cache/frame_bytes.h"
#include "support/full_disk.h"
#include "support/support.h"

namespace nbx {
namespace {

using test::Bytes;

FieldHandle filled(const Vec3i& dims, unsigned seed) {
  const FieldHandle field = acquire_field(dims);
  test::fill_random(*field, seed);
  return field;
}

std::string raw(std::initializer_list<float> cells) { return Bytes().f32(cells).text(); }

class SimFrameTest : public testing::Test {
 protected:
  test::TemporaryFolder folder;
  const std::string path = folder.file("frame.bcf");
  test::LogCapture log;
};

TEST_F(SimFrameTest, LoadReadsHeadsAndGridsOnDemand) {
  const std::string bytes =
      test::header() + test::record(2, 0, {2, 1, 1}, raw({1, 2})) +
      test::record(200, 0, {-3, 1, 1}, "") + test::record(5, 1, {9, 9, 9}, "no payload") +
      test::record(2, 0, {1, 2, 1}, raw({3, 4}));  // stands twice: this one wins
  test::write_file(path, bytes);
  SimFrame frame;
  EXPECT_TRUE(frame.saved);
  EXPECT_FALSE(frame.valid);
  ASSERT_TRUE(frame.load(path));  // the bad payload doesn't show
  EXPECT_TRUE(frame.saved && frame.valid);
  EXPECT_EQ(frame.frameTime, test::kFrameTime);
  ASSERT_EQ(frame.grids.size(), 3u);
  EXPECT_EQ(frame.grids[2].offset, test::kOffset);
  EXPECT_FALSE(frame.grids[2].field);

  const FieldHandle density = frame.grid(2);
  EXPECT_EQ(test::values_of(*density), (std::vector<float>{3, 4}));
  EXPECT_EQ(frame.grid(2), density);
  EXPECT_EQ(frame.grid(200)->count(), 0u);
  EXPECT_THROW(frame.grid(5), Exception);
  EXPECT_FALSE(frame.grid(7));

  std::filesystem::remove(path);
  EXPECT_FALSE(frame.grid(5));
  EXPECT_EQ(frame.grid(2), density);
  EXPECT_FALSE(frame.load(path));
  EXPECT_TRUE(frame.grids.empty() && !frame.valid);
  test::write_file(path, test::header());
  EXPECT_FALSE(frame.load(path));
  test::write_file(path, "something else");
  EXPECT_THROW(frame.load(path), BcfFormatError);
}

TEST_F(SimFrameTest, WritesWhatIsLoadedAndReadsItBack) {
  SimFrame frame;
  frame.simTime = test::kSimTime;
  frame.frameTime = test::kFrameTime;
  const FieldHandle density = filled({5, 6, 7}, 1), velocity = filled({6, 6, 7}, 2);
  frame.add(density, kGridDensity, test::kOffset, test::kMatrix);
  frame.ownsData = false;
  frame.add(velocity, kGridVelocityX, test::kOffset, test::kMatrix);
  EXPECT_EQ(frame.grid(kGridVelocityX), velocity);
  const Field<float>* live = density.get();
  EXPECT_NE(frame.grid(kGridDensity).get(), live);
  density->data()[0] += 1;  // the copy doesn't see it
  frame.grids[kGridFuel].gridType = kGridFuel;

  for (const Codec codec : {Codec::kRaw, Codec::kRunLength, Codec::kPredictive}) {
    const std::uint64_t size = frame.write(path, codec);
    EXPECT_EQ(size, std::filesystem::file_size(path));
    SimFrame back;
    ASSERT_TRUE(back.load(path));
    EXPECT_EQ(back.grids.size(), 2u);
    EXPECT_TRUE(test::same_bits(*back.grid(kGridDensity), *frame.grid(kGridDensity)));
    EXPECT_TRUE(test::same_bits(*back.grid(kGridVelocityX), *velocity));
    EXPECT_EQ(back.frameTime.frame(), 3);

    // Written elsewhere, the frame still reads the rest from where it came from; over its own file
    // that rest is gone.
    SimFrame copy;
    ASSERT_TRUE(copy.load(path) && copy.grid(kGridVelocityX));
    EXPECT_GT(copy.write(folder.file("copy.bcf"), codec), 0u);
    EXPECT_TRUE(test::same_bits(*copy.grid(kGridDensity), *frame.grid(kGridDensity)));
    ASSERT_TRUE(copy.load(path) && copy.grid(kGridVelocityX));
    EXPECT_GT(copy.write(path, codec), 0u);
    EXPECT_FALSE(copy.grid(kGridDensity));
    EXPECT_TRUE(copy.grid(kGridVelocityX));
  }
}

TEST_F(SimFrameTest, FailedWritesLeaveNoFile) {
  SimFrame frame;
  frame.add(filled({64, 64, 16}, 3), kGridDensity, {}, {});
  EXPECT_EQ(frame.write(folder.file("missing/frame.bcf"), Codec::kRaw), 0u);
  EXPECT_TRUE(log.contains("Failed to open file " + folder.file("missing/frame.bcf")));
  EXPECT_EQ(frame.error, "No such file or directory");

  {
    const test::FileSizeLimit limit(100000);
    EXPECT_EQ(frame.write(path, Codec::kRaw), 0u);
    EXPECT_EQ(frame.write(path, Codec::kRunLength), 0u);
  }
  EXPECT_EQ(frame.error, "File too large");
  EXPECT_EQ(log.count("Failed to write file " + path + ": File too large"), 2);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_GT(frame.write(path, Codec::kRaw), 0u);
  EXPECT_EQ(frame.error, "");

  EXPECT_THROW(frame.write(path, static_cast<Codec>(9)), Exception);
  EXPECT_FALSE(std::filesystem::exists(path));
}

// The region is the same whichever grids stand for it, and damaged offsets don't overflow.
TEST_F(SimFrameTest, DimensionsOffsetAndBox) {
  SimFrame frame;
  EXPECT_EQ(frame.dims(), Vec3i());
  EXPECT_EQ(frame.offset(), Vec3i());
  EXPECT_TRUE(frame.box().empty());

  const Vec3i offset{-1, 9, 4}, centre{7, 6, 5};  // the box of 5 x 4 x 3 cells at (0, 10, 5)
  const IntBox box{{0, 10, 5}, {4, 13, 7}};
  for (int a = 0; a < 3; ++a) {
    Vec3i faces = centre;
    faces[a] += 1;
    frame.add(acquire_field(faces), kGridVelocityX + a, offset, {});
    EXPECT_EQ(frame.box(), box);
  }
  EXPECT_EQ(frame.dims(), Vec3i());
  EXPECT_EQ(frame.offset(), offset);
  frame.add(acquire_field(centre), kGridSolid, offset, {});
  EXPECT_EQ(frame.dims(), centre);
  EXPECT_EQ(frame.box(), box);
  frame.add(acquire_field({8, 6, 5}), kGridSecondVelocityX, offset + Vec3i(0, -1, 2), {});
  EXPECT_EQ(frame.dims(), Vec3i(8, 6, 5));
  EXPECT_EQ(frame.offset(), Vec3i(-1, 8, 4));
  EXPECT_EQ(frame.box(), box);

  const int most = std::numeric_limits<int>::max();
  frame.grids[kGridSolid].offset = {most, most, most};
  EXPECT_EQ(frame.box().hi, Vec3i(most, most, most));
}

// Grids large enough to be encoded on several threads give the bytes of one after the other.
TEST_F(SimFrameTest, GridsEncodedSideBySideGiveTheSameFile) {
  SimFrame frame;
  for (const int type : {2, 3, 5, 24}) frame.add(filled({64, 48, 50 + type}, 7), type, {}, {});
  for (const Codec codec : {Codec::kRaw, Codec::kRunLength, Codec::kPredictive}) {
    BcfFile serial;
    ASSERT_TRUE(serial.create(folder.file("serial")));
    for (const auto& [type, grid] : frame.grids)
      serial.addGrid(type, codec, frame.simTime, frame.frameTime, {}, {}, *grid.field);
    serial.close();
    EXPECT_GT(frame.write(path, codec), 0u);
    EXPECT_EQ(test::read_file(path), test::read_file(folder.file("serial")));
  }
}

}  // namespace
}  // namespace nbx
