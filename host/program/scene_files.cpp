#include "host/program/scene_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <system_error>
#include <utility>

#include "host/base/document_error.h"
#include "host/base/nearest_name.h"
#include "host/base/whole_file.h"
#include "host/model/model_file.h"
#include "host/scene/image_texture.h"

namespace host {
namespace {

namespace fs = std::filesystem;

bool IsInside(const fs::path& file, const fs::path& folder) {
  const fs::path way = file.lexically_relative(folder);
  return !way.empty() && *way.begin() != "..";
}

bool SameBytes(const fs::path& a, const fs::path& b) {
  std::error_code error;
  if (!fs::is_regular_file(b, error) || fs::file_size(a) != fs::file_size(b)) return false;
  std::ifstream first(a, std::ios::binary), second(b, std::ios::binary);
  using Bytes = std::istreambuf_iterator<char>;
  return first && second && std::equal(Bytes(first), Bytes(), Bytes(second), Bytes());
}

void CopyFile(const fs::path& from, const fs::path& to) {
  if (fs::exists(to)) return;
  const WholeFile copy(to.string());
  copy.MakeFolder();
  fs::copy_file(from, copy.Part(), fs::copy_options::overwrite_existing);
  copy.Commit();
}

/// "ball.obj", "ball 2.obj", "ball 3.obj" ...
fs::path Numbered(const fs::path& file, int number) {
  if (number == 1) return file;
  return file.parent_path() /
         (file.stem().string() + " " + std::to_string(number) + file.extension().string());
}

/// The file and, for a model, all files that it refers to.
std::vector<fs::path> FilesOf(const fs::path& file) {
  std::vector<fs::path> all = {file};
  if (!IsModelName(file.string())) return all;
  try {
    const ModelFile model(file.string(), true);
    for (const std::string& other : model.Files())
      if (other != file) all.emplace_back(other);
  } catch (const DocumentError&) {
    // A file that can't be read as a model refers to nothing.
  }
  return all;
}

/// The innermost folder that holds all files.
fs::path CommonFolder(const std::vector<fs::path>& files) {
  fs::path folder = files.front().parent_path();
  while (!std::all_of(files.begin(), files.end(),
                      [&](const fs::path& file) { return IsInside(file, folder); }))
    folder = folder.parent_path();
  return folder;
}

class FileCollector {
 public:
  FileCollector(Document& document, fs::path folder)
      : document_(document), folder_(std::move(folder)) {}

  std::vector<std::string> Run() {
    Collect(document_.GetActiveRenderData().State(), "render");
    CollectRow(document_.Materials(), "materials");
    CollectRow(document_.Shaders(), "textures");
    CollectRow(document_.VideoPosts(), "post_effects");
    for (SceneObject* object : document_.AllObjects()) {
      Collect(object->State(), document_.PlaceOf(*object));
      CollectRow(object->Tags(), document_.PlaceOf(*object) + ".tags");
    }
    document_.folder = folder_.string();
    return std::move(failures_);
  }

 private:
  template <class Row>
  void CollectRow(const Row& row, const std::string& name) {
    for (std::size_t i = 0; i < row.size(); ++i)
      Collect(row[i]->State(), name + "[" + std::to_string(i) + "]");
  }

  void Collect(ElementState& element, const std::string& place) {
    for (const ParameterInfo& info : element.type->description.parameters) {
      if (info.type != ParameterType::Filename || !element.data.Find(info.id)) continue;
      const std::string path = document_.Resolve(element.data.GetFilename(info.id)).path;
      if (path.empty()) continue;
      const std::size_t end = path.size() - PictureNumber(path).size();
      const std::string file = NewPlace(path.substr(0, end), place + ".parameters." + info.Name());
      element.data.SetFilename(info.id, {file + path.substr(end)});
    }
  }

  /// The path relative to the folder, or the old path if the file can't be copied.
  std::string NewPlace(const fs::path& file, const std::string& place) {
    try {
      if (IsInside(file, folder_)) return file.lexically_relative(folder_).string();
      if (fs::is_directory(file)) return file.string();  // the owner of the folder copies it
      if (fs::is_regular_file(file)) return Copied(file).lexically_relative(folder_).string();
      failures_.push_back(place + ": there is no file " + Quoted(file.string()));
    } catch (const fs::filesystem_error& error) {
      failures_.push_back(place + ": " + Quoted(file.string()) +
                          " can't be copied: " + error.code().message());
    } catch (const DocumentError& error) {
      failures_.push_back(place + ": " + error.what());
    }
    return file.string();
  }

  fs::path Copied(const fs::path& file) {
    const auto found = copies_.find(file);
    if (found != copies_.end()) return found->second;
    const std::vector<fs::path> files = FilesOf(file);
    const fs::path root = CommonFolder(files);
    // A single file goes directly into "files", several files go into a subfolder.
    fs::path wanted = folder_ / "files" / (files.size() > 1 ? file.stem() : file.filename());
    const auto target = [&](const fs::path& each, const fs::path& place) {
      return files.size() > 1 ? place / each.lexically_relative(root) : place;
    };
    fs::path place = wanted;
    const auto is_free = [&](const fs::path& each) {
      const fs::path to = target(each, place);
      return !fs::exists(to) || SameBytes(each, to);
    };
    for (int n = 2; !std::all_of(files.begin(), files.end(), is_free); ++n)
      place = Numbered(wanted, n);
    for (const fs::path& each : files) CopyFile(each, target(each, place));
    const fs::path copy = target(file, place);
    if (files.size() > 1) CheckReferences(copy, place);
    return copies_[file] = copy;
  }

  /// A model that refers to files by absolute paths would still read the old ones.
  static void CheckReferences(const fs::path& copy, const fs::path& folder) {
    const ModelFile model(copy.string(), true);
    for (const std::string& file : model.Files())
      if (!IsInside(file, folder))
        throw DocumentError(Quoted(copy.string()) + " refers to " + Quoted(file) +
                            " by its full path; export the model with relative paths");
  }

  Document& document_;
  const fs::path folder_;
  std::map<fs::path, fs::path> copies_;
  std::vector<std::string> failures_;
};

}  // namespace

std::vector<std::string> CollectFiles(Document& document, const std::string& folder) {
  fs::path place = fs::absolute(folder).lexically_normal();
  if (!place.has_filename()) place = place.parent_path();
  return FileCollector(document, std::move(place)).Run();
}

}  // namespace host
