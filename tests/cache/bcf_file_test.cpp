#include "cache/bcf_file.h"

#include <functional>

#include "cache/frame_bytes.h"
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
  void write(const std::string& bytes) { test::write_file(path, bytes); }

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
    out.addGrid(type, codec, test::kSimTime, test::kFrameTime, test::kOffset, test::kMatrix, field);
  };
  add(2, Codec::kRunLength, f);
  add(35, Codec::kRaw, f);
  add(1, Codec::kRunLength, none);
  EXPECT_EQ(out.position(), expected.size());
  EXPECT_TRUE(out.close());
  EXPECT_EQ(test::read_file(path), expected);

  BcfFile in;
  ASSERT_TRUE(in.openRead(path));
  int records = 0;
  for (GridHead head; in.readHead(head); ++records) {
    EXPECT_EQ(head.simTime, test::kSimTime);
    EXPECT_EQ(head.frameTime, test::kFrameTime);
    EXPECT_EQ(head.offset, test::kOffset);
    EXPECT_EQ(head.gridMatrix, test::kMatrix);
    const std::uint64_t position = in.position();
    EXPECT_TRUE(in.trailerMatches(position, head));
    if (records == 1) continue;  // skips a payload that wasn't read
    Field<float> back(9, 9, 9);
    in.readGrid(position, head, back);
    EXPECT_TRUE(test::same_bits(back, records == 0 ? f : none)) << records;
  }
  EXPECT_EQ(records, 3);
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
    write(bytes);
    EXPECT_EQ(thrown([&] { BcfFile().openRead(path); }), message);
  }
  write(test::header(0x86));
  BcfFile in;
  EXPECT_TRUE(in.openRead(path));
  EXPECT_FALSE(in.openRead(folder.file("missing.bcf")));
  EXPECT_FALSE(in.openRead(folder.path()));
  EXPECT_FALSE(in.errorString().empty());
}

TEST_F(BcfFileTest, MisuseThrows) {
  BcfFile file;
  GridHead head;
  Field<float> f(1, 1, 1), huge = Field<float>::view(f.data(), 1 << 16, 1 << 15, 1);
  const auto add = [&](int type, Codec codec, const Field<float>& field) {
    return thrown([&] { file.addGrid(type, codec, {}, {}, {}, {}, field); });
  };
  EXPECT_EQ(add(2, Codec::kRaw, f), "Failed to add float grid. No file opened for writing.");
  const std::string closed = "Failed to read float grid. No file opened for reading.";
  EXPECT_EQ(thrown([&] { file.readHead(head); }), closed);
  EXPECT_EQ(thrown([&] { file.readGrid(12, head, f); }), closed);
  ASSERT_TRUE(file.create(path));
  EXPECT_EQ(thrown([&] { file.readHead(head); }), closed);
  EXPECT_EQ(add(0, Codec::kRaw, f), "Invalid grid type.");
  EXPECT_EQ(add(36, Codec::kRaw, f), "Invalid grid type.");
  EXPECT_EQ(add(2, static_cast<Codec>(3), f), "Unknown codec");
  EXPECT_EQ(add(2, Codec::kRunLength, huge), "Grid too large for a frame file.");
  // None of them left a byte, and the file is none until it is closed.
  EXPECT_EQ(test::read_file(path), test::header(0));
  EXPECT_TRUE(file.close());
  EXPECT_EQ(test::read_file(path), test::header());
}

TEST_F(BcfFileTest, PayloadsThatAreRefusedLeaveTheFieldAlone) {
  const std::string raw = Bytes().f32({1, 2, 3, 4}).text();
  const std::string run = Bytes().i32({-4}).f32({9}).text();
  const std::pair<std::string, std::string> cases[] = {
      {test::record(2, 7, {2, 2, 1}, raw), "Unknown codec"},
      {test::record(2, 0, {2, -2, 1}, raw), "BCF: invalid raw grid size"},
      {test::record(2, 1, {2, 2, 2}, run), "BCF: run-length payload doesn't fill the grid"},
      {test::record(2, 2, {1 << 10, 1 << 10, 1}, raw),
       "BCF: predictive payload doesn't fit the grid"},
      {test::record(2, 1, {2, 2, 1}, run).substr(0, 225),
       "BCF: the file ends inside of a grid, 3 of 8 bytes are there"}};
  for (const auto& [record, message] : cases) {
    write(test::header() + record);
    BcfFile in;
    GridHead head;
    ASSERT_TRUE(in.openRead(path) && in.readHead(head));
    Field<float> f(1, 2, 3), before;
    test::fill_random(f, 1);
    before.copy(f);
    EXPECT_EQ(thrown([&] { in.readGrid(in.position(), head, f); }), message);
    EXPECT_TRUE(test::same_bits(f, before));
  }
}

// A full disk behind a link: the device must stay what it is.
TEST_F(BcfFileTest, FullDisk) {
  std::filesystem::create_symlink("/dev/full", path);
  BcfFile out;
  EXPECT_FALSE(out.create(path));
  EXPECT_EQ(out.errorString(), "No space left on device");
  EXPECT_TRUE(std::filesystem::is_symlink(path));
}

}  // namespace
}  // namespace nbx
