// Host side of the CUDA layer: turns failed runtime calls into log lines and exceptions.
#pragma once

#include <source_location>

#include "util/cuda_runtime.h"
#include "util/exception.h"

namespace nbx {

/// A runtime call failed.
class CUDAException : public Exception {
 public:
  CUDAException(cuda::Error code, const char* file, int line)
      : Exception("CUDA error " + std::to_string(code)), code_(code), file_(file), line_(line) {}
  cuda::Error code() const noexcept { return code_; }
  const char* file() const noexcept { return file_; }
  int line() const noexcept { return line_; }

 private:
  cuda::Error code_;
  const char* file_;
  int line_;
};

/// No launch configuration fits a kernel.
class LaunchConfigException : public CUDAException {
 public:
  LaunchConfigException(const char* file, int line) : CUDAException(4, file, line) {}
};

/// Checks the result of a runtime call: logs a failure with the caller's place, then throws
/// CUDAException. Every runtime call is wrapped in it.
void cuda_check(cuda::Error error, std::source_location where = std::source_location::current());

/// Like cuda_check, but only logs. For destructors.
void cuda_check_log_only(cuda::Error error,
                         std::source_location where = std::source_location::current());

}  // namespace nbx
