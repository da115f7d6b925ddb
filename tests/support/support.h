// Helpers of several test programs.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <omp.h>

#include "math/field.h"
#include "math/sparse_field.h"
#include "util/isa.h"
#include "util/log.h"

namespace nbx::test {

/// A temporary folder that is removed with this object.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "nbx_test_XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  std::string path() const { return path_.string(); }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

inline std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

/// Redirects the log to its own file while it lives.
class LogCapture {
 public:
  LogCapture() { set_log_file(folder_.file("log")); }
  ~LogCapture() { set_log_file(""); }
  std::string text() const { return read_file(folder_.file("log")); }
  bool contains(const std::string& part) const { return text().find(part) != std::string::npos; }
  int count(const std::string& part) const {
    const std::string all = text();
    int n = 0;
    for (std::size_t at = all.find(part); at != std::string::npos; at = all.find(part, at + 1)) ++n;
    return n;
  }

 private:
  TemporaryFolder folder_;
};

/// Runs OpenMP with `n` threads while it lives.
class ThreadCount {
 public:
  explicit ThreadCount(int n) : before_(omp_get_max_threads()) { omp_set_num_threads(n); }
  ~ThreadCount() { omp_set_num_threads(before_); }

 private:
  int before_;
};

/// Runs body() with each instruction set, on one thread and on three.
template <class Body>
void everywhere(Body body) {
  for (const Isa isa : {Isa::kBaseline, Isa::kAvx2, Isa::kAvx512})
    for (const int threads : {1, 3}) {
      SCOPED_TRACE(testing::Message() << "isa " << static_cast<int>(isa) << " threads " << threads);
      limit_isa(isa);
      const ThreadCount count(threads);
      body();
    }
  limit_isa(Isa::kAvx512);
}

/// Visits the cells of a grid of n cells, except `rim` layers on each side.
template <class Body>
void each_cell(const Vec3i& n, int rim, Body body) {
  for (int k = rim; k < n[2] - rim; ++k)
    for (int j = rim; j < n[1] - rim; ++j)
      for (int i = rim; i < n[0] - rim; ++i) body(i, j, k);
}

/// Uniform values in [lo, hi), the same for the same seed.
inline void fill_random(Field<float>& f, unsigned seed, float lo = -1, float hi = 1) {
  std::mt19937 engine(seed);
  std::uniform_real_distribution<float> value(lo, hi);
  for (std::size_t i = 0; i < f.count(); ++i) f[i] = value(engine);
}

inline Field<float> random_field(const Vec3i& n, unsigned seed, float lo = -1, float hi = 1) {
  Field<float> f(n[0], n[1], n[2]);
  fill_random(f, seed, lo, hi);
  return f;
}

/// A field of n cells that holds value(i, j, k).
template <class Value>
Field<float> field_of(const Vec3i& n, Value value) {
  Field<float> f(n[0], n[1], n[2]);
  each_cell(n, 0, [&](int i, int j, int k) { f(i, j, k) = static_cast<float>(value(i, j, k)); });
  return f;
}

inline Field<float> copy_of(const Field<float>& f) {
  Field<float> copy;
  copy.copy(f);
  return copy;
}

/// The voxel of a sparse field; creates its block if there is none.
inline float& voxel(SparseField<float, 3>& f, int x, int y, int z) {
  return f.hash_insert(x, y, z).data[SparseField<float, 3>::voxel_index(x & 7, y & 7, z & 7)];
}

inline bool same_bits(const Field<float>& a, const Field<float>& b) {
  return a.dims() == b.dims() &&
         (a.count() == 0 || std::memcmp(a.data(), b.data(), a.count() * sizeof(float)) == 0);
}

}  // namespace nbx::test
