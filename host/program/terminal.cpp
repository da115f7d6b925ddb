#include "host/program/terminal.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>

#include <sys/ioctl.h>
#include <unistd.h>

namespace host {
namespace {

/// Width of the terminal at stderr in columns.
std::size_t Width() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

nlohmann::ordered_json ToJson(const EventValue& value) {
  return std::visit([](const auto& v) { return nlohmann::ordered_json(v); }, value);
}

}  // namespace

Terminal Terminal::ForThisProcess() {
  const char* term = std::getenv("TERM");
  const bool able = isatty(STDERR_FILENO) == 1 && term && std::strcmp(term, "dumb") != 0;
  const char* no_color = std::getenv("NO_COLOR");
  return {able, able && !(no_color && *no_color)};
}

void Terminal::EndProgress() {
  if (line_open_) std::fputc('\n', stderr);
  line_open_ = false;
}

void Terminal::Message(const char* color, const char* label, const std::string& text) {
  const std::lock_guard lock(mutex_);
  EndProgress();
  std::fprintf(stderr, "nimbrix: %s%s:%s %s\n", color_ ? color : "", label, color_ ? "\033[0m" : "",
               text.c_str());
}

void Terminal::Error(const std::string& text) { Message("\033[1;31m", "error", text); }
void Terminal::Warning(const std::string& text) { Message("\033[1;33m", "warning", text); }

void Terminal::Note(const std::string& text) {
  if (quiet_) return;
  const std::lock_guard lock(mutex_);
  EndProgress();
  std::fprintf(stderr, "%s\n", text.c_str());
}

void Terminal::Progress(const std::string& text, bool whole) {
  if (quiet_ || (!redraw_ && !whole)) return;
  const std::lock_guard lock(mutex_);
  if (!redraw_) {
    std::fprintf(stderr, "%s\n", text.c_str());
    return;
  }
  // A wrapped line can't be redrawn, so the last column stays free.
  std::fprintf(stderr, "\r\033[K%s", text.substr(0, Width() - 1).c_str());
  std::fflush(stderr);
  line_open_ = true;
}

void Terminal::Result(const std::string& line) {
  if (json_) return;
  const std::lock_guard lock(mutex_);
  EndProgress();
  std::fprintf(stdout, "%s\n", line.c_str());
}

void Terminal::Event(const std::string& name, const EventFields& fields) {
  if (!json_) return;
  nlohmann::ordered_json json = {{"event", name}};
  for (const auto& [key, value] : fields) json[key] = ToJson(value);
  const std::string line =
      json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  const std::lock_guard lock(mutex_);
  std::fprintf(stdout, "%s\n", line.c_str());
  std::fflush(stdout);  // readers want each event when it happens
}

bool Terminal::Finish() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

}  // namespace host
