// The head of the log: who we are and what machine this is.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

/// The program's name and build, to the host's console and to the log.
void print_banner(host::HostServices& services);

/// Logs host, machine, memory and devices, and sets up the pool of threads in passing. Nothing in
/// it can fail.
void report_machine(host::HostServices& services, std::int32_t api_version);

}  // namespace nbx
