// Frame files with each byte changed and cut at each length. The reader must report each damage as
// its kind demands, and allocate no more memory than the file justifies.
#include <atomic>
#include <cstdlib>
#include <new>

#include "cache/cache_info.h"
#include "cache/codecs/predictive_codec.h"
#include "cache/frame_bytes.h"
#include "cache/sim_frame.h"
#include "support/support.h"

namespace {

std::atomic<std::size_t> largest_allocation{0};  // stays 0 under sanitizers

#ifndef NBX_SANITIZED
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
#endif

}  // namespace

#ifndef NBX_SANITIZED  // they bring operators of their own
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
#endif

namespace nbx {
namespace {

using test::Bytes;

constexpr std::size_t kAllowed = 1 << 16;  // what a file of 800 bytes may cost at most

// What a reader gets from a file. For each type the cells, or nothing if the grid is damaged.
struct Reading {
  bool foreign = false;
  std::map<int, std::vector<float>> grids;
  int damaged = 0;
  FrameFileInfo info;  // the result of a check of the file
};

Reading read(const std::string& path) {
  Reading reading;
  try {
    SimFrame frame;
    frame.load(path);
    frame.dims();
    frame.box();
    frame.frameTime.frame();
    for (const auto& [type, grid] : frame.grids) {
      try {
        const FieldHandle field = frame.grid(type);
        reading.grids[type] = test::values_of(*field);
      } catch (const Exception&) {
        ++reading.damaged;
      }
    }
  } catch (const BcfFormatError&) {
    reading.foreign = true;
  }
  reading.info = read_frame_file_info(path, true);
  return reading;
}

struct Record {
  std::size_t start, end;
  int type;
  std::vector<float> cells;
};

class Damage : public testing::Test {
 protected:
  Damage() {
    bytes = test::header();
    const auto add = [&](int type, int codec, const Vec3i& dims, const std::string& payload,
                         const std::vector<float>& cells) {
      const std::size_t start = bytes.size();
      bytes += test::record(type, codec, dims, payload);
      records.push_back({start, bytes.size(), type, cells});
    };
    const std::vector<float> fuel{1, 1, 2, 4, 9, 9};
    ByteBuffer buffer;
    coded = predictive_encode(buffer, fuel.data(), {2, 3, 1});
    add(2, 1, {2, 2, 2}, Bytes().i32({-5}).f32({0}).i32({3}).f32({1, 2, 3}).text(), density);
    add(3, 0, {4, 1, 1}, Bytes().f32({4, 5, 6, 7}).text(), {4, 5, 6, 7});
    add(4, 2, {2, 3, 1}, std::string(buffer.data(), coded), fuel);
    add(25, 1, {1, 1, 2}, Bytes().i32({-2}).f32({8}).text(), {8, 8});
    largest_allocation = 0;
  }
  ~Damage() override { EXPECT_LT(largest_allocation, allowed); }

  Reading reading(const std::string& damaged) {
    std::filesystem::remove(path);  // a file system may sync one that is truncated and filled anew
    test::write_file(path, damaged);
    return read(path);
  }

  test::TemporaryFolder folder;
  const std::string path = folder.file("frame.bcf");
  std::size_t allowed = kAllowed;
  test::LogCapture log;
  std::string bytes;
  std::vector<Record> records;
  std::size_t coded = 0;  // bytes of the predictive payload
  const std::vector<float> density{0, 0, 0, 0, 0, 1, 2, 3};
};

TEST_F(Damage, EveryLength) {
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const Reading o = reading(bytes.substr(0, length));
    ASSERT_EQ(o.foreign, length < 12) << length;
    // A record counts once its head is complete, and can be read once its payload is. The trailer
    // of 4 bytes matters only to a check of the file.
    std::size_t heads = 0;
    bool at_end = false;
    std::map<int, std::vector<float>> whole;
    for (const Record& r : records) {
      heads += length >= r.start + 222;
      if (length >= r.end - 4) whole[r.type] = r.cells;
      at_end |= length == r.end;
    }
    ASSERT_EQ(o.grids.size() + static_cast<std::size_t>(o.damaged), heads) << length;
    ASSERT_EQ(o.grids, whole) << length;
    ASSERT_EQ(o.info.good(), at_end) << length;
  }
}

// Changes in every byte that reach the limits of counts, sizes and dimensions.
TEST_F(Damage, EveryByte) {
  // A predictive byte can stand for 5676 cells that are all as predicted, but for no more.
  allowed = coded * 5676 * sizeof(float) + 64;
  int refused = 0;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    for (const int change : {0x01, 0x02, 0x10, 0x40, 0x80, 0xff}) {
      std::string damaged = bytes;
      damaged[at] = static_cast<char>(damaged[at] ^ change);
      const Reading o = reading(damaged);
      const std::string where = std::to_string(at) + " ^ " + std::to_string(change);
      ASSERT_EQ(o.foreign, at < 12 && !(at == 11 && change == 0x80)) << where;
      refused += o.damaged;
      const std::size_t in_first = at < records[0].end ? at - 12 : 0;
      // Damage leaves the records before it alone, unless another record gets their type: by its
      // type byte, or because a wrong size makes the reader take other bytes for a head.
      bool takes_type = at < 12;
      for (const Record& r : records) {
        takes_type |= at >= r.start && at < r.start + 5;
        ASSERT_FALSE(at >= r.end - 4 && at < r.end && o.info.good()) << where << ", a trailer";
      }
      for (const Record& r : records) {
        if (r.end > at || takes_type) continue;
        ASSERT_EQ(o.grids.at(r.type), r.cells) << where;
      }
      // In the first head the codec and the dimensions must fit the payload; times and place may be
      // anything.
      if (in_first == 5 || (in_first >= 82 && in_first < 94)) {
        ASSERT_EQ(o.grids.count(2), 0u) << where;
      } else if (in_first >= 6 && in_first < 82) {
        ASSERT_EQ(o.grids.at(2), density) << where;
      }
    }
  }
  EXPECT_GT(refused, 100);
}

// Records that claim too much: dimensions beyond 64 bits, sizes beyond the file, runs of billions
// of cells that don't fill the grid.
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
    const Reading o = reading(bytes.substr(0, records[0].end) + claim);
    EXPECT_EQ(o.damaged, 1);
    EXPECT_EQ(o.grids.at(2), density);
  }
}

}  // namespace
}  // namespace nbx
