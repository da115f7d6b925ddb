// Frame files built byte by byte, and small grids for them.
#pragma once

#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <string>
#include <vector>

#include "cache/bcf_format.h"
#include "math/field.h"

namespace nbx::test {

/// Appends values in the byte order of the machine, which is little-endian.
class Bytes {
 public:
  template <class T>
  Bytes& put(std::initializer_list<T> values) {
    for (const T& v : values) text_.append(reinterpret_cast<const char*>(&v), sizeof v);
    return *this;
  }
  Bytes& u8(int v) { return put({static_cast<std::uint8_t>(v)}); }
  Bytes& u32(std::uint32_t v) { return put({v}); }
  Bytes& i32(std::initializer_list<std::int32_t> v) { return put(v); }
  Bytes& f32(std::initializer_list<float> v) { return put(v); }
  Bytes& f64(std::initializer_list<double> v) { return put(v); }
  Bytes& add(const std::string& bytes) {
    text_ += bytes;
    return *this;
  }
  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

inline std::string header(int version = 6) {
  return Bytes().add(std::string("kelvra bcf\0", 11)).u8(version).text();
}

/// Frame 3 of a simulation at half speed: simTime 3/50 at 1/50, frameTime 3/25 at 1/25; the offset
/// is (-1, 4, 7), the matrix scales by 0.5 and moves by (10, 20, 30).
inline std::string record(int type, int codec, const Vec3i& dims, const std::string& payload) {
  const auto size = static_cast<std::uint32_t>(payload.size());
  return Bytes()
      .u32(size)
      .u8(type)
      .u8(codec)
      .f64({3, 50, 1, 50})
      .f64({3, 25, 1, 25})
      .i32({-1, 4, 7})
      .i32({dims[0], dims[1], dims[2]})
      .f64({0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 0.5, 0, 10, 20, 30, 1})
      .add(payload)
      .u32(size)
      .text();
}

inline const FrameTime kSimTime{{3, 50}, {1, 50}};
inline const FrameTime kFrameTime{{3, 25}, {1, 25}};
inline const Vec3i kOffset{-1, 4, 7};
inline const GridMatrix kMatrix{0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 0.5, 0, 10, 20, 30, 1};

inline void write_file(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// A checksum of bytes (Fowler, Noll and Vo's FNV-1a), for data that is too long to write down.
inline constexpr std::uint64_t kEmptySum = 0xcbf29ce484222325;
inline std::uint64_t sum_with(std::uint64_t sum, const std::string& bytes) {
  for (const char c : bytes) sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return sum;
}

inline std::vector<float> values_of(const Field<float>& f) {
  return f.count() ? std::vector<float>(f.data(), f.data() + f.count()) : std::vector<float>();
}

}  // namespace nbx::test
