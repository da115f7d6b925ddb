#include <QFileInfo>
#include <algorithm>

#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"
#include "cache/grid_type.h"
#include "cache/sim_frame.h"
#include "render/slice_picture.h"

namespace nbx {

namespace {

constexpr std::int32_t kSliceCommand = 1023996;
constexpr int kPictureSize = 600;  // pixels along the longest side, about

const std::vector<std::string> kProjections{"none", "max", "mean", "smoke"};
const std::vector<std::string> kColors{"gray", "heat", "diverging"};

int index_of(const std::vector<std::string>& names, const std::string& name) {
  return static_cast<int>(std::find(names.begin(), names.end(), name) - names.begin());
}

/// Options that the user didn't give get values that suit the grid.
SliceOptions read_options(const host::CommandArguments& arguments, int grid_type,
                          const Vec3i& dims) {
  SliceOptions options = slice_options(grid_type);
  options.axis = arguments.GetString("axis", "z")[0] - 'x';
  if (arguments.Has("position")) {
    options.position = arguments.GetLong("position");
    options.projection = Projection::kNone;
  }
  if (arguments.Has("projection"))
    options.projection =
        static_cast<Projection>(index_of(kProjections, arguments.GetString("projection")));
  if (arguments.Has("colors"))
    options.colors = static_cast<ColorMap>(index_of(kColors, arguments.GetString("colors")));
  if (arguments.Has("max"))
    options.range = {static_cast<float>(arguments.GetReal("min")),
                     static_cast<float>(arguments.GetReal("max"))};
  if (arguments.Has("absorption"))
    options.absorption = static_cast<float>(arguments.GetReal("absorption"));
  options.gamma = static_cast<float>(arguments.GetReal("gamma", options.gamma));
  const int longest = std::max({dims[0], dims[1], dims[2]});
  options.scale = arguments.GetLong("scale", std::clamp(kPictureSize / longest, 1, 64));
  return options;
}

/// "cache/..._0000000040.bcf" gives "..._0000000040_density.png" in the current folder.
std::string default_output(const std::string& frame, const std::string& channel) {
  const QFileInfo file(QString::fromStdString(frame));
  return file.completeBaseName().toStdString() + "_" + channel + ".png";
}

std::string channels_of(const SimFrame& frame) {
  std::string names;
  for (const auto& [type, grid] : frame.grids) names += " " + grid_type_name(type);
  return names;
}

class SliceCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    using host::OptionType;
    return {
        .verb = "slice",
        .help = "Draws a slice or a projection of a channel as a picture",
        .options = {
            {.name = "frame",
             .value_name = "FRAME",
             .help = "A frame file of a cache",
             .positional = true,
             .required = true},
            {.name = "output",
             .value_name = "FILE",
             .help = "Picture to write; default: FRAME's name with the channel, in this folder"},
            {.name = "channel",
             .value_name = "NAME",
             .help = "density (default), temperature, velocity_x ...: the names that info shows"},
            {.name = "axis",
             .type = OptionType::Choice,
             .value_name = "AXIS",
             .help = "Look along x, y or z (default)",
             .choices = {"x", "y", "z"}},
            {.name = "position",
             .type = OptionType::Long,
             .value_name = "N",
             .help = "Index of the slice along the axis; default: the middle",
             .minimum = 0},
            {.name = "projection",
             .type = OptionType::Choice,
             .value_name = "KIND",
             .help = "none: one slice; others: the whole grid; default: what suits the channel",
             .choices = kProjections},
            {.name = "colors",
             .type = OptionType::Choice,
             .value_name = "MAP",
             .help = "Color map; default: what suits the channel",
             .choices = kColors},
            {.name = "min",
             .type = OptionType::Real,
             .value_name = "VALUE",
             .help = "Value at the low end of the colors, with --max (default 0)"},
            {.name = "max",
             .type = OptionType::Real,
             .value_name = "VALUE",
             .help = "Value at the high end of the colors; default: the largest in the picture"},
            {.name = "absorption",
             .type = OptionType::Real,
             .value_name = "VALUE",
             .help =
                 "Absorption of smoke per cell of density 1; default: chosen from the densest part",
             .minimum = 0},
            {.name = "gamma",
             .type = OptionType::Real,
             .value_name = "VALUE",
             .help = "Values above 1 brighten the dark parts (default 1)",
             .minimum = 0.01,
             .maximum = 100},
            {.name = "scale",
             .type = OptionType::Long,
             .value_name = "N",
             .help = "Pixels per cell; default: about 600 pixels along the longest side",
             .minimum = 1,
             .maximum = 64},
        }};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const std::string path = arguments.GetString("frame");
    const std::string channel = arguments.GetString("channel", "density");
    const std::optional<int> type = grid_type_from_name(channel);
    SimFrame frame;
    try {
      if (!frame.load(path)) return bad_input(context, path + " can't be read as a frame file");
      if (!type || !frame.grids.contains(*type))
        return bad_input(context,
                         path + " has no channel \"" + channel + "\", only" + channels_of(frame));
      const FieldHandle grid = frame.grid(*type);
      if (!grid) return bad_input(context, path + " can't be read");
      const QImage picture = slice_picture(*grid, read_options(arguments, *type, grid->dims()));
      return write(picture, arguments.GetString("output", default_output(path, channel)), context);
    } catch (const std::exception& e) {
      return bad_input(context, path + ": " + e.what());
    }
  }

 private:
  static int bad_input(host::CommandContext& context, const std::string& why) {
    context.Error(why);
    return host::kBadInput;
  }

  static int write(const QImage& picture, const std::string& output,
                   host::CommandContext& context) {
    if (const Outcome written = write_png(picture, output); !written) {
      context.Error(output + " can't be written: " + written.reason());
      return host::kFailed;
    }
    context.Result(output);
    context.Event("picture", {{"path", output},
                              {"width", std::int64_t{picture.width()}},
                              {"height", std::int64_t{picture.height()}}});
    return host::kDone;
  }
};

}  // namespace

bool register_slice_command(host::HostServices& services, const std::string& name) {
  return register_command<SliceCommand>(services, kSliceCommand, name);
}

}  // namespace nbx
