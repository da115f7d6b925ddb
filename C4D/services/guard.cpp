#include "C4D/services/guard.h"

#include <new>

#include "util/log.h"

namespace nbx {

std::string exception_text() try { throw; } catch (const std::bad_alloc&) {
  return "out of memory";
} catch (const std::exception& error) {
  return error.what();
} catch (...) {
  return "unknown exception";
}

bool out_of_memory() try { throw; } catch (const std::bad_alloc&) {
  return true;
} catch (...) {
  return false;
}

void log_exception(const char* entry) {
  LogMessage() << "exception in " << entry << ": " << exception_text();
}

}  // namespace nbx
