// Qt inside a host: set up before the plug-in uses it, taken down with the plug-in. Main thread
// only.
#pragma once

namespace nbx {

/// Names the application to Qt and keeps the plug-in's module in memory, since Qt's threads must
/// not outlive their code. If the host has no Qt application, makes one that loads no Qt plug-ins
/// from the host's surroundings, keeps the process's locale, and sends Qt's messages to the log.
void set_up_qt();

/// Destroys the application if set_up_qt made one.
void tear_down_qt();

}  // namespace nbx
