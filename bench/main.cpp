// The benchmark program. Prints what it runs on, measures the triad, then runs what the filter
// selects.
#include <cstdio>
#include <fstream>
#include <string>

#include <omp.h>

#include "bench/passes.h"
#include "util/isa.h"

namespace {

std::string processor() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);)
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  return "unknown";
}

const char* isa_name() {
  switch (nbx::active_isa()) {
    case nbx::Isa::kAvx512:
      return "avx512";
    case nbx::Isa::kAvx2:
      return "avx2";
    case nbx::Isa::kBaseline:
      return "baseline";
  }
  return "";
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  const double triad = nbx::bench::seconds_per_float();
  benchmark::AddCustomContext("processor", processor());
  benchmark::AddCustomContext("threads", std::to_string(omp_get_max_threads()));
  benchmark::AddCustomContext("instructions", isa_name());
  benchmark::AddCustomContext("compiler", __VERSION__);
#ifdef __OPTIMIZE__
  benchmark::AddCustomContext("optimized", "yes");
#else
  benchmark::AddCustomContext("optimized", "no");
#endif
  benchmark::AddCustomContext("triad_GB_per_s", std::to_string(12e-9 / triad));
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
