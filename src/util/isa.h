// Selects the instruction set at run time, so that one build runs on any x86-64 and uses what the
// processor has. Hot loops are in kernel files. These are compiled once per instruction set, each
// time into another namespace (the macro NBX_ISA), and are called through a table of functions:
//
//     // foo_kernels.h
//     struct FooKernels { void (*row)(float* dst, const float* src, int n); };
//     const FooKernels& foo_kernels();
//
//     // foo_kernels.cpp, listed under nbx_kernels() in CMake
//     namespace nbx::NBX_ISA { extern const FooKernels kFooKernels; const FooKernels
//     kFooKernels{...}; }
//
//     // foo.cpp
//     NBX_DECLARE_ISA(FooKernels, kFooKernels)
//     const FooKernels& foo_kernels() { return NBX_SELECT_ISA(kFooKernels); }
//
// Everything else in a kernel file is in an unnamed namespace, and a kernel file calls no inline
// function that the compiler might not inline. No build uses fused multiply-add, and kernels fix
// the order of their sums, so every instruction set gives the same bits.
#pragma once

namespace nbx {

enum class Isa : int { kBaseline = 0, kAvx2 = 1, kAvx512 = 2 };

/// The best instruction set that both the processor and the build support, up to the limit. The
/// environment variable NBX_ISA ("baseline", "avx2", "avx512") sets a limit at start.
Isa active_isa();

/// Sets the limit. For tests that compare instruction sets.
void limit_isa(Isa limit);

}  // namespace nbx

#ifdef NBX_ISA_LEVELS
#define NBX_DECLARE_ISA(Table, name) \
  namespace nbx::isa_baseline {      \
  extern const Table name;           \
  }                                  \
  namespace nbx::isa_avx2 {          \
  extern const Table name;           \
  }                                  \
  namespace nbx::isa_avx512 {        \
  extern const Table name;           \
  }
#define NBX_SELECT_ISA(name)                                            \
  (::nbx::active_isa() == ::nbx::Isa::kAvx512 ? ::nbx::isa_avx512::name \
   : ::nbx::active_isa() == ::nbx::Isa::kAvx2 ? ::nbx::isa_avx2::name   \
                                              : ::nbx::isa_baseline::name)
#else
#define NBX_DECLARE_ISA(Table, name) \
  namespace nbx::isa_baseline {      \
  extern const Table name;           \
  }
#define NBX_SELECT_ISA(name) (::nbx::isa_baseline::name)
#endif
