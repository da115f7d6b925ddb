#include "cache/bcf_format.h"

#include <bit>
#include <cstring>

namespace nbx {

namespace {

static_assert(std::endian::native == std::endian::little, "files hold the bytes of memory");

// Calls op(field) for each field in the order of the file.
template <class Time, class Op>
void each_time_field(Time& t, Op& op) {
  op(t.time.num);
  op(t.time.den);
  op(t.length.num);
  op(t.length.den);
}

template <class Head, class Op>
void each_field(Head& h, Op op) {
  op(h.dataSize);
  op(h.gridType);
  op(h.codec);
  each_time_field(h.simTime, op);
  each_time_field(h.frameTime, op);
  op(h.offset.v);
  op(h.dims.v);
  op(h.gridMatrix);
}

}  // namespace

void encode_head(char* dst, const GridHead& head) {
  each_field(head, [&](const auto& field) {
    std::memcpy(dst, &field, sizeof field);
    dst += sizeof field;
  });
}

void decode_head(GridHead& head, const char* src) {
  each_field(head, [&](auto& field) {
    std::memcpy(&field, src, sizeof field);
    src += sizeof field;
  });
}

std::optional<std::uint64_t> cell_count(const Vec3i& dims) {
  std::uint64_t cells = 1;
  for (int a = 0; a < 3; ++a) cells *= dims[a] > 0;
  for (int a = 0; a < 3 && cells > 0; ++a) {
    cells *= dims[a];
    if (cells > kBcfMaxCells) return {};
  }
  return cells;
}

}  // namespace nbx
