// What ended a run, as one line.
#pragma once

#include <string>

namespace nbx {

/// The line for the exception that is being handled; to be called in a catch clause.
std::string run_failure();

}  // namespace nbx
