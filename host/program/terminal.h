// Output of the program: results to stdout, messages and progress to stderr.
#pragma once

#include <mutex>
#include <string>

#include "host/interface/command_data.h"

namespace host {

/// The output functions may be called from any thread. Set the options before a second thread
/// starts.
class Terminal {
 public:
  /// `redraw`: stderr is a terminal that can overwrite its last line. `color`: it also supports
  /// colors.
  Terminal(bool redraw, bool color) : redraw_(redraw), color_(color) {}
  /// Uses stderr, TERM and NO_COLOR.
  static Terminal ForThisProcess();
  ~Terminal() { EndProgress(); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  void SetQuiet(bool quiet) { quiet_ = quiet; }
  void SetJson(bool json) { json_ = json; }
  bool IsJson() const { return json_; }

  void Error(const std::string& text);
  void Warning(const std::string& text);
  void Note(const std::string& text);
  void Progress(const std::string& text, bool whole);
  void Result(const std::string& line);
  void Event(const std::string& name, const EventFields& fields);

  /// Flushes stdout. False if output was lost.
  bool Finish();

 private:
  void Message(const char* color, const char* label, const std::string& text);
  void EndProgress();

  bool redraw_;
  bool color_;
  bool quiet_ = false;
  bool json_ = false;
  bool line_open_ = false;  ///< the last line of stderr is a progress line
  std::mutex mutex_;
};

}  // namespace host
