// nimbrix_physics: simulates flows that theory describes, and prints what it measured.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "bench/physics/cases.h"
#include "util/log.h"

namespace nbx::physics {
namespace {

struct Case {
  const char* name;
  Result (*run)(Effort);
};

constexpr Case kCases[] = {
    {"taylor_green", taylor_green},
    {"disc", disc},
    {"ring", ring},
    {"symmetry", symmetry},
};

void print(const Result& result) {
  for (const Figure& f : result.figures) {
    std::printf("  %-44s %11.5g", f.name.c_str(), f.measured);
    if (!std::isnan(f.theory)) std::printf("  theory %11.5g", f.theory);
    if (f.theory != 0 && !std::isnan(f.theory)) std::printf("  error %+6.2f %%", 100 * f.error());
    std::printf("\n");
  }
}

}  // namespace
}  // namespace nbx::physics

int main(int argc, char** argv) {
  using namespace nbx::physics;
  nbx::set_log_file("/dev/null");
  std::string only;
  bool quick = false;
  CLI::App app("Simulates flows that theory describes.");
  app.add_option("--only", only, "runs this case alone");
  app.add_flag("--quick", quick, "coarser grids");
  CLI11_PARSE(app, argc, argv);
  for (const Case& c : kCases) {
    if (!only.empty() && only != c.name) continue;
    const auto start = std::chrono::steady_clock::now();
    const Result result = c.run(quick ? Effort::kQuick : Effort::kFull);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%s (%.1f s)\n", c.name, seconds.count());
    print(result);
    for (const auto& column : result.columns) std::printf("%s; ", column.c_str());
    std::printf("\n");
    for (const auto& row : result.rows) {
      for (const double v : row) std::printf("%.3g ", v);
      std::printf("\n");
    }
    std::fflush(stdout);
  }
  return 0;
}
