// One logical field that lives on the CPU or on the GPU, and moves when it is asked for the other
// side. All state of a simulation is held in MFields.
#pragma once

#include <cstdint>

#include "math/cuda_field.h"
#include "math/field_pool.h"

namespace nbx {

/// Where a field is: 0 = CPU, 1 = GPU. Any other value is stored and moves nothing.
using Location = std::uint32_t;
inline constexpr Location kCpu = 0;
inline constexpr Location kGpu = 1;

/// The side that temporaries of the calling thread belong on.
Location thread_location();

/// A new MField is empty (it has no storage on either side) and located on the CPU. CPU storage
/// comes from the field pool and goes back there. Owns its data; not copyable, not locked. Moves
/// must run on a thread bound to the device and throw CUDAException.
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

  /// Moves the data to the CPU and returns it. Throws Exception if the MField is empty.
  Field<float>& cpu_field();
  /// The field on the CPU, where it already is there. For readers of a const MField.
  const Field<float>& cpu_field() const;
  /// Returns the GPU side; moves the data there if it has no memory yet and a CPU field exists.
  CUDAField& gpu_field();

  /// Moves the data, with the log line "moving mfield from cpu to gpu" (or the reverse). An empty
  /// MField only changes its location.
  void move_to(Location target);

  /// Sizes the storage of the current location; contents are undefined afterwards.
  void resize(const Vec3i& dims);
  void resize(Location location, const Vec3i& dims);

  /// Resizes and keeps the contents, shifted: new cell (i, j, k) takes old cell (i, j, k) + offset,
  /// or `fill` where that lies outside of the old field.
  void resize_offset(const Vec3i& offset, const Vec3i& dims, float fill);

  /// Fills the storage of the current location with 0; an empty MField stays empty.
  void zero();

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
  FieldHandle cpu_;
  CUDAField gpu_;
  Location location_ = kCpu;
};

}  // namespace nbx
