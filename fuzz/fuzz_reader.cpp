// Fuzzes the reader of frame files: a frame that can be read is written with every codec, and must
// read back the same.
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "cache/sim_frame.h"
#include "fuzz/fuzz_input.h"
#include "util/log.h"

namespace {

using nbx::Codec;
using nbx::FieldHandle;
using nbx::SimFrame;
using nbx::fuzz::require;

constexpr std::size_t kMaxCells = 1 << 18;  // larger grids take too long and are left out

// A file in memory.
class MemoryFile {
 public:
  explicit MemoryFile(const char* name) : file_(memfd_create(name, 0)) {
    require(file_ >= 0, "memory for files");
  }
  ~MemoryFile() { close(file_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  void fill(const std::uint8_t* data, std::size_t size) {
    require(write(file_, data, size) == static_cast<ssize_t>(size), "memory for files");
  }
  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

// Loads all grids that can be loaded, and drops the others.
bool load(SimFrame& frame, const std::string& path) {
  try {
    if (!frame.load(path)) return false;
  } catch (const nbx::BcfFormatError&) {
    return false;
  }
  for (auto grid = frame.grids.begin(); grid != frame.grids.end();) {
    bool whole = nbx::cell_count(grid->second.dims).value_or(kMaxCells + 1) <= kMaxCells;
    try {
      whole = whole && frame.grid(grid->first);
    } catch (const nbx::Exception&) {
      whole = false;
    }
    // Types beyond 35 can be read but not written.
    grid =
        whole && grid->first >= 1 && grid->first <= 35 ? std::next(grid) : frame.grids.erase(grid);
  }
  return true;
}

void require_same(SimFrame& a, SimFrame& b, bool zeros_keep_their_sign) {
  require(a.grids.size() == b.grids.size(), "all grids come back");
  for (const auto& [type, grid] : a.grids) {
    const FieldHandle f = a.grid(type), g = b.grid(type);
    require(f->dims() == g->dims(), "dimensions come back");
    for (std::size_t i = 0; i < f->count(); ++i)
      require(nbx::fuzz::same_bits(&(*f)[i], &(*g)[i], 1) ||
                  (!zeros_keep_their_sign && (*f)[i] == 0 && (*g)[i] == 0),
              "cells come back");
    require(grid.offset == b.grids.at(type).offset, "offsets come back");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool quiet = nbx::set_log_file("/dev/null");
  require(quiet, "a log that goes nowhere");
  MemoryFile in("in");
  in.fill(data, size);
  SimFrame frame;
  if (!load(frame, in.path()) || frame.grids.empty()) return 0;
  frame.dims();
  frame.box();
  for (const Codec codec : {Codec::kRaw, Codec::kRunLength, Codec::kPredictive}) {
    MemoryFile out("out");
    SimFrame back;
    require(frame.write(out.path(), codec) > 0, "a frame can be written");
    require(load(back, out.path()), "a written frame can be read");
    require_same(frame, back, codec != Codec::kRunLength);
  }
  return 0;
}
