#include "C4D/commands/import_vdb.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <optional>
#include <set>

#include "C4D/commands/info_vdb.h"
#include "C4D/commands/vdb_options.h"
#include "C4D/services/host_conversion.h"
#include "cache/cache_directories.h"
#include "cache/cache_registry.h"
#include "cache/slot_handle.h"

namespace nbx {

namespace {

std::vector<std::string> vdb_files(const std::string& path) {
  const QString name = QString::fromStdString(path);
  if (!QFileInfo(name).isDir()) return {path};
  std::vector<std::string> files;
  const QDir folder(name);
  for (const QString& file : folder.entryList({"*.vdb"}, QDir::Files, QDir::Name))
    files.push_back(folder.filePath(file).toStdString());
  return files;
}

/// The last digits of "smoke.-012.vdb", or 0.
int number_in_name(const std::string& file) {
  static const QRegularExpression digits("(?<![0-9])(-?[0-9]+)[^0-9]*$");
  const QString name = QFileInfo(QString::fromStdString(file)).completeBaseName();
  return digits.match(name).captured(1).toInt();
}

class Importer {
 public:
  Importer(std::shared_ptr<BFS> store, const VdbOptions& options,
           const std::optional<host::FrameRate>& fps, host::CommandContext& context)
      : store_(std::move(store)),
        options_(options),
        names_(known_vdb_names(options)),
        fps_(fps),
        context_(context) {}

  /// False, after an error, if the file can't be imported.
  bool import(const std::string& path) {
    try {
      SimFrame frame;
      frame.simTime.length = {0, 1};  // unless the file has one
      const VdbContent content = read_vdb(frame, path, names_, options_);
      for (const std::string& name : content.left_out)
        if (warned_.insert(name).second)
          context_.Warning("the grid \"" + name +
                           "\" isn't imported; use --name to assign a channel");
      const int number = frame_number(content, path);
      if (!numbers_.insert(number).second)
        throw Exception("another file is frame " + std::to_string(number) + " too");
      set_times(frame, number, content);
      SlotHandle slot = SlotHandle::for_storing(store_, number, 0);
      slot->grids = std::move(frame.grids);
      slot->simTime = frame.simTime;
      slot->frameTime = frame.frameTime;
      slot.stored();
      context_.Progress("frame " + std::to_string(number), true);
      return true;
    } catch (const std::exception& e) {
      context_.Error(path + ": " + e.what());
    }
    return false;
  }

 private:
  static int frame_number(const VdbContent& content, const std::string& path) {
    const auto found = content.numbers.find("frame");
    return found == content.numbers.end() ? number_in_name(path) : static_cast<int>(found->second);
  }

  static host::FrameRate rate_in_file(const VdbContent& content) {
    const auto found = content.numbers.find("frames_per_second");
    if (found == content.numbers.end()) return {};
    std::string error;
    const auto rate = host::FrameRate::FromReal(found->second, error);
    if (!rate) throw Exception("its rate " + error + "; give the right rate with --fps");
    return *rate;
  }

  void set_times(SimFrame& frame, int number, const VdbContent& content) const {
    frame.frameTime = frame_time(number, fps_ ? *fps_ : rate_in_file(content));
    if (frame.simTime.length.num == 0) frame.simTime = frame.frameTime;
  }

  const std::shared_ptr<BFS> store_;
  const VdbOptions options_;
  const std::map<std::string, int> names_;
  const std::optional<host::FrameRate> fps_;  // overrides that of the files
  host::CommandContext& context_;
  std::set<int> numbers_;
  std::set<std::string> warned_;
};

std::shared_ptr<BFS> open_target(const host::CommandArguments& arguments,
                                 host::CommandContext& context) {
  const std::string directory = arguments.GetString("cache");
  std::shared_ptr<BFS> store;
  if (directory.empty())
    context.Error("give --cache, the folder for the frames");
  else if (cache_locked(directory))
    context.Error("the cache " + directory + " is locked");
  else if (!QDir().mkpath(QString::fromStdString(directory)) || !(store = getCache(directory)))
    context.Error("the cache folder " + directory + " can't be created");
  if (store && arguments.GetString("codec", "run-length") == "predictive")
    store->codec = Codec::kPredictive;
  return store;
}

}  // namespace

std::vector<host::OptionInfo> import_vdb_options() {
  using host::OptionType;
  std::vector<host::OptionInfo> options{
      {.name = "fps",
       .type = OptionType::Rate,
       .value_name = "RATE",
       .help =
           "Frames per second (25, 29.97, 30000/1001) of a VDB sequence, default: the rate in its "
           "files, or 25; or of a model's animation"},
      {.name = "codec",
       .type = OptionType::Choice,
       .value_name = "CODEC",
       .help = "Codec of the cache: run-length (default), or predictive: smaller and slower",
       .choices = {"run-length", "predictive"}}};
  for (const host::OptionInfo& option : vdb_options()) options.push_back(option);
  return options;
}

bool is_vdb_path(const std::string& path) {
  return QFileInfo(QString::fromStdString(path)).isDir() || is_vdb_file(path);
}

host::ExitCode import_vdb(const std::string& path, const host::CommandArguments& arguments,
                          host::CommandContext& context) {
  VdbOptions options;
  if (!read_vdb_options(options, arguments, context)) return host::kBadInput;
  if (!has_vdb()) {
    context.Error("this build has no OpenVDB, so it can't import .vdb files");
    return host::kBadInput;
  }
  const std::vector<std::string> files = vdb_files(path);
  if (files.empty()) {
    context.Error(path + " contains no .vdb files");
    return host::kBadInput;
  }
  const std::shared_ptr<BFS> store = open_target(arguments, context);
  if (!store) return host::kBadInput;

  Importer importer(store, options, arguments.GetRate("fps"), context);
  std::size_t done = 0;
  bool interrupted = false;
  for (const std::string& file : files) {
    if ((interrupted = context.Interrupts() > 0)) break;
    done += importer.import(file) ? 1 : 0;
  }
  const Outcome saved = store->finish_writes();
  if (!saved) context.Error(saved.reason());
  const std::vector<LostFrame> lost = store->take_lost_frames();
  for (const LostFrame& frame : lost)
    context.Error("frame " + std::to_string(frame.frame) + " is not stored: " + frame.error);
  context.Result(std::to_string(done - lost.size()) + " frames in " + store->directory());
  context.Event("imported", {{"frames", static_cast<std::int64_t>(done - lost.size())},
                             {"directory", store->directory()}});
  if (interrupted) return host::kInterrupted;
  if (done == files.size() && lost.empty() && saved) return host::kDone;
  return done == 0 ? host::kBadInput : host::kFailed;
}

}  // namespace nbx
