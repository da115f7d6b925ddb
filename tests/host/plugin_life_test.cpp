// A plug-in in the small host, from load to unload.
#include <csignal>
#include <thread>

#include <dlfcn.h>

#include "host/base/document_error.h"
#include "host/plugin_module.h"
#include "host/program/interrupts.h"
#include "host/program_context.h"
#include "support/support.h"
#include "tests/host/test_plugin.h"

namespace host::test {
namespace {

/// The journal of the module, which must be loaded.
std::string Journal() {
  void* library = dlopen(NBX_TEST_PLUGIN, RTLD_NOW | RTLD_NOLOAD);
  if (!library) return "not loaded";
  const auto journal = reinterpret_cast<const char* (*)()>(dlsym(library, "test_plugin_journal"));
  const std::string text = journal();
  dlclose(library);
  return text;
}

TEST(PluginLife, RunsFromLoadToEnd) {
  nbx::test::TemporaryFolder folder;
  SmallHost small_host;
  small_host.Preferences().Open(folder.file("settings/preferences.json"));
  {
    const PluginModule plugin(NBX_TEST_PLUGIN, small_host);
    ASSERT_FALSE(small_host.Commands().empty());
    EXPECT_EQ(small_host.Commands().back().info.verb, "probe");

    Terminal terminal(false, false);
    const CommandArguments arguments;
    ProgramContext context(small_host, terminal, arguments);
    const auto document = context.LoadDocument({NBX_HOST_TEST_DATA "/box.json"});
    ASSERT_NE(document, nullptr);
    BaseObject* box = context.FindObject(*document, test_plugin::kBox);
    ASSERT_NE(box, nullptr);
    // The size comes from the plug-in, which reads the parameters.
    EXPECT_EQ(box->GetMp(), (Vector{0, 2, 0}));
    EXPECT_EQ(box->GetRad(), (Vector{2, 2, 2}));
    EXPECT_FALSE(box->Message(7));
  }
  EXPECT_TRUE(small_host.Commands().empty());
  EXPECT_EQ(Journal(),
            "load, path given\nmessage 1\nstart 1, kept 1\n"
            "probe freed\n"  // the second registration failed
            "message 1000\nmessage 1001\nbox init, size 2.000000\nsource init\nA message 1001\n"
            "A message 7\nbox freed\nmessage 1001084\nprobe freed\nend\n");

  // The next start finds the stored values.
  SmallHost again;
  again.Preferences().Open(folder.file("settings/preferences.json"));
  const PluginModule plugin(NBX_TEST_PLUGIN, again);
  const BaseContainer* kept = again.GetWorldPluginData(test_plugin::kBox);
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->GetLong(1), 2);
  EXPECT_EQ(kept->GetReal(2), 0.1);
  EXPECT_EQ(kept->GetFilename(3).path, "/caches");
  std::ofstream(folder.file("settings/preferences.json")) << "{\"x\": {}}";
  EXPECT_THROW(again.Preferences().Open(folder.file("settings/preferences.json")), DocumentError);
}

TEST(PluginLife, EventsAndInterruptsWakeTheMainThread) {
  SmallHost small_host;
  SpecialEvent event;
  std::thread thread([&] {
    for (int code : {1, 2}) small_host.SpecialEventAdd({7, code, {}});
  });
  for (int code : {1, 2}) {
    while (!small_host.Queue().Wait(event)) {
    }
    EXPECT_EQ(event.code, code);
  }
  thread.join();
  WatchInterrupts();
  WakeOnInterrupt(&small_host.Queue());
  std::thread killer([] { std::raise(SIGINT); });
  while (InterruptCount() == 0) EXPECT_FALSE(small_host.Queue().Wait(event));
  killer.join();
  WakeOnInterrupt(nullptr);
}

TEST(PluginLife, FailuresOfTheStartAreReported) {
  const struct {
    const char *fails, *message, *journal_end;
  } cases[] = {{"refuse", "doesn't fit this host, version 11530", "given\n"},
               {"start", "didn't start\n  the test plug-in starts", "kept 1\nend\n"}};
  for (const auto& [fails, message, journal_end] : cases) {
    setenv("NBX_TEST_PLUGIN_FAILS", fails, 1);
    SmallHost small_host;
    try {
      const PluginModule plugin(NBX_TEST_PLUGIN, small_host);
      ADD_FAILURE() << fails << " went well";
    } catch (const std::runtime_error& error) {
      EXPECT_TRUE(std::string(error.what()).ends_with(message)) << error.what();
      EXPECT_TRUE(Journal().ends_with(journal_end)) << Journal();
    }
  }
  unsetenv("NBX_TEST_PLUGIN_FAILS");
  SmallHost small_host;
  ClassDescription box = test_plugin::BoxDescription();
  box.parameters[1].id = box.parameters[0].id;
  EXPECT_FALSE(small_host.RegisterObjectPlugin(test_plugin::kBox, "Box", nullptr, box));
  EXPECT_EQ(small_host.TakeConsole(),
            std::vector<std::string>{
                "registration of Box: parameter OBOX_ACTIVE has the id of another parameter"});
}

}  // namespace
}  // namespace host::test
