// Collects the files of a scene in one folder.
#pragma once

#include <string>
#include <vector>

#include "host/scene/document.h"

namespace host {

/// Implements CommandContext::CollectFiles. Copies go into the subfolder "files" under their own
/// names. A number is appended if another file has that name. A model that refers to other files
/// gets a folder for all of them, in which their relative paths stay the same. An identical copy is
/// not made again, and no file is replaced.
std::vector<std::string> CollectFiles(Document& document, const std::string& folder);

}  // namespace host
