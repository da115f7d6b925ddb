// The exceptions of Nimbrix, for broken contracts; an expected failure is an Outcome (outcome.h).
// They are thrown by value and pass through the simulator; each thread has one place that catches
// them (see docs/architecture.md).
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

/// A check of a field operation failed. `file()` and `line()` name the check.
class FieldException : public Exception {
 public:
  FieldException(std::string text, std::source_location where)
      : Exception(std::move(text)), where_(where) {}
  const char* function() const noexcept { return where_.function_name(); }
  const char* file() const noexcept { return where_.file_name(); }
  int line() const noexcept { return static_cast<int>(where_.line()); }

 private:
  std::source_location where_;
};

/// The operands of a field operation have dimensions that don't fit together.
class FieldDimensionMismatchException : public FieldException {
 public:
  explicit FieldDimensionMismatchException(
      std::source_location where = std::source_location::current())
      : FieldException(std::string("fields of different dimensions in ") + where.function_name(),
                       where) {}
};

/// A field's memory isn't aligned to 16 bytes, which only a view of foreign memory can be. It names
/// no place: file() is empty and line() is 0.
class MisalignedFieldMemoryException : public FieldException {
 public:
  MisalignedFieldMemoryException()
      : FieldException("field memory is not aligned to 16 bytes", {}) {}
};

}  // namespace nbx
