#include "cache/codecs/grid_encoder.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>

#include "cache/codecs/predictive_codec.h"
#include "cache/codecs/run_length_codec.h"
#include "util/exception.h"

namespace nbx {

namespace {

constexpr std::size_t kCellsOfThread = 1 << 17;  // fewer aren't worth a thread

std::size_t helper_count(Codec codec, const std::vector<const Field<float>*>& fields) {
  if (codec == Codec::kRaw) return 0;
  std::size_t cells = 0;
  for (const Field<float>* field : fields) cells += field->count();
  const std::size_t threads = std::min<std::size_t>(
      {fields.size(), cells / kCellsOfThread, std::thread::hardware_concurrency()});
  return threads > 1 ? threads - 1 : 0;
}

}  // namespace

Payload encode_grid(ByteBuffer& buffer, Codec codec, const Field<float>& field) {
  if (!cell_count(field.dims())) throw Exception("Grid too large for a frame file.");
  switch (codec) {
    case Codec::kRaw:
      return {reinterpret_cast<const char*>(field.data()), field.count() * sizeof(float)};
    case Codec::kRunLength: {
      char* encoded = buffer.reserve(rle_bound(field.count()));
      return {encoded, rle_encode(encoded, field.data(), field.count())};
    }
    case Codec::kPredictive: {
      const std::size_t size = predictive_encode(buffer, field.data(), field.dims());
      return {buffer.data(), size};
    }
    default:
      throw Exception("Unknown codec");
  }
}

std::vector<Payload> encode_grids(std::vector<ByteBuffer>& buffers, Codec codec,
                                  const std::vector<const Field<float>*>& fields) {
  const std::size_t count = fields.size();
  if (buffers.size() < count) buffers.resize(count);
  std::vector<Payload> payloads(count);
  std::vector<std::exception_ptr> errors(count);
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t i = next++; i < count; i = next++) try {
        payloads[i] = encode_grid(buffers[i], codec, *fields[i]);
      } catch (...) {
        errors[i] = std::current_exception();
      }
  };
  {
    std::vector<std::jthread> helpers;
    helpers.reserve(helper_count(codec, fields));
    try {
      while (helpers.size() < helpers.capacity()) helpers.emplace_back(work);
    } catch (const std::system_error&) {
      // Continue with fewer threads.
    }
    work();
  }
  for (const std::exception_ptr& error : errors)
    if (error) std::rethrow_exception(error);
  return payloads;
}

}  // namespace nbx
