#include "host/base/nearest_name.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>

namespace host {
namespace {

/// Number of letters to change, insert, remove or swap with a neighbor: F. J. Damerau, A technique
/// for computer detection and correction of spelling errors, Comm. ACM 7 (1964).
std::size_t EditDistance(const std::string& a, const std::string& b) {
  // d[i][j]: distance from the first i letters of a to the first j letters of b.
  std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        d[i][j] = i + j;
        continue;
      }
      const std::size_t change = d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      d[i][j] = std::min({change, d[i - 1][j] + 1, d[i][j - 1] + 1});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
    }
  }
  return d[a.size()][b.size()];
}

}  // namespace

std::string Quoted(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates) {
  // A name this long is not a typing mistake, and the table would be large.
  if (name.size() > 100) return {};
  std::size_t best = std::max<std::size_t>(name.size() / 3, 1) + 1;
  const std::string* nearest = nullptr;
  for (const std::string& candidate : candidates) {
    if (candidate.size() >= name.size() + best) continue;
    const std::size_t distance = EditDistance(name, candidate);
    if (distance >= best) continue;
    best = distance;
    nearest = &candidate;
  }
  return nearest ? ", did you mean " + Quoted(*nearest) + "?" : std::string();
}

}  // namespace host
