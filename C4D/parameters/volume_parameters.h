// The table of the volume object's parameters. The host makes scene documents, help texts and
// panels from it.
#pragma once

#include "C4D/parameters/volume_cache_parameters.h"
#include "C4D/parameters/volume_display_parameters.h"
#include "C4D/parameters/volume_lighting_parameters.h"
#include "C4D/parameters/volume_solver_parameters.h"

namespace nbx {

inline constexpr std::int32_t kVolumeObject = 1023131;

struct VolumeParameters : JoinedParameters<SimulationParameters, CacheParameters, UpresParameters,
                                           MarchingParameters, DisplayParameters, InfoParameters> {
};

/// Not to be read before main() or the load of the plug-in.
extern const VolumeParameters OVOLUME;

host::ClassDescription volume_description();

}  // namespace nbx
