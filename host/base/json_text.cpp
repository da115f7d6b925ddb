#include "host/base/json_text.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

namespace host {
namespace {

using Place = JsonComment::Place;

class TextWriter {
 public:
  TextWriter(const Json& json, std::size_t indent, const OneLineText& one_line)
      : json_(json), indent_(indent), one_line_(one_line) {}

  void Add(const JsonComment& comment) {
    const Json* value = &json_;
    std::string path;
    while (path.size() < comment.path.size() && Open(*value, path)) {
      const std::size_t begin = path.size() + 1;
      const std::size_t end = std::min(comment.path.find('/', begin), comment.path.size());
      value = Member(*value, comment.path.substr(begin, end - begin));
      if (!value) break;
      path = comment.path.substr(0, end);
    }
    const bool inside = comment.place == Place::Open || comment.place == Place::End;
    const bool fits = path == comment.path && (!inside || Open(*value, path));
    comments_[path].push_back({path, fits ? comment.place : Place::Before, comment.text});
  }

  std::string Run() const {
    std::string text;
    for (const std::string& comment : Comments("", Place::Before)) text += comment + "\n";
    Append(json_, "", 0, text);
    for (const std::string& comment : Comments("", Place::After)) text += "\n" + comment;
    return text;
  }

 private:
  /// The value on one line, or an empty text.
  std::string Line(const Json& json, const std::string& path, std::size_t column) const {
    if (opened_.count(path) != 0) return {};
    return json.is_primitive() ? json.dump() : one_line_(json, column);
  }

  /// True if the members of the value get lines of their own. A row of arrays does if it would
  /// otherwise be on one line.
  bool Open(const Json& json, const std::string& path) {
    const std::size_t depth = std::count(path.begin(), path.end(), '/');
    if (Line(json, path, depth * indent_).empty()) return true;
    const bool row = json.is_array() && !json.empty() &&
                     std::ranges::all_of(json, [](const Json& j) { return j.is_array(); });
    if (row) opened_.insert(path);
    return row;
  }

  /// Null if there is none.
  static const Json* Member(const Json& json, const std::string& name) {
    if (json.is_object()) return json.contains(name) ? &json.at(name) : nullptr;
    const std::size_t index = std::strtoul(name.c_str(), nullptr, 10);
    return json.is_array() && index < json.size() ? &json.at(index) : nullptr;
  }

  std::vector<std::string> Comments(const std::string& path, Place place) const {
    std::vector<std::string> texts;
    const auto found = comments_.find(path);
    if (found == comments_.end()) return texts;
    for (const JsonComment& comment : found->second)
      if (comment.place == place) texts.push_back(comment.text);
    return texts;
  }

  static std::string NewLine(std::size_t column) { return "\n" + std::string(column, ' '); }

  void AppendOnLines(const std::string& path, Place place, std::size_t column,
                     std::string& text) const {
    for (const std::string& comment : Comments(path, place)) {
      std::istringstream lines(comment);
      for (std::string line; std::getline(lines, line);)
        text += line.empty() ? "\n" : NewLine(column) + line;
    }
  }

  void AppendToLine(const std::string& path, Place place, std::string& text) const {
    const char* separator = "  ";
    for (const std::string& comment : Comments(path, place)) {
      text += separator + comment;
      separator = " ";
    }
  }

  void Append(const Json& json, const std::string& path, std::size_t column,
              std::string& text) const {
    const std::string line = Line(json, path, column);
    if (!line.empty()) {
      text += line;
      return;
    }
    const std::size_t inner = column + indent_;
    text += json.is_array() ? "[" : "{";
    AppendToLine(path, Place::Open, text);
    std::size_t left = json.size();
    for (const auto& [key, value] : json.items()) {
      const std::string member = comments_.empty() ? "" : path + "/" + key;
      AppendOnLines(member, Place::Before, inner, text);
      text += NewLine(inner);
      if (json.is_object()) text += Json(key).dump() + ": ";
      Append(value, member, inner, text);
      if (--left > 0) text += ",";
      AppendToLine(member, Place::After, text);
    }
    AppendOnLines(path, Place::End, inner, text);
    text += NewLine(column) + (json.is_array() ? "]" : "}");
  }

  const Json& json_;
  const std::size_t indent_;
  const OneLineText& one_line_;
  std::map<std::string, std::vector<JsonComment>> comments_;  ///< by path
  std::set<std::string> opened_;  ///< paths of values that aren't on one line for their comments
};

}  // namespace

std::string JsonText(const Json& json, std::size_t indent, const OneLineText& one_line,
                     const std::vector<JsonComment>& comments) {
  TextWriter writer(json, indent, one_line);
  for (const JsonComment& comment : comments) writer.Add(comment);
  return writer.Run();
}

}  // namespace host
