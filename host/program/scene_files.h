// The files that a scene names, brought together in one folder.
#pragma once

#include <string>
#include <vector>

#include "host/scene/document.h"

namespace host {

/// What CommandContext::CollectFiles asks for. Copies go into the folder's "files", each under its
/// own name, or with a number behind it where another file has that name. A model that refers to
/// more files gets a folder for them all, in which they lie to one another as before. A copy that
/// is there already, byte for byte, isn't made again; no file is replaced.
std::vector<std::string> CollectFiles(Document& document, const std::string& folder);

}  // namespace host
