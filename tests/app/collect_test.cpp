// A scene collected in one folder works wherever the folder goes. data/collect has two volumes
// whose caches have the same name, a model whose numbers are in another folder and that is used
// twice, two pictures with the same name, and a volume that was never simulated.
#include <map>

#include "support/support.h"

namespace nbx::test {
namespace {

namespace fs = std::filesystem;

/// The bytes of all files under a folder, by relative path. Frame names start with a word that
/// depends on where they were made.
std::map<std::string, std::string> Files(const std::string& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    if (entry.is_regular_file()) {
      std::string name = fs::relative(entry.path(), folder).string();
      const std::size_t at = name.find("nbx_sim_cache");
      if (at != std::string::npos) name.erase(at - 32, 32);
      files[name] = read_file(entry.path().string());
    }
  return files;
}

TEST(Collect, FolderIsWholeWhereverItGoes) {
  const TemporaryFolder folder;
  const std::string home = folder.file("home"), project = folder.file("project");
  fs::copy(NBX_SOURCES "/tests/app/data/collect", home, fs::copy_options::recursive);
  const auto run = [&](const std::string& where, const std::string& line) {
    const std::string out = folder.file("out");
    const int status = std::system(
        ("cd '" + where + "' && '" NBX_PROGRAM "' " + line + " >" + out + " 2>&1").c_str());
    EXPECT_EQ(status, 0) << line << "\n" << read_file(out);
  };
  const auto picture = [&](const std::string& where) {
    const std::string path = folder.file("picture.exr");
    fs::remove(path);
    run(where, "render scene.json --frames 3 --output " + path);
    EXPECT_TRUE(fs::exists(path));
    return read_file(path);
  };
  for (const std::string volume : {"left", "right"})
    run(home, "simulate scene.json --object " + volume);
  const std::string seen = picture(home);
  run(home, "collect scene.json --output ../project");
  const auto collected = Files(project);
  run(home, "collect scene.json --output ../project");
  EXPECT_EQ(Files(project), collected) << "a second time adds nothing";

  EXPECT_EQ(collected.at("files/tile.png"), read_file(home + "/a/tile.png"));
  EXPECT_EQ(collected.at("files/tile 2.png"), read_file(home + "/b/tile.png"));
  EXPECT_EQ(collected.count("files/wedge/data/wedge.bin"), 1u);
  EXPECT_EQ(collected.count("files/wedge 2/data/wedge.bin"), 0u) << "one copy serves both";
  const std::string text = collected.at("scene.json");
  EXPECT_EQ(text.find(folder.path()), std::string::npos) << text;
  for (const std::string name : {"c", "c 2", "c 3"})
    EXPECT_NE(text.find("\"nbx4d_caches/" + name + "\""), std::string::npos) << text;
  const auto at_home = Files(home);
  for (const auto& [name, bytes] : collected)
    if (name.starts_with("nbx4d_caches/") && name.ends_with(".bcf")) {
      const bool second = name.starts_with("nbx4d_caches/c 2/");
      const std::string original = second ? "y/c" + name.substr(16) : "x/c" + name.substr(14);
      EXPECT_EQ(bytes, at_home.at(original)) << name;
    }

  // Another run at home makes the copies outdated: the new copies get new names.
  run(home, "simulate scene.json --object left --overwrite --set left.voxel_size=4");
  run(home, "collect scene.json --output ../project");
  auto all = Files(project);
  for (const auto& [name, bytes] : collected)
    if (name != "scene.json") {
      EXPECT_EQ(all[name], bytes) << name;
    }
  EXPECT_EQ(all.at("nbx4d_caches/c 3/nbx_sim_cache_0000000002.bcf"),
            Files(home).at("x/c/nbx_sim_cache_0000000002.bcf"));
  std::ofstream(project + "/scene.json") << text;

  fs::remove_all(home);
  fs::create_directory(folder.file("elsewhere"));
  const std::string moved = folder.file("elsewhere/project");
  fs::rename(project, moved);
  EXPECT_EQ(picture(moved), seen);
  run(moved, "simulate scene.json --overwrite --all");
  all = Files(moved);
  for (const auto& [name, bytes] : collected)
    if (name.find("nbx_sim_cache") != std::string::npos) {
      EXPECT_EQ(all[name], bytes) << name;
    }
}

}  // namespace
}  // namespace nbx::test
