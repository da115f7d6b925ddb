#include "cache/codecs/predictive_kernels.h"

#include "cache/codecs/frequency_model.h"
#include "cache/codecs/predictor.h"
#include "cache/codecs/range_coder.h"

namespace nbx::NBX_ISA {

namespace {

constexpr int kSame = 32;  // the symbol of a cell that equals its prediction

// The predictions of a chunk of known cells, all at once, as integers.
void predict_chunk(std::uint32_t* __restrict p, const Chunk<const float>& c, int count) {
  const auto at = [&c](int i) {
    return Neighbors{c.cells[i - 1], c.y[i], c.z[i], c.y[i - 1], c.z[i - 1], c.yz[i], c.yz[i - 1]};
  };
  Neighbors first = c.before;
  first.y = c.y[0];
  first.z = c.z[0];
  first.yz = c.yz[0];
  const float p0 = predict(first);
  p[0] = to_ordered(is_nan(p0) ? predict_nan(first) : p0);

  int nans = 0;
  for (int i = 1; i < count; ++i) {
    const float f = predict(at(i));
    p[i] = to_ordered(f);
    nans += static_cast<int>(is_nan(f));
  }
  if (nans == 0) return;
  for (int i = 1; i < count; ++i) {
    const Neighbors n = at(i);
    if (is_nan(predict(n))) p[i] = to_ordered(predict_nan(n));
  }
}

void encode_cell(RangeEncoder& coder, FrequencyModel& model, std::uint32_t p, std::uint32_t r) {
  if (r == p) {
    coder.encode(model.interval(kSame));
    model.count(kSame);
    return;
  }
  const bool above = r > p;
  const std::uint32_t d = above ? r - p : p - r;
  const int k = 31 - std::countl_zero(d);
  const auto s = static_cast<unsigned>(above ? kSame + 1 + k : kSame - 1 - k);
  coder.encode(model.interval(s));
  model.count(s);
  if (k > 16) {
    coder.encode_bits(d, 16);
    coder.encode_bits(d >> 16, k - 16);
  } else {
    coder.encode_bits(d, k);
  }
}

std::size_t encode(ByteBuffer& dst, const float* src, const Vec3i& dims) {
  constexpr std::size_t kRoom = kChunk * 3 * kStepBytes + 8;
  // Smooth grids take less than a byte per cell, and unused memory costs nothing.
  const std::size_t cells = std::size_t{1} * dims[0] * dims[1] * dims[2];
  char* begin = dst.reserve(kRoom + cells);
  RangeEncoder coder(begin);
  FrequencyModel model;
  for_each_chunk(src, dims, [&](const Chunk<const float>& chunk, int count) {
    const std::size_t used = coder.position() - begin;
    if (used + kRoom > dst.capacity()) {
      begin = dst.grow(used, used + kRoom);
      coder.set_position(begin + used);
    }
    std::uint32_t p[kChunk];
    predict_chunk(p, chunk, count);
    for (int i = 0; i < count; ++i) encode_cell(coder, model, p[i], to_ordered(chunk.cells[i]));
    return true;
  });
  coder.finish();
  return coder.position() - begin;
}

// `bad` becomes non-zero if no encoder can have written the payload; all values stay in bounds.
float decode_cell(RangeDecoder& coder, FrequencyModel& model, SymbolTable& table, float predicted,
                  std::uint32_t& bad) {
  if (coder.decode_if(model.interval(kSame))) {
    if (model.count(kSame)) table.rebuild(model);
    return predicted;
  }
  const std::uint32_t target = coder.target();
  if (target >= kTotal) [[unlikely]] {
    bad = 1;
    return predicted;
  }
  const unsigned s = table.find(model, target);  // not kSame
  coder.take_symbol(model.interval(s));
  if (model.count(s)) table.rebuild(model);

  const bool above = s > kSame;
  const int k = above ? static_cast<int>(s) - kSame - 1 : kSame - 1 - static_cast<int>(s);
  std::uint32_t bits;
  if (k > 16) {
    bits = coder.decode_bits(16);
    bad |= bits >> 16;
    const std::uint32_t high = coder.decode_bits(k - 16);
    bad |= high >> (k - 16);
    bits |= high << 16;
  } else {
    bits = coder.decode_bits(k);
    bad |= bits >> k;
  }
  const std::uint32_t d = (1u << (k & 31)) + bits, p = to_ordered(predicted);
  const std::uint32_t r = above ? p + d : p - d;
  bad |= static_cast<std::uint32_t>((r > p) != above);
  return from_ordered(r);
}

bool decode(float* dst, const char* payload, std::size_t size, const Vec3i& dims) {
  const char* const end = payload + size;
  RangeDecoder coder(payload);
  FrequencyModel model;
  SymbolTable table(model);
  std::uint32_t bad = 0;
  const bool whole = for_each_chunk(dst, dims, [&](const Chunk<float>& chunk, int count) {
    Neighbors n = chunk.before;
    for (int i = 0; i < count; ++i) {
      n.y = chunk.y[i];
      n.z = chunk.z[i];
      n.yz = chunk.yz[i];
      float p = predict(n);
      if (is_nan(p)) [[unlikely]]
        p = predict_nan(n);
      n.x = chunk.cells[i] = decode_cell(coder, model, table, p, bad);
      n.xy = n.y;
      n.xz = n.z;
      n.xyz = n.yz;
      if (coder.position() > end) [[unlikely]]
        return false;
    }
    return bad == 0;
  });
  return whole && coder.position() == end;
}

}  // namespace

extern const PredictiveKernels kPredictiveKernels;
const PredictiveKernels kPredictiveKernels{encode, decode};

}  // namespace nbx::NBX_ISA
