#include "C4D/volume_tag.h"

#include "C4D/parameter_table.h"

namespace nbx {

namespace {

host::ClassDescription tag_description() {
  using namespace table;
  const std::vector<host::CycleEntry> modes{{TVOLUME_MODE_ADD, "add"}, {TVOLUME_MODE_SET, "set"}};
  const char* const mode =
      "add: the amount is added in each frame; set: the gas is raised to the amount";
  return {
      "emitter",
      "Makes an object and its children a source",
      {
          still(flag(TVOLUME_ENABLED, "TVOLUME_ENABLED", true, "The tag counts")),
          real(TVOLUME_DENSITY, "TVOLUME_DENSITY", 0, 0, kUnbounded, "",
               "Density on the object's surface"),
          cycle(TVOLUME_DENSITY_MODE, "TVOLUME_DENSITY_MODE", TVOLUME_MODE_SET, modes, mode),
          real(TVOLUME_TEMPERATURE, "TVOLUME_TEMPERATURE", 0, 0, kUnbounded, "",
               "Temperature on the object's surface"),
          cycle(TVOLUME_TEMPERATURE_MODE, "TVOLUME_TEMPERATURE_MODE", TVOLUME_MODE_SET, modes,
                mode),
          real(TVOLUME_FUEL, "TVOLUME_FUEL", 0, 0, kUnbounded, "", "Fuel on the object's surface"),
          cycle(TVOLUME_FUEL_MODE, "TVOLUME_FUEL_MODE", TVOLUME_MODE_SET, modes, mode),
          real(TVOLUME_BURN, "TVOLUME_BURN", 0, 0, kUnbounded, "", "Burn on the object's surface"),
          cycle(TVOLUME_BURN_MODE, "TVOLUME_BURN_MODE", TVOLUME_MODE_SET, modes, mode),
          real(TVOLUME_EXPANSION, "TVOLUME_EXPANSION", 0, -kUnbounded, kUnbounded, "1/s",
               "Volume of gas that the surface gives, in volumes of its voxels; below 0 it takes"),
          real(TVOLUME_THICKNESS, "TVOLUME_THICKNESS", 1, 0, kUnbounded, "units",
               "Distance from the surface at which the source ends; at least 1.73 voxels"),
      }};
}

}  // namespace

bool register_volume_tag(host::HostServices& services) {
  return services.RegisterTagPlugin(
      kVolumeTag, "Tvolume",
      []() -> std::unique_ptr<host::TagData> { return std::make_unique<host::TagData>(); },
      tag_description());
}

}  // namespace nbx
