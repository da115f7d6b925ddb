#include "host/program/starting_scenes.h"

namespace host {

std::string StartingScene::Summary() const {
  const std::size_t start = text.find_first_not_of("/ ");
  return text.substr(start, text.find('\n') - start);
}

const StartingScene* FindStartingScene(const std::string& kind) {
  for (const StartingScene& scene : StartingScenes())
    if (scene.kind == kind) return &scene;
  return nullptr;
}

std::string KindsOfScenes() {
  std::string list;
  for (const StartingScene& scene : StartingScenes())
    list += (list.empty() ? "" : ", ") + scene.kind;
  return list;
}

}  // namespace host
