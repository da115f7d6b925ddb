#include "cache/bfs.h"

#include <QDir>
#include <QFileInfo>
#include <utility>

#include "util/log.h"

namespace nbx {

BFS::~BFS() {
  Lock lock(mutex_);
  if (writer_.joinable()) {
    LogMessage() << "Terminating IOW";
    exit_ = true;
    due_.notify_all();
    lock.unlock();
    writer_.join();
    lock.lock();
  }
  removeAllSlots(lock);
}

std::string BFS::Place::file(int frame, int substep) const {
  const QDir dir(QString::fromStdString(directory));
  const QString name = QString::fromStdString(frame_file_name(prefix, frame, substep));
  return dir.absoluteFilePath(name).toStdString();
}

bool BFS::Place::readable() const {
  const QDir dir(QString::fromStdString(directory));
  return !directory.empty() && dir.exists() && dir.isReadable();
}

BFS::Place BFS::place() const { return {directory_, prefix_, codec, sync}; }

bool BFS::setDirectory(const std::string& directory) {
  Lock lock(mutex_);
  removeAllSlots(lock);  // dirty frames belong to the directory so far
  directory_ = directory;
  prefix_.clear();
  bytes_written_ = 0;
  frames_lost_ = 0;
  lost_frames_.clear();
  if (!place().readable()) return false;
  prefix_ = cache_prefix(directory_);
  LogMessage() << "Using cache directory " << directory_ << " prefix " << prefix_;
  return true;
}

std::string BFS::directory() const {
  const Lock lock(mutex_);
  return directory_;
}

std::string BFS::prefix() const {
  const Lock lock(mutex_);
  return prefix_;
}

std::string BFS::fileName(int frame, int substep) const {
  const Lock lock(mutex_);
  return place().file(frame, substep);
}

bool BFS::frameFile(int frame, int substep, std::string* path) const {
  Lock lock(mutex_);
  const Place here = place();
  lock.unlock();
  const std::string file = here.file(frame, substep);
  try {
    if (!here.readable() || !BcfFile().openRead(file)) return false;
  } catch (const BcfFormatError&) {
    return false;
  }
  if (path) *path = QDir::toNativeSeparators(QString::fromStdString(file)).toStdString();
  return true;
}

std::vector<int> BFS::frames() const {
  std::vector<int> numbers;
  for (const auto& [number, name] : list_frames(directory())) numbers.push_back(number);
  return numbers;
}

std::string BFS::last_error() const {
  const Lock lock(mutex_);
  return last_error_;
}

int BFS::frames_lost() const {
  const Lock lock(mutex_);
  return frames_lost_;
}

std::vector<LostFrame> BFS::take_lost_frames() {
  const Lock lock(mutex_);
  return std::exchange(lost_frames_, {});
}

double BFS::seconds_waited() const {
  const Lock lock(mutex_);
  return seconds_waited_;
}

std::uint64_t BFS::bytesWritten() const {
  const Lock lock(mutex_);
  return bytes_written_;
}

void BFS::recount_bytes(int last) {
  const std::string folder = directory();
  const QDir dir(QString::fromStdString(folder));
  std::uint64_t bytes = 0;
  for (const auto& [number, name] : list_frames(folder))
    if (number <= last)
      bytes += static_cast<std::uint64_t>(QFileInfo(dir, QString::fromStdString(name)).size());
  const Lock lock(mutex_);
  bytes_written_ = bytes;
}

}  // namespace nbx
