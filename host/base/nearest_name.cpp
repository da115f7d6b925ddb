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

std::string LowerCase(std::string text) {
  for (char& c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

}  // namespace

std::string Quoted(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string_view FindHint(const std::string& word, Hints hints) {
  std::string key = LowerCase(word);
  std::erase_if(key, [](char c) { return c == '_' || c == '-' || c == ' '; });
  if (key.empty()) return {};
  for (const Hint& hint : hints)
    if ((" " + std::string(hint.words) + " ").find(" " + key + " ") != std::string::npos)
      return hint.text;
  return {};
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates,
                       Hints hints) {
  // A name this long is not a typing mistake, and the table would be large.
  if (name.size() > 100) return {};
  if (const std::string_view hint = FindHint(name, hints); !hint.empty())
    return "; " + std::string(hint);
  const std::string typed = LowerCase(name);
  std::size_t best = std::max<std::size_t>(name.size() / 3, 1) + 1;
  const std::string* nearest = nullptr;
  for (const std::string& candidate : candidates) {
    if (candidate.size() >= name.size() + best) continue;
    const std::size_t distance = EditDistance(typed, LowerCase(candidate));
    if (distance >= best) continue;
    best = distance;
    nearest = &candidate;
  }
  return nearest ? ", did you mean " + Quoted(*nearest) + "?" : std::string();
}

}  // namespace host
