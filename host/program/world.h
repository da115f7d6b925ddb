// The world containers: what plug-ins keep from one start of the host to the next.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "host/interface/base_container.h"

namespace host {

/// Main thread only.
class World {
 public:
  /// Reads the containers from a JSON file, and writes each later change to it. A file that isn't
  /// there is a world without containers. Throws DocumentError for one that can't be read.
  void Open(const std::string& path);

  /// Null if the plug-in never set one.
  const BaseContainer* Find(std::int32_t id) const;
  /// False if the file can't be written; the container then lasts as long as the program.
  bool Set(std::int32_t id, const BaseContainer& data);

 private:
  bool Write() const;

  std::string path_;  ///< empty: nothing is kept
  std::map<std::int32_t, BaseContainer> containers_;
};

}  // namespace host
