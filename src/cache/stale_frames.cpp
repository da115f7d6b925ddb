#include "cache/stale_frames.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <utility>
#include <vector>

#include "util/whole_file.h"

namespace nbx {

namespace {

using Range = std::pair<int, int>;  // first and last frame

std::string mark_file(const std::string& directory) { return directory + "/StaleFrames.json"; }

std::vector<Range> ranges_of(const std::set<int>& frames) {
  std::vector<Range> ranges;
  for (const int frame : frames)
    if (!ranges.empty() && ranges.back().second == frame - 1)
      ranges.back().second = frame;
    else
      ranges.emplace_back(frame, frame);
  return ranges;
}

std::string mark_text(const std::set<int>& frames) {
  QJsonArray ranges;
  for (const auto& [first, last] : ranges_of(frames)) ranges.append(QJsonArray{first, last});
  const QJsonObject mark{{"about", "The first and last numbers of frames from an earlier run."},
                         {"stale", ranges}};
  return QJsonDocument(mark).toJson().toStdString();
}

/// False if the text isn't that of a mark.
bool parse(std::vector<Range>& ranges, const QByteArray& text) {
  const QJsonValue stale = QJsonDocument::fromJson(text).object()["stale"];
  for (const auto& value : stale.toArray()) {
    const QJsonArray range = value.toArray();
    if (range.size() != 2 || !range[0].isDouble() || !range[1].isDouble()) return false;
    ranges.emplace_back(range[0].toInt(), range[1].toInt());
  }
  return stale.isArray();
}

}  // namespace

std::string frame_ranges(const std::set<int>& frames) {
  std::string text;
  for (const auto& [first, last] : ranges_of(frames)) {
    text += (text.empty() ? "" : ", ") + std::to_string(first);
    if (last > first) text += "-" + std::to_string(last);
  }
  return text;
}

std::string named_frames(const std::set<int>& frames) {
  return (frames.size() == 1 ? "frame " : "frames ") + frame_ranges(frames);
}

Outcome read_stale_frames(std::set<int>& frames, const std::string& directory) {
  frames.clear();
  const std::string path = mark_file(directory);
  QFile file(QString::fromStdString(path));
  if (!file.exists()) return Outcome::success();
  std::vector<Range> marked;
  if (!file.open(QFile::ReadOnly) || !parse(marked, file.readAll()))
    return Outcome::failure(path + ": the mark of stale frames can't be read");
  for (const auto& [frame, name] : list_frames(directory))
    if (std::any_of(marked.begin(), marked.end(), [frame = frame](const Range& range) {
          return range.first <= frame && frame <= range.second;
        }))
      frames.insert(frame);
  return Outcome::success();
}

std::set<int> stale_frames(const std::string& directory) {
  std::set<int> frames;
  return read_stale_frames(frames, directory) ? frames : std::set<int>();
}

std::set<int> own_frames(const std::string& directory) {
  std::set<int> frames;
  if (directory.empty()) return frames;
  const std::set<int> stale = stale_frames(directory);
  for (const auto& [frame, name] : list_frames(directory))
    if (!stale.contains(frame)) frames.insert(frame);
  return frames;
}

Outcome StaleMark::begin(int first) {
  marked_ = before_ = stale_frames(store_.directory());
  for (const int frame : store_.frames())
    if (frame >= first) marked_.insert(frame);
  return marked_ == before_ ? Outcome::success() : write();
}

void StaleMark::stored(int frame) {
  stored_any_ = true;
  if (marked_.contains(frame)) waiting_.insert(frame);
}

Outcome StaleMark::update() {
  const std::size_t before = marked_.size();
  std::erase_if(waiting_, [this](int frame) {
    const bool saved = store_.is_saved(frame);
    if (saved) marked_.erase(frame);
    return saved;
  });
  return marked_.size() == before ? Outcome::success() : write();
}

Outcome StaleMark::end() {
  if (stored_any_) return update();
  if (marked_ == before_) return Outcome::success();
  marked_ = before_;
  return write();
}

Outcome StaleMark::write() const {
  const std::string path = mark_file(store_.directory());
  if (!marked_.empty()) return write_whole(path, mark_text(marked_), store_.sync);
  QFile::remove(QString::fromStdString(path));
  // A mark that comes back after a power failure would mark new frames: wrong, but on the safe
  // side.
  return Outcome::success();
}

}  // namespace nbx
