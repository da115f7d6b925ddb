// From the load of the plug-in to its end: what it sets up, registers, says and takes down.
#include <QCoreApplication>
#include <clocale>
#include <regex>

#include "host/format/scene_schema.h"
#include "host/plugin_module.h"
#include "support/support.h"

namespace nbx {
namespace {

/// Remembers what the plug-in registers, and may refuse one of it.
class WatchingHost final : public host::SmallHost {
 public:
  explicit WatchingHost(std::int32_t refused = 0) : refused_(refused) {}
  bool RegisterObjectPlugin(std::int32_t id, const std::string& name, host::ObjectFactory factory,
                            const host::ClassDescription& description) override {
    return seen(id) && SmallHost::RegisterObjectPlugin(id, name, factory, description);
  }
  bool RegisterTagPlugin(std::int32_t id, const std::string& name, host::TagFactory factory,
                         const host::ClassDescription& description) override {
    return seen(id) && SmallHost::RegisterTagPlugin(id, name, factory, description);
  }
  bool RegisterVideoPostPlugin(std::int32_t id, const std::string& name,
                               host::VideoPostFactory factory,
                               const host::ClassDescription& description) override {
    return seen(id) && SmallHost::RegisterVideoPostPlugin(id, name, factory, description);
  }
  bool RegisterPreferencePlugin(std::int32_t id, const std::string& name,
                                const host::ClassDescription& description) override {
    return seen(id) && SmallHost::RegisterPreferencePlugin(id, name, description);
  }
  bool RegisterCommandPlugin(std::int32_t id, const std::string& name,
                             host::CommandFactory factory) override {
    return seen(id) && SmallHost::RegisterCommandPlugin(id, name, factory);
  }
  host::BaseContainer GetMachineInfo() const override {
    host::BaseContainer info;
    info.SetString(host::kMachineOs, "Some OS");
    info.SetString(host::kMachineCpuType, "x86_64");
    info.SetString(host::kMachineGraphicsCard, "a card");
    return info;
  }

  std::vector<std::int32_t> registered;

 private:
  bool seen(std::int32_t id) {
    registered.push_back(id);
    return id != refused_;
  }
  const std::int32_t refused_;
};

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

    std::istringstream said(log.text()), wanted(test::read_file(NBX_C4D_DATA "/start_log.txt"));
    std::string pattern;
    for (std::string line; std::getline(said, line);) {
      if (line.find("] CUDA Device ") != std::string::npos) continue;  // one for each GPU
      std::getline(wanted, pattern);
      EXPECT_TRUE(std::regex_match(line, std::regex("\\[.{7,9}\\] (" + pattern + ")"))) << line;
    }
    EXPECT_FALSE(std::getline(wanted, pattern)) << pattern;
  }
}

TEST(PluginStart, RegistersInOrderUntilOneFailsThatIsNeeded) {
  const std::vector<std::int32_t> wanted{1024833, 1023994, 1027553, 1023995, 1023996,
                                         1023997, 1023998, 1023999, 1024000, 1024510,
                                         1023131, 1023164, 1023165};
  for (std::size_t refused = 0; refused <= wanted.size(); ++refused) {
    const bool needed = refused < 3 || (refused > 8 && refused < wanted.size());
    const test::LogCapture log;
    WatchingHost host(refused < wanted.size() ? wanted[refused] : 0);
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
