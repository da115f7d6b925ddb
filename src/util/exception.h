// The exceptions of the system. All are thrown by value and pass through the simulator untouched;
// each thread has one door where they stop (see docs/architecture.md).
#pragma once

#include <exception>
#include <source_location>
#include <string>
#include <utility>

namespace nbx {

/// A failure with a text for the log.
class Exception : public std::exception {
 public:
  explicit Exception(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

/// The operands of a field operation don't fit together. `file()` and `line()` name the check.
class FieldDimensionMismatchException : public Exception {
 public:
  explicit FieldDimensionMismatchException(
      std::source_location where = std::source_location::current())
      : Exception(std::string("fields of different dimensions in ") + where.function_name()),
        where_(where) {}
  const char* function() const noexcept { return where_.function_name(); }
  const char* file() const noexcept { return where_.file_name(); }
  int line() const noexcept { return static_cast<int>(where_.line()); }

 private:
  std::source_location where_;
};

/// A field's memory isn't aligned to 16 bytes: only a view of foreign memory can be so.
class MisalignedFieldMemoryException : public Exception {
 public:
  MisalignedFieldMemoryException() : Exception("field memory is not aligned to 16 bytes") {}
  const char* function() const noexcept { return ""; }
  const char* file() const noexcept { return ""; }
  int line() const noexcept { return 0; }
};

}  // namespace nbx
