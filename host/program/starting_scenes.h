// The scenes that `nimbrix new` writes. They are the files of scenes/new, which the build makes a
// part of the program.
#pragma once

#include <string>
#include <vector>

namespace host {

struct StartingScene {
  std::string kind;  ///< "candle", the name of the file
  std::string text;  ///< the scene, JSON with comments

  /// One line that says what the scene shows: its first comment.
  std::string Summary() const;
};

/// In the order in which the command lists them.
const std::vector<StartingScene>& StartingScenes();

/// Null if there is no such kind.
const StartingScene* FindStartingScene(const std::string& kind);

/// "smoke, fire, ..."
std::string KindsOfScenes();

}  // namespace host
