// Suggestions for mistyped names.
#pragma once

#include <string>
#include <vector>

namespace host {

/// The text in double quotes, as a JSON string. Control characters are escaped, so that names from
/// files are safe to print on a terminal.
std::string Quoted(const std::string& text);

/// ", did you mean \"name\"?" with the candidate nearest to the name, or an empty text if none is
/// near. At most a third of the letters may be changed, inserted, removed or swapped.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates);

}  // namespace host
