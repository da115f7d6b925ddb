// Suggestions for mistyped names.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// The text in double quotes, as a JSON string. Control characters are escaped, so that names from
/// files are safe to print on a terminal.
std::string Quoted(const std::string& text);

/// What to do instead of writing one of some words.
struct Hint {
  std::string_view words;  ///< separated by spaces; lower case, without underscores
  std::string_view text;
};
using Hints = std::span<const Hint>;

/// The hint for that word, in any case, and with or without underscores and hyphens. Empty if there
/// is none.
std::string_view FindHint(const std::string& word, Hints hints);

/// The end of a message about an unknown name: "; " and the hint for it, or ", did you mean
/// \"name\"?" with the candidate nearest to it, or an empty text if none is near. At most a third
/// of the letters may be changed, inserted, removed or swapped; the case doesn't matter.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates,
                       Hints hints = {});

}  // namespace host
