#include "util/value_stream.h"

#include <bit>

namespace nbx {

namespace {

// Byte by byte, so that the form is the same on every machine.
template <class Bits>
void append(std::vector<std::byte>& bytes, Bits bits) {
  for (std::size_t i = 0; i < sizeof bits; ++i) bytes.push_back(std::byte(bits >> (8 * i) & 0xff));
}

template <class Bits>
bool take(std::span<const std::byte>& rest, Bits& bits) {
  if (rest.size() < sizeof bits) return false;
  bits = 0;
  for (std::size_t i = 0; i < sizeof bits; ++i) bits |= static_cast<Bits>(rest[i]) << (8 * i);
  rest = rest.subspan(sizeof bits);
  return true;
}

template <class Bits, class Value>
bool take_as(std::span<const std::byte>& rest, Value& value) {
  Bits bits;
  if (!take(rest, bits)) return false;
  value = std::bit_cast<Value>(bits);
  return true;
}

}  // namespace

bool ByteWriter::write_long(std::int32_t value) {
  append(bytes_, std::bit_cast<std::uint32_t>(value));
  return true;
}

bool ByteWriter::write_real(float value) {
  append(bytes_, std::bit_cast<std::uint32_t>(value));
  return true;
}

bool ByteWriter::write_lreal(double value) {
  append(bytes_, std::bit_cast<std::uint64_t>(value));
  return true;
}

bool ByteWriter::write_bool(bool value) {
  bytes_.push_back(std::byte{value});
  return true;
}

bool ByteReader::read_long(std::int32_t& value) { return take_as<std::uint32_t>(rest_, value); }
bool ByteReader::read_real(float& value) { return take_as<std::uint32_t>(rest_, value); }
bool ByteReader::read_lreal(double& value) { return take_as<std::uint64_t>(rest_, value); }

bool ByteReader::read_bool(bool& value) {
  if (rest_.empty() || static_cast<unsigned>(rest_[0]) > 1) return false;
  value = rest_[0] != std::byte{0};
  rest_ = rest_.subspan(1);
  return true;
}

}  // namespace nbx
