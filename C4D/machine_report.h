// The head of the log: who we are and what machine this is.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

/// Logs banner, host, machine, threads and memory. Nothing in it can fail.
void report_machine(host::HostServices& services, std::int32_t api_version);

}  // namespace nbx
