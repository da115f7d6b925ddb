// The head of the log: the program and the machine.
#pragma once

#include "host/interface/plugin.h"

namespace nbx {

/// Prints the program's name and build to the host's console and to the log.
void print_banner(host::HostServices& services);

/// Logs host, machine, memory and devices, and sets up the thread pool between them.
void report_machine(host::HostServices& services, std::int32_t api_version);

}  // namespace nbx
