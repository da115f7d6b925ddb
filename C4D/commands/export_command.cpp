#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "C4D/commands/commands.h"
#include "C4D/commands/frame_exporter.h"
#include "C4D/commands/register_command.h"
#include "C4D/commands/vdb_options.h"
#include "cache/frame_names.h"

namespace nbx {

namespace {

constexpr std::int32_t kExportCommand = 1023998;

/// The frame files that PATH names, by frame.
std::map<int, std::string> frame_files(const std::string& path,
                                       const std::vector<std::int32_t>& wanted) {
  const QString name = QString::fromStdString(path);
  std::map<int, std::string> files;
  if (QFileInfo(name).isDir()) {
    for (const auto& [frame, file] : list_frames(path))
      if (wanted.empty() || std::binary_search(wanted.begin(), wanted.end(), frame))
        files[frame] = QDir(name).filePath(QString::fromStdString(file)).toStdString();
  } else if (QFileInfo(name).isFile()) {
    files[frame_of_name(path).value_or(0)] = path;
  }
  return files;
}

/// "smoke.cache" and frame 7 give "smoke.0007" in the output folder.
std::string stem_of(const std::string& path, const std::string& output, int frame) {
  QFileInfo source(QDir::cleanPath(QString::fromStdString(path)));
  if (!source.isDir()) source.setFile(source.absolutePath());
  const QString number = QString("%1").arg(frame, 4, 10, QChar('0'));
  const QString name = QFileInfo(source.absoluteFilePath()).completeBaseName() + "." + number;
  return QDir(QString::fromStdString(output)).filePath(name).toStdString();
}

std::vector<host::OptionInfo> export_options() {
  using host::OptionType;
  std::vector<host::OptionInfo> options{
      {.name = "path",
       .value_name = "PATH",
       .help = "A cache folder or a frame file",
       .positional = true,
       .required = true},
      {.name = "format",
       .type = OptionType::Choice,
       .value_name = "FORMAT",
       .help = "vdb (default), or raw: the floats of each grid, with a description in JSON",
       .choices = {"vdb", "raw"}},
      {.name = "output",
       .value_name = "DIR",
       .help = "Folder for the files; created if it is missing",
       .required = true},
      {.name = "staggered",
       .type = OptionType::Flag,
       .help = "Velocity on the faces of voxels, as simulated, instead of at their centers"},
      {.name = "half",
       .type = OptionType::Flag,
       .help = "Write 16-bit floats: half the size, less precision, values up to 65504"},
      {.name = "solid",
       .type = OptionType::Flag,
       .help = "Also export the channel solid: squared distances to solids in squared voxels, at "
               "most 3, negative inside"}};
  for (const host::OptionInfo& option : vdb_options()) options.push_back(option);
  return options;
}

/// With --solid, or with a name for the channel.
bool wants_solid(const host::CommandArguments& arguments) {
  const auto& names = arguments.GetStrings("name");
  return arguments.Has("solid") ||
         std::any_of(names.begin(), names.end(), [](const std::string& word) {
           return word.starts_with("solid=") && word != "solid=";
         });
}

class ExportCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    return {.verb = "export",
            .help = "Writes frames for other programs, as OpenVDB or as plain arrays",
            .options = export_options(),
            .common = {host::CommonOption::Frames}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    ExportOptions options;
    if (!read_vdb_options(options.vdb, arguments, context)) return host::kBadInput;
    options.vdb.staggered = arguments.Has("staggered");
    options.vdb.half = arguments.Has("half");
    options.raw = arguments.GetString("format", "vdb") == "raw";
    options.solid = wants_solid(arguments);
    if (!options.solid) options.vdb.names.erase(kGridSolid);
    if (!options.raw && !has_vdb()) {
      context.Error("this build has no OpenVDB; use --format raw");
      return host::kBadInput;
    }
    const std::string path = arguments.GetString("path"), output = arguments.GetString("output");
    const auto files = frame_files(path, arguments.GetFrames("frames"));
    if (files.empty()) {
      context.Error(path + " contains none of the frames");
      return host::kBadInput;
    }
    if (!QDir().mkpath(QString::fromStdString(output))) {
      context.Error("--output: the folder " + output + " can't be created");
      return host::kBadInput;
    }
    FrameExporter exporter(options, context);
    std::size_t done = 0, failed = 0;
    for (const auto& [number, file] : files) {
      if (context.Interrupts() > 0) return host::kInterrupted;
      failed += exporter.write(file, stem_of(path, output, number)) ? 0 : 1;
      context.Progress("frame " + std::to_string(number) + " (" + std::to_string(++done) + " of " +
                           std::to_string(files.size()) + ")",
                       true);
    }
    exporter.warn(output);
    context.Result(std::to_string(done - failed) + " frames in " + output);
    context.Event("exported", {{"frames", static_cast<std::int64_t>(done - failed)},
                               {"failed", static_cast<std::int64_t>(failed)},
                               {"directory", output}});
    return failed == 0 ? host::kDone : host::kFailed;
  }
};

}  // namespace

bool register_export_command(host::HostServices& services, const std::string& name) {
  return register_command<ExportCommand>(services, kExportCommand, name);
}

}  // namespace nbx
