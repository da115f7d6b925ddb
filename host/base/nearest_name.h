// Help for a mistyped name.
#pragma once

#include <string>
#include <vector>

namespace host {

/// The text in double quotes, as a JSON string: control characters are escaped, so that a name
/// from a file can stand in a line for the terminal.
std::string Quoted(const std::string& text);

/// ", did you mean \"name\"?" with the candidate nearest to the name, or nothing if none is near:
/// at most a third of its letters may be changed, inserted, left out or exchanged.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates);

}  // namespace host
