#include "host/program/frame_range.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace host {
namespace {

// Longer than any animation, and small enough to list.
constexpr std::int32_t kLargestFrame = 10'000'000;

/// Reads an integer and removes it from the front of the text.
bool TakeNumber(std::string_view& text, std::int32_t& number) {
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (status != std::errc() || number < -kLargestFrame || number > kLargestFrame) return false;
  text.remove_prefix(end - text.data());
  return true;
}

bool TakeSign(std::string_view& text, char sign) {
  if (text.empty() || text.front() != sign) return false;
  text.remove_prefix(1);
  return true;
}

/// first, first-last or first-lastxstep.
std::string AddPart(std::string_view part, std::vector<std::int32_t>& frames) {
  std::int32_t first = 0, last = 0, step = 1;
  const std::string malformed = "is not a frame range such as 0-100, 0-100x2 or 1,5,9-12";
  if (!TakeNumber(part, first)) return malformed;
  last = first;
  if (TakeSign(part, '-')) {
    if (!TakeNumber(part, last)) return malformed;
    if (TakeSign(part, 'x') && !TakeNumber(part, step)) return malformed;
  }
  if (!part.empty()) return malformed;
  if (last < first) return "ends before it begins";
  if (step < 1) return "has a step below 1";
  for (std::int32_t frame = first; frame <= last; frame += step) frames.push_back(frame);
  return {};
}

}  // namespace

std::vector<std::int32_t> ParseFrames(const std::string& text, std::string& error) {
  std::vector<std::int32_t> frames;
  std::size_t begin = 0;
  error.clear();
  while (error.empty()) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    error = AddPart(std::string_view(text).substr(begin, end - begin), frames);
    if (end == text.size()) break;
    begin = end + 1;
  }
  if (!error.empty()) return {};
  std::sort(frames.begin(), frames.end());
  frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
  return frames;
}

}  // namespace host
