#include "host/render/files/picture_file.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

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

/// Runs `write` with the path of a file beside the picture's, whose ending stays the last, and puts
/// that one into the picture's place if `keep`. The file is gone afterwards in any case.
template <class Write>
void WriteBeside(const std::string& path, bool keep, const Write& write) {
  const fs::path whole(path);
  const fs::path part =
      whole.parent_path() / (whole.stem().string() + ".part" + whole.extension().string());
  std::string wrong;
  try {
    if (whole.has_parent_path()) fs::create_directories(whole.parent_path());
    write(part.string());
    if (keep) fs::rename(part, whole);
  } catch (const fs::filesystem_error& error) {
    wrong = error.code().message();
  } catch (const std::exception& error) {
    wrong = error.what();
  }
  std::error_code ignored;
  fs::remove(part, ignored);
  if (!wrong.empty()) throw std::runtime_error(path + " can't be written: " + wrong);
}

}  // namespace

void CheckWritable(const std::string& path) {
  if (fs::is_directory(path)) throw std::runtime_error(path + " can't be written: it is a folder");
  WriteBeside(path, false, [](const std::string& part) {
    if (!std::ofstream(part, std::ios::binary))
      throw std::runtime_error(std::generic_category().message(errno));
  });
}

void WritePicture(const Picture& picture, const PictureMetadata& metadata, PictureDepth depth,
                  double exposure, const std::string& path) {
  WriteBeside(path, true, [&](const std::string& part) {
    if (EndsWith(path, ".exr"))
      WriteExr(picture, metadata, depth, part);
    else
      WritePng(picture, metadata, exposure, part);
  });
}

}  // namespace host
