// nimbrix_physics: simulates flows that theory describes, and compares.
//
//     nimbrix_physics                           prints the figures of all cases
//     nimbrix_physics --plots docs/validation   writes tables there too, and draws them
#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

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
    {"shear", shear},
    {"bubble", bubble},
    {"thermal", thermal},
    {"plume", plume},
    {"ball", ball},
    {"symmetry", symmetry},
};

bool compares(const Figure& f) { return !std::isnan(f.theory) && f.theory != 0; }

void print(const Result& result) {
  for (const Figure& f : result.figures) {
    std::printf("  %-56s %10.4g", f.name.c_str(), f.measured);
    if (!std::isnan(f.theory)) std::printf("   theory %10.4g", f.theory);
    if (compares(f)) std::printf("   error %+6.1f %%", 100 * f.error());
    std::printf("\n");
  }
  std::fflush(stdout);
}

// A name may hold commas.
std::string quoted(const std::string& name) { return '"' + name + '"'; }

void write_curves(const std::filesystem::path& file, const Result& result) {
  std::ofstream out(file);
  out.precision(5);
  for (std::size_t i = 0; i < result.columns.size(); ++i)
    out << (i > 0 ? "," : "") << quoted(result.columns[i]);
  out << '\n';
  for (const std::vector<double>& row : result.rows) {
    for (std::size_t i = 0; i < row.size(); ++i) out << (i > 0 ? "," : "") << row[i];
    out << '\n';
  }
  if (!out.flush()) throw std::runtime_error("can't write " + file.string());
}

void write_figures(const std::filesystem::path& file, const Result& result) {
  std::ofstream out(file);
  out.precision(5);
  out << "figure,measured,theory,error\n";
  for (const Figure& f : result.figures) {
    out << quoted(f.name) << ',' << f.measured << ',';
    if (!std::isnan(f.theory)) out << f.theory;
    out << ',';
    if (compares(f)) out << f.error();
    out << '\n';
  }
  if (!out.flush()) throw std::runtime_error("can't write " + file.string());
}

void run(const Case& c, Effort effort, const std::string& folder) {
  const auto start = std::chrono::steady_clock::now();
  const Result result = c.run(effort);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  std::printf("%s (%.1f s)\n", c.name, seconds.count());
  print(result);
  if (folder.empty()) return;
  const std::filesystem::path at(folder);
  write_curves(at / (std::string(c.name) + ".csv"), result);
  write_figures(at / (std::string(c.name) + "_figures.csv"), result);
}

int draw(const std::string& folder) {
  const std::string command = "'" NBX_PLOT_SCRIPT "' '" + folder + "'";
  if (std::system(command.c_str()) == 0) return 0;
  std::cerr << "nimbrix_physics: the tables are in " << folder
            << ", but drawing them failed: run " NBX_PLOT_SCRIPT " by hand\n";
  return 1;
}

int run_cases(const std::string& only, Effort effort, const std::string& folder) {
  if (!folder.empty()) std::filesystem::create_directories(folder);
  bool found = false;
  for (const Case& c : kCases) {
    if (!only.empty() && only != c.name) continue;
    found = true;
    run(c, effort, folder);
  }
  if (!found) {
    std::cerr << "nimbrix_physics: there is no case \"" << only << "\"; the cases are";
    for (const Case& c : kCases) std::cerr << ' ' << c.name;
    std::cerr << '\n';
    return 2;
  }
  return folder.empty() ? 0 : draw(folder);
}

}  // namespace
}  // namespace nbx::physics

int main(int argc, char** argv) {
  using namespace nbx::physics;
  std::string only, folder;
  bool quick = false;
  CLI::App app("Simulates flows that theory describes, and compares.");
  app.add_option("--plots", folder, "Writes the curves and figures of each case, and draws them");
  app.add_option("--only", only, "Runs this case alone");
  app.add_flag("--quick", quick, "Uses coarser grids");
  CLI11_PARSE(app, argc, argv);
  nbx::set_log_file("/dev/null");
  try {
    return run_cases(only, quick ? Effort::kQuick : Effort::kFull, folder);
  } catch (const std::exception& e) {
    std::cerr << "nimbrix_physics: " << e.what() << '\n';
    return 1;
  }
}
