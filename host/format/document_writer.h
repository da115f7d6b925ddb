// Scene documents as JSON text, in the form that document_reader.h reads.
#pragma once

#include <string>

#include "host/scene/document.h"

namespace host {

/// Parameters are written that the user has set, or that differ from their defaults; numbers so
/// that they read back as the same bits. Reading the text gives an equal document, and writing that
/// one the same text. Relative file names are kept for a document that stays in its folder, else
/// they become absolute. Throws DocumentError for a text that isn't UTF-8.
std::string WriteDocument(const Document& document, const std::string& folder);

/// Writes a file, in one step: it is there whole, or as it was before. Throws DocumentError, with
/// the path as given in front.
void WriteDocumentFile(const Document& document, const std::string& path);

}  // namespace host
