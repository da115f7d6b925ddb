// The command line of one command, made from what the command says of itself.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/interface/command_data.h"

namespace app {

/// A mistake of the user's, in one line.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ParsedLine {
  host::CommandArguments arguments;
  /// Of --help or --version; the command then isn't to be run.
  std::string text_to_print;
  bool quiet = false;
  bool json = false;
};

/// Parses what follows the verb. Throws UsageError.
ParsedLine ParseLine(const host::CommandInfo& command, const std::vector<std::string>& words);

/// The value of --log-file, wherever it stands in the line, or an empty text: the log begins
/// before the commands are known.
std::string FindLogFile(const std::vector<std::string>& words);

/// "nimbrix 1.0"
std::string VersionText();

}  // namespace app
