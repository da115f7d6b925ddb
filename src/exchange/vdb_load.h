// Loads VDB files.
#pragma once

#include <string>

#include <openvdb/openvdb.h>

namespace nbx {

struct LoadedVdb {
  openvdb::GridPtrVecPtr grids;
  openvdb::MetaMap::Ptr metadata;  // of the file
};

/// Reads a whole file. Throws Exception if it is missing, isn't a VDB file, or is cut short.
LoadedVdb load_vdb(const std::string& path);

}  // namespace nbx
