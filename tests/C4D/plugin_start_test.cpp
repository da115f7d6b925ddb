// From the load of the plug-in to its end: what it sets up, registers, says and takes down.
#include <QCoreApplication>
#include <clocale>
#include <regex>
#include <set>
#include <sstream>

#include "C4D/recording_context.h"
#include "host/format/scene_hints.h"
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
    if (broken) throw std::runtime_error("the machine is gone");
    host::BaseContainer info;
    info.SetString(host::kMachineOs, "Some OS");
    info.SetString(host::kMachineCpuType, "x86_64");
    info.SetString(host::kMachineGraphicsCard, "a card");
    return info;
  }

  std::vector<std::int32_t> registered;
  bool broken = false;

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

    for (const char* line :
         {R"(Nimbrix v1\.0 Rev \d+ 64Bit [A-Z][a-z]{2} [ 0-9]\d \d{4})", "Running in render mode",
          "Some OS unknown OS version", "unknown CPU x86_64", R"(\d+ omp procs)",
          R"(Phys\. mem: \d+MB)", "unknown OpenGL unknown a card unknown"})
      EXPECT_TRUE(std::regex_search(log.text(), std::regex(line))) << line;
  }
}

TEST(PluginStart, RegistersInOrderUntilOneFailsThatIsNeeded) {
  const std::vector<std::int32_t> wanted{1024833, 1023994, 1027553, 1027554, 1024001, 1024011,
                                         1024010, 1023995, 1023996, 1023997, 1023998, 1023999,
                                         1024000, 1024510, 1023131, 1023164, 1023165};
  for (std::size_t refused = 0; refused <= wanted.size(); ++refused) {
    const bool needed = refused < 4 || (refused > 12 && refused < wanted.size());
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

TEST(PluginStart, ExceptionsStopAtTheEntries) {
  const test::LogCapture log;
  WatchingHost host;
  host.broken = true;
  EXPECT_THROW(const host::PluginModule plugin(NBX_PLUGIN, host), std::runtime_error);
  EXPECT_TRUE(log.contains("exception in PluginStart: the machine is gone"));

  host::SmallHost working;
  const host::PluginModule plugin(NBX_PLUGIN, working);
  test::RecordingContext context(working);
  context.on_event = [](const std::string&) { throw std::runtime_error("no paper"); };
  for (const auto& command : working.Commands())
    if (command.info.verb == "manual") {
      EXPECT_EQ(command.data->Execute({}, context), host::kFailed);
    }
  EXPECT_EQ(context.errors, std::vector<std::string>{"no paper"});
  EXPECT_TRUE(log.contains("exception in command manual: no paper"));
}

TEST(PluginStart, SchemaInTheRepositoryIsThatOfTheTables) {
  host::SmallHost host;
  const host::PluginModule plugin(NBX_PLUGIN, host);
  EXPECT_TRUE(host::SceneSchema(host.Classes()) + "\n" == test::read_file(NBX_SCHEMA))
      << "make it anew: nimbrix describe --schema > docs/scene.schema.json";
}

// A hint whose word is a name, or which names something unknown, would be wrong.
TEST(PluginStart, HintsNameWhatScenesCanContain) {
  host::SmallHost host;
  const host::PluginModule plugin(NBX_PLUGIN, host);
  const std::string schema = host::SceneSchema(host.Classes());
  std::size_t quoted = 0;
  for (const auto& [scope, hints] : host::AllSceneHints()) {
    std::set<std::string> words;
    for (const auto* row : {&host.Classes().objects, &host.Classes().tags, &host.Classes().render,
                            &host.Classes().materials, &host.Classes().shaders})
      if (const auto* type = row->Find(std::string(scope)))
        for (const std::string& name : type->description.Names())
          words.insert(std::regex_replace(name, std::regex("_"), ""));
    for (const auto& [typed, text] : hints) {
      std::istringstream stream{std::string(typed)};
      for (std::string word; stream >> word;)
        EXPECT_TRUE(words.insert(word).second) << scope << ": " << word;
      const std::regex name("\"[a-z_]+\"");
      for (std::cregex_iterator it(text.begin(), text.end(), name), end; it != end; ++it, ++quoted)
        EXPECT_NE(schema.find(it->str()), std::string::npos) << scope << ": " << text;
    }
  }
  EXPECT_GT(quoted, 100u);
}

}  // namespace
}  // namespace nbx
