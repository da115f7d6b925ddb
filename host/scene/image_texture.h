// Pictures as textures.
#pragma once

#include <memory>
#include <string>

#include "host/interface/texture.h"

namespace host {

/// The "*N" at the end of a path MODEL*N, which means picture N inside the model file. Empty for
/// any other path.
std::string PictureNumber(const std::string& path);

/// Reads a picture: PNG, JPEG, BMP, PPM and other formats supported by Qt, or picture N inside a
/// model file for a path MODEL*N. `linear` means that the values are linear light, otherwise they
/// are sRGB. Sampling interpolates linearly between pixels. Throws DocumentError, with `place` in
/// front, for a file that is missing or isn't a picture.
std::unique_ptr<Texture> ReadImage(const std::string& path, bool linear, const std::string& place);

}  // namespace host
