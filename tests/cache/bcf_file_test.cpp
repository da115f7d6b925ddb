// The bytes of frame files, and the records that describe them.
#include "cache/bcf_file.h"

#include <functional>

#include "cache/cache_info.h"
#include "cache/frame_bytes.h"
#include "cache/frame_names.h"
#include "cache/grid_type.h"
#include "cache/sim_frame.h"
#include "support/full_disk.h"
#include "support/support.h"

namespace nbx {
namespace {

using test::Bytes;

std::string thrown(const std::function<void()>& action) {
  try {
    action();
  } catch (const Exception& e) {
    return e.what();
  } catch (const BcfFormatError& e) {
    return std::string("format: ") + e.what();
  }
  return "";
}

class BcfFileTest : public testing::Test {
 protected:
  void put(const std::string& name, const std::string& bytes) {
    test::write_file(folder.file(name), bytes);
  }

  test::TemporaryFolder folder;
  const std::string path = folder.file("frame.bcf");
};

// 2 x 1 x 3 cells, run-length and raw, and a grid without cells.
TEST_F(BcfFileTest, BytesAreThoseWorkedOutByHand) {
  Field<float> f(2, 1, 3), none(0, 4, 4);
  const float cells[] = {1, 1, 2, 2, 2, 3};
  std::copy(std::begin(cells), std::end(cells), f.data());
  const std::string runs = Bytes().i32({2}).f32({1, 1}).i32({-3}).f32({2}).i32({1}).f32({3}).text();
  const std::string raw = Bytes().f32({1, 1, 2, 2, 2, 3}).text();
  const std::string expected = test::header() + test::record(2, 1, {2, 1, 3}, runs) +
                               test::record(35, 0, {2, 1, 3}, raw) +
                               test::record(1, 1, {0, 4, 4}, "");

  BcfFile out;
  ASSERT_TRUE(out.create(path));
  const auto add = [&](int type, Codec codec, const Field<float>& field) {
    EXPECT_TRUE(out.addGrid(type, codec, test::kSimTime, test::kFrameTime, test::kOffset,
                            test::kMatrix, field));
  };
  add(2, Codec::kRunLength, f);
  add(35, Codec::kRaw, f);
  add(1, Codec::kRunLength, none);
  EXPECT_EQ(out.position(), expected.size());
  EXPECT_TRUE(out.close());
  EXPECT_EQ(test::read_file(path), expected);
}

TEST_F(BcfFileTest, HeadersThatAreRefused) {
  const std::string foreign = "format: Unrecognized file format for '" + path + "'";
  const std::string other = "format: Unsupported BCF file format version for '" + path + "'";
  const std::pair<std::string, std::string> cases[] = {
      {"", foreign},
      {"kelvra bcf 6", foreign},
      {test::header(5), other},
      {test::header(0x87), other},
      {test::header().substr(0, 11), other + ": unfinished, its writer ended half-way"}};
  for (const auto& [bytes, message] : cases) {
    test::write_file(path, bytes);
    EXPECT_EQ(thrown([&] { std::ignore = BcfFile().openRead(path); }), message);
  }
  test::write_file(path, test::header(0x86));
  BcfFile in;
  EXPECT_TRUE(in.openRead(path));
  EXPECT_EQ(in.openRead(folder.file("missing.bcf")).reason(), "No such file or directory");
  EXPECT_FALSE(in.openRead(folder.path()));
}

TEST_F(BcfFileTest, RefusedGridsLeaveNoByte) {
  BcfFile file;
  Field<float> f(1, 1, 1), huge = Field<float>::view(f.data(), 1 << 16, 1 << 15, 1);
  const auto add = [&](int type, Codec codec, const Field<float>& field) {
    return thrown([&] { std::ignore = file.addGrid(type, codec, {}, {}, {}, {}, field); });
  };
  EXPECT_EQ(add(2, Codec::kRaw, f), "Failed to add float grid. No file opened for writing.");
  ASSERT_TRUE(file.create(path));
  EXPECT_EQ(add(0, Codec::kRaw, f), "Invalid grid type.");
  EXPECT_EQ(add(36, Codec::kRaw, f), "Invalid grid type.");
  EXPECT_EQ(add(2, Codec::kRunLength, huge), "Grid too large for a frame file.");
  // The file is no frame until it is closed.
  EXPECT_EQ(test::read_file(path), test::header(0));
  EXPECT_TRUE(file.close());
  EXPECT_EQ(test::read_file(path), test::header());
}

// A full disk behind a link: the device must stay what it is.
TEST_F(BcfFileTest, FullDisk) {
  std::filesystem::create_symlink("/dev/full", path);
  EXPECT_EQ(BcfFile().create(path).reason(), "No space left on device");
  EXPECT_TRUE(std::filesystem::is_symlink(path));
}

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

TEST_F(BcfFileTest, InfoOfAFile) {
  const std::string payload = Bytes().i32({-24}).f32({0}).i32({3}).f32({-1, NAN, 5}).text();
  put("frame.bcf", test::header() + test::record(2, 1, {3, 3, 3}, payload) +
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

TEST_F(BcfFileTest, InfoOfADirectory) {
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

FieldHandle filled(const Vec3i& dims, unsigned seed) {
  const FieldHandle field = acquire_field(dims);
  test::fill_random(*field, seed);
  return field;
}

std::string raw(std::initializer_list<float> cells) { return Bytes().f32(cells).text(); }

TEST_F(BcfFileTest, LoadReadsHeadsAndGridsOnDemand) {
  const std::string bytes =
      test::header() + test::record(2, 0, {2, 1, 1}, raw({1, 2})) +
      test::record(200, 0, {-3, 1, 1}, "") + test::record(5, 1, {9, 9, 9}, "no payload") +
      test::record(2, 0, {1, 2, 1}, raw({3, 4}));  // the same type again: this one wins
  test::write_file(path, bytes);
  SimFrame frame;
  EXPECT_TRUE(frame.saved);
  EXPECT_FALSE(frame.valid);
  ASSERT_TRUE(frame.load(path));  // the bad payload doesn't show
  EXPECT_TRUE(frame.saved && frame.valid);
  EXPECT_EQ(frame.frameTime, test::kFrameTime);
  EXPECT_EQ(frame.simTime, test::kSimTime);
  ASSERT_EQ(frame.grids.size(), 3u);
  EXPECT_EQ(frame.grids[2].offset, test::kOffset);
  EXPECT_EQ(frame.grids[2].gridMatrix, test::kMatrix);
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

TEST_F(BcfFileTest, WritesWhatIsLoadedAndReadsItBack) {
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

TEST_F(BcfFileTest, PackedFramesGiveTheSameFieldsAndFiles) {
  SimFrame copies, packed;
  packed.ownsData = false;
  const FieldHandle density = filled({40, 30, 20}, 1), fuel = filled({5, 6, 7}, 2);
  std::fill_n(density->data() + 3000, 9000, 0.5f);
  for (SimFrame* frame : {&copies, &packed}) {
    frame->add(density, kGridDensity, test::kOffset, test::kMatrix);
    frame->add(fuel, kGridFuel, test::kOffset, test::kMatrix);
  }
  packed.pack();
  EXPECT_EQ(density.use_count(), 1);
  density->data()[0] += 1;  // the payload doesn't see it
  const char* memory = packed.buffers.at(0).data();

  const std::string other = folder.file("packed.bcf");
  EXPECT_GT(copies.write(path, Codec::kRunLength), 0u);
  EXPECT_GT(packed.write(other, Codec::kPredictive), 0u) << "keeps the codec of its payloads";
  EXPECT_EQ(test::read_file(other), test::read_file(path));
  for (const int type : {kGridDensity, kGridFuel})
    EXPECT_TRUE(test::same_bits(*packed.grid(type), *copies.grid(type)));
  EXPECT_EQ(packed.grid(kGridFuel), packed.grid(kGridFuel)) << "decoded once";

  packed.clear();
  packed.add(fuel, kGridFuel, test::kOffset, test::kMatrix);
  packed.pack();
  EXPECT_EQ(packed.buffers.at(0).data(), memory) << "the next frame allocates nothing";
  EXPECT_TRUE(test::same_bits(*packed.grid(kGridFuel), *fuel));
}

TEST_F(BcfFileTest, FailedWritesLeaveNoFile) {
  SimFrame frame;
  frame.add(filled({64, 64, 16}, 3), kGridDensity, {}, {});
  BcfFile out;
  std::uint64_t size = 1;
  const auto reason = [&](const std::string& file, Codec codec) {
    return frame.write_loaded(size, out, file, codec, Sync::kNone).reason();
  };
  EXPECT_EQ(reason(folder.file("missing/frame.bcf"), Codec::kRaw), "No such file or directory");
  {
    const test::FileSizeLimit limit(100000);
    EXPECT_EQ(reason(path, Codec::kRaw), "File too large");
    EXPECT_EQ(frame.write(path, Codec::kRunLength), 0u);
    // A file with part of a record isn't completed.
    ASSERT_TRUE(out.create(path));
    const FrameGrid& grid = frame.grids.at(kGridDensity);
    EXPECT_FALSE(out.addGrid(kGridDensity, Codec::kRaw, {}, {}, {}, {}, *grid.field));
    EXPECT_FALSE(out.close());
    EXPECT_THROW(std::ignore = out.openRead(path), BcfFormatError);
    std::filesystem::remove(path);
  }
  EXPECT_EQ(size, 0u);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(reason(path, Codec::kRaw), "");
  EXPECT_EQ(size, std::filesystem::file_size(path));

  EXPECT_THROW(frame.write(path, static_cast<Codec>(9)), Exception);
  EXPECT_FALSE(std::filesystem::exists(path));
}

// The region doesn't depend on which grids the frame has, and damaged offsets don't overflow.
TEST_F(BcfFileTest, DimensionsOffsetAndBox) {
  SimFrame frame;
  EXPECT_EQ(frame.dims(), Vec3i());
  EXPECT_EQ(frame.offset(), Vec3i());
  EXPECT_TRUE(frame.box().empty());

  const Vec3i offset{-1, 9, 4}, center{7, 6, 5};  // the box of 5 x 4 x 3 cells at (0, 10, 5)
  const IntBox box{{0, 10, 5}, {4, 13, 7}};
  for (int a = 0; a < 3; ++a) {
    Vec3i faces = center;
    faces[a] += 1;
    frame.add(acquire_field(faces), kGridVelocityX + a, offset, {});
    EXPECT_EQ(frame.box(), box);
  }
  EXPECT_EQ(frame.dims(), Vec3i());
  EXPECT_EQ(frame.offset(), offset);
  frame.add(acquire_field(center), kGridSolid, offset, {});
  EXPECT_EQ(frame.dims(), center);
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
TEST_F(BcfFileTest, GridsEncodedSideBySideGiveTheSameFile) {
  SimFrame frame;
  for (const int type : {2, 3, 5, 24}) frame.add(filled({64, 48, 50 + type}, 7), type, {}, {});
  for (const Codec codec : {Codec::kRaw, Codec::kRunLength, Codec::kPredictive}) {
    BcfFile serial;
    ASSERT_TRUE(serial.create(folder.file("serial")));
    for (const auto& [type, grid] : frame.grids)
      ASSERT_TRUE(serial.addGrid(type, codec, frame.simTime, frame.frameTime, {}, {}, *grid.field));
    ASSERT_TRUE(serial.close());
    EXPECT_GT(frame.write(path, codec), 0u);
    EXPECT_EQ(test::read_file(path), test::read_file(folder.file("serial")));
  }
}

}  // namespace
}  // namespace nbx
