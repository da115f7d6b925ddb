// The checks of field operations. Operators check alignment first, then dimensions.
#pragma once

#include <source_location>

#include "math/field.h"

namespace nbx {

/// Throws MisalignedFieldMemoryException if the field's address isn't a multiple of 16.
void check_alignment(const Field<float>& f);

/// Throws FieldDimensionMismatchException unless the element counts are equal; shapes may differ.
void check_count(const Field<float>& a, const Field<float>& b,
                 std::source_location where = std::source_location::current());

/// Throws FieldDimensionMismatchException unless the dimensions agree axis by axis.
void check_dims(const Field<float>& a, const Field<float>& b,
                std::source_location where = std::source_location::current());

/// Throws FieldDimensionMismatchException unless U, V, W are the faces of one center grid. Returns
/// the dimensions of that grid.
Vec3i check_mac(const Field<float>& U, const Field<float>& V, const Field<float>& W,
                std::source_location where = std::source_location::current());

/// The same; also, the center field must have the dimensions of that grid.
void check_mac(const Field<float>& U, const Field<float>& V, const Field<float>& W,
               const Field<float>& center,
               std::source_location where = std::source_location::current());

/// The checks of an element-wise operator on any number of operands.
template <class... F>
void check_elementwise([[maybe_unused]] std::source_location where, const Field<float>& dst,
                       const F&... src) {
  check_alignment(dst);
  (check_alignment(src), ...);
  (check_count(dst, src, where), ...);
}

}  // namespace nbx
