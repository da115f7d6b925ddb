#include "C4D/commands/vdb_options.h"

#include "cache/grid_type.h"

namespace nbx {

namespace {

using Names = std::map<int, std::string>;

const std::map<std::string, Names>& presets() {
  static const std::map<std::string, Names> all = [] {
    const Names usual{{kGridDensity, "density"}, {kGridTemperature, "temperature"},
                      {kGridBurn, "flame"},      {kGridFuel, "fuel"},
                      {kGridVelocityX, "vel"},   {kGridSolid, "solid"}};
    Names heat = usual, words = usual;
    words[kGridVelocityX] = heat[kGridVelocityX] = "velocity";
    heat[kGridTemperature] = "heat";
    Names own = words;
    own[kGridBurn] = "burn";
    return std::map<std::string, Names>{
        {"default", usual}, {"velocity", words}, {"heat", heat}, {"cache", own}};
  }();
  return all;
}

/// "velocity" means its three grids.
int channel_type(const std::string& channel) {
  if (channel == "velocity") return kGridVelocityX;
  return grid_type_from_name(channel).value_or(0);
}

}  // namespace

std::vector<host::OptionInfo> vdb_options() {
  using host::OptionType;
  std::vector<std::string> names;
  for (const auto& [name, preset] : presets()) names.push_back(name);
  return {
      {.name = "names",
       .type = OptionType::Choice,
       .value_name = "PRESET",
       .help =
           "Names of VDB grids. default: density, temperature, flame, fuel, vel, solid; velocity: "
           "velocity instead of vel; heat: also heat instead of temperature; cache: as in the "
           "cache",
       .choices = names},
      {.name = "name",
       .value_name = "CHANNEL=NAME",
       .help = "Name of a channel's VDB grid, instead of the preset's; without NAME the channel "
               "is left out",
       .repeatable = true},
      {.name = "units",
       .type = OptionType::Choice,
       .value_name = "UNITS",
       .help = "Lengths in VDB files: meters (default) or host (units of 0.01 m)",
       .choices = {"meters", "host"}},
      {.name = "up",
       .type = OptionType::Choice,
       .value_name = "AXIS",
       .help = "Axis of VDB files that points up: y (default) or z",
       .choices = {"y", "z"}},
  };
}

bool read_vdb_options(VdbOptions& options, const host::CommandArguments& arguments,
                      host::CommandContext& context) {
  options.meters = arguments.GetString("units", "meters") == "meters";
  options.z_up = arguments.GetString("up", "y") == "z";
  options.names = presets().at(arguments.GetString("names", "default"));
  for (const std::string& word : arguments.GetStrings("name")) {
    const std::size_t equals = word.find('=');
    const int type = channel_type(word.substr(0, equals));
    if (equals == std::string::npos || type == 0) {
      context.Error("--name: \"" + word + "\" isn't CHANNEL=NAME with a channel such as density");
      return false;
    }
    options.names[type] = word.substr(equals + 1);
    if (options.names[type].empty()) options.names.erase(type);
  }
  return true;
}

std::map<std::string, int> known_vdb_names(const VdbOptions& options) {
  std::map<std::string, int> types;
  for (const auto& [type, name] : options.names) types.emplace(name, type);
  for (const auto& [preset, names] : presets())
    for (const auto& [type, name] : names) types.emplace(name, type);
  return types;
}

}  // namespace nbx
