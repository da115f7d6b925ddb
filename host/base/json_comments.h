// Comments in JSON texts: // to the end of the line, and /* */.
#pragma once

#include <string>
#include <vector>

namespace host {

struct JsonComment {
  enum class Place {
    Before,  ///< on its own lines, before the value
    After,   ///< on the line on which the value ends
    Open,    ///< behind the bracket that opens the value
    End,     ///< on its own lines, before the bracket that closes the value
  };
  /// Path of the value: "/objects/0/parameters/size". Empty for the document.
  std::string path;
  Place place = Place::Before;
  /// With its slashes. Further lines are indented relative to the first.
  std::string text;

  bool operator==(const JsonComment&) const = default;
};

/// All comments of a valid JSON text, in order. A comment between values belongs to the value that
/// follows. A comment of several lines is After only at the end of the text, and never Open.
std::vector<JsonComment> FindComments(const std::string& text);

}  // namespace host
