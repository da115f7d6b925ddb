// The shared library of a plug-in, from load to unload.
#pragma once

#include <memory>
#include <string>

#include "host/small_host.h"

namespace host {

/// Keeps the plug-in running during its lifetime. Documents with objects of the plug-in must be
/// destroyed first.
class PluginModule {
 public:
  /// Loads and starts the plug-in. Throws std::runtime_error with one line if the file can't be
  /// loaded, isn't a plug-in, doesn't fit this host, or didn't start (with its console output).
  PluginModule(const std::string& path, SmallHost& host);
  /// Announces the shutdown to the plug-in and ends it.
  ~PluginModule();
  PluginModule(const PluginModule&) = delete;
  PluginModule& operator=(const PluginModule&) = delete;

  /// Sends a message to the plug-in. True if the plug-in handled it.
  bool Send(PluginMessageId message);

 private:
  SmallHost& host_;
  HostFunctions functions_;
  void* library_ = nullptr;
  PluginEntry entry_ = nullptr;
};

}  // namespace host
