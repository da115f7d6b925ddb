// The guard around every entry that the host calls. No exception of the plug-in reaches a host that
// doesn't expect one.
#pragma once

#include <concepts>
#include <string>
#include <utility>

namespace nbx {

/// In a catch clause: what the exception says, and whether memory ran out.
std::string exception_text();
bool out_of_memory();

/// In a catch clause: logs the exception with the name of the entry.
void log_exception(const char* entry);

/// Runs the body of an entry. An exception is logged and stops here: the entry then returns
/// `on_failure`, or what `on_failure` makes of the exception's text. The log names the entry:
///
///     return guarded("VolumeObject::Message", false, [&] { return message(object, type, data); });
template <class OnFailure, class Body>
auto guarded(const char* entry, OnFailure on_failure, Body body) -> decltype(body()) try {
  return body();
} catch (...) {
  log_exception(entry);
  if constexpr (std::invocable<OnFailure, std::string>)
    return on_failure(exception_text());
  else
    return on_failure;
}

/// Logs an exception of an entry whose caller handles it, and passes it on.
template <class Body>
auto logged(const char* entry, Body body) -> decltype(body()) try {
  return body();
} catch (...) {
  log_exception(entry);
  throw;
}

/// As guarded, for an entry without a result.
template <class Body>
void guarded(const char* entry, Body body) try {
  body();
} catch (...) {
  log_exception(entry);
}

}  // namespace nbx
