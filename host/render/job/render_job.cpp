#include "host/render/job/render_job.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include <unistd.h>

#include "host/base/nearest_name.h"
#include "host/interface/camera.h"
#include "host/scene/scene_work.h"

namespace host {
namespace {

constexpr int kLargestSize = 16384;

const std::vector<std::string> kMissingNames{"error", "skip", "empty"};

/// The integers of a text, between separators. Empty unless there are exactly `count`.
std::vector<int> ReadNumbers(const std::string& text, char separator, std::size_t count) {
  std::vector<int> numbers;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (true) {
    int number = 0;
    const auto [next, error] = std::from_chars(at, end, number);
    if (error != std::errc()) return {};
    numbers.push_back(number);
    if (next == end) break;
    if (*next != separator) return {};
    at = next + 1;
  }
  return numbers.size() == count ? numbers : std::vector<int>{};
}

void ReadSize(const CommandArguments& arguments, const BaseContainer& settings, RenderJob& job) {
  job.width = settings.GetLong(RENDER_WIDTH, 960);
  job.height = settings.GetLong(RENDER_HEIGHT, 540);
  if (!arguments.Has("size")) return;
  const std::string text = arguments.GetString("size");
  const std::vector<int> size = ReadNumbers(text, 'x', 2);
  const auto good = [](int n) { return n >= 1 && n <= kLargestSize; };
  if (size.empty() || !good(size[0]) || !good(size[1]))
    throw std::invalid_argument("--size: " + Quoted(text) +
                                " isn't WIDTHxHEIGHT with values from 1 to " +
                                std::to_string(kLargestSize));
  job.width = size[0];
  job.height = size[1];
}

PictureWindow ReadWindow(const CommandArguments& arguments, int width, int height) {
  if (!arguments.Has("region")) return {0, 0, width, height};
  const std::string text = arguments.GetString("region");
  const std::vector<int> n = ReadNumbers(text, ',', 4);
  if (n.empty()) throw std::invalid_argument("--region: " + Quoted(text) + " isn't X0,Y0,X1,Y1");
  if (n[0] < 0 || n[1] < 0 || n[2] > width || n[3] > height || n[0] >= n[2] || n[1] >= n[3])
    throw std::invalid_argument("--region: " + text + " is empty or not within the picture of " +
                                std::to_string(width) + "x" + std::to_string(height));
  return {n[0], n[1], n[2], n[3]};
}

/// "scenes/fire.json" gives "fire.####.png" in the current folder.
std::string DefaultOutput(const BaseDocument& document) {
  return std::filesystem::path(document.GetDocumentName()).stem().string() + ".####.png";
}

std::vector<std::int32_t> AllFrames(const BaseDocument& document) {
  std::vector<std::int32_t> frames;
  const FrameRate fps = document.GetFps();
  const std::int64_t last = document.GetMaxTime().GetFrame(fps);
  for (std::int64_t frame = document.GetMinTime().GetFrame(fps); frame <= last; ++frame)
    frames.push_back(static_cast<std::int32_t>(frame));
  return frames;
}

}  // namespace

std::vector<OptionInfo> RenderOptions() {
  return {
      {.name = "scene",
       .value_name = "SCENE",
       .help = "The scene document",
       .positional = true,
       .required = true},
      {.name = "output",
       .value_name = "PATTERN",
       .help = "Path of the pictures, .exr or .png; #### is replaced by the frame number. Default: "
               "SCENE.####.png in the current folder"},
      {.name = "size",
       .value_name = "WxH",
       .help = "Size of the picture in pixels; default: that of the scene"},
      {.name = "region",
       .value_name = "X0,Y0,X1,Y1",
       .help = "Renders only the pixels from X0,Y0 up to, but not including, X1,Y1. 0,0 is the "
               "upper left corner"},
      {.name = "samples",
       .type = OptionType::Long,
       .value_name = "N",
       .help = "Samples per pixel; default: that of the scene",
       .minimum = 1,
       .maximum = 65536},
      {.name = "upres",
       .type = OptionType::Flag,
       .help = "Shows the frames of the up-resolution runs instead of those of the simulations"},
      {.name = "missing",
       .type = OptionType::Choice,
       .value_name = "WHAT",
       .help =
           "What to do if a frame is missing from a cache: error (the default), skip the frame, "
           "or render it without the volume (empty)",
       .choices = kMissingNames},
      {.name = "precision",
       .type = OptionType::Choice,
       .value_name = "TYPE",
       .help = "Precision of EXR files: half (the default) or float",
       .choices = {"half", "float"}},
      {.name = "overwrite",
       .type = OptionType::Flag,
       .help = "Lets volumes that simulate while rendering overwrite the frames of an earlier run"},
      {.name = "new-cache",
       .type = OptionType::Flag,
       .help = "Lets such volumes keep the earlier run and create a new cache"},
      {.name = "yes", .type = OptionType::Flag, .help = "Answers yes to all questions"},
      {.name = "exposure",
       .type = OptionType::Real,
       .value_name = "STOPS",
       .help = "Brightens PNG pictures by a factor of 2^STOPS; default: 0",
       .minimum = -64,
       .maximum = 64}};
}

RenderJob ReadJob(const CommandArguments& arguments, const BaseDocument& document) {
  const BaseContainer& settings = document.GetActiveRenderData().GetDataInstance();
  RenderJob job;
  ReadSize(arguments, settings, job);
  job.window = ReadWindow(arguments, job.width, job.height);
  job.frames = arguments.GetFrames("frames");
  if (job.frames.empty()) job.frames = AllFrames(document);
  job.quality = {arguments.GetLong("samples", std::max(1, settings.GetLong(RENDER_SAMPLES, 16))),
                 settings.GetReal(RENDER_SHUTTER), settings.GetLong(RENDER_BOUNCES)};
  const auto processors = static_cast<std::int32_t>(std::thread::hardware_concurrency());
  job.threads = arguments.GetLong("threads", std::max(1, processors));
  job.output = arguments.GetString("output", DefaultOutput(document));
  if (const std::string wrong = WhatIsWrongWithPath(job.output); !wrong.empty())
    throw std::invalid_argument("--output: " + Quoted(job.output) + ": " + wrong);
  if (arguments.GetString("precision") == "float") job.depth = PictureDepth::Float;
  job.exposure = arguments.GetReal("exposure");
  const auto missing =
      std::find(kMissingNames.begin(), kMissingNames.end(), arguments.GetString("missing"));
  if (missing != kMissingNames.end())
    job.missing = static_cast<MissingFrames>(missing - kMissingNames.begin());
  if (arguments.Has("new-cache"))
    job.old_files = OldFiles::MakeNew;
  else if (arguments.Has("overwrite") || arguments.Has("yes"))
    job.old_files = OldFiles::Overwrite;
  return job;
}

void CheckWork(const RenderJob& job) {
  const double pixels = static_cast<double>(job.window.Width()) * job.window.Height();
  const double samples = pixels * job.quality.samples;
  const double bytes = pixels * sizeof(Pixel);
  const double memory = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
  char text[200];
  if (samples > kMostPictureSamples)
    std::snprintf(text, sizeof text, "takes %.3g samples, more than %.3g", samples,
                  kMostPictureSamples);
  else if (bytes > memory && memory > 0)
    std::snprintf(text, sizeof text, "takes %.3g GB of memory, this machine has %.3g GB",
                  bytes * 1e-9, memory * 1e-9);
  else
    return;
  throw std::invalid_argument("a picture of " + std::to_string(job.window.Width()) + "x" +
                              std::to_string(job.window.Height()) + " pixels " + text +
                              "; lower --size or --samples, or pass --force");
}

}  // namespace host
