// The textures that stand behind the host's shaders.
#pragma once

#include <memory>
#include <string>

#include "host/interface/base_container.h"
#include "host/interface/texture.h"

namespace host {

/// The texture of a shader of that type with those parameters. Files are read from `file`, the
/// resolved name. Throws DocumentError, with `place` in front, for an image that can't be read.
///
/// The noise is the gradient noise of K. Perlin, Improving noise, SIGGRAPH 2002, in the three
/// coordinates and the time, summed over octaves.
std::unique_ptr<Texture> MakeTexture(std::int32_t type, const BaseContainer& data,
                                     const std::string& file, const std::string& place);

}  // namespace host
