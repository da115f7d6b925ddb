// Writes pictures to files.
#pragma once

#include <string>

#include "host/render/trace/picture.h"

namespace host {

enum class PictureDepth { Half, Float };

/// Writes an .exr or .png file, completely or not at all. Creates the folder if it is missing.
/// Throws std::runtime_error with the path and the reason.
void WritePicture(const Picture& picture, const PictureMetadata& metadata, PictureDepth depth,
                  double exposure, const std::string& path);

/// Why no picture can be written to a path of this form. Empty if it can.
std::string WhatIsWrongWithPath(const std::string& path);

/// Creates the folder of the picture and checks that a file can be created there. Throws
/// std::runtime_error with the path and the reason.
void CheckWritable(const std::string& path);

/// The path for a frame. A run of # is replaced by the frame number with at least that many digits.
/// Without a run, and if there are `several` frames, the number is inserted before the extension.
std::string PathOfFrame(const std::string& pattern, std::int32_t frame, bool several);

/// OpenEXR, scene-linear, premultiplied:
///     R G B A            the picture without the background
///     volume.R .G .B     light that post effects add along camera rays
///     transmittance.R .G .B   the fraction of light that they let pass
///     depth.Z            distance to the nearest surface along the view axis, in units; float
/// The attributes are frame, framesPerSecond, software, complete, worldToCamera and worldToNDC. The
/// data window is the window of the picture.
void WriteExr(const Picture& picture, const PictureMetadata& metadata, PictureDepth depth,
              const std::string& path);

/// PNG of the window, opaque over the background: exposed by `exposure` stops, tone mapped
/// (ToneMapped), through the sRGB curve, and dithered to eight bits.
void WritePng(const Picture& picture, const PictureMetadata& metadata, double exposure,
              const std::string& path);

/// x up to 0.7. Above, an exponential that starts with slope 1 and approaches 1.
double ToneMapped(double x);

}  // namespace host
