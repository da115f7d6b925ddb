// What to type instead of commands and options that don't exist.
#pragma once

#include <string>
#include <vector>

namespace app {

/// The end of a message about an unknown command or option: what to type instead, as far as the
/// program has it; an empty text otherwise. `options` are written as typed: "--frames".
std::string CommandHint(const std::string& word, const std::vector<std::string>& commands);
std::string OptionHint(const std::string& word, const std::vector<std::string>& options);

}  // namespace app
