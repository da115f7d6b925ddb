// The log: one plain text file, "nimbrix.log", for diagnostics. There are no levels and no sinks to
// configure. Any thread may log; a message reaches the file as one whole line or not at all.
#pragma once

#include <sstream>
#include <string>

class QString;

namespace nbx {

/// Composes one line of the log; the destructor writes it:
///
///     LogMessage() << "wrote frame " << frame;
///
/// The line starts with the seconds since the program was loaded, "[  1.500] ". The first message
/// opens the file, anew for each process. A file that can't be opened is no error: the lines are
/// lost and the program goes on.
class LogMessage : public std::ostringstream {
 public:
  LogMessage() = default;
  LogMessage(const LogMessage&) = delete;
  LogMessage& operator=(const LogMessage&) = delete;
  ~LogMessage() override;
};

/// Appends `text` as UTF-8. It takes any stream, since for a LogMessage alone a plain text would
/// fit both this operator and the standard one.
std::ostream& operator<<(std::ostream& out, const QString& text);

/// Lets the log go to `path` from now on; the file is truncated. An empty path selects the default
/// place again: "nimbrix.log" in the folder of the user's settings named after the organization.
/// Returns false, and leaves the log as it was, if the file can't be opened.
bool set_log_file(const std::string& path);

/// Where the log goes; opens it if nothing was logged so far. Empty if there is no log.
std::string log_file();

}  // namespace nbx
