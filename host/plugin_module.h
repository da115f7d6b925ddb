// A plug-in's shared library, from load to unload.
#pragma once

#include <memory>
#include <string>

#include "host/small_host.h"

namespace host {

/// The plug-in is started while this lives. Documents with its objects must go before it.
class PluginModule {
 public:
  /// Loads and starts. Throws std::runtime_error with one line: the file can't be loaded, isn't a
  /// plug-in, doesn't fit this host, or didn't start (with what it printed to the console).
  PluginModule(const std::string& path, SmallHost& host);
  /// Tells the plug-in that the host shuts down, and ends it.
  ~PluginModule();
  PluginModule(const PluginModule&) = delete;
  PluginModule& operator=(const PluginModule&) = delete;

  /// Sends a message, as the host does when the moment for it has come. True if it was taken.
  bool Send(PluginMessageId message);

 private:
  SmallHost& host_;
  HostFunctions functions_;
  void* library_ = nullptr;
  PluginEntry entry_ = nullptr;
};

}  // namespace host
