// One logical field that lies either on the CPU or on the GPU. All state of a simulation is held in
// MFields. An operation asks for the side that it works on and says what it does there:
//
//   read_cpu       read the contents                      moves them if they lie on the other side
//   write_cpu      change the contents                    moves them if they lie on the other side
//   overwrite_cpu  write all elements, read none of them  moves nothing, drops the other side
//
// read_gpu and overwrite_gpu do the same for the device. There is no write_gpu: an operation that
// fails on the device is repeated on the CPU, so its operands must still be what they were (see
// try_gpu in util/cuda_use_flags.h).
//
// A destination may also be a source: on_cpu() and on_gpu() below take the sides in the right order
// and never work in place on the device.
#pragma once

#include <cstdint>

#include "math/device/cuda_field.h"
#include "math/field_pool.h"

namespace nbx {

/// Where a field is. Any other value is stored as it is, and moves no data.
enum class Location : std::uint32_t { kCpu = 0, kGpu = 1 };
using enum Location;

/// The side on which the calling thread works, so where its temporaries belong.
Location thread_location();

/// A new MField is empty (it has no storage on either side) and located on the CPU. CPU storage
/// comes from the field pool and goes back there. Not copyable, not locked. The side is no part of
/// the value: reading a const MField may move it. A move must run on a thread that has selected the
/// device; it throws CUDAException and leaves the field as it was if the device fails.
class MField {
 public:
  MField() = default;
  MField(Location location, const Vec3i& dims) { resize(location, dims); }
  MField(const MField&) = delete;
  MField& operator=(const MField&) = delete;

  Location location() const { return location_; }
  /// Dimensions on the side where the data is.
  Vec3i dims() const;
  bool empty() const { return !cpu_ && !gpu_.has_memory(); }

  /// The field on the CPU. All three throw Exception if the MField is empty.
  const Field<float>& read_cpu() const;
  Field<float>& write_cpu();
  Field<float>& overwrite_cpu();
  /// The same, sized to `dims`; the MField may be empty.
  Field<float>& overwrite_cpu(const Vec3i& dims);

  /// The field on the device. An empty MField gives an empty CUDAField.
  const CUDAField& read_gpu() const;
  CUDAField& overwrite_gpu();

  /// Moves the data, with the log line "moving mfield from cpu to gpu" (or the reverse). An empty
  /// MField only changes its location.
  void move_to(Location target) const;

  /// How often data went from one side to the other, for all MFields of the process. A difference
  /// of 0 shows that what ran in between moved nothing.
  static std::uint64_t moves();

  /// Sizes the storage of the current location; contents are undefined afterwards.
  void resize(const Vec3i& dims);
  void resize(Location location, const Vec3i& dims);

  /// Resizes and keeps the contents, shifted: new cell (i, j, k) takes old cell (i, j, k) + offset,
  /// or `fill` where that lies outside of the old field.
  void resize_offset(const Vec3i& offset, const Vec3i& dims, float fill);

  /// Fills the storage of the current location with 0; an empty MField stays empty.
  void zero();

  /// Gives an empty MField storage on the side of the calling thread, filled with 0.
  void provide(const Vec3i& dims);

  /// Drops all storage; the location is kept.
  void release();

  /// Exchanges contents; `other` is moved to this side first.
  void swap(MField& other);

  /// Deep copies onto this MField's side.
  void assign(const MField& other);
  void assign(const Field<float>& field);

  /// The pooled CPU storage for sharing with a stored frame; empty if the data isn't on the CPU.
  FieldHandle cpu_handle() const { return cpu_; }

 private:
  mutable FieldHandle cpu_;
  mutable CUDAField gpu_;
  mutable Location location_ = kCpu;
};

/// Runs operation(dst, sources...) on the CPU sides. The operation must write all of `dst`, which
/// may be one of the sources.
template <class Operation, class... Sources>
void on_cpu(Operation&& operation, MField& dst, const Sources&... sources) {
  const auto run = [&](const auto&... read) { operation(dst.overwrite_cpu(), read...); };
  run(sources.read_cpu()...);
}

/// The same on the device, for try_gpu. A destination that is also a source keeps its contents
/// until `operation` has returned, so that a failure can be repeated on the CPU.
template <class Operation, class... Sources>
void on_gpu(Operation&& operation, MField& dst, const Sources&... sources) {
  const auto run = [&](CUDAField& written) { operation(written, sources.read_gpu()...); };
  if (((&sources != &dst) && ...)) {
    run(dst.overwrite_gpu());
    return;
  }
  MField fresh(kGpu, dst.dims());
  run(fresh.overwrite_gpu());
  dst.swap(fresh);
}

}  // namespace nbx
