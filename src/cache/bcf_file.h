// Reads and writes frame files, one grid record at a time. bcf_format.h shows their bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cache/bcf_format.h"
#include "cache/codecs/grid_encoder.h"
#include "cache/grid_type.h"
#include "math/field.h"
#include "util/exception.h"
#include "util/whole_file.h"

class QFile;

namespace nbx {

/// Thrown for a file that isn't a frame file, or of another version. Not an nbx::Exception: it
/// passes the guards of single frames and ends what the reading thread does.
class BcfFormatError : public std::exception {
 public:
  explicit BcfFormatError(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

/// What was written didn't all reach the file. The text is the system's reason.
class BcfWriteError : public Exception {
 public:
  using Exception::Exception;
};

/// One open frame file. Belongs to one thread; every reader and writer opens its own. The buffers
/// to encode and decode in live as long as the object, which may open one file after another.
/// Nothing that a file claims makes the reader allocate more than its length and its run counts
/// bear out.
class BcfFile {
 public:
  BcfFile();
  ~BcfFile();
  BcfFile(const BcfFile&) = delete;
  BcfFile& operator=(const BcfFile&) = delete;

  /// False if the file can't be opened. A wrong magic or version is logged and throws
  /// BcfFormatError.
  bool openRead(const std::string& path);
  /// Creates or truncates the file and writes its header, without the version. False if it can't.
  /// `sync` is how `close` leaves it.
  bool create(const std::string& path, Sync sync = Sync::kNone);
  /// Closes the file; one that was written becomes a frame file by this. False if something written
  /// didn't reach it. Without this call, or after a failed write, it stays an unfinished file that
  /// no reader takes. With Sync::kDisk the same holds when the machine loses power: all data is on
  /// the disk before the version is written, and the version when this returns.
  bool close();
  /// Closes the file and removes it, for one that could not be written whole.
  void discard();
  /// The system's reason for the last failure since the file was opened.
  const std::string& errorString() const { return error_; }

  /// Appends one record. Throws Exception if no file is open for writing, for a type outside of
  /// 1 .. 35, for an unknown codec and for a grid too large for the format; BcfWriteError, which
  /// leaves part of the record behind; std::bad_alloc.
  void addGrid(int gridType, Codec codec, const FrameTime& simTime, const FrameTime& frameTime,
               const Vec3i& offset, const GridMatrix& gridMatrix, const Field<float>& field);
  /// The same for several grids, which are encoded at once (see encode_grids). `dataSize` of the
  /// heads needn't be set.
  void add_grids(const std::vector<GridHead>& heads,
                 const std::vector<const Field<float>*>& fields);

  /// Reads the next head, skipping the payload of the one before. False at the end of the file or
  /// on a short read. `position()` is then that of the payload. Throws Exception if no file is open
  /// for reading.
  bool readHead(GridHead& head);

  /// Decodes the payload at `position` into `field`, sized from `head.dims`; a negative dimension
  /// counts as 0. Throws Exception for an unknown codec, for a payload that the file's end cuts off
  /// and for one that can't hold exactly the grid: all before the field is touched. A predictive
  /// payload that turns out damaged and a failing disk throw it too and leave the field empty;
  /// std::bad_alloc.
  void readGrid(std::uint64_t position, const GridHead& head, Field<float>& field);

  /// True if the payload at `position` is followed by its size, as every record is that was written
  /// whole. Readers don't need it; it tells a damaged record from a good one.
  bool trailer_matches(std::uint64_t position, const GridHead& head);

  /// Where the next read or write happens, and the length of the file.
  std::uint64_t position() const;
  std::uint64_t size() const;

 private:
  enum class Mode { kClosed, kReading, kWriting };

  bool open(const std::string& path, Mode mode);
  bool fail();
  void drop();
  bool finish();
  bool reaches_disk();
  void add_payload(GridHead head, const Payload& payload);
  void read_raw(std::uint64_t position, const GridHead& head, Field<float>& field);
  void read_run_length(std::uint64_t position, const GridHead& head, Field<float>& field);
  void read_predictive(std::uint64_t position, const GridHead& head, Field<float>& field);
  void check_length(std::uint64_t position, const GridHead& head) const;
  void write(const char* data, std::size_t size);
  void read(std::uint64_t position, char* dst, std::size_t size);

  std::unique_ptr<QFile> file_;
  Mode mode_ = Mode::kClosed;
  std::string error_;
  std::uint64_t next_ = 0;  // where the next head stands
  Sync sync_ = Sync::kNone;
  bool made_ = false;  // the folder doesn't have the file's name on the disk yet
  ByteBuffer buffer_;
  std::vector<ByteBuffer> encoded_;  // of grids that are encoded at once
};

}  // namespace nbx
