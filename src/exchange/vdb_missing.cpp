// Replaces the conversion in a build without OpenVDB.
#include "exchange/vdb_file.h"

namespace nbx {

namespace {
[[noreturn]] void refuse() { throw Exception("this build has no OpenVDB"); }
}  // namespace

bool has_vdb() { return false; }
void write_vdb(const std::string&, SimFrame&, const VdbOptions&) { refuse(); }
VdbContent read_vdb(SimFrame&, const std::string&, const std::map<std::string, int>&,
                    const VdbOptions&) {
  refuse();
}

}  // namespace nbx
