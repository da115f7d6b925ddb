// Qt inside a host: made ready before the plug-in uses it, and taken down with the plug-in.
// Main thread only.
#pragma once

namespace nbx {

/// Names the application to Qt, keeps the plug-in's module in memory, since Qt's threads must not
/// outlive the code that they run, and makes an application where the host has none. That one loads
/// no Qt plug-ins from the host's surroundings, leaves the process's locale alone, and sends Qt's
/// messages to the log.
void set_up_qt();

/// Destroys the application that set_up_qt made, if it made one.
void tear_down_qt();

}  // namespace nbx
