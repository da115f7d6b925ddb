#include "C4D/run/run_failure.h"

#include <new>
#include <sstream>

#include "util/cuda_host_util.h"
#include "util/exception.h"

namespace nbx {

namespace {

constexpr char kOutOfMemory[] =
    "the machine ran out of memory: make voxel_size larger or size smaller, or close other "
    "programs";

std::string internal_error(const std::string& line) {
  return "internal error: " + line + ". Please report it, with the log and the scene";
}

}  // namespace

RunFailure run_failure() {
  std::ostringstream line;
  std::string reason;
  try {
    throw;
  } catch (const CUDAException& e) {
    line << "CUDAException(" << e.code() << ") in " << e.file() << "(" << e.line() << ") "
         << cuda::get_error_string(e.code());
    reason = std::string("the device failed: ") + cuda::get_error_string(e.code()) +
             ". --device cpu computes without it";
  } catch (const FieldDimensionMismatchException& e) {
    line << "FieldDimensionMismatchException in " << e.file() << "(" << e.line() << ")";
  } catch (const MisalignedFieldMemoryException& e) {
    line << "MisalignedFieldMemoryException in " << e.file() << "(" << e.line() << ")";
  } catch (const Exception& e) {
    line << "NBX exception " << e.what();
    reason = e.what();
  } catch (const std::bad_alloc& e) {
    line << "std::bad_alloc during simulation " << e.what();
    reason = kOutOfMemory;
  } catch (const std::bad_exception& e) {
    line << "std::bad_exception during simulation " << e.what();
  } catch (const std::exception& e) {
    line << "std::exception during simulation " << e.what();
    reason = e.what();
  } catch (...) {
    line << "Unknown exception during simulation";
  }
  if (reason.empty()) reason = internal_error(line.str());
  return {line.str(), reason};
}

}  // namespace nbx
