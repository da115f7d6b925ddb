#include "util/cuda_host_util.h"

#include "util/log.h"

namespace nbx {

void cuda_check_log_only(cuda::Error error, std::source_location where) {
  if (error == cuda::kSuccess) return;
  LogMessage() << "CUDAError(" << error << ") in " << where.file_name() << "(" << where.line()
               << "): " << cuda::get_error_string(error);
}

void cuda_check(cuda::Error error, std::source_location where) {
  if (error == cuda::kSuccess) return;
  cuda_check_log_only(error, where);
  throw CUDAException(error, where.file_name(), static_cast<int>(where.line()));
}

}  // namespace nbx
