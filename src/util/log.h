// The log: one plain text file, "nimbrix.log", for diagnostics, without levels or configuration.
// Any thread may log; a message reaches the file as one complete line or not at all.
#pragma once

#include <sstream>
#include <string>

class QString;

namespace nbx {

/// Builds one line of the log; the destructor writes it:
///
///     LogMessage() << "wrote frame " << frame;
///
/// The line starts with the seconds since the program was loaded, "[  1.500] ". The first message
/// of a process creates the file. If the file can't be opened, the lines are lost; that is no
/// error.
class LogMessage : public std::ostringstream {
 public:
  LogMessage() = default;
  LogMessage(const LogMessage&) = delete;
  LogMessage& operator=(const LogMessage&) = delete;
  ~LogMessage() override;
};

/// Appends `text` as UTF-8. It accepts any stream: with one for LogMessage only, a plain string
/// would match both this operator and the standard one.
std::ostream& operator<<(std::ostream& out, const QString& text);

/// Redirects the log to `path` and truncates that file. An empty path selects the default again:
/// "nimbrix.log" in the settings folder named after the organization. Returns false and changes
/// nothing if the file can't be opened.
bool set_log_file(const std::string& path);

/// The path of the log, which is opened if nothing was logged before. Empty if there is no log.
std::string log_file();

}  // namespace nbx
