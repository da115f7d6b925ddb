// The textures behind the built-in shaders.
#pragma once

#include <memory>
#include <string>

#include "host/interface/base_container.h"
#include "host/interface/texture.h"

namespace host {

/// Makes the texture of a shader of that type with these parameters. An image is read from `file`,
/// an absolute path. Throws DocumentError, with `place` in front, for an image that can't be read.
///
/// The noise is the gradient noise of K. Perlin, Improving noise, SIGGRAPH 2002, in space and time,
/// summed over octaves.
std::unique_ptr<Texture> MakeTexture(std::int32_t type, const BaseContainer& data,
                                     const std::string& file, const std::string& place);

}  // namespace host
