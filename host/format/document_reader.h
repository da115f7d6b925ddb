// Scene documents from JSON text. The form is described in docs/scene_format.md.
#pragma once

#include <memory>
#include <string>

#include "host/scene/document.h"

namespace host {

/// Reads a whole text; `folder` is the absolute path that relative file names count from. Nothing
/// but the text is read: Document::Open fetches the meshes. Throws DocumentError at the first
/// mistake: broken text, unknown keys, types, parameters and choices, wrong kinds of values, values
/// out of bounds. `classes` must outlive the document.
std::unique_ptr<Document> ReadDocument(const std::string& text, const std::string& folder,
                                       const SceneClasses& classes);

/// The same from a file. The message of the DocumentError begins with the path as given.
std::unique_ptr<Document> ReadDocumentFile(const std::string& path, const SceneClasses& classes);

}  // namespace host
