#include "C4D/parameters/volume_display_parameters.h"
#include "C4D/parameters/volume_parameter_groups.h"

namespace nbx {

using namespace table;

namespace {

/// Blue, cyan, green, yellow, red, from `alpha` on to opaque.
host::Gradient spectrum(double alpha) {
  const host::Vector colors[] = {{0, 0, 1}, {0, 1, 1}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}};
  host::Gradient gradient;
  for (int i = 0; i < 5; ++i)
    gradient.knots.push_back({i / 4.0, colors[i], alpha + (1 - alpha) * i / 4.0});
  return gradient;
}

host::ParameterInfo display_channel() {
  host::ParameterInfo info =
      channel_choice(OVOLUME_DISPLAY_CHANNEL, "OVOLUME_DISPLAY_CHANNEL",
                     "Channel that is shown; grid_8 to grid_31 are those of frames of that type");
  info.default_value = static_cast<std::int32_t>(OVOLUME_CHANNEL_TEMPERATURE);
  for (const auto& [channel, name] : {std::pair{OVOLUME_CHANNEL_VELOCITY, "velocity"},
                                      {OVOLUME_CHANNEL_VELOCITY_X, "velocity_x"},
                                      {OVOLUME_CHANNEL_VELOCITY_Y, "velocity_y"},
                                      {OVOLUME_CHANNEL_VELOCITY_Z, "velocity_z"},
                                      {OVOLUME_CHANNEL_SOLID, "solid"},
                                      {OVOLUME_CHANNEL_GRID_8, "grid_8"},
                                      {OVOLUME_CHANNEL_GRID_9, "grid_9"},
                                      {OVOLUME_CHANNEL_GRID_27, "grid_27"},
                                      {OVOLUME_CHANNEL_GRID_28, "grid_28"},
                                      {OVOLUME_CHANNEL_GRID_29, "grid_29"},
                                      {OVOLUME_CHANNEL_GRID_30, "grid_30"},
                                      {OVOLUME_CHANNEL_GRID_31, "grid_31"}})
    info.cycle.push_back({channel, name});
  return info;
}

}  // namespace

// The viewport doesn't show frames yet.
ParameterList display_parameters() {
  ParameterList all{
      still(flag(OVOLUME_DISPLAY_ON, "OVOLUME_DISPLAY_ON", false,
                 "Show the cached frames in the viewport; turns the preference viewport_gl on")),
      cycle(OVOLUME_DISPLAY_MODE, "OVOLUME_DISPLAY_MODE", OVOLUME_DISPLAY_VOLUME,
            {{OVOLUME_DISPLAY_NOTHING, "nothing"},
             {OVOLUME_DISPLAY_SLICE, "slice"},
             {OVOLUME_DISPLAY_VOLUME, "volume"}},
            "What the viewport shows of the frame"),
      display_channel(),
      cycle(OVOLUME_DISPLAY_SLICE_PLANE, "OVOLUME_DISPLAY_SLICE_PLANE", OVOLUME_SLICE_ACROSS_AXIS,
            {{OVOLUME_SLICE_ACROSS_AXIS, "across_axis"},
             {OVOLUME_SLICE_FACES_VIEWER, "faces_viewer"}},
            "The slice lies across the axis that faces the viewer most, or faces the viewer"),
      real(OVOLUME_DISPLAY_SLICE_POSITION, "OVOLUME_DISPLAY_SLICE_POSITION", 0, -1, 1, "",
           "Place of the slice, from one end of the frame to the other"),
      gradient(OVOLUME_DISPLAY_GRADIENT, "OVOLUME_DISPLAY_GRADIENT", spectrum(0),
               "Color and opacity from display_range_min to display_range_max"),
      real(OVOLUME_DISPLAY_RANGE_MIN, "OVOLUME_DISPLAY_RANGE_MIN", 0, -kUnbounded, kUnbounded, "",
           "Value at the gradient's start"),
      real(OVOLUME_DISPLAY_RANGE_MAX, "OVOLUME_DISPLAY_RANGE_MAX", 1, -kUnbounded, kUnbounded, "",
           "Value at the gradient's end"),
      flag(OVOLUME_DISPLAY_AUTO_RANGE, "OVOLUME_DISPLAY_AUTO_RANGE", false,
           "Take the range from each frame"),
      button(OVOLUME_MEASURE_RANGE, "OVOLUME_MEASURE_RANGE",
             "Takes the range from the frame that is shown"),
      real(OVOLUME_DISPLAY_SLICE_RATE, "OVOLUME_DISPLAY_SLICE_RATE", 1, 0.001, 64, "per voxel",
           "Slices that the volume is drawn with"),
      real(OVOLUME_DISPLAY_DENSITY, "OVOLUME_DISPLAY_DENSITY", 1, 0, kUnbounded, "",
           "How dense the volume is drawn"),
      flag(OVOLUME_DISPLAY_FILTER, "OVOLUME_DISPLAY_FILTER", true,
           "Values between voxels are interpolated, else voxels are seen"),
      flag(OVOLUME_DISPLAY_BOX, "OVOLUME_DISPLAY_BOX", true, "Draw the edges of the domain"),
      flag(OVOLUME_DISPLAY_GRID, "OVOLUME_DISPLAY_GRID", false,
           "Draw the voxels on the domain's sides as a checkerboard"),
      link(OVOLUME_DISPLAY_FRAME_OBJECT, "OVOLUME_DISPLAY_FRAME_OBJECT", host::LinkTarget::Object,
           "Object in whose space the frame is drawn; none: where it was simulated"),
      gradient(OVOLUME_PARTICLE_GRADIENT, "OVOLUME_PARTICLE_GRADIENT", spectrum(0.05),
               "Color and opacity for particles"),
  };
  for (host::ParameterInfo& info : all) info = later(std::move(info));
  return all;
}

ParameterList info_parameters() {
  const auto holds = [](std::int32_t id, const char* symbol, const char* help) {
    return shown(flag(id, symbol, false, help));
  };
  return {
      shown_text(OVOLUME_INFO_GRID, "OVOLUME_INFO_GRID", "Size and place of the frame's grids"),
      shown_text(OVOLUME_INFO_BYTES, "OVOLUME_INFO_BYTES", "Size of the frame in memory"),
      shown_text(OVOLUME_INFO_FRAME, "OVOLUME_INFO_FRAME", "Number of the frame"),
      shown_text(OVOLUME_INFO_FRAME_COUNT, "OVOLUME_INFO_FRAME_COUNT", "Frames in the cache"),
      holds(OVOLUME_INFO_VELOCITY, "OVOLUME_INFO_VELOCITY", "The frame holds velocity"),
      holds(OVOLUME_INFO_DENSITY, "OVOLUME_INFO_DENSITY", "The frame holds density"),
      holds(OVOLUME_INFO_TEMPERATURE, "OVOLUME_INFO_TEMPERATURE", "The frame holds temperature"),
      holds(OVOLUME_INFO_FUEL, "OVOLUME_INFO_FUEL", "The frame holds fuel"),
      holds(OVOLUME_INFO_BURN, "OVOLUME_INFO_BURN", "The frame holds burn"),
  };
}

}  // namespace nbx
