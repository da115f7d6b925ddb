// The entry of the plug-in: what the host calls from load to unload.
#include "host/interface/plugin.h"

#include <omp.h>

#include "C4D/export_command.h"
#include "C4D/import_command.h"
#include "C4D/info_command.h"
#include "C4D/machine_report.h"
#include "C4D/preferences.h"
#include "C4D/simulate_command.h"
#include "C4D/slice_command.h"
#include "C4D/verify_command.h"
#include "C4D/volume_object.h"
#include "C4D/volume_renderer.h"
#include "C4D/volume_tag.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr std::int32_t kFirstApiVersion = 11500;
constexpr std::int32_t kEndOfApiVersions = 12000;

// From the first load to the last end. Main thread only.
const host::HostFunctions* host_functions = nullptr;
int load_count = 0;

bool api_version_fits() {
  return host_functions && host_functions->api_version >= kFirstApiVersion &&
         host_functions->api_version < kEndOfApiVersions;
}

std::int32_t load(const host::HostFunctions* functions) {
  if (load_count == 0) host_functions = functions;
  if (!host_functions || host_functions->api_version < kFirstApiVersion) return -3;
  ++load_count;
  return 1;
}

std::int32_t end() {
  if (load_count > 0 && --load_count == 0) host_functions = nullptr;
  return 1;
}

bool register_classes(host::HostServices& services) {
  const struct {
    bool (*add)(host::HostServices&);
    const char* failure;
  } classes[] = {
      {register_simulate_command, "Failed to register sim tools"},
      {register_info_command, "Failed to register info command"},
      {register_slice_command, "Failed to register slice command"},
      {register_verify_command, "Failed to register verify command"},
      {register_preferences, "Failed to register pref dialog"},
      {register_export_command, "Failed to register export command"},
      {register_import_command, "Failed to register import command"},
      {register_volume_object, "Failed to register volume object"},
      {register_volume_renderer, "Failed to register volume renderer"},
      {register_volume_tag, "Failed to register volume tag"},
  };
  for (const auto& [add, failure] : classes)
    if (!add(services)) {
      LogMessage() << failure;
      return false;
    }
  return true;
}

bool start() {
  if (!api_version_fits()) return false;
  host::HostServices& services = *host_functions->services;
  if (const host::Filename log = services.GetLogFile(); !log.path.empty()) set_log_file(log.path);
  report_machine(services, host_functions->api_version);
  omp_set_num_threads(omp_get_num_procs());
  return register_classes(services);
}

/// Of the messages of the host, set-up is the one that this plug-in takes.
bool message(std::intptr_t id) { return api_version_fits() && id == host::kMessageSetUp; }

}  // namespace

}  // namespace nbx

extern "C" __attribute__((visibility("default"))) std::int32_t c4d_main(std::int32_t action,
                                                                        void* p1, void*, void*) {
  switch (action) {
    case host::kActionLoad:
      return nbx::load(static_cast<const host::HostFunctions*>(p1));
    case host::kActionStart:
      return nbx::start() ? 1 : 0;
    case host::kActionEnd:
      return nbx::end();
    case host::kActionAskApi:
      return 3;
    case host::kActionMessage:
      return nbx::message(reinterpret_cast<std::intptr_t>(p1)) ? 1 : -1;
    default:
      return -1;
  }
}
