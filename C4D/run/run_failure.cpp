#include "C4D/run/run_failure.h"

#include <new>
#include <sstream>

#include "util/cuda_host_util.h"
#include "util/exception.h"

namespace nbx {

std::string run_failure() {
  std::ostringstream line;
  try {
    throw;
  } catch (const CUDAException& e) {
    line << "CUDAException(" << e.code() << ") in " << e.file() << "(" << e.line() << ") "
         << cuda::get_error_string(e.code());
  } catch (const FieldDimensionMismatchException& e) {
    line << "FieldDimensionMismatchException in " << e.file() << "(" << e.line() << ")";
  } catch (const MisalignedFieldMemoryException& e) {
    line << "MisalignedFieldMemoryException in " << e.file() << "(" << e.line() << ")";
  } catch (const Exception& e) {
    line << "NBX exception " << e.what();
  } catch (const std::bad_alloc& e) {
    line << "std::bad_alloc during simulation " << e.what();
  } catch (const std::bad_exception& e) {
    line << "std::bad_exception during simulation " << e.what();
  } catch (const std::exception& e) {
    line << "std::exception during simulation " << e.what();
  } catch (...) {
    line << "Unknown exception during simulation";
  }
  return line.str();
}

}  // namespace nbx
