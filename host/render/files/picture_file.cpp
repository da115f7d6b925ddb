#include "host/render/files/picture_file.h"

#include <filesystem>
#include <stdexcept>

#include "host/base/whole_file.h"

namespace host {
namespace {

namespace fs = std::filesystem;

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

std::string WhatIsWrongWithPath(const std::string& path) {
  if (EndsWith(path, ".exr") || EndsWith(path, ".png")) return {};
  return "pictures end in .exr or .png";
}

std::string PathOfFrame(const std::string& pattern, std::int32_t frame, bool several) {
  std::size_t end = pattern.find_last_of('#');
  std::size_t begin = end;
  if (end == std::string::npos) {
    if (!several) return pattern;
    const std::size_t point = pattern.find_last_of('.');
    return PathOfFrame(pattern.substr(0, point) + ".####" + pattern.substr(point), frame, several);
  }
  while (begin > 0 && pattern[begin - 1] == '#') --begin;
  const std::string digits = std::to_string(std::abs(static_cast<std::int64_t>(frame)));
  const std::size_t width = ++end - begin;
  const std::string zeros(digits.size() < width ? width - digits.size() : 0, '0');
  return pattern.substr(0, begin) + (frame < 0 ? "-" : "") + zeros + digits + pattern.substr(end);
}

namespace {

/// Runs `write` and adds the path to what it throws.
template <class Write>
void Writing(const std::string& path, const Write& write) {
  const auto fail = [&path](const std::string& why) {
    throw std::runtime_error(path + " can't be written: " + why);
  };
  try {
    const WholeFile file(path);
    file.MakeFolder();
    write(file);
  } catch (const fs::filesystem_error& error) {
    fail(error.code().message());
  } catch (const std::exception& error) {
    fail(error.what());
  }
}

}  // namespace

void CheckWritable(const std::string& path) {
  if (fs::is_directory(path)) throw std::runtime_error(path + " can't be written: it is a folder");
  Writing(path, [](const WholeFile& file) { file.Write(""); });
}

void WritePicture(const Picture& picture, const PictureMetadata& metadata, PictureDepth depth,
                  double exposure, const std::string& path) {
  Writing(path, [&](const WholeFile& file) {
    if (EndsWith(path, ".exr"))
      WriteExr(picture, metadata, depth, file.Part());
    else
      WritePng(picture, metadata, exposure, file.Part());
    file.Commit();
  });
}

}  // namespace host
