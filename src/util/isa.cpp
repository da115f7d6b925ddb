#include "util/isa.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>

namespace nbx {

namespace {

Isa best_isa() {
#ifdef NBX_ISA_LEVELS
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
      __builtin_cpu_supports("avx512cd"))
    return Isa::kAvx512;
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
      __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma"))
    return Isa::kAvx2;
#endif
  return Isa::kBaseline;
}

Isa first_choice() {
  const char* text = std::getenv("NBX_ISA");
  const std::string_view limit = text ? text : "";
  if (limit == "baseline") return Isa::kBaseline;
  if (limit == "avx2") return std::min(best_isa(), Isa::kAvx2);
  return best_isa();
}

std::atomic<Isa>& choice() {
  static std::atomic<Isa> isa{first_choice()};
  return isa;
}

}  // namespace

Isa active_isa() { return choice().load(std::memory_order_relaxed); }

void limit_isa(Isa limit) { choice() = std::min(best_isa(), limit); }

}  // namespace nbx
