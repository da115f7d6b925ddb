// The door at which the exceptions of a run stop.
#pragma once

#include <string>

#include "util/log.h"
#include "util/outcome.h"

namespace nbx {

/// The line for the exception that is being handled. Only in a catch clause.
std::string run_failure();

/// Calls `part`, a part of a run, and returns its outcome. What it throws becomes a failure, after
/// a log line.
template <class Part>
Outcome outcome_of(const Part& part) try {
  return part();
} catch (...) {
  const std::string failure = run_failure();
  LogMessage() << failure;
  return Outcome::failure(failure);
}

}  // namespace nbx
