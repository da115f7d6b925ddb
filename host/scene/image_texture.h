// Pictures as textures.
#pragma once

#include <memory>
#include <string>

#include "host/interface/texture.h"

namespace host {

/// The "*N" at the end of a name of the form MODEL*N: picture N of those in the model file. Empty
/// in any other name.
std::string PictureNumber(const std::string& path);

/// Reads a picture: PNG, JPEG, BMP, PPM and whatever else Qt's plug-ins read. A name that ends with
/// "*N", after the name of a model file, is picture N of those in the model. `linear` says that its
/// numbers are light; else they are sRGB-coded. Between pixels it is interpolated linearly. Throws
/// DocumentError, with `place` in front, for a file that is missing or no picture.
std::unique_ptr<Texture> ReadImage(const std::string& path, bool linear, const std::string& place);

}  // namespace host
