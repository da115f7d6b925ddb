#include "host/base/json_comments.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>

namespace host {
namespace {

using Place = JsonComment::Place;

enum class Token { Start, Open, Close, Key, Colon, Scalar, Comma, Finish };

class CommentFinder {
 public:
  explicit CommentFinder(std::string_view text) : text_(text) {}

  std::vector<JsonComment> Run() {
    if (text_.starts_with("\xEF\xBB\xBF")) at_ = 3;
    while (last_ != Token::Finish) {
      SkipSpace();
      if (at_ < text_.size() && text_[at_] == '/')
        ReadComment();
      else
        ReadToken();
    }
    return std::move(found_);
  }

 private:
  /// An object or array that is being read, and its last member so far.
  struct Level {
    bool array;
    long index = -1;
    std::string_view key = {};  ///< in quotes
  };
  /// A comment whose value isn't known yet.
  struct Pending {
    std::size_t begin, end;
    bool follows;  ///< it starts on the line of the preceding token
  };

  void SkipSpace() { at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size()); }
  bool HasNewline(std::size_t begin, std::size_t end) const {
    return text_.substr(begin, end - begin).find_first_of("\r\n") != std::string_view::npos;
  }

  void ReadComment() {
    const std::size_t begin = at_;
    const bool block = text_[at_ + 1] == '*';
    at_ = block ? text_.find("*/", at_ + 2) + 2
                : std::min(text_.find_first_of(std::string_view("\r\n\0", 3), at_), text_.size());
    pending_.push_back({begin, at_, !HasNewline(last_end_, begin)});
  }

  void ReadToken() {
    const std::size_t begin = at_;
    const Token token = NextToken();
    Trail(token, begin);
    Apply(token, begin);
    if (token != Token::Comma) Lead();
    last_ = token;
    last_end_ = at_;
  }

  /// Moves behind the token. The parser takes a zero byte as the end.
  Token NextToken() {
    const char c = at_ < text_.size() ? text_[at_] : '\0';
    ++at_;
    switch (c) {
      case '\0':
        return Token::Finish;
      case '{':
      case '[':
        return Token::Open;
      case '}':
      case ']':
        return Token::Close;
      case ',':
        return Token::Comma;
      case ':':
        return Token::Colon;
      case '"':
        while (text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
        ++at_;
        return !levels_.empty() && !levels_.back().array && last_ != Token::Colon ? Token::Key
                                                                                  : Token::Scalar;
      default:
        at_ = std::min(text_.find_first_of(std::string_view(",:]}[{\"/ \t\r\n\0", 13), at_),
                       text_.size());
        return Token::Scalar;
    }
  }

  /// Settles the pending comments that belong to what precedes the token.
  void Trail(Token token, std::size_t begin) {
    const bool value = last_ == Token::Close || last_ == Token::Scalar;
    std::vector<Pending> rest;
    for (const Pending& comment : pending_) {
      const bool alone = comment.follows && HasNewline(comment.end, begin);
      if (last_ == Token::Key || last_ == Token::Colon)
        Add(comment, Place::Before, levels_.size());
      else if (last_ == Token::Open && alone)
        Add(comment, Place::Open, levels_.size() - 1);
      else if ((value && comment.follows) || (last_ == Token::Comma && alone) ||
               (token == Token::Finish && value))
        Add(comment, Place::After, levels_.size());
      else if (token == Token::Close)
        Add(comment, Place::End, levels_.size() - 1);
      else
        rest.push_back(comment);
    }
    pending_ = std::move(rest);
  }

  /// Settles the pending comments that belong to the value that begins with the token.
  void Lead() {
    // The path of an array that begins here is that of the array itself.
    const std::size_t depth = last_opened_ ? levels_.size() - 1 : levels_.size();
    for (const Pending& comment : pending_) Add(comment, Place::Before, depth);
    pending_.clear();
  }

  void Apply(Token token, std::size_t begin) {
    last_opened_ = token == Token::Open;
    if (token == Token::Close) levels_.pop_back();
    if (token == Token::Key) levels_.back().key = text_.substr(begin, at_ - begin);
    const bool starts_value = token == Token::Open || token == Token::Scalar;
    if (starts_value && !levels_.empty() && levels_.back().array) ++levels_.back().index;
    if (token == Token::Open) levels_.push_back({text_[begin] == '['});
  }

  void Add(const Pending& comment, Place place, std::size_t depth) {
    JsonComment added{Path(depth), place, Text(comment)};
    const bool trails = place == Place::Open || (place == Place::After && depth > 0);
    if (trails && HasNewline(comment.begin, comment.end)) added.place = Place::Before;
    found_.push_back(std::move(added));
  }

  /// The path of the last member of the level at that depth.
  std::string Path(std::size_t depth) const {
    std::string path;
    for (const Level& level : std::span(levels_).first(depth))
      path += "/" + (level.array ? std::to_string(level.index)
                                 : nlohmann::json::parse(level.key).get<std::string>());
    return path;
  }

  /// The comment without spaces at the ends of its lines, and without the indentation of its first
  /// line.
  std::string Text(const Pending& comment) const {
    const std::size_t newline = text_.find_last_of("\r\n", comment.begin);
    const std::size_t column =
        comment.begin - (newline == std::string_view::npos ? 0 : newline + 1);
    std::string text;
    for (std::size_t at = comment.begin; at < comment.end;) {
      const std::size_t end = std::min(text_.find_first_of("\r\n", at), comment.end);
      std::string_view line = text_.substr(at, end - at);
      if (at != comment.begin)
        line.remove_prefix(std::min({line.find_first_not_of(" \t"), line.size(), column}));
      line = line.substr(0, line.find_last_not_of(" \t") + 1);
      text.append(at == comment.begin ? "" : "\n").append(line);
      at = end + (text_.substr(end, 2) == "\r\n" ? 2 : 1);
    }
    return text;
  }

  const std::string_view text_;
  std::size_t at_ = 0;
  Token last_ = Token::Start;
  std::size_t last_end_ = 0;
  bool last_opened_ = false;
  std::vector<Level> levels_;
  std::vector<Pending> pending_;
  std::vector<JsonComment> found_;
};

}  // namespace

std::vector<JsonComment> FindComments(const std::string& text) { return CommentFinder(text).Run(); }

}  // namespace host
