// Pictures as files.
#pragma once

#include <string>

#include "host/render/trace/picture.h"

namespace host {

enum class PictureDepth { Half, Float };

/// Writes by the ending of the path: .exr or .png. The folder is made if missing. The file is there
/// whole, or as it was before. Throws std::runtime_error with the path and the reason.
void WritePicture(const Picture& picture, const PictureMetadata& metadata, PictureDepth depth,
                  double exposure, const std::string& path);

/// An empty text, or why no picture can be written to a path of that form.
std::string WhatIsWrongWithPath(const std::string& path);

/// Makes the folder that a picture goes to, and tries whether a file can be made there. Throws
/// std::runtime_error with the path and the reason.
void CheckWritable(const std::string& path);

/// The path for a frame: a run of # becomes the frame's number with at least as many digits.
/// Without a run the number goes in front of the ending, after a point, if there are `several`
/// frames.
std::string PathOfFrame(const std::string& pattern, std::int32_t frame, bool several);

/// OpenEXR, scene-linear, premultiplied:
///     R G B A            the picture, without the background
///     volume.R .G .B     what the post effects add along camera rays
///     transmittance.R .G .B   what they let pass there
///     depth.Z            distance along the camera's axis to the nearest surface, in units; float
/// With the attributes frame, framesPerSecond, software, complete, worldToCamera and worldToNDC.
/// Of a window of the picture the data window tells the place.
void WriteExr(const Picture& picture, const PictureMetadata& metadata, PictureDepth depth,
              const std::string& path);

/// PNG of the window, opaque over the background: exposed by `exposure` stops, up to a value of 0.7
/// as it is and from there on bent towards 1 (ToneMapped), through the sRGB curve, to eight bits
/// with a fixed noise that keeps smooth shades free of bands.
void WritePng(const Picture& picture, const PictureMetadata& metadata, double exposure,
              const std::string& path);

/// x up to 0.7; above, an exponential that starts with slope 1 and comes to 1.
double ToneMapped(double x);

}  // namespace host
