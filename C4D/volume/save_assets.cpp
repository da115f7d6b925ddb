#include "C4D/volume/save_assets.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/load_string.h"
#include "C4D/settings/volume_cache.h"
#include "util/log.h"

namespace nbx {

namespace {

constexpr std::int32_t kCollectCommand = 1024000;
constexpr char kCaches[] = "nbx4d_caches";

/// Hands the message to an object and all that lies under and behind it.
void tell(host::BaseObject* object, host::SaveAssets& assets) {
  for (; object; object = object->GetNext()) {
    object->Message(host::kMessageSaveAssets, &assets);
    tell(object->GetDown(), assets);
  }
}

class CollectCommand final : public host::CommandData {
 public:
  host::CommandInfo GetInfo() const override {
    return {.verb = "collect",
            .help =
                "Saves a scene into a folder, with copies of its caches, meshes, pictures and "
                "all other files that it names",
            .options = {{.name = "scene",
                         .value_name = "SCENE",
                         .help = "The scene document",
                         .positional = true,
                         .required = true},
                        {.name = "output",
                         .value_name = "DIR",
                         .help = "The folder, made if missing",
                         .required = true}},
            .common = {host::CommonOption::Set, host::CommonOption::Force}};
  }

  int Execute(const host::CommandArguments& arguments, host::CommandContext& context) override {
    const auto document = context.LoadDocument({arguments.GetString("scene")});
    if (!document) return host::kBadInput;
    const QDir folder(QString::fromStdString(arguments.GetString("output")));
    if (!folder.mkpath(".")) {
      context.Error("--output: the folder " + folder.path().toStdString() + " can't be made");
      return host::kBadInput;
    }
    host::SaveAssets assets{
        .folder = {folder.absolutePath().toStdString()}, .progress = [&](int done, int total) {
          context.Progress(std::to_string(done) + " of " + std::to_string(total) + " files", false);
        }};
    tell(document->GetFirstObject(), assets);
    for (const std::string& failure : context.CollectFiles(*document, assets.folder))
      assets.failures.push_back(failure);
    for (const std::string& failure : assets.failures) context.Error(failure);
    const QFileInfo scene(QString::fromStdString(arguments.GetString("scene")));
    const std::string path =
        folder.absoluteFilePath(scene.completeBaseName() + ".json").toStdString();
    if (!context.SaveDocument(*document, {path})) return host::kBadInput;
    context.Result("scene: " + path);
    context.Event("collected", {{"scene", path}, {"failures", assets.failures}});
    return assets.failures.empty() ? host::kDone : host::kFailed;
  }
};

}  // namespace

namespace {

/// The first of "smoke", "smoke 2" ... in the folder that nobody else has.
template <class IsFree>
CacheDirData free_place(const std::string& base, const std::string& name, IsFree is_free) {
  CacheDirData place{base, name};
  for (int n = 2; !is_free(base + "/" + place.name); ++n)
    place.name = name + " " + std::to_string(n);
  return place;
}

bool is_taken(const host::SaveAssets& assets, const std::string& folder) {
  return std::any_of(assets.copies.begin(), assets.copies.end(),
                     [&folder](const auto& copy) { return copy.second == folder; });
}

/// A cache that is yet to be simulated goes into the project too.
void save_empty_cache(host::BaseObject& volume, const QDir& project, host::SaveAssets& assets) {
  const std::string named = named_cache(volume);
  const std::string base = project.absoluteFilePath(kCaches).toStdString();
  if (cache_dir_data(volume).base.empty() || named.empty()) return;
  const auto [copy, is_new] = assets.copies.try_emplace(named);
  if (is_new) {
    const CacheDirData place =
        free_place(base, cache_dir_data(volume).name, [&](const std::string& folder) {
          return !is_taken(assets, folder) && !QFileInfo::exists(QString::fromStdString(folder));
        });
    copy->second = place.base + "/" + place.name;
  }
  volume.GetDataInstance().SetFilename(OVOLUME_CACHE_NAME, {copy->second});
}

}  // namespace

void save_cache(host::BaseObject& volume, host::SaveAssets& assets) {
  const QDir project(QString::fromStdString(assets.folder.path));
  const auto store = volume_cache(volume, false);
  if (!store) return save_empty_cache(volume, project, assets);
  const std::string source = store->directory(), name = volume.GetName();
  if (source.starts_with(project.absolutePath().toStdString() + "/")) return;
  const auto copied = assets.copies.find(source);
  if (copied != assets.copies.end()) {
    volume.GetDataInstance().SetFilename(OVOLUME_CACHE_NAME, {copied->second});
    return;
  }
  const CacheDirData copy = free_place(
      project.absoluteFilePath(kCaches).toStdString(),
      QDir(QString::fromStdString(source)).dirName().toStdString(), [&](const std::string& folder) {
        return !is_taken(assets, folder) && store->copy_fits(folder);
      });
  if (!project.mkpath(kCaches)) {
    LogMessage() << "Failed to create cache directory in " << assets.folder.path;
    assets.failures.push_back("volume \"" + name + "\": " + load_string(10009) + ": " +
                              load_string(10012) + " (" + copy.base + ")");
  } else if (!store->copyDir(copy.base, assets.progress, copy.name)) {
    assets.failures.push_back("volume \"" + name + "\": the cache " + source +
                              " can't be copied to " + copy.base);
  } else {
    assets.copies[source] = copy.base + "/" + copy.name;
    set_cache_dir_data(volume, copy);
  }
}

bool register_collect_command(host::HostServices& services, const std::string& name) {
  return services.RegisterCommandPlugin(
      kCollectCommand, name,
      []() -> std::unique_ptr<host::CommandData> { return std::make_unique<CollectCommand>(); });
}

}  // namespace nbx
