// The program `nimbrix`: loads the plug-in into the small host and runs one of its commands.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/plugin_path.h"
#include "app/synonyms.h"
#include "host/base/nearest_name.h"
#include "host/plugin_module.h"
#include "host/program/interrupts.h"
#include "host/program/terminal.h"
#include "host/program_context.h"
#include "host/render/render_command.h"
#include "host/small_host.h"

namespace {

std::string HelpText(const host::SmallHost& small_host) {
  std::string text = "Nimbrix simulates smoke and fire.\n\nUsage: nimbrix COMMAND [ARGUMENTS]\n\n";
  std::size_t width = 0;
  for (const auto& command : small_host.Commands())
    width = std::max(width, command.info.verb.size());
  for (const auto& command : small_host.Commands()) {
    const std::string& verb = command.info.verb;
    text += "  " + verb + std::string(width - verb.size() + 2, ' ') + command.info.help + "\n";
  }
  return text +
         "\nUse \"nimbrix COMMAND --help\" for the options of a command and \"nimbrix --version\" "
         "for "
         "the version.\n";
}

const host::SmallHost::Command& FindCommand(const host::SmallHost& small_host,
                                            const std::string& verb) {
  std::vector<std::string> verbs;
  for (const auto& command : small_host.Commands()) {
    if (command.info.verb == verb) return command;
    verbs.push_back(command.info.verb);
  }
  throw app::UsageError("unknown command " + host::Quoted(verb) + app::CommandHint(verb, verbs));
}

int RunCommand(host::SmallHost& small_host, const std::vector<std::string>& words,
               host::Terminal& terminal) {
  const host::SmallHost::Command& command = FindCommand(small_host, words.front());
  const app::ParsedLine line = app::ParseLine(command.info, {words.begin() + 1, words.end()});
  if (!line.text_to_print.empty()) {
    std::fputs(line.text_to_print.c_str(), stdout);
    return host::kDone;
  }
  terminal.SetQuiet(line.quiet);
  terminal.SetJson(line.json);
  host::WatchInterrupts();
  host::WakeOnInterrupt(&small_host.Queue());
  host::ProgramContext context(small_host, terminal, line.arguments);
  const int code = command.data->Execute(line.arguments, context);
  host::WakeOnInterrupt(nullptr);
  return code;
}

int Run(const std::vector<std::string>& words, host::Terminal& terminal) {
  if (!words.empty() && words.front() == "--version") {
    std::printf("%s\n", app::VersionText().c_str());
    return host::kDone;
  }
  host::SmallHost small_host;
  small_host.AddCommand(std::make_unique<host::RenderCommand>(app::VersionText()));
  small_host.SetLogFile(app::FindLogFile(words));
  small_host.Preferences().Open(app::PreferencesFile());
  const host::PluginModule plugin(app::FindPlugin(), small_host);
  if (words.empty()) {
    std::fputs(HelpText(small_host).c_str(), stderr);
    return host::kBadInput;
  }
  if (words.front() == "--help" || words.front() == "-h" ||
      (words.size() == 1 && words[0] == "help")) {
    std::fputs(HelpText(small_host).c_str(), stdout);
    return host::kDone;
  }
  // "help simulate" is "simulate --help".
  const auto is_topic = [&words](const host::SmallHost::Command& command) {
    return command.info.verb == words[1];
  };
  if (words.size() == 2 && words[0] == "help" &&
      std::ranges::any_of(small_host.Commands(), is_topic))
    return RunCommand(small_host, {words[1], "--help"}, terminal);
  return RunCommand(small_host, words, terminal);
}

}  // namespace

int main(int argc, char** argv) {
  host::Terminal terminal = host::Terminal::ForThisProcess();
  int code = host::kFailed;
  try {
    code = Run({argv + 1, argv + argc}, terminal);
  } catch (const app::UsageError& error) {
    terminal.Error(error.what());
    code = host::kBadInput;
  } catch (const std::exception& error) {
    terminal.Error(error.what());
  } catch (...) {
    terminal.Error("the command ended with an unknown exception");
  }
  if (!terminal.Finish()) {
    terminal.Error("the output could not be written");
    if (code == host::kDone) code = host::kFailed;
  }
  return code;
}
