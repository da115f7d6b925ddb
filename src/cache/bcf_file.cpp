#include "cache/bcf_file.h"

#include <QFile>
#include <QFileInfo>
#include <QString>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>

#include <sys/stat.h>

#include "cache/codecs/predictive_codec.h"
#include "cache/codecs/run_length_codec.h"
#include "util/log.h"

namespace nbx {

namespace {

/// Whether the file has other names too, as frames have that caches share.
bool is_shared(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink > 1;
}

}  // namespace

BcfFile::BcfFile() : file_(std::make_unique<QFile>()) {}
BcfFile::~BcfFile() = default;

// Without QFile's buffer: reading a head reads no byte of the payload, payloads need no copy, and a
// failed write is reported at once.
Outcome BcfFile::open(const std::string& path, Mode mode) {
  drop();
  file_->setFileName(QString::fromStdString(path));
  const auto how = mode == Mode::kReading ? QFile::ReadOnly : QFile::WriteOnly | QFile::Truncate;
  if (!file_->open(how | QFile::Unbuffered)) return file_error();
  mode_ = mode;
  damaged_ = false;
  next_ = kBcfHeaderSize;
  return Outcome::success();
}

void BcfFile::drop() {
  mode_ = Mode::kClosed;
  if (file_->isOpen()) file_->close();
}

// The version makes it a frame file, so it goes to the disk after everything else.
Outcome BcfFile::finish() {
  if (damaged_) return Outcome::failure("a write failed before");
  if (Outcome synced = sync(); !synced) return synced;
  if (!file_->seek(kBcfVersionAt) || !file_->putChar(kBcfHeader.back())) return file_error();
  return sync();
}

Outcome BcfFile::sync() {
  if (sync_ == Sync::kNone) return Outcome::success();
  bool synced = sync_data(file_->handle());
  if (synced && made_) synced = sync_folder(folder_of(file_->fileName().toStdString()));
  made_ = false;
  return synced ? Outcome::success() : Outcome::failure(std::strerror(errno));
}

Outcome BcfFile::close() {
  if (!file_->isOpen()) return Outcome::success();
  Outcome done = mode_ == Mode::kWriting ? finish() : Outcome::success();
  drop();
  if (done && file_->error() != QFile::NoError) return file_error();
  return done;
}

void BcfFile::discard() {
  drop();
  // Anything else of that name, such as a device, isn't ours to remove.
  if (QFileInfo(*file_).isFile()) file_->remove();
}

Outcome BcfFile::file_error() const { return Outcome::failure(file_->errorString().toStdString()); }

Outcome BcfFile::openRead(const std::string& path) {
  if (Outcome opened = open(path, Mode::kReading); !opened) return opened;
  std::array<char, kBcfHeaderSize> header{};
  file_->read(header.data(), header.size());
  if (!std::equal(header.begin(), header.end() - 1, kBcfHeader.begin())) {
    drop();
    const std::string text = "Unrecognized file format for '" + path + "'";
    LogMessage() << text;
    throw BcfFormatError(text);
  }
  if (const int version = header.back() & 0x7f; version != kBcfHeader.back()) {
    drop();
    const std::string text = "Unsupported BCF file format version for '" + path + "'";
    LogMessage() << text;
    throw BcfFormatError(text + (version == 0 ? ": unfinished, its writer ended half-way" : ""));
  }
  return Outcome::success();
}

Outcome BcfFile::create(const std::string& path, Sync sync) {
  sync_ = sync;
  if (is_shared(path) && !QFile::remove(QString::fromStdString(path)))
    return Outcome::failure("it is shared with another cache and can't be replaced");
  made_ = sync == Sync::kDisk && !QFile::exists(QString::fromStdString(path));
  if (Outcome opened = open(path, Mode::kWriting); !opened) return opened;
  auto header = kBcfHeader;
  header[kBcfVersionAt] = 0;
  Outcome written = write(header.data(), header.size());
  if (!written) discard();
  return written;
}

// A full disk accepts a part first; only the next write reports the reason.
Outcome BcfFile::write(const char* data, std::size_t size) {
  while (size > 0) {
    const qint64 written = file_->write(data, size);
    if (written <= 0) {
      damaged_ = true;
      return file_error();
    }
    data += written;
    size -= written;
  }
  return Outcome::success();
}

Outcome BcfFile::addGrid(int gridType, Codec codec, const FrameTime& simTime,
                         const FrameTime& frameTime, const Vec3i& offset,
                         const GridMatrix& gridMatrix, const Field<float>& field) {
  // A type that doesn't fit into a byte stays invalid.
  const auto type = static_cast<std::uint8_t>(std::clamp(gridType, 0, 255));
  return add_payload({0, type, static_cast<std::uint8_t>(codec), simTime, frameTime, offset,
                      field.dims(), gridMatrix},
                     encode_grid(buffer_, codec, field));
}

Outcome BcfFile::add_grids(const std::vector<GridHead>& heads,
                           const std::vector<const Field<float>*>& fields) {
  if (heads.empty()) return Outcome::success();
  const std::vector<Payload> payloads =
      encode_grids(encoded_, static_cast<Codec>(heads.front().codec), fields);
  for (std::size_t i = 0; i < heads.size(); ++i)
    if (Outcome added = add_payload(heads[i], payloads[i]); !added) return added;
  return Outcome::success();
}

Outcome BcfFile::add_payload(GridHead head, const Payload& payload) {
  if (mode_ != Mode::kWriting)
    throw Exception("Failed to add float grid. No file opened for writing.");
  if (head.gridType < 1 || head.gridType > 35) throw Exception("Invalid grid type.");
  if (payload.size > std::numeric_limits<std::uint32_t>::max())
    throw Exception("Grid too large for a frame file.");
  head.dataSize = static_cast<std::uint32_t>(payload.size);
  char bytes[kBcfHeadSize];
  encode_head(bytes, head);
  Outcome written = write(bytes, sizeof bytes);
  if (written) written = write(payload.data, payload.size);
  if (written) written = write(bytes, kBcfTrailerSize);  // dataSize, the first field of the head
  return written;
}

bool BcfFile::readHead(GridHead& head) {
  if (mode_ != Mode::kReading)
    throw Exception("Failed to read float grid. No file opened for reading.");
  char bytes[kBcfHeadSize];
  if (next_ + sizeof bytes > size()) return false;
  if (!file_->seek(next_) || file_->read(bytes, sizeof bytes) != sizeof bytes) return false;
  decode_head(head, bytes);
  next_ = position() + head.dataSize + kBcfTrailerSize;
  return true;
}

void BcfFile::read(std::uint64_t position, char* dst, std::size_t size) {
  const qint64 bytes = size;
  if (file_->seek(position) && file_->read(dst, bytes) == bytes) return;
  throw Exception("BCF: failed to read: " + file_->errorString().toStdString());
}

void BcfFile::readGrid(std::uint64_t position, const GridHead& head, Field<float>& field) {
  if (mode_ != Mode::kReading)
    throw Exception("Failed to read float grid. No file opened for reading.");
  next_ = position + head.dataSize + kBcfTrailerSize;
  switch (static_cast<Codec>(head.codec)) {
    case Codec::kRaw:
      return read_raw(position, head, field);
    case Codec::kRunLength:
      return read_run_length(position, head, field);
    case Codec::kPredictive:
      return read_predictive(position, head, field);
    default:
      throw Exception("Unknown codec");
  }
}

// The floats go straight into the field.
void BcfFile::read_raw(std::uint64_t position, const GridHead& head, Field<float>& field) {
  const auto cells = cell_count(head.dims);
  if (!cells || head.dataSize != *cells * sizeof(float)) {
    LogMessage() << "BCF: invalid raw grid size";
    throw Exception("BCF: invalid raw grid size");
  }
  check_length(position, head);
  field.resize(head.dims);
  try {
    read(position, reinterpret_cast<char*>(field.data()), head.dataSize);
  } catch (...) {
    field.resize(0, 0, 0);
    throw;
  }
}

void BcfFile::read_run_length(std::uint64_t position, const GridHead& head, Field<float>& field) {
  check_length(position, head);
  char* payload = buffer_.reserve(head.dataSize);
  read(position, payload, head.dataSize);
  const auto cells = cell_count(head.dims);
  if (!cells || !rle_fits(payload, head.dataSize, *cells))
    throw Exception("BCF: run-length payload doesn't fill the grid");
  field.resize(head.dims);
  rle_decode(field.data(), payload, head.dataSize);
}

void BcfFile::read_predictive(std::uint64_t position, const GridHead& head, Field<float>& field) {
  check_length(position, head);
  const auto cells = cell_count(head.dims);
  if (!cells || !predictive_fits(head.dataSize, *cells))
    throw Exception("BCF: predictive payload doesn't fit the grid");
  char* payload = buffer_.reserve(head.dataSize + kPredictivePadding);
  std::memset(payload + head.dataSize, 0, kPredictivePadding);
  read(position, payload, head.dataSize);
  field.resize(head.dims);
  if (predictive_decode(field.data(), payload, head.dataSize, field.dims())) return;
  field.resize(0, 0, 0);
  throw Exception("BCF: predictive payload is damaged");
}

void BcfFile::check_length(std::uint64_t position, const GridHead& head) const {
  const std::uint64_t end = size(), left = end - std::min(end, position);
  if (head.dataSize > left)
    throw Exception("BCF: the file ends inside of a grid, " + std::to_string(left) + " of " +
                    std::to_string(head.dataSize) + " bytes are there");
}

bool BcfFile::trailer_matches(std::uint64_t position, const GridHead& head) {
  std::uint32_t trailer = 0;
  if (mode_ != Mode::kReading || position + head.dataSize + kBcfTrailerSize > size()) return false;
  read(position + head.dataSize, reinterpret_cast<char*>(&trailer), kBcfTrailerSize);
  return trailer == head.dataSize;
}

std::uint64_t BcfFile::position() const { return file_->pos(); }
std::uint64_t BcfFile::size() const { return file_->size(); }

}  // namespace nbx
