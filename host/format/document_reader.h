// Reads scene documents from JSON text. docs/scene_format.md describes the format.
#pragma once

#include <memory>
#include <string>

#include "host/scene/document.h"

namespace host {

/// Reads a document from text. Relative file names are relative to `folder`, an absolute path.
/// Document::Open loads the meshes later. Throws DocumentError at the first error: invalid JSON,
/// unknown keys, types, parameters or choices, and values of the wrong type. `classes` must outlive
/// the document.
std::unique_ptr<Document> ReadDocument(const std::string& text, const std::string& folder,
                                       const SceneClasses& classes);

/// Reads a document from a file. The message of the DocumentError starts with the path as given.
std::unique_ptr<Document> ReadDocumentFile(const std::string& path, const SceneClasses& classes);

}  // namespace host
