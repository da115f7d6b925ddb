// Frame ranges on the command line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// Reads "0-100", "0-100x2" (every second frame), "1,5,9-12", and negative frames such as "-5--1".
/// The result is sorted and has no duplicates. On error it is empty, and `error` says what is wrong
/// in words that follow the quoted text.
std::vector<std::int32_t> ParseFrames(const std::string& text, std::string& error);

}  // namespace host
