#include "cache/codecs/run_length_codec.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace nbx {

namespace {

static_assert(std::endian::native == std::endian::little, "payloads hold the bytes of memory");

constexpr std::size_t kLanes = 32;  // cells that the search loops test at once

// The start of the first three equal cells from `i` on; `n` if there are none.
std::size_t find_run(const float* x, std::size_t i, std::size_t n) {
  for (; i + kLanes + 2 <= n; i += kLanes) {
    int hits = 0;
    for (std::size_t j = i; j < i + kLanes; ++j)
      hits |= static_cast<int>(x[j] == x[j + 1]) & static_cast<int>(x[j + 1] == x[j + 2]);
    if (hits) break;
  }
  for (; i + 2 < n; ++i)
    if (x[i] == x[i + 1] && x[i + 1] == x[i + 2]) return i;
  return n;
}

// The first cell from `i` on that differs from `value`; `n` if there is none.
std::size_t find_end(const float* x, std::size_t i, std::size_t n, float value) {
  for (; i + kLanes <= n; i += kLanes) {
    int hits = 0;
    for (std::size_t j = i; j < i + kLanes; ++j) hits |= static_cast<int>(x[j] != value);
    if (hits) break;
  }
  while (i < n && x[i] == value) ++i;
  return i;
}

char* put(char* dst, const void* src, std::size_t bytes) {
  std::memcpy(dst, src, bytes);
  return dst + bytes;
}

char* put_literals(char* dst, const float* first, std::size_t count) {
  if (count == 0) return dst;
  const auto c = static_cast<std::int32_t>(count);
  return put(put(dst, &c, 4), first, 4 * count);
}

char* put_run(char* dst, const float* first, std::size_t count) {
  const std::int32_t c = -static_cast<std::int32_t>(count);
  return put(put(dst, &c, 4), first, 4);
}

// The count at the start of a block, and the bytes of floats after it.
struct Block {
  std::int32_t count;
  std::uint64_t cells() const {
    return static_cast<std::uint64_t>(std::abs(static_cast<std::int64_t>(count)));
  }
  std::uint64_t bytes() const { return count < 0 ? 4 : 4 * cells(); }
};

Block block_at(const char* p) {
  Block b;
  std::memcpy(&b.count, p, 4);
  return b;
}

}  // namespace

std::size_t rle_encode(char* dst, const float* src, std::size_t count) {
  char* out = dst;
  std::size_t i = 0;  // everything before it is written
  while (i < count) {
    std::size_t run = find_run(src, i, count);
    if (run == count && count - i >= 2 && src[count - 2] == src[count - 1]) run = count - 2;
    out = put_literals(out, src + i, run - i);
    if (run == count) break;
    i = find_end(src, run, count, src[run]);
    out = put_run(out, src + run, i - run);
  }
  return out - dst;
}

bool rle_fits(const char* payload, std::size_t size, std::uint64_t count) {
  std::uint64_t cells = 0;
  std::size_t at = 0;
  while (at < size) {
    if (size - at < 4) return false;
    const Block b = block_at(payload + at);
    at += 4;
    cells += b.cells();
    if (cells > count || (b.count != 0 && b.bytes() > size - at)) return false;
    at += b.bytes();
  }
  return cells == count;
}

void rle_decode(float* dst, const char* payload, std::size_t size) {
  for (const char* p = payload; p < payload + size;) {
    const Block b = block_at(p);
    p += 4;
    if (b.count < 0) {
      float value;
      std::memcpy(&value, p, 4);
      std::fill_n(dst, b.cells(), value);
    } else if (b.count > 0) {
      std::memcpy(dst, p, b.bytes());
    }
    dst += b.cells();
    p += b.bytes();
  }
}

}  // namespace nbx
