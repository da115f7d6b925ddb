#include "app/synonyms.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "host/base/nearest_name.h"

namespace app {
namespace {

/// Words for a command or an option that the program must have. The text says more than its name.
struct Synonym {
  std::string_view words;  ///< as in host::Hint
  const char* name;
  const char* text = "";
};

constexpr Synonym kCommands[] = {
    {"sim simulation run start bake cook solve compute", "simulate"},
    {"resume", "continue"},
    {"preview picture image rendering frame", "render"},
    {"view show display plot draw", "slice"},
    {"init create template scene", "new"},
    {"validate lint", "check"},
    {"ls list inspect stat stats frames", "info"},
    {"caches branch lock unlock rename remove rm explain why stale", "cache"},
    {"estimate predict cost plan budget", "forecast"},
    {"convert save vdb", "export"},
    {"load open", "import"},
    {"pack bundle archive copy", "collect"},
    {"doc docs man documentation", "manual"},
    {"parameters types schema", "describe"},
};

constexpr Synonym kOptions[] = {
    {"o out dest outdir outputdir outputfile", "--output"},
    {"o out output dest outdir outputdir cachedir dir folder", "--cache"},
    {"f frame range framerange", "--frames"},
    {"start end first last from to startframe endframe", "--frames", "write --frames 0-100"},
    {"j t jobs cores cpus thread nthreads", "--threads"},
    {"gpu cuda", "--device", "write --device 0 for the first GPU"},
    {"r res resolution dimensions", "--size"},
    {"w width h height x y", "--size", "write --size 960x540"},
    {"r res resolution voxelsize voxels", "--set", "write --set '*.voxel_size=2'"},
    {"quality spp aa", "--samples"},
    {"format ext type", "--precision", "the name of --output ends with .png or .exr"},
    {"camera background bounces shutter", "--set",
     "the render settings are set like this: --set render.camera=NAME"},
    {"q silent", "--quiet"},
    {"v verbose", "--quiet", "all messages are printed unless --quiet is given"},
    {"log logfile", "--log-file"},
    {"resume", "--continue"},
    {"state", "--start-from"},
    {"clobber replace", "--overwrite"},
    {"y assumeyes noconfirm", "--yes"},
    {"s p param parameter", "--set"},
    {"i s input scene", "SCENE", "the scene is given without an option"},
};

std::string Find(const std::string& word, std::span<const Synonym> synonyms,
                 const std::vector<std::string>& known) {
  for (const auto& [words, name, text] : synonyms) {
    const host::Hint hint{words, name};
    if (host::FindHint(word, {&hint, 1}).empty() || std::ranges::find(known, name) == known.end())
      continue;
    return *text ? std::string("; ") + text : ", did you mean " + host::Quoted(name) + "?";
  }
  return host::DidYouMean(word, known);
}

}  // namespace

std::string CommandHint(const std::string& word, const std::vector<std::string>& commands) {
  if (word.starts_with("-")) return "; the command comes first, then its options";
  if (word.find_first_of("./") != std::string::npos)
    return "; the command comes first: nimbrix simulate " + word;
  return Find(word, kCommands, commands);
}

std::string OptionHint(const std::string& word, const std::vector<std::string>& options) {
  return Find(word, kOptions, options);
}

}  // namespace app
