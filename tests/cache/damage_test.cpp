// Frame files with every byte changed and every length: each must be answered in the way of its
// kind, without more memory than the file bears out.
#include <atomic>
#include <cstdlib>
#include <new>

#include "cache/bfs.h"
#include "cache/cache_info.h"
#include "cache/frame_bytes.h"
#include "cache/predictive_codec.h"
#include "cache/sim_frame.h"
#include "support/support.h"

namespace {

std::atomic<std::size_t> largest_allocation{0};

void* allocate(std::size_t size, std::size_t alignment) {
  std::size_t seen = largest_allocation;
  while (size > seen && !largest_allocation.compare_exchange_weak(seen, size)) {
  }
  if (alignment <= 16) return std::malloc(size);
  return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void* allocate_or_throw(std::size_t size) {
  if (void* p = allocate(size, 16)) return p;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return allocate_or_throw(size); }
void* operator new[](std::size_t size) { return allocate_or_throw(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size, 16); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }

namespace nbx {
namespace {

using test::Bytes;

constexpr std::size_t kAllowed = 1 << 16;  // what a file of 800 bytes may cost at most

// What a reader gets from a file: for each type the cells, or nothing if the grid is damaged.
struct Outcome {
  bool foreign = false;
  std::map<int, std::vector<float>> grids;
  int damaged = 0;
};

Outcome read(const std::string& path) {
  Outcome outcome;
  try {
    SimFrame frame;
    frame.load(path);
    frame.dims();
    frame.box();
    frame.frameTime.frame();
    for (const auto& [type, grid] : frame.grids) {
      try {
        const FieldHandle field = frame.grid(type);
        outcome.grids[type] = test::values_of(*field);
      } catch (const Exception&) {
        ++outcome.damaged;
      }
    }
  } catch (const BcfFormatError&) {
    outcome.foreign = true;
  }
  read_frame_file_info(path, true);
  return outcome;
}

class Damage : public testing::Test {
 protected:
  Damage() {
    const std::string runs = Bytes().i32({-5}).f32({0}).i32({3}).f32({1, 2, 3}).text();
    const std::string raw = Bytes().f32({4, 5, 6, 7}).text();
    first = test::record(2, 1, {2, 2, 2}, runs);
    bytes = test::header() + first + test::record(3, 0, {4, 1, 1}, raw);
    ByteBuffer buffer;
    const std::size_t size = predictive_encode(buffer, fuel.data(), {2, 3, 1});
    coded = test::record(4, 2, {2, 3, 1}, std::string(buffer.data(), size));
    bytes += coded;
    last = test::record(25, 1, {1, 1, 2}, Bytes().i32({-2}).f32({8}).text());
    bytes += last;
    largest_allocation = 0;
  }
  ~Damage() override { EXPECT_LT(largest_allocation, allowed); }

  Outcome outcome(const std::string& damaged) {
    std::filesystem::remove(path);  // a file system may sync one that is truncated and filled anew
    test::write_file(path, damaged);
    return read(path);
  }

  test::TemporaryFolder folder;
  const std::string path = folder.file("frame.bcf");
  std::size_t allowed = kAllowed;
  test::LogCapture log;
  std::string first, coded, last, bytes;
  const std::vector<float> density{0, 0, 0, 0, 0, 1, 2, 3}, temperature{4, 5, 6, 7},
      fuel{1, 1, 2, 4, 9, 9}, solid{8, 8};
};

TEST_F(Damage, EveryLength) {
  const std::size_t second = 12 + first.size(), third = bytes.size() - last.size();
  const std::size_t coded_at = third - coded.size(), payload = coded.size() - 226;
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const Outcome o = outcome(bytes.substr(0, length));
    ASSERT_EQ(o.foreign, length < 12) << length;
    // A record counts once its head is whole, and reads once its payload is.
    const auto behind_head = [&](std::size_t start, std::size_t behind) {
      return static_cast<std::size_t>(length >= start + 222 + behind);
    };
    const std::size_t heads = behind_head(12, 0) + behind_head(second, 0) +
                              behind_head(coded_at, 0) + behind_head(third, 0);
    ASSERT_EQ(o.grids.size() + static_cast<std::size_t>(o.damaged), heads) << length;
    std::map<int, std::vector<float>> whole;
    if (behind_head(12, 24)) whole[2] = density;
    if (behind_head(second, 16)) whole[3] = temperature;
    if (behind_head(coded_at, payload)) whole[4] = fuel;
    if (behind_head(third, 8)) whole[25] = solid;
    ASSERT_EQ(o.grids, whole) << length;
  }
}

// Values that sit on the edges of counts, sizes and dimensions, in every byte.
TEST_F(Damage, EveryByte) {
  const std::size_t second = 12 + first.size(), third = bytes.size() - last.size();
  const std::size_t coded_at = third - coded.size();
  // A predictive byte can stand for 5676 cells that are all as predicted, but for no more.
  allowed = (coded.size() - 226) * 5676 * sizeof(float) + 64;
  int refused = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    for (const int change : {0x01, 0x02, 0x10, 0x40, 0x80, 0xff}) {
      std::string damaged = bytes;
      damaged[at] = static_cast<char>(damaged[at] ^ change);
      const Outcome o = outcome(damaged);
      const std::string where = std::to_string(at) + " ^ " + std::to_string(change);
      ASSERT_EQ(o.foreign, at < 12 && !(at == 11 && change == 0x80)) << where;
      refused += o.damaged;
      // What stands before the damage isn't touched by it, unless a record takes on its type: that
      // of the type byte, or what is taken for a head behind a size that is wrong.
      const std::size_t in_record = at - (at < coded_at ? second : at < third ? coded_at : third);
      const bool takes_type = in_record < 5;
      // In the first head the codec and the dimensions must fit the payload, times and place may be
      // anything.
      const bool fits = at >= 12 + 6 && at < 12 + 82;
      const bool needed = at == 12 + 5 || (at >= 12 + 82 && at < 12 + 94);
      if (needed) {
        ASSERT_EQ(o.grids.count(2), 0u) << where;
      } else if (fits || (at >= second && !takes_type)) {
        ASSERT_EQ(o.grids.at(2), density) << where;
      }
      if (at >= third && !takes_type) {
        ASSERT_EQ(o.grids.at(3), temperature) << where;
        ASSERT_EQ(o.grids.at(4), fuel) << where;
      }
    }
  }
  EXPECT_GT(refused, 100);
}

// Records that claim much: dimensions beyond 64 bits, sizes beyond the file, runs of billions that
// don't add up.
TEST_F(Damage, HugeClaims) {
  const int most = std::numeric_limits<int>::max(), lowest = std::numeric_limits<int>::min();
  std::string beyond = test::record(4, 1, {most, 1, 1}, Bytes().i32({1}).f32({1}).text());
  beyond.replace(0, 4, "\xff\xff\xff\xff");
  const std::string claims[] = {
      test::record(4, 1, {most, most, most}, Bytes().i32({lowest}).f32({1}).text()),
      test::record(4, 1, {1 << 20, 1 << 20, 1 << 24}, Bytes().i32({0, 0}).text()),
      test::record(4, 1, {1 << 15, 1 << 15, 1}, Bytes().i32({lowest}).f32({1}).text()),
      test::record(4, 0, {1 << 15, 1 << 15, 1}, ""),
      test::record(4, 2, {1 << 15, 1 << 15, 1}, "12345678"),
      test::record(4, 2, {20, 20, 20}, "1"),
      test::record(4, 2, {20, 20, 20}, "12345678"),
      beyond,
  };
  for (const std::string& claim : claims) {
    const Outcome o = outcome(test::header() + first + claim);
    EXPECT_EQ(o.damaged, 1);
    EXPECT_EQ(o.grids.at(2), density);
  }
}

// Not a matter of damage: the memory that a frame is encoded in serves the next one.
TEST(EncodeBuffers, ServeTheNextFrame) {
  const test::TemporaryFolder folder;
  const test::LogCapture log;
  BFS store;
  ASSERT_TRUE(store.setDirectory(folder.path()));
  SimFrame frame;
  for (const int type : {kGridDensity, kGridFuel}) {
    const FieldHandle field = acquire_field({40, 40, 40});
    test::fill_random(*field, 1);
    frame.add(field, type, {}, {});
  }
  for (const Codec codec : {Codec::kRunLength, Codec::kPredictive}) {
    store.codec = codec;
    ASSERT_TRUE(store.writeThrough(frame));
    largest_allocation = 0;
    ASSERT_TRUE(store.writeThrough(frame));
    EXPECT_LT(largest_allocation, kAllowed);
  }
}

}  // namespace
}  // namespace nbx
