// The volume in the viewport, and what its panel shows of the cached frame.
#pragma once

#include "C4D/parameters/volume_channel.h"

namespace nbx {

/// Values of DISPLAY_MODE.
enum VolumeDisplayMode : std::int32_t {
  OVOLUME_DISPLAY_NOTHING = 1336,
  OVOLUME_DISPLAY_SLICE = 1338,
  OVOLUME_DISPLAY_VOLUME = 1345,
};

/// Values of DISPLAY_SLICE_PLANE.
enum VolumeSlicePlane : std::int32_t {
  OVOLUME_SLICE_FACES_VIEWER = 0,
  OVOLUME_SLICE_ACROSS_AXIS = 1348,
};

/// The viewport doesn't show frames yet.
struct DisplayParameters : VolumeGroup {
  DisplayParameters() : VolumeGroup(Changes::kView) {}

  Flag DISPLAY_ON = flag(1352, "DISPLAY_ON", false,
                         "Show the cached frames in the viewport; turns on the preference "
                         "viewport_gl")
                        .still()
                        .later();
  Choice<VolumeDisplayMode> DISPLAY_MODE = cycle(1335, "DISPLAY_MODE", OVOLUME_DISPLAY_VOLUME,
                                                 {{OVOLUME_DISPLAY_NOTHING, "nothing"},
                                                  {OVOLUME_DISPLAY_SLICE, "slice"},
                                                  {OVOLUME_DISPLAY_VOLUME, "volume"}},
                                                 "What the viewport shows of the frame")
                                               .later();
  const Condition shows_slice = is(DISPLAY_MODE, OVOLUME_DISPLAY_SLICE);
  const Condition shows_volume = is(DISPLAY_MODE, OVOLUME_DISPLAY_VOLUME);
  Choice<VolumeChannel> DISPLAY_CHANNEL =
      channel(1089, "DISPLAY_CHANNEL", OVOLUME_CHANNEL_TEMPERATURE,
              "Channel to show; grid_8 to grid_31: the grid of that type",
              {{OVOLUME_CHANNEL_VELOCITY, "velocity"},
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
          .later();
  Choice<VolumeSlicePlane> DISPLAY_SLICE_PLANE =
      cycle(1087, "DISPLAY_SLICE_PLANE", OVOLUME_SLICE_ACROSS_AXIS,
            {{OVOLUME_SLICE_ACROSS_AXIS, "across_axis"},
             {OVOLUME_SLICE_FACES_VIEWER, "faces_viewer"}},
            "The slice is perpendicular to the axis that points most towards the viewer, or faces "
            "the viewer")
          .later()
          .enabled_if(shows_slice);
  Real DISPLAY_SLICE_POSITION = real(1088, "DISPLAY_SLICE_POSITION", 0, -1, 1, "",
                                     "Position of the slice, from one end of the frame to the "
                                     "other")
                                    .later()
                                    .enabled_if(shows_slice);
  Gradient DISPLAY_GRADIENT =
      gradient(1090, "DISPLAY_GRADIENT", spectrum(0),
               "Color and opacity from display_range_min to display_range_max")
          .later();
  Real DISPLAY_RANGE_MIN = real(1140, "DISPLAY_RANGE_MIN", 0, -kUnbounded, kUnbounded, "",
                                "Value at the gradient's start")
                               .later()
                               .enabled_if(off(DISPLAY_AUTO_RANGE));
  Real DISPLAY_RANGE_MAX =
      real(1141, "DISPLAY_RANGE_MAX", 1, -kUnbounded, kUnbounded, "", "Value at the gradient's end")
          .later()
          .enabled_if(off(DISPLAY_AUTO_RANGE));
  Flag DISPLAY_AUTO_RANGE =
      flag(1237, "DISPLAY_AUTO_RANGE", false, "Take the range from each frame").later();
  Button MEASURE_RANGE =
      button(1293, "MEASURE_RANGE", "Sets the range to that of the frame that is shown")
          .later()
          .enabled_if(off(DISPLAY_AUTO_RANGE));
  Real DISPLAY_SLICE_RATE = real(1346, "DISPLAY_SLICE_RATE", 1, 0.001, 64, "per voxel",
                                 "Number of slices that draw the volume: more look smoother")
                                .later()
                                .enabled_if(shows_volume);
  Real DISPLAY_DENSITY =
      real(1347, "DISPLAY_DENSITY", 1, 0, kUnbounded, "", "How dense the volume is drawn")
          .later()
          .enabled_if(shows_volume);
  Flag DISPLAY_FILTER = flag(1353, "DISPLAY_FILTER", true,
                             "Interpolate between voxels; otherwise single voxels are visible")
                            .later();
  Flag DISPLAY_BOX = flag(1349, "DISPLAY_BOX", true, "Draw the edges of the domain").later();
  Flag DISPLAY_GRID =
      flag(1316, "DISPLAY_GRID", false, "Draw the voxels on the domain's sides as a checkerboard")
          .later();
  Link DISPLAY_FRAME_OBJECT =
      link(1368, "DISPLAY_FRAME_OBJECT", host::LinkTarget::Object,
           "Object in whose space the frame is drawn; none: where it was simulated")
          .later();
  Gradient PARTICLE_GRADIENT =
      gradient(1339, "PARTICLE_GRADIENT", spectrum(0.05), "Color and opacity of particles").later();

 private:
  /// Blue, cyan, green, yellow, red, whose opacity grows from `alpha` to 1.
  static host::Gradient spectrum(double alpha) {
    const host::Vector colors[] = {{0, 0, 1}, {0, 1, 1}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}};
    host::Gradient gradient;
    for (int i = 0; i < 5; ++i)
      gradient.knots.push_back({i / 4.0, colors[i], alpha + (1 - alpha) * i / 4.0});
    return gradient;
  }
};

/// Fields of the panel, about the frame at the document's time.
struct InfoParameters : VolumeGroup {
  InfoParameters() : VolumeGroup(Changes::kView) {}

  Text INFO_GRID = shown_text(1224, "INFO_GRID", "Size and position of the frame's grids");
  Text INFO_BYTES = shown_text(1225, "INFO_BYTES", "Size of the frame in memory");
  Text INFO_FRAME = shown_text(1226, "INFO_FRAME", "Number of the frame");
  Text INFO_FRAME_COUNT = shown_text(1227, "INFO_FRAME_COUNT", "Number of frames in the cache");
  Flag INFO_VELOCITY = mark(1228, "INFO_VELOCITY", "The frame contains velocity");
  Flag INFO_DENSITY = mark(1229, "INFO_DENSITY", "The frame contains density");
  Flag INFO_TEMPERATURE = mark(1230, "INFO_TEMPERATURE", "The frame contains temperature");
  Flag INFO_FUEL = mark(1231, "INFO_FUEL", "The frame contains fuel");
  Flag INFO_BURN = mark(1232, "INFO_BURN", "The frame contains burn");

 private:
  Flag mark(std::int32_t id, const char* name, const char* help) {
    return flag(id, name, false, help).shown();
  }
};

}  // namespace nbx
