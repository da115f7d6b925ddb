// BcfFile: one open frame file, read and written one grid record at a time. bcf_format.h shows the
// bytes.
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
#include "math/field.h"
#include "util/exception.h"
#include "util/outcome.h"
#include "util/whole_file.h"

class QFile;

namespace nbx {

/// The file isn't a frame file, or has another version. Deliberately not an nbx::Exception, so that
/// handlers for a single bad frame let it through.
class BcfFormatError : public std::exception {
 public:
  explicit BcfFormatError(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

/// Belongs to one thread; every reader and writer opens its own. The object may open one file after
/// another and keeps its buffers. A failed outcome carries the system's reason. Whatever a damaged
/// file claims, the reader allocates no more than the file's length and its run counts justify.
class BcfFile {
 public:
  BcfFile();
  ~BcfFile();
  BcfFile(const BcfFile&) = delete;
  BcfFile& operator=(const BcfFile&) = delete;

  /// Opens a file to read. Logs a wrong magic or version and throws BcfFormatError.
  Outcome openRead(const std::string& path);
  /// Creates or truncates the file and writes its header without the version. If the file has other
  /// names too, they keep it, and `path` becomes a file of its own.
  Outcome create(const std::string& path, Sync sync = Sync::kNone);
  /// Closes the file. For a file that was written this adds the version, which makes it a frame
  /// file; before this call, or after a failed write, no reader accepts it. With Sync::kDisk that
  /// holds across a power failure: all data is on the disk before the version is written, and the
  /// version is on the disk when this returns.
  Outcome close();
  /// Closes and removes a file that could not be completed.
  void discard();

  /// Appends one record; a failure may leave part of it in the file. Throws Exception if no file is
  /// open for writing, for a type outside of 1 .. 35, for an unknown codec and for a grid too large
  /// for the format; std::bad_alloc.
  Outcome addGrid(int gridType, Codec codec, const FrameTime& simTime, const FrameTime& frameTime,
                  const Vec3i& offset, const GridMatrix& gridMatrix, const Field<float>& field);
  /// The same for several grids, encoded in parallel (see encode_grids). `dataSize` of the heads
  /// needn't be set.
  Outcome add_grids(const std::vector<GridHead>& heads,
                    const std::vector<const Field<float>*>& fields);

  /// The same for one that is encoded already, with the codec of its head.
  Outcome add_payload(GridHead head, const Payload& payload);

  /// Reads the next head and skips the payload before it; `position()` is then that of its payload.
  /// False at the end of the file or after a short read. Throws Exception if no file is open for
  /// reading.
  bool readHead(GridHead& head);

  /// Decodes the payload at `position` into `field`, sized from `head.dims`; a negative dimension
  /// counts as 0. Throws Exception, before it touches the field, for an unknown codec, for a
  /// payload cut off by the end of the file and for one of the wrong size for the grid. Throws
  /// Exception and leaves the field empty for a damaged predictive payload and a failing disk.
  /// Throws std::bad_alloc.
  void readGrid(std::uint64_t position, const GridHead& head, Field<float>& field);

  /// Whether the payload at `position` is followed by its size, as in every complete record. For
  /// checks of a file; readers don't need it.
  bool trailer_matches(std::uint64_t position, const GridHead& head);

  /// The position of the next read or write, and the length of the file.
  std::uint64_t position() const;
  std::uint64_t size() const;

 private:
  enum class Mode { kClosed, kReading, kWriting };

  Outcome open(const std::string& path, Mode mode);
  Outcome file_error() const;
  void drop();
  Outcome finish();
  Outcome sync();
  void read_raw(std::uint64_t position, const GridHead& head, Field<float>& field);
  void read_run_length(std::uint64_t position, const GridHead& head, Field<float>& field);
  void read_predictive(std::uint64_t position, const GridHead& head, Field<float>& field);
  void check_length(std::uint64_t position, const GridHead& head) const;
  Outcome write(const char* data, std::size_t size);
  void read(std::uint64_t position, char* dst, std::size_t size);

  std::unique_ptr<QFile> file_;
  Mode mode_ = Mode::kClosed;
  bool damaged_ = false;    // a write failed
  std::uint64_t next_ = 0;  // position of the next head
  Sync sync_ = Sync::kNone;
  bool made_ = false;  // the file's name isn't on the disk yet
  ByteBuffer buffer_;
  std::vector<ByteBuffer> encoded_;  // of grids that are encoded in parallel
};

}  // namespace nbx
