// The command line of one command, built from its CommandInfo.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/interface/command_data.h"

namespace app {

/// A user error. The message is one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ParsedLine {
  host::CommandArguments arguments;
  /// Output of --help or --version. If it is not empty, the command must not run.
  std::string text_to_print;
  bool quiet = false;
  bool json = false;
};

/// Parses the words after the verb. Throws UsageError.
ParsedLine ParseLine(const host::CommandInfo& command, const std::vector<std::string>& words);

/// The value of --log-file anywhere on the line, or an empty text. The log starts before the
/// commands are known.
std::string FindLogFile(const std::vector<std::string>& words);

/// "nimbrix 1.0"
std::string VersionText();

}  // namespace app
