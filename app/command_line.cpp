#include "app/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>

#include "app/option_check.h"
#include "host/base/nearest_name.h"
#include "host/program/frame_range.h"

namespace app {
namespace {

using host::CommonOption;
using host::OptionInfo;
using host::OptionType;

OptionInfo Describe(CommonOption option) {
  switch (option) {
    case CommonOption::Frames:
      return {.name = "frames",
              .type = OptionType::Frames,
              .value_name = "RANGE",
              .help = "frames to work on: 0-100, 0-100x2 (every second), 1,5,9-12"};
    case CommonOption::Object:
      return {.name = "object",
              .value_name = "NAME",
              .help = "object to work on, where the scene has several"};
    case CommonOption::Cache:
      return {.name = "cache",
              .value_name = "DIR",
              .help = "folder that the frames lie in, made if missing"};
    case CommonOption::Threads:
      return {.name = "threads",
              .type = OptionType::Long,
              .value_name = "N",
              .help = "threads to compute with, default: one for each processor",
              .minimum = 1,
              .maximum = 4096};
    case CommonOption::Device:
      return {.name = "device",
              .type = OptionType::Device,
              .value_name = "DEVICE",
              .help = "cpu, or the number of a GPU, default: cpu"};
    case CommonOption::Fps:
      return {.name = "fps",
              .type = OptionType::Rate,
              .value_name = "RATE",
              .help =
                  "frames per second, as 25, 29.97 or 30000/1001, where the scene is a model "
                  "file with animation"};
    case CommonOption::Force:
      return {.name = "force",
              .type = OptionType::Flag,
              .help =
                  "begins work that is refused for its size: very many polygons, particles, "
                  "samples, or voxels for the memory"};
    case CommonOption::Set:
      break;
  }
  return {.name = "set",
          .value_name = "OBJECT.parameter=VALUE",
          .help = "sets a parameter for all time; * stands for every object that has it",
          .repeatable = true};
}

/// The command's own options, the common ones that it takes, and those that all take.
std::vector<OptionInfo> AllOptions(const host::CommandInfo& command) {
  std::vector<OptionInfo> options = command.options;
  for (const CommonOption common : command.common) options.push_back(Describe(common));
  options.push_back(
      {.name = "quiet", .type = OptionType::Flag, .help = "no progress and no notes on stderr"});
  options.push_back(
      {.name = "json", .type = OptionType::Flag, .help = "results as JSON, one event a line"});
  options.push_back({.name = "log-file", .value_name = "FILE", .help = "where the log goes"});
  return options;
}

/// An option and the words that the line has for it.
struct Slot {
  OptionInfo info;
  std::vector<std::string> words;
  std::size_t count = 0;  ///< of mentions without a value
};

/// As it stands in the help.
std::string Shown(const OptionInfo& info) {
  if (!info.positional) return "--" + info.name;
  return info.value_name.empty() ? info.name : info.value_name;
}

/// The options' slots must stay where they are.
void AddOptions(CLI::App& line, std::deque<Slot>& slots) {
  for (Slot& slot : slots) {
    const OptionInfo& info = slot.info;
    if (info.type == OptionType::Flag) {
      line.add_flag(Shown(info), slot.count, info.help);
      continue;
    }
    CLI::Option* option = line.add_option(Shown(info), slot.words, info.help);
    const std::string value = info.value_optional ? "[" + info.value_name + "]" : info.value_name;
    option->type_name(info.positional ? "" : value)->required(info.required);
    // Each mention takes one word, so that what follows can be a positional argument.
    option->expected(1)->allow_extra_args(info.positional && info.repeatable);
    option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    if (info.positional && info.repeatable) option->expected(info.required ? 1 : 0, 1 << 20);
  }
}

/// The line without the options that are given without their value. One whose value may be left out
/// takes the next word only if that is a value.
std::vector<std::string> TakeBare(const std::vector<std::string>& words, std::deque<Slot>& slots) {
  std::vector<std::string> rest;
  for (auto word = words.begin(); word != words.end(); ++word) {
    const auto next = word + 1;
    const auto bare = [&](const Slot& slot) {
      return slot.info.value_optional && *word == Shown(slot.info) &&
             (next == words.end() || !WhatIsWrong(slot.info, *next).empty());
    };
    const auto slot = std::find_if(slots.begin(), slots.end(), bare);
    if (slot == slots.end())
      rest.push_back(*word);
    else
      ++slot->count;
  }
  return rest;
}

/// Words that the line has no place for.
void RefuseExtras(const CLI::App& line, const std::deque<Slot>& slots) {
  std::vector<std::string> known = {"--help", "--version"};
  for (const Slot& slot : slots)
    if (!slot.info.positional) known.push_back(Shown(slot.info));
  const std::vector<std::string> extras = line.remaining();
  for (const std::string& word : extras) {
    const std::string name = word.substr(0, word.find('='));
    if (word.size() > 1 && word[0] == '-')
      throw UsageError("unknown option " + host::Quoted(name) + host::DidYouMean(name, known));
  }
  if (!extras.empty()) throw UsageError("unexpected argument " + host::Quoted(extras.front()));
}

void TakeSlot(const Slot& slot, host::CommandArguments& arguments) {
  const OptionInfo& info = slot.info;
  if (slot.count > 0) arguments.AddFlag(info.name);
  const bool flag = info.type == OptionType::Flag;
  if (slot.words.size() + (flag ? 0 : slot.count) > 1 && !info.repeatable)
    throw UsageError(Shown(info) + " is given more than once");
  for (const std::string& word : slot.words) {
    const std::string wrong = WhatIsWrong(info, word);
    if (!wrong.empty()) throw UsageError(Shown(info) + ": " + host::Quoted(word) + " " + wrong);
    arguments.Add(info.name, word);
    std::string ignored;
    if (info.type == OptionType::Frames)
      arguments.AddFrames(info.name, host::ParseFrames(word, ignored));
  }
}

}  // namespace

ParsedLine ParseLine(const host::CommandInfo& command, const std::vector<std::string>& words) {
  CLI::App line(command.help, "nimbrix " + command.verb);
  line.set_help_flag("-h,--help", "prints this help");
  line.set_version_flag("--version", VersionText(), "prints the version");
  line.allow_extras();
  std::deque<Slot> slots;
  for (OptionInfo& info : AllOptions(command)) slots.push_back({std::move(info), {}, 0});
  AddOptions(line, slots);

  ParsedLine parsed;
  try {
    std::vector<std::string> rest = TakeBare(words, slots);
    std::reverse(rest.begin(), rest.end());
    line.parse(rest);
  } catch (const CLI::CallForHelp&) {
    parsed.text_to_print = line.help();
    return parsed;
  } catch (const CLI::CallForVersion&) {
    parsed.text_to_print = VersionText() + "\n";
    return parsed;
  } catch (const CLI::ParseError& error) {
    // An unknown option is the likelier reason for an argument that is missing.
    RefuseExtras(line, slots);
    throw UsageError(error.what());
  }
  RefuseExtras(line, slots);
  for (const Slot& slot : slots) TakeSlot(slot, parsed.arguments);
  parsed.quiet = parsed.arguments.Has("quiet");
  parsed.json = parsed.arguments.Has("json");
  return parsed;
}

std::string FindLogFile(const std::vector<std::string>& words) {
  const std::string name = "--log-file";
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == name && i + 1 < words.size()) return words[i + 1];
    if (words[i].rfind(name + "=", 0) == 0) return words[i].substr(name.size() + 1);
  }
  return {};
}

std::string VersionText() { return std::string("nimbrix ") + NBX_APP_VERSION; }

}  // namespace app
