#include "C4D/registrations.h"

#include "C4D/commands/commands.h"
#include "C4D/help_tool.h"
#include "C4D/services/preferences.h"
#include "C4D/services/texts.h"
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

// The order matters: the host shows commands in it, and classes may rely on earlier ones.
bool register_classes(host::HostServices& services) {
  constexpr bool kOptional = false;
  return register_in_order(
      {
          {texts::kHelp, register_help_tool, "Failed to register help tool"},
          {texts::kStartSimulation, register_simulate_command, "Failed to register sim tools"},
          {texts::kContinueSimulation, register_continue_command, "Failed to register sim tools"},
          {texts::kUpResolution, register_upres_command, "Failed to register sim tools"},
          {"Check scene", register_check_command, "Failed to register check command", kOptional},
          {"Forecast", register_forecast_command, "Failed to register forecast command", kOptional},
          {"Caches", register_cache_command, "Failed to register cache command", kOptional},
          {"Cache information", register_info_command, "Failed to register info command",
           kOptional},
          {"Slice picture", register_slice_command, "Failed to register slice command", kOptional},
          {"Verify cache", register_verify_command, "Failed to register verify command", kOptional},
          {"Export frames", register_export_command, "Failed to register export command",
           kOptional},
          {"Import", register_import_command, "Failed to register import command", kOptional},
          {"Save with assets", register_collect_command, "Failed to register collect command",
           kOptional},
          {texts::kNimbrix, register_preferences, "Failed to register pref dialog"},
          {texts::kVolume, register_volume_object, "Failed to register volume object"},
          {texts::kSmokeAndFire, register_volume_renderer, "Failed to register volume renderer"},
          {texts::kEmitter, register_volume_tag, "Failed to register volume tag"},
      },
      services);
}

}  // namespace nbx
