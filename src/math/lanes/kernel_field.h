// A field for kernel files (util/isa.h): numbers only, no functions.
#pragma once

namespace nbx {

struct KernelField {
  const float* data;  // x fastest, then y, then z, without padding
  int nx, ny, nz;
};

}  // namespace nbx
