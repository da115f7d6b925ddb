// The exception for errors in scenes.
#pragma once

#include <stdexcept>
#include <string>

namespace host {

/// One line for the user: "scene.json: objects[2].parameters: unknown parameter ...". The caller
/// that knows the file name puts it in front.
class DocumentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  /// `place` is the path of a value in the document. Empty for the document as a whole.
  DocumentError(const std::string& place, const std::string& what)
      : std::runtime_error(place.empty() ? what : place + ": " + what) {}
};

}  // namespace host
