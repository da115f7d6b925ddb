// Texts that the user reads, by number. Box texts come in pairs: a short title, then the text.
#pragma once

#include <cstdint>
#include <string>

namespace nbx {

/// The text of that number; empty for one that there is none of.
std::string load_string(std::int32_t id);

}  // namespace nbx
