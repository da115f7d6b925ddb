#include "cache/bfs.h"

#include <QDir>

#include "util/format_size.h"
#include "util/log.h"
#include "util/stopwatch.h"

namespace nbx {

bool BFS::readable() const {
  const QDir dir(QString::fromStdString(directory_));
  return !directory_.empty() && dir.exists() && dir.isReadable();
}

bool BFS::setDirectory(const std::string& directory) {
  directory_ = directory;
  if (!readable()) return false;
  prefix_ = cache_prefix(directory_);
  LogMessage() << "Using cache directory " << directory_ << " prefix " << prefix_;
  return true;
}

std::string BFS::fileName(int frame, int substep) const {
  const QDir dir(QString::fromStdString(directory_));
  const QString name = QString::fromStdString(frame_file_name(prefix_, frame, substep));
  return dir.absoluteFilePath(name).toStdString();
}

bool BFS::frameFile(int frame, int substep, std::string* path) const {
  const std::string file = fileName(frame, substep);
  try {
    if (!readable() || !BcfFile().openRead(file)) return false;
  } catch (const BcfFormatError&) {
    return false;
  }
  if (path) *path = QDir::toNativeSeparators(QString::fromStdString(file)).toStdString();
  return true;
}

std::vector<int> BFS::frames() const {
  std::vector<int> numbers;
  for (const auto& [number, name] : list_frames(directory_)) numbers.push_back(number);
  return numbers;
}

bool BFS::writeThrough(SimFrame& frame) {
  const int number = frame.frameTime.frame();
  frame.saved = false;
  if (!readable()) {
    lastError_ = "The cache directory " + directory_ + " can't be read.";
    LogMessage() << "IOW: NOT writing frame " << number;
    return false;
  }
  const std::string path = fileName(number, frame.substep);
  const Stopwatch watch;
  try {
    const std::uint64_t size = frame.write(path, codec);
    if (size == 0) {
      lastError_ = frame.error;
      LogMessage() << "IOW: Failed to write file " << path;
    }
    LogMessage() << "wrote frame " << number << "(" << format_size(size, 2) << ") in "
                 << watch.seconds();
    frame.saved = size > 0;
  } catch (const Exception& e) {
    lastError_ = e.what();
    LogMessage() << "Exception caught in BFS::storeSlot: " << e.what();
  } catch (const std::exception& e) {
    lastError_ = e.what();
    LogMessage() << "Unknown Exception caught in BFS::storeSlot";
  }
  return frame.saved;
}

}  // namespace nbx
