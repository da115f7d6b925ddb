#include <QDir>
#include <QFileInfo>

#include "C4D/commands/commands.h"
#include "C4D/commands/register_command.h"
#include "cache/cache_info.h"
#include "cache/grid_type.h"
#include "cache/stale_frames.h"
#include "util/format_size.h"

namespace nbx {

namespace {

constexpr std::int32_t kVerifyCommand = 1023997;

/// Reports each damaged record of a file on a line. True if there are none.
bool check(const std::string& path, std::uint64_t& bytes, host::CommandContext& context) {
  const FrameFileInfo info = read_frame_file_info(path, true);
  bytes += info.bytes;
  const auto damaged = [&](const std::string& where, const std::string& what) {
    context.Result(path + ": " + where + what);
    host::EventFields fields{{"path", path}, {"damage", what}};
    if (!where.empty()) fields.emplace_back("record", where.substr(0, where.size() - 2));
    context.Event("damaged", fields);
  };
  for (std::size_t i = 0; i < info.grids.size(); ++i)
    if (const GridInfo& grid = info.grids[i]; !grid.damage.empty())
      damaged("record " + std::to_string(i + 1) + " (" + grid_type_name(grid.head.gridType) + "): ",
              grid.damage);
  if (!info.damage.empty()) damaged("", info.damage);
  return info.good();
}

/// Reports frames that an earlier run has left, and returns their number. A mark that can't be read
/// counts as damage.
std::size_t check_mark(const std::string& cache, std::size_t& bad, host::CommandContext& context) {
  std::set<int> stale;
  if (const Outcome read = read_stale_frames(stale, cache); !read) {
    context.Result(read.reason());
    context.Event("damaged", {{"path", cache}, {"damage", read.reason()}});
    ++bad;
  }
  if (stale.empty()) return 0;
  context.Result(cache + ": " + named_frames(stale) +
                 (stale.size() == 1
                      ? " belongs to an earlier run: simulate it again or remove it"
                      : " belong to an earlier run: simulate them again or remove them"));
  context.Event("stale", {{"path", cache}, {"frames", frame_ranges(stale)}});
  return stale.size();
}

class VerifyCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    return {
        .verb = "verify",
        .help =
            "Reads all data of a frame file or a cache folder, and reports damage and frames that "
            "an earlier run has left",
        .options = {{.name = "path",
                     .value_name = "PATH",
                     .help = "A frame file or a cache folder",
                     .positional = true,
                     .required = true}}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const std::string path = arguments.GetString("path");
    std::vector<std::string> files;
    std::string cache;
    if (QFileInfo(QString::fromStdString(path)).isDir()) {
      cache = path;
      const QDir folder(QString::fromStdString(path));
      for (const QString& name : folder.entryList({"*.bcf"}, QDir::Files, QDir::Name))
        files.push_back(folder.filePath(name).toStdString());
      if (files.empty()) {
        context.Error(path + (folder.isReadable() ? " contains no frame files" : " can't be read"));
        return host::kBadInput;
      }
    } else if (QFileInfo::exists(QString::fromStdString(path))) {
      files = {path};
    } else {
      context.Error(path + " doesn't exist");
      return host::kBadInput;
    }
    return check_all(files, cache, context);
  }

 private:
  /// `folder` is that of a cache, or empty.
  static int check_all(const std::vector<std::string>& files, const std::string& folder,
                       host::CommandContext& context) {
    std::size_t done = 0, bad = 0;
    std::uint64_t bytes = 0;
    for (const std::string& file : files) {
      if (context.Interrupts() > 0) return host::kInterrupted;
      bad += check(file, bytes, context) ? 0 : 1;
      context.Progress(std::to_string(++done) + " of " + std::to_string(files.size()) + " files",
                       false);
    }
    const std::size_t stale = folder.empty() ? 0 : check_mark(folder, bad, context);
    context.Result(std::to_string(files.size()) + " files, " + format_size(bytes, 2) + ": " +
                   (bad == 0 ? "no damage" : std::to_string(bad) + " damaged") +
                   (stale == 0 ? "" : ", " + std::to_string(stale) + " from an earlier run"));
    context.Event("verified", {{"files", static_cast<std::int64_t>(files.size())},
                               {"damaged", static_cast<std::int64_t>(bad)},
                               {"stale", static_cast<std::int64_t>(stale)},
                               {"bytes", static_cast<std::int64_t>(bytes)}});
    return bad == 0 && stale == 0 ? host::kDone : host::kFailed;
  }
};

}  // namespace

bool register_verify_command(host::HostServices& services, const std::string& name) {
  return register_command<VerifyCommand>(services, kVerifyCommand, name);
}

}  // namespace nbx
