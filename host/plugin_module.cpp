#include "host/plugin_module.h"

#include <stdexcept>

#include <dlfcn.h>

#include "host/base/nearest_name.h"

namespace host {

PluginModule::PluginModule(const std::string& path, SmallHost& host) : host_(host) {
  functions_.services = &host;
  library_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library_) throw std::runtime_error("the plug-in can't be loaded: " + std::string(dlerror()));
  entry_ = reinterpret_cast<PluginEntry>(dlsym(library_, "c4d_main"));
  if (!entry_) throw std::runtime_error(Quoted(path) + " isn't a plug-in: it has no c4d_main");

  Filename own_path{path};
  if (entry_(kActionLoad, &functions_, &own_path, nullptr) != 1)
    throw std::runtime_error("the plug-in " + Quoted(path) + " doesn't fit this host, version " +
                             std::to_string(kApiVersion));
  const bool started = Send(kMessageSetUp) && entry_(kActionStart, nullptr, nullptr, nullptr) == 1;
  std::string printed;
  for (const std::string& line : host_.TakeConsole()) printed += "\n  " + line;
  if (started) {
    Send(kMessageLibraries);
    Send(kMessageStarted);
    return;
  }
  host_.DropCommands();
  entry_(kActionEnd, nullptr, nullptr, nullptr);
  throw std::runtime_error("the plug-in " + Quoted(path) + " didn't start" + printed);
}

// The library stays loaded: its threads and window classes may outlive the plug-in.
PluginModule::~PluginModule() {
  Send(kMessageShutdown);
  host_.DropCommands();
  entry_(kActionEnd, nullptr, nullptr, nullptr);
}

bool PluginModule::Send(PluginMessageId message) {
  void* const id = reinterpret_cast<void*>(static_cast<std::intptr_t>(message));
  return entry_(kActionMessage, id, nullptr, nullptr) == 1;
}

}  // namespace host
