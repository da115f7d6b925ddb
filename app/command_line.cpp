#include "app/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>

#include "app/option_check.h"
#include "app/synonyms.h"
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
              .help = "Frames to process: 0-100, 0-100x2 (every second frame), 1,5,9-12"};
    case CommonOption::Object:
      return {.name = "object",
              .value_name = "NAME",
              .help = "Object to process if the scene has several"};
    case CommonOption::Cache:
      return {.name = "cache",
              .value_name = "DIR",
              .help = "Folder of the frames; created if it is missing"};
    case CommonOption::Threads:
      return {.name = "threads",
              .type = OptionType::Long,
              .value_name = "N",
              .help = "Number of threads; default: one per processor",
              .minimum = 1,
              .maximum = 4096};
    case CommonOption::Device:
      return {.name = "device",
              .type = OptionType::Device,
              .value_name = "DEVICE",
              .help = "cpu, or the number of a GPU; default: cpu"};
    case CommonOption::Fps:
      return {
          .name = "fps",
          .type = OptionType::Rate,
          .value_name = "RATE",
          .help = "Frames per second, such as 25, 29.97 or 30000/1001, for an animated model file"};
    case CommonOption::Force:
      return {
          .name = "force",
          .type = OptionType::Flag,
          .help =
              "Runs jobs that are refused for their size: too many polygons, particles or samples, "
              "or more voxels than fit into memory"};
    case CommonOption::Set:
      break;
  }
  return {.name = "set",
          .value_name = "OBJECT.parameter=VALUE",
          .help = "Sets a parameter for the whole run; * means every object that has it",
          .repeatable = true};
}

/// All options of a command: its own, the common ones that it uses, and those of every command.
std::vector<OptionInfo> AllOptions(const host::CommandInfo& command) {
  std::vector<OptionInfo> options = command.options;
  for (const CommonOption common : command.common) options.push_back(Describe(common));
  options.push_back(
      {.name = "quiet", .type = OptionType::Flag, .help = "No progress and no notes on stderr"});
  options.push_back(
      {.name = "json", .type = OptionType::Flag, .help = "Results as JSON, one event per line"});
  options.push_back({.name = "log-file", .value_name = "FILE", .help = "Log file"});
  return options;
}

/// An option and its words from the command line.
struct Slot {
  OptionInfo info;
  std::vector<std::string> words;
  std::size_t count = 0;  ///< occurrences without a value
};

/// The name as shown in the help.
std::string Shown(const OptionInfo& info) {
  if (!info.positional) return "--" + info.name;
  return info.value_name.empty() ? info.name : info.value_name;
}

/// The slots must not move afterwards: CLI11 keeps pointers to them.
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
    // Each occurrence takes one word, so that a positional argument can follow.
    option->expected(1)->allow_extra_args(info.positional && info.repeatable);
    option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    if (info.positional && info.repeatable) option->expected(info.required ? 1 : 0, 1 << 20);
  }
}

/// The command line without the options that are given without a value. An option with an optional
/// value takes the next word only if that word is a valid value.
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

/// Rejects words that match no option or argument.
void RefuseExtras(const CLI::App& line, const std::deque<Slot>& slots) {
  std::vector<std::string> known = {"--help", "--version"};
  for (const Slot& slot : slots) known.push_back(Shown(slot.info));
  const std::vector<std::string> extras = line.remaining();
  for (const std::string& word : extras) {
    const std::string name = word.substr(0, word.find('='));
    if (word.size() > 1 && word[0] == '-')
      throw UsageError("unknown option " + host::Quoted(name) + OptionHint(name, known));
  }
  if (extras.empty()) return;
  const char* const cure =
      extras.front() == "=" ? "; write OBJECT.parameter=VALUE without spaces" : "";
  throw UsageError("unexpected argument " + host::Quoted(extras.front()) + cure);
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
  line.set_help_flag("-h,--help", "Prints this help");
  line.set_version_flag("--version", VersionText(), "Prints the version");
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
  } catch (const CLI::ArgumentMismatch& error) {
    const std::string message = error.what();
    throw UsageError(message.substr(0, message.find(':')) + " needs a value");
  } catch (const CLI::ParseError& error) {
    // If an argument is missing, an unknown option is the most likely reason.
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
