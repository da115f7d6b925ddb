// The range coder of the predictive codec: byte-wise and without carries, after Martin's "Range
// encoding" (1979) and Schindler's variant of it. A message is one number in [low, low + range),
// modulo 2^32. The bytes that both ends of the interval share are settled and are written.
//
// For kernel files only (util/isa.h).
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nbx::NBX_ISA {

// The largest number of bytes that one step settles: 3 equal ones, and 2 for an interval that is
// too small.
constexpr std::size_t kStepBytes = 5;

// An interval that begins `low` / 2^16 and is `width` / 2^16 of the range.
struct Interval {
  std::uint16_t low;
  std::uint16_t width;
};

inline std::uint32_t big_endian(std::uint32_t x) { return __builtin_bswap32(x); }

// `low` and `range` without their settled bytes. A step leaves a range of at least 1, and normalize
// one of at least 2^16: a smaller interval across a byte's border has a `low` whose lower 16 bits
// aren't 0, so 2^32 - (low << 16) is between 2^16 and 2^32.
class CoderInterval {
 public:
  std::uint32_t low = 0;
  std::uint32_t range = 0xffffffff;

  // Calls take(bits) for the settled bytes, and once more if an interval across a byte's border has
  // become too small: it is then cut off at the border.
  template <class Take>
  void normalize(Take take) {
    const int bits = std::countl_zero((low + range) ^ low) & 24;
    take(bits);
    low <<= bits;
    range <<= bits;
    if (range < 0x10000) [[unlikely]] {
      take(16);
      low <<= 16;
      range = 0 - low;
    }
  }
};

// Each step writes up to kStepBytes, and may touch the 4 bytes after them.
class RangeEncoder {
 public:
  explicit RangeEncoder(char* dst) : out_(dst) {}
  char* position() const { return out_; }
  void set_position(char* dst) { out_ = dst; }

  void encode(Interval symbol) {
    const std::uint32_t t = state_.range >> 16;
    state_.low += t * symbol.low;
    state_.range = t * symbol.width;
    emit();
  }

  // The low `n` bits of `value`, n <= 16.
  void encode_bits(std::uint32_t value, int n) {
    state_.range >>= n;
    state_.low += (value & ((1u << n) - 1)) * state_.range;
    emit();
  }

  void finish() {
    put();
    out_ += 4;
  }

 private:
  void put() {
    const std::uint32_t bytes = big_endian(state_.low);
    std::memcpy(out_, &bytes, 4);
  }
  void emit() {
    state_.normalize([this](int bits) {
      put();
      out_ += bits / 8;
    });
  }

  CoderInterval state_;
  char* out_;
};

// Reads 4 bytes at once: each step may touch kStepBytes + 4 bytes from the position on.
class RangeDecoder {
 public:
  explicit RangeDecoder(const char* src) : offset_(next(src)), in_(src + 4) {}
  const char* position() const { return in_; }

  // If the next symbol is `symbol`, takes the step and returns true. This tests
  // low <= offset / t < low + width without the division.
  bool decode_if(Interval symbol) {
    const std::uint32_t t = state_.range >> 16, low = t * symbol.low, width = t * symbol.width;
    if (offset_ - low >= width) return false;
    take(low, width);
    return true;
  }

  // The place of the next symbol in [0, 2^16), or more if no encoder wrote this. take_symbol then
  // takes the step.
  std::uint32_t target() const { return offset_ / (state_.range >> 16); }
  void take_symbol(Interval symbol) {
    const std::uint32_t t = state_.range >> 16;
    take(t * symbol.low, t * symbol.width);
  }

  // A value of `n` bits, n <= 16; 2^n or more if no encoder wrote this.
  std::uint32_t decode_bits(int n) {
    const std::uint32_t range = state_.range >> n, value = offset_ / range;
    take(value * range, range);
    return value;
  }

 private:
  static std::uint32_t next(const char* p) {
    std::uint32_t bytes;
    std::memcpy(&bytes, p, 4);
    return big_endian(bytes);
  }

  void take(std::uint32_t low, std::uint32_t range) {
    state_.low += low;
    state_.range = range;
    offset_ -= low;
    state_.normalize([this](int bits) {
      const std::uint64_t window = std::uint64_t{offset_} << 32 | next(in_);
      offset_ = static_cast<std::uint32_t>((window << bits) >> 32);
      in_ += bits / 8;
    });
  }

  CoderInterval state_;
  std::uint32_t offset_;  // of the message from `low`
  const char* in_;
};

}  // namespace nbx::NBX_ISA
