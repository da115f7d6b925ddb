// Writes scene documents as JSON text, in the format that document_reader.h reads.
#pragma once

#include <string>

#include "host/scene/document.h"

namespace host {

/// Writes the parameters that the user has set or that differ from their defaults. Numbers read
/// back as the same bits. Reading the text gives an equal document, and writing that gives the same
/// text. Relative file names stay relative if `folder` is the document's folder, otherwise they
/// become absolute. Comments stay with their values. Throws DocumentError for a text that isn't
/// UTF-8.
std::string WriteDocument(const Document& document, const std::string& folder);

/// Writes the document to a file, completely or not at all. Throws DocumentError with the path as
/// given in front.
void WriteDocumentFile(const Document& document, const std::string& path);

}  // namespace host
