// Values that plug-ins store from one start of the host to the next: one container per plug-in, in
// a JSON file.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "host/interface/base_container.h"

namespace host {

/// Main thread only.
class PluginPreferences {
 public:
  /// Reads the containers from a JSON file and writes every later change to it. A missing file
  /// means no containers. Throws DocumentError for a file that can't be read.
  void Open(const std::string& path);

  /// Null if the plug-in never stored a container.
  const BaseContainer* Find(std::int32_t id) const;
  /// False if the file can't be written. The container then lasts until the program ends.
  bool Set(std::int32_t id, const BaseContainer& data);

 private:
  bool Write() const;

  std::string path_;  ///< empty: nothing is stored
  std::map<std::int32_t, BaseContainer> containers_;
};

}  // namespace host
