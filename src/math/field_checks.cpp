#include "math/field_checks.h"

#include "util/exception.h"

namespace nbx {

namespace {

// The center grid to which faces of dimensions `dims` along `axis` belong.
Vec3i center_dims(Vec3i dims, int axis) {
  dims[axis] -= 1;
  return dims;
}

void require(bool condition, const std::source_location& where) {
  if (!condition) throw FieldDimensionMismatchException(where);
}

}  // namespace

void check_alignment(const Field<float>& f) {
  if (reinterpret_cast<std::uintptr_t>(f.data()) % 16 != 0) throw MisalignedFieldMemoryException();
}

void check_count(const Field<float>& a, const Field<float>& b, std::source_location where) {
  require(a.count() == b.count(), where);
}

void check_dims(const Field<float>& a, const Field<float>& b, std::source_location where) {
  require(a.dims() == b.dims(), where);
}

Vec3i check_mac(const Field<float>& U, const Field<float>& V, const Field<float>& W,
                std::source_location where) {
  const Vec3i dims = center_dims(U.dims(), 0);
  require(center_dims(V.dims(), 1) == dims && center_dims(W.dims(), 2) == dims, where);
  return dims;
}

void check_mac(const Field<float>& U, const Field<float>& V, const Field<float>& W,
               const Field<float>& center, std::source_location where) {
  require(check_mac(U, V, W, where) == center.dims(), where);
}

}  // namespace nbx
