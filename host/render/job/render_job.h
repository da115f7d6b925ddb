// What the user wants to render.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/interface/command_data.h"
#include "host/interface/video_post.h"
#include "host/render/files/picture_file.h"

namespace host {

/// What to do if data of a post effect is missing for a frame.
enum class MissingFrames { Error, Skip, Empty };

struct RenderJob {
  std::vector<std::int32_t> frames;  ///< ascending
  int width = 0, height = 0;
  PictureWindow window;
  RenderQuality quality;
  int threads = 1;
  std::string output = {};  ///< a path; #### is replaced by the frame number
  PictureDepth depth = PictureDepth::Half;
  double exposure = 0;  ///< stops, for PNG
  MissingFrames missing = MissingFrames::Error;
  OldFiles old_files = OldFiles::Unanswered;

  std::string PathOf(std::int32_t frame) const {
    return PathOfFrame(output, frame, frames.size() > 1);
  }
};

/// The options that ReadJob reads.
std::vector<OptionInfo> RenderOptions();

/// Reads the options, and the render settings of the document as defaults. Throws
/// std::invalid_argument with a line for the user.
RenderJob ReadJob(const CommandArguments& arguments, const BaseDocument& document);

/// Throws std::invalid_argument if a picture has too many samples or doesn't fit into memory.
void CheckWork(const RenderJob& job);

}  // namespace host
