// What the user asked to be rendered.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/interface/command_data.h"
#include "host/interface/video_post.h"
#include "host/render/files/picture_file.h"

namespace host {

/// What to do about a frame of which a post effect lacks something.
enum class MissingFrames { Error, Skip, Empty };

struct RenderJob {
  std::vector<std::int32_t> frames;  ///< ascending
  int width = 0, height = 0;
  PictureWindow window;
  RenderQuality quality;
  int threads = 1;
  std::string output = {};  ///< a path, perhaps with #### for the frame
  PictureDepth depth = PictureDepth::Half;
  double exposure = 0;  ///< stops, of PNG
  MissingFrames missing = MissingFrames::Error;
  OldFiles old_files = OldFiles::Unanswered;

  std::string PathOf(std::int32_t frame) const {
    return PathOfFrame(output, frame, frames.size() > 1);
  }
};

/// The options that ReadJob looks at.
std::vector<OptionInfo> RenderOptions();

/// From the options, and from the render settings of the document what they don't say. Throws
/// std::invalid_argument with a line for the user.
RenderJob ReadJob(const CommandArguments& arguments, const BaseDocument& document);

/// Throws std::invalid_argument with the figure where a picture takes very many samples, or more
/// memory than the machine has.
void CheckWork(const RenderJob& job);

}  // namespace host
