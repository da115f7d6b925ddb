// Interrupts by the user: the signals SIGINT and SIGTERM.
#pragma once

namespace host {

class EventQueue;

/// Counts interrupts from now on. The third ends the process at once, with exit code 130, in case
/// nobody looks at the count.
void WatchInterrupts();
/// Lets each interrupt wake a queue, which must live until another or null is set.
void WakeOnInterrupt(const EventQueue* queue);

/// Interrupts so far; any thread.
int InterruptCount();

}  // namespace host
