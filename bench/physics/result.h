// What a case found: figures against the theory, and the points of its curves.
#pragma once

#include <limits>
#include <string>
#include <vector>

namespace nbx::physics {

inline constexpr double kNoTheory = std::numeric_limits<double>::quiet_NaN();

/// A measured figure and what the theory says; kNoTheory where a figure is for information.
struct Figure {
  std::string name;
  double measured = 0;
  double theory = kNoTheory;
  double error() const { return measured / theory - 1; }
};

struct Result {
  std::vector<Figure> figures;
  std::vector<std::string> columns;       // of the curves
  std::vector<std::vector<double>> rows;  // a point per row
};

/// How much work a case may do.
enum class Effort { kQuick, kFull };

/// A straight line through points (x, y), by least squares.
struct Line {
  double slope = 0, intercept = 0;
};
Line fit_line(const std::vector<double>& x, const std::vector<double>& y);

double median(std::vector<double> values);
double largest(const std::vector<double>& values);

/// The exponent of y ~ x^p, by a line through the logarithms.
double fit_exponent(const std::vector<double>& x, const std::vector<double>& y);

}  // namespace nbx::physics
