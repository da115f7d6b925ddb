#include "C4D/registrations.h"

#include "C4D/commands/export_command.h"
#include "C4D/commands/import_command.h"
#include "C4D/commands/info_command.h"
#include "C4D/commands/simulate_command.h"
#include "C4D/commands/slice_command.h"
#include "C4D/commands/verify_command.h"
#include "C4D/help_tool.h"
#include "C4D/services/load_string.h"
#include "C4D/services/preferences.h"
#include "C4D/volume/save_assets.h"
#include "C4D/volume_object.h"
#include "C4D/volume_renderer.h"
#include "C4D/volume_tag.h"
#include "util/log.h"

namespace nbx {

bool register_in_order(const std::vector<Registration>& all, host::HostServices& services) {
  for (const Registration& one : all) {
    if (one.name.empty() || one.add(services, one.name)) continue;
    LogMessage() << one.failure;
    if (one.needed) return false;
  }
  return true;
}

// The order counts: the host shows commands in it, and classes may rely on those before them.
bool register_classes(host::HostServices& services) {
  constexpr bool kOptional = false;
  return register_in_order(
      {
          {load_string(10062), register_help_tool, "Failed to register help tool"},
          {load_string(10042), register_simulate_command, "Failed to register sim tools"},
          {load_string(10107), register_continue_command, "Failed to register sim tools"},
          {"Cache information", register_info_command, "Failed to register info command",
           kOptional},
          {"Slice picture", register_slice_command, "Failed to register slice command", kOptional},
          {"Verify cache", register_verify_command, "Failed to register verify command", kOptional},
          {"Export frames", register_export_command, "Failed to register export command",
           kOptional},
          {"Import", register_import_command, "Failed to register import command", kOptional},
          {"Save with assets", register_collect_command, "Failed to register collect command",
           kOptional},
          {load_string(10047), register_preferences, "Failed to register pref dialog"},
          {load_string(10000), register_volume_object, "Failed to register volume object"},
          {load_string(10002), register_volume_renderer, "Failed to register volume renderer"},
          {load_string(10004), register_volume_tag, "Failed to register volume tag"},
      },
      services);
}

}  // namespace nbx
