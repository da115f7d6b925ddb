// Interrupts by the user: the signals SIGINT and SIGTERM.
#pragma once

namespace host {

/// Counts interrupts from now on. The third ends the process at once, with exit code 130, in case
/// nobody looks at the count.
void WatchInterrupts();

/// Interrupts so far; any thread.
int InterruptCount();

}  // namespace host
