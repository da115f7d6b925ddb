#include "exchange/vdb_load.h"

#include <fstream>

#include <openvdb/io/Stream.h>

#include "util/exception.h"

namespace nbx {

// OpenVDB doesn't look at the state of its stream: behind the end of a file it takes what happens
// to be in memory for the sizes of blocks. So the stream itself throws.
LoadedVdb load_vdb(const std::string& path) try {
  openvdb::initialize();
  std::ifstream file(path, std::ios::binary);
  if (!file) throw Exception("it can't be opened");
  file.exceptions(std::ios::failbit | std::ios::badbit);
  openvdb::io::Stream stream(file, /*delayLoad=*/false);
  return {stream.getGrids(), stream.getMetadata()};
} catch (const openvdb::Exception& e) {
  throw Exception(e.what());
} catch (const std::ios_base::failure&) {
  throw Exception("the file is cut short or damaged");
}

}  // namespace nbx
