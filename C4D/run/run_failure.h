// The door at which the exceptions of a run stop.
#pragma once

#include <string>

#include "util/log.h"
#include "util/outcome.h"

namespace nbx {

/// The exception that is being handled: the line for the log, and what the user reads. Only in a
/// catch clause.
struct RunFailure {
  std::string log, reason;
};
RunFailure run_failure();

/// Calls `part`, a part of a run, and returns its outcome. What it throws becomes a failure, after
/// a log line.
template <class Part>
Outcome outcome_of(const Part& part) try {
  return part();
} catch (...) {
  const RunFailure failure = run_failure();
  LogMessage() << failure.log;
  return Outcome::failure(failure.reason);
}

}  // namespace nbx
