#include "host/base/json_text.h"

namespace host {
namespace {

class TextWriter {
 public:
  TextWriter(int indent, const std::function<std::string(const Json&, std::size_t)>& one_line)
      : indent_(indent), one_line_(one_line) {}

  void Append(const Json& json, std::size_t column, std::string& text) const {
    const std::string line = json.is_primitive() ? json.dump() : one_line_(json, column);
    if (!line.empty()) {
      text += line;
      return;
    }
    const std::size_t inner = column + indent_;
    text += json.is_array() ? "[" : "{";
    const char* separator = "\n";
    for (const auto& [key, value] : json.items()) {
      text += separator + std::string(inner, ' ');
      if (json.is_object()) text += Json(key).dump() + ": ";
      Append(value, inner, text);
      separator = ",\n";
    }
    text += "\n" + std::string(column, ' ') + (json.is_array() ? "]" : "}");
  }

 private:
  const int indent_;
  const std::function<std::string(const Json&, std::size_t)>& one_line_;
};

}  // namespace

std::string JsonText(const Json& json, int indent,
                     const std::function<std::string(const Json&, std::size_t)>& one_line) {
  std::string text;
  TextWriter(indent, one_line).Append(json, 0, text);
  return text;
}

}  // namespace host
