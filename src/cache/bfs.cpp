#include "cache/bfs.h"

#include <QDir>
#include <QFileInfo>
#include <utility>

#include "cache/store/frame_table.h"
#include "util/log.h"

namespace nbx {

using Lock = std::unique_lock<std::mutex>;

BFS::BFS() : table_(std::make_unique<Table>(*this)) {}
BFS::~BFS() = default;

BFS::Table::~Table() {
  Lock lock(mutex);
  if (writer.joinable()) {
    LogMessage() << "Terminating IOW";
    stopping = true;
    due.notify_all();
    lock.unlock();
    writer.join();
    lock.lock();
  }
  removeAllSlots(lock);
}

std::string BFS::Table::Place::file(int frame, int substep) const {
  const QDir dir(QString::fromStdString(directory));
  const QString name = QString::fromStdString(frame_file_name(prefix, frame, substep));
  return dir.absoluteFilePath(name).toStdString();
}

bool BFS::Table::Place::readable() const {
  const QDir dir(QString::fromStdString(directory));
  return !directory.empty() && dir.exists() && dir.isReadable();
}

bool BFS::setDirectory(const std::string& directory) {
  Table& table = *table_;
  Lock lock(table.mutex);
  table.removeAllSlots(lock);  // dirty frames belong to the old directory
  table.directory = directory;
  table.prefix.clear();
  table.bytes_written = 0;
  table.frames_lost = 0;
  table.lost_frames.clear();
  table.unsaved.clear();
  if (!table.place().readable()) return false;
  table.prefix = cache_prefix(directory);
  LogMessage() << "Using cache directory " << directory << " prefix " << table.prefix;
  return true;
}

std::string BFS::directory() const {
  const Lock lock(table_->mutex);
  return table_->directory;
}

std::string BFS::prefix() const {
  const Lock lock(table_->mutex);
  return table_->prefix;
}

std::string BFS::fileName(int frame, int substep) const {
  const Lock lock(table_->mutex);
  return table_->place().file(frame, substep);
}

bool BFS::frameFile(int frame, int substep, std::string* path) const {
  Lock lock(table_->mutex);
  const Table::Place place = table_->place();
  lock.unlock();
  const std::string file = place.file(frame, substep);
  try {
    if (!place.readable() || !BcfFile().openRead(file)) return false;
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

Outcome BFS::finish_writes() {
  Lock lock(table_->mutex);
  return table_->finish_writes(lock) ? Outcome::success() : Outcome::failure(table_->last_error);
}

void BFS::removeAllSlots() {
  Lock lock(table_->mutex);
  table_->removeAllSlots(lock);
}

bool BFS::is_saved(int frame) const {
  const Lock lock(table_->mutex);
  return !table_->unsaved.contains(frame);
}

int BFS::frames_lost() const {
  const Lock lock(table_->mutex);
  return table_->frames_lost;
}

std::vector<LostFrame> BFS::take_lost_frames() {
  const Lock lock(table_->mutex);
  return std::exchange(table_->lost_frames, {});
}

double BFS::seconds_waited() const {
  const Lock lock(table_->mutex);
  return table_->seconds_waited;
}

std::uint64_t BFS::bytesWritten() const {
  const Lock lock(table_->mutex);
  return table_->bytes_written;
}

void BFS::recount_bytes(int last) {
  const std::string folder = directory();
  const QDir dir(QString::fromStdString(folder));
  std::uint64_t bytes = 0;
  for (const auto& [number, name] : list_frames(folder))
    if (number <= last) bytes += QFileInfo(dir, QString::fromStdString(name)).size();
  const Lock lock(table_->mutex);
  table_->bytes_written = bytes;
}

}  // namespace nbx
