// Replaces the conversion in a build without OpenVDB.
#include "exchange/vdb_file.h"
#include "exchange/vdb_info.h"

namespace nbx {

namespace {
[[noreturn]] void refuse() {
  throw Exception("this build has no OpenVDB, so it can't read or write .vdb files");
}
}  // namespace

bool has_vdb() { return false; }
std::uint64_t write_vdb(const std::string&, SimFrame&, const VdbOptions&) { refuse(); }
VdbFileInfo read_vdb_info(const std::string&) { refuse(); }
VdbContent read_vdb(SimFrame&, const std::string&, const std::map<std::string, int>&,
                    const VdbOptions&) {
  refuse();
}

}  // namespace nbx
