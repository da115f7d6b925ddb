// Streams of typed values, for parameter values of our own types. A reader must read the same types
// in the same order as they were written. The plug-in adapts the host's file stream to these
// interfaces; ByteWriter and ByteReader keep the values in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace nbx {

/// Each operation returns false if the value couldn't be written.
class ValueWriter {
 public:
  virtual ~ValueWriter() = default;
  [[nodiscard]] virtual bool write_long(std::int32_t value) = 0;
  [[nodiscard]] virtual bool write_real(float value) = 0;
  [[nodiscard]] virtual bool write_lreal(double value) = 0;
  [[nodiscard]] virtual bool write_bool(bool value) = 0;
};

/// Each operation returns false and doesn't change `value` if the stream has ended or is damaged.
class ValueReader {
 public:
  virtual ~ValueReader() = default;
  [[nodiscard]] virtual bool read_long(std::int32_t& value) = 0;
  [[nodiscard]] virtual bool read_real(float& value) = 0;
  [[nodiscard]] virtual bool read_lreal(double& value) = 0;
  [[nodiscard]] virtual bool read_bool(bool& value) = 0;
};

/// Appends values to a buffer: little-endian, a bool as one byte 0 or 1.
class ByteWriter : public ValueWriter {
 public:
  bool write_long(std::int32_t value) override;
  bool write_real(float value) override;
  bool write_lreal(double value) override;
  bool write_bool(bool value) override;
  const std::vector<std::byte>& bytes() const { return bytes_; }

 private:
  std::vector<std::byte> bytes_;
};

/// Reads what a ByteWriter wrote. The bytes must outlive the reader.
class ByteReader : public ValueReader {
 public:
  explicit ByteReader(std::span<const std::byte> bytes) : rest_(bytes) {}
  bool read_long(std::int32_t& value) override;
  bool read_real(float& value) override;
  bool read_lreal(double& value) override;
  bool read_bool(bool& value) override;  // any byte except 0 and 1 is damage
  /// Bytes not read yet.
  std::size_t left() const { return rest_.size(); }

 private:
  std::span<const std::byte> rest_;
};

}  // namespace nbx
