// From the load of the plug-in to its end: what it sets up, registers, says and takes down.
#include <QCoreApplication>
#include <clocale>
#include <regex>

#include "host/plugin_module.h"
#include "host/scene_schema.h"
#include "support/support.h"

namespace nbx {
namespace {

/// Remembers what the plug-in registers, and may refuse one of it.
class WatchingHost final : public host::SmallHost {
 public:
  explicit WatchingHost(std::int32_t refused = 0) : refused_(refused) {}
  bool RegisterObjectPlugin(std::int32_t id, const std::string& name, host::ObjectFactory factory,
                            const host::ClassDescription& description) override {
    return seen(id, name) && SmallHost::RegisterObjectPlugin(id, name, factory, description);
  }
  bool RegisterTagPlugin(std::int32_t id, const std::string& name, host::TagFactory factory,
                         const host::ClassDescription& description) override {
    return seen(id, name) && SmallHost::RegisterTagPlugin(id, name, factory, description);
  }
  bool RegisterVideoPostPlugin(std::int32_t id, const std::string& name,
                               host::VideoPostFactory factory,
                               const host::ClassDescription& description) override {
    return seen(id, name) && SmallHost::RegisterVideoPostPlugin(id, name, factory, description);
  }
  bool RegisterPreferencePlugin(std::int32_t id, const std::string& name,
                                const host::ClassDescription& description) override {
    return seen(id, name) && SmallHost::RegisterPreferencePlugin(id, name, description);
  }
  bool RegisterCommandPlugin(std::int32_t id, const std::string& name,
                             host::CommandFactory factory) override {
    return seen(id, name) && SmallHost::RegisterCommandPlugin(id, name, factory);
  }
  host::BaseContainer GetMachineInfo() const override {
    host::BaseContainer info;
    info.SetString(host::kMachineOs, "Some OS");
    info.SetString(host::kMachineCpuType, "x86_64");
    info.SetString(host::kMachineGraphicsCard, "a card");
    return info;
  }

  std::vector<std::pair<std::int32_t, std::string>> registered;

 private:
  bool seen(std::int32_t id, const std::string& name) {
    registered.emplace_back(id, name);
    return id != refused_;
  }
  const std::int32_t refused_;
};

/// The lines of the log without their times.
std::vector<std::string> lines(const test::LogCapture& log) {
  std::istringstream text(log.text());
  std::vector<std::string> all;
  for (std::string line; std::getline(text, line);)
    all.push_back(line.substr(std::min(line.size(), line.find("] ") + 2)));
  return all;
}

TEST(PluginStart, SetsUpReportsAndTakesDownEachTime) {
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  for (int round = 0; round < 3; ++round) {
    const test::LogCapture log;
    WatchingHost host;
    {
      const host::PluginModule plugin(NBX_PLUGIN, host);
      ASSERT_NE(QCoreApplication::instance(), nullptr);
      EXPECT_TRUE(QCoreApplication::libraryPaths().isEmpty());
      EXPECT_EQ(QCoreApplication::applicationName(), "Nimbrix Fluid Dynamics");
      EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), locale.c_str());
    }
    EXPECT_EQ(QCoreApplication::instance(), nullptr);

    std::vector<std::string> said = lines(log);
    // One line for each GPU, if there are any.
    std::erase_if(said, [](const std::string& line) { return line.rfind("CUDA Device ", 0) == 0; });
    const char* const wanted[] = {"-{80}",
                                  "Nimbrix v1\\.0 Rev 893 64Bit [A-Z][a-z]{2} [ 0-9]\\d \\d{4}",
                                  "Simulates smoke and fire, .*",
                                  "-{80}",
                                  "Running in render mode",
                                  "CINEMA 4D Version 1\\.0 API 11530",
                                  "Some OS unknown OS version",
                                  "unknown CPU x86_64",
                                  "unknown CPU features",
                                  "\\d+ omp procs",
                                  "Phys\\. mem: \\d+MB",
                                  "unknown OpenGL unknown a card unknown",
                                  "C4D: unknown plug-ins",
                                  "No CUDA Devices available|CUDA memory free \\S+B total \\S+B",
                                  "---"};
    ASSERT_EQ(said.size(), std::size(wanted)) << log.text();
    for (std::size_t i = 0; i < said.size(); ++i)
      EXPECT_TRUE(std::regex_match(said[i], std::regex(wanted[i]))) << said[i];
  }
}

TEST(PluginStart, RegistersInOrderUntilOneFailsThatIsNeeded) {
  const std::vector<std::pair<std::int32_t, std::string>> wanted{{1024833, "Nimbrix Help"},
                                                                 {1023994, "Start Simulation"},
                                                                 {1027553, "Continue Simulation"},
                                                                 {1023995, "Cache information"},
                                                                 {1023996, "Slice picture"},
                                                                 {1023997, "Verify cache"},
                                                                 {1023998, "Export frames"},
                                                                 {1023999, "Import"},
                                                                 {1024000, "Save with assets"},
                                                                 {1024510, "Nimbrix"},
                                                                 {1023131, "Volume"},
                                                                 {1023164, "Smoke and Fire"},
                                                                 {1023165, "Emitter"}};
  for (std::size_t refused = 0; refused <= wanted.size(); ++refused) {
    const bool needed = refused < 3 || (refused > 8 && refused < wanted.size());
    const test::LogCapture log;
    WatchingHost host(refused < wanted.size() ? wanted[refused].first : 0);
    try {
      const host::PluginModule plugin(NBX_PLUGIN, host);
      EXPECT_FALSE(needed) << refused;
    } catch (const std::runtime_error&) {
      EXPECT_TRUE(needed) << refused;
    }
    auto tried = wanted;
    if (needed) tried.resize(refused + 1);
    EXPECT_EQ(host.registered, tried);
    EXPECT_EQ(log.count("Failed to register "), refused < wanted.size() ? 1 : 0);
  }
}

TEST(PluginStart, SchemaInTheRepositoryIsThatOfTheTables) {
  host::SmallHost host;
  const host::PluginModule plugin(NBX_PLUGIN, host);
  EXPECT_TRUE(host::SceneSchema(host.Classes()) + "\n" == test::read_file(NBX_SCHEMA))
      << "make it anew: nimbrix describe --schema > docs/scene.schema.json";
}

}  // namespace
}  // namespace nbx
