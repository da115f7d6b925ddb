// The entry of the plug-in: what the host calls from load to unload.
#include "host/interface/plugin.h"

#include <memory>

#include "C4D/registrations.h"
#include "C4D/run/simulation_thread.h"
#include "C4D/services/guard.h"
#include "C4D/services/host_access.h"
#include "C4D/start/machine_report.h"
#include "C4D/start/qt_setup.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr std::int32_t kFirstApiVersion = 11500;
constexpr std::int32_t kEndOfApiVersions = 12000;

/// What the process holds of the plug-in.
struct Plugin {
  explicit Plugin(const host::HostFunctions& functions) : host(functions) {
    set_host_services(host.services);
    set_simulation_thread(&simulation);
  }
  ~Plugin() {
    set_simulation_thread(nullptr);
    set_host_services(nullptr);
  }

  const host::HostFunctions& host;
  SimulationThread simulation;
};

// From the first load to the last end. Main thread only.
std::unique_ptr<Plugin> plugin;
int load_count = 0;

bool api_version_fits() { return plugin && plugin->host.api_version < kEndOfApiVersions; }

std::int32_t load(const host::HostFunctions* functions, const host::Filename* file) {
  if (!plugin) {
    if (!functions || functions->api_version < kFirstApiVersion) return -3;
    plugin = std::make_unique<Plugin>(*functions);
  }
  if (file) set_plugin_file(file->path);
  ++load_count;
  return 1;
}

std::int32_t end() {
  if (load_count == 0 || --load_count > 0) return 1;
  guarded("PluginEnd", [] {
    plugin->simulation.stop(true);  // it uses Qt and the host
    plugin->simulation.End(true);
    if (api_version_fits()) tear_down_qt();
  });
  plugin.reset();
  return 1;
}

bool start() {
  if (!api_version_fits()) return false;
  host::HostServices& services = *plugin->host.services;
  if (const host::Filename log = services.GetLogFile(); !log.path.empty()) set_log_file(log.path);
  print_banner(services);
  report_machine(services, plugin->host.api_version);
  return register_classes(services);
}

/// True if the message is taken.
bool message(std::intptr_t id) {
  if (!api_version_fits()) return false;
  switch (id) {
    case host::kMessageSetUp:
      set_up_qt();
      return true;
    case host::kMessageLibraries:
    case host::kMessageStarted:
      return true;
    case host::kMessageShutdown:  // not taken, so that other plug-ins see it too
      plugin->simulation.stop_at_shutdown();
      return false;
    default:
      return false;
  }
}

}  // namespace

}  // namespace nbx

extern "C" __attribute__((visibility("default"))) std::int32_t c4d_main(std::int32_t action,
                                                                        void* p1, void* p2, void*) {
  switch (action) {
    case host::kActionLoad:
      return nbx::guarded("PluginLoad", -1, [&] {
        return nbx::load(static_cast<const host::HostFunctions*>(p1),
                         static_cast<const host::Filename*>(p2));
      });
    case host::kActionStart:
      return nbx::guarded("PluginStart", false, nbx::start);
    case host::kActionEnd:
      return nbx::end();
    case host::kActionAskApi:
      return 3;
    case host::kActionMessage:
      return nbx::guarded("PluginMessage", false,
                          [&] { return nbx::message(reinterpret_cast<std::intptr_t>(p1)); })
                 ? 1
                 : -1;
    default:
      return -1;
  }
}
