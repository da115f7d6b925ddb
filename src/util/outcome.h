// How an operation reports a failure that its caller must expect: a full disk, a damaged file, a
// name that nothing has. Exceptions are for broken contracts (exception.h).
#pragma once

#include <string>
#include <utility>

namespace nbx {

/// Success, or a failure with a reason in words. The caller must look at it.
class [[nodiscard]] Outcome {
 public:
  static Outcome success() { return Outcome(true, {}); }
  /// `reason` completes "failed: ...".
  static Outcome failure(std::string reason) { return Outcome(false, std::move(reason)); }

  explicit operator bool() const noexcept { return good_; }
  /// Why it failed; empty after a success.
  const std::string& reason() const noexcept { return reason_; }

 private:
  Outcome(bool good, std::string reason) : good_(good), reason_(std::move(reason)) {}

  bool good_;
  std::string reason_;
};

}  // namespace nbx
