#include "app/option_check.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

#include "host/program/frame_range.h"

namespace app {
namespace {

/// True if the whole text is a number.
template <class Number>
bool Parse(const std::string& text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

std::string Bounded(const host::OptionInfo& option, double number) {
  std::ostringstream text;
  if (number < option.minimum) text << "is below " << option.minimum;
  if (number > option.maximum) text << "is above " << option.maximum;
  return text.str();
}

}  // namespace

std::string WhatIsWrong(const host::OptionInfo& option, const std::string& text) {
  std::int32_t whole = 0;
  double real = 0;
  switch (option.type) {
    case host::OptionType::Flag:
    case host::OptionType::Text:
      return {};
    case host::OptionType::Long:
      return Parse(text, whole) ? Bounded(option, whole) : "isn't a whole number";
    case host::OptionType::Real:
      return Parse(text, real) && std::isfinite(real) ? Bounded(option, real) : "isn't a number";
    case host::OptionType::Rate: {
      std::string error;
      return host::FrameRate::Parse(text, error) ? "" : error;
    }
    case host::OptionType::Device:
      return text == "cpu" || (Parse(text, whole) && whole >= 0) ? ""
                                                                 : "is neither cpu nor a number";
    case host::OptionType::Frames: {
      std::string error;
      static_cast<void>(host::ParseFrames(text, error));
      return error;
    }
    case host::OptionType::Choice:
      break;
  }
  const auto& choices = option.choices;
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) return {};
  std::string all;
  for (const std::string& choice : choices) all += (all.empty() ? "" : ", ") + choice;
  return "isn't one of " + all;
}

}  // namespace app
