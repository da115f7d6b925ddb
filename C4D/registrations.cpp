#include "C4D/registrations.h"

#include "C4D/export_command.h"
#include "C4D/import_command.h"
#include "C4D/info_command.h"
#include "C4D/preferences.h"
#include "C4D/save_assets.h"
#include "C4D/simulate_command.h"
#include "C4D/slice_command.h"
#include "C4D/verify_command.h"
#include "C4D/volume_object.h"
#include "C4D/volume_renderer.h"
#include "C4D/volume_tag.h"
#include "util/log.h"

namespace nbx {

namespace {

struct Registration {
  bool (*add)(host::HostServices&);
  const char* failure;
  bool needed = true;
};

// The order counts: the host shows commands in it, and classes may rely on those before them.
const Registration registrations[] = {
    {register_simulate_command, "Failed to register sim tools"},
    {register_info_command, "Failed to register info command"},
    {register_slice_command, "Failed to register slice command"},
    {register_verify_command, "Failed to register verify command"},
    {register_export_command, "Failed to register export command"},
    {register_import_command, "Failed to register import command"},
    {register_collect_command, "Failed to register collect command"},
    {register_preferences, "Failed to register pref dialog"},
    {register_volume_object, "Failed to register volume object"},
    {register_volume_renderer, "Failed to register volume renderer"},
    {register_volume_tag, "Failed to register volume tag"},
};

}  // namespace

bool register_classes(host::HostServices& services) {
  for (const Registration& one : registrations) {
    if (one.add(services)) continue;
    LogMessage() << one.failure;
    if (one.needed) return false;
  }
  return true;
}

}  // namespace nbx
