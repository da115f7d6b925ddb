// Interrupts by the user: the signals SIGINT and SIGTERM.
#pragma once

namespace host {

class EventQueue;

/// Starts counting interrupts. The third one ends the process at once with exit code 130, in case
/// nothing checks the count.
void WatchInterrupts();
/// Makes each interrupt wake the queue. It must exist until another queue or null is set.
void WakeOnInterrupt(const EventQueue* queue);

/// Number of interrupts so far. May be called from any thread.
int InterruptCount();

}  // namespace host
