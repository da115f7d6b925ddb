#include "cache/frame_names.h"

#include <QCryptographicHash>
#include <QDir>
#include <QRegularExpression>
#include <cstdio>

namespace nbx {

namespace {

constexpr int kPrefixLength = 32;
constexpr char kFrameFiles[] = "*nbx_sim_cache_*.bcf";

}  // namespace

std::string frame_file_name(std::string_view prefix, int frame, int substep) {
  char number[32];
  if (substep < 1)
    std::snprintf(number, sizeof number, "%010d", frame);
  else
    std::snprintf(number, sizeof number, "%010d_%d", frame, substep);
  return std::string(prefix) + "nbx_sim_cache_" + number + ".bcf";
}

std::string cache_prefix(const std::string& directory) {
  const QDir dir(QString::fromStdString(directory));
  // Frames first: while there are frames, other files with a long name don't count.
  for (const char* filter : {kFrameFiles, "*.bcf"})
    for (const QString& name : dir.entryList({filter}, QDir::Files, QDir::Name))
      if (!name.startsWith("nbx") && name.size() > kPrefixLength)
        return name.left(kPrefixLength).toStdString();

  QString path = dir.absolutePath();
  if (path.startsWith('/')) path.remove(0, 1);
  return QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Md5).toHex().toStdString();
}

std::optional<int> frame_of_name(std::string_view name) {
  static const QRegularExpression pattern("^.*nbx_sim_cache_(-?[0-9]+)\\.bcf$");
  const auto match = pattern.match(QString::fromUtf8(name.data(), static_cast<int>(name.size())));
  if (!match.hasMatch()) return {};
  bool fits = false;
  const int frame = match.captured(1).toInt(&fits);
  if (!fits) return {};
  return frame;
}

std::map<int, std::string> list_frames(const std::string& directory) {
  std::map<int, std::string> frames;
  const QDir dir(QString::fromStdString(directory));
  for (const QString& entry : dir.entryList({kFrameFiles}, QDir::Files, QDir::Name)) {
    const std::string name = entry.toStdString();
    if (const auto frame = frame_of_name(name)) frames.emplace(*frame, name);
  }
  return frames;
}

}  // namespace nbx
