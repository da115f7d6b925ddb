// The program as users see it: what it prints where, and its exit codes.
#include <csignal>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/support.h"

namespace nbx::test {
namespace {

struct Outcome {
  int code = -1;
  std::string out, err;
};

/// The program with the test plug-in, and a folder with a scene to run it on.
class Program : public ::testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(folder_.file("scene.json"))
        << R"({"objects": [{"type": "box", "name": "A"}, {"type": "null", "name": "N"}]})";
    std::ofstream(folder_.file("two.json"))
        << R"({"objects": [{"type": "box", "name": "A"}, {"type": "box", "name": "B"}]})";
    std::ofstream(folder_.file("bad.json"))
        << R"({"objects": [{"type": "box", "parameters": {"egde_length": 1}}]})";
  }

  pid_t Start(const std::vector<std::string>& arguments) {
    std::filesystem::remove(folder_.file("err"));
    std::fflush(stdout);  // or the child would print it once more
    const pid_t child = fork();
    if (child != 0) return child;
    if (!freopen(folder_.file("out").c_str(), "w", stdout) ||
        !freopen(folder_.file("err").c_str(), "w", stderr) || chdir(folder_.path().c_str()) != 0)
      _exit(99);
    setenv("NIMBRIX_PLUGIN", plugin_.c_str(), 1);
    std::vector<char*> argv;
    std::string name = NBX_PROGRAM;
    argv.push_back(name.data());
    std::vector<std::string> words = arguments;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    execv(NBX_PROGRAM, argv.data());
    _exit(98);
  }

  Outcome Wait(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(folder_.file("out")),
            read_file(folder_.file("err"))};
  }

  Outcome Run(const std::vector<std::string>& arguments) { return Wait(Start(arguments)); }

  TemporaryFolder folder_;
  std::string plugin_ = NBX_TEST_PLUGIN;
};

TEST_F(Program, HelpAndVersionGoToStdout) {
  const struct {
    std::vector<std::string> words;
    std::vector<std::string> parts;
  } cases[] = {
      {{"--help"}, {"Usage: nimbrix COMMAND", "probe     Looks at a scene", "describe"}},
      {{"--version"}, {"nimbrix 1."}},
      {{"probe", "--help"},
       {"Looks at a scene", "SCENE", "--axis AXIS", "--set OBJECT.parameter=VALUE", "--frames",
        "--threads", "--device", "--cache", "--object", "--json", "--quiet", "--log-file"}},
      {{"probe", "no such", "--version"}, {"nimbrix 1."}},
      {{"describe", "box"},
       {"object \"box\": A box", "edge_length: number, units, from 0.5, up to 1e+06, default 2",
        "mode: plain|fancy, default \"plain\"", "label: text, default \"\", no keyframes"}},
      {{"describe"}, {"object \"mesh\"", "tag \"source\""}},
  };
  for (const auto& [words, parts] : cases) {
    const Outcome outcome = Run(words);
    EXPECT_EQ(outcome.code, 0) << words[0];
    EXPECT_EQ(outcome.err, "");
    for (const std::string& part : parts)
      EXPECT_NE(outcome.out.find(part), std::string::npos) << part << "\n" << outcome.out;
  }
  EXPECT_EQ(Run({}).code, 2);
  EXPECT_NE(Run({}).err.find("Usage: nimbrix COMMAND"), std::string::npos);
}

TEST_F(Program, BadUsageAndBadInputGiveOneLineAndCodeTwo) {
  const struct {
    std::vector<std::string> words;
    const char* message;
  } cases[] = {
      {{"prob"}, "unknown command \"prob\", did you mean \"probe\"?"},
      {{"probe"}, "SCENE is required"},
      {{"probe", "scene.json", "two.json"}, "unexpected argument \"two.json\""},
      {{"probe", "--frmaes", "1-2", "scene.json"},
       "unknown option \"--frmaes\", did you mean \"--frames\"?"},
      {{"probe", "scene.json", "--frames", "5-1"}, "--frames: \"5-1\" ends before it begins"},
      {{"probe", "scene.json", "--threads", "0"}, "--threads: \"0\" is below 1"},
      {{"probe", "scene.json", "--threads", "2.5"}, "--threads: \"2.5\" isn't a whole number"},
      {{"probe", "scene.json", "--device", "gpu"}, "--device: \"gpu\" is neither cpu nor a number"},
      {{"probe", "scene.json", "--axis", "z"}, "--axis: \"z\" isn't one of x, y"},
      {{"probe", "scene.json", "--gain", "-1"}, "--gain: \"-1\" is below 0"},
      {{"probe", "scene.json", "--object", "A", "--object", "B"},
       "--object is given more than once"},
      {{"probe", "scene.json", "--object", "N"},
       "scene.json: no box object is named \"N\", did "
       "you mean \"A\"?"},
      {{"probe", "two.json"},
       "two.json: the scene has 2 box objects (\"A\", \"B\"); choose one "
       "with --object NAME"},
      {{"probe", "bad.json"},
       "bad.json: objects[0].parameters: unknown parameter \"egde_length\", "
       "did you mean \"edge_length\"?"},
      {{"probe", "none.json"}, "none.json: can't be opened: No such file or directory"},
      {{"probe", "scene.json", "--set", "A.edge_length=0"},
       "--set A.edge_length=0: 0 is below 0.5"},
      {{"describe", "bax"}, "unknown type \"bax\", did you mean \"box\"?"},
  };
  for (const auto& [words, message] : cases) {
    const Outcome outcome = Run(words);
    EXPECT_EQ(outcome.code, 2) << message;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "nimbrix: error: " + std::string(message) + "\n");
  }
  // A value that is missing altogether.
  const Outcome missing = Run({"probe", "scene.json", "--threads"});
  EXPECT_EQ(missing.code, 2);
  EXPECT_NE(missing.err.find("--threads"), std::string::npos) << missing.err;
}

TEST_F(Program, OptionsReachTheCommand) {
  const Outcome outcome =
      Run({"probe", "--set", "*.edge_length=3", "--frames", "-2--1", "two.json", "--object=B",
           "--threads", "7", "--set", "B.edge_length=4", "--gain", "2.5"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.out, "B, edge 4.000000, frames -2 -1, gain 2.500000, threads 7\n");
  EXPECT_EQ(outcome.err, "frame -2\nframe -1\n");

  const Outcome json = Run({"probe", "scene.json", "--json", "--quiet", "--frames", "1"});
  EXPECT_EQ(json.out, "{\"event\":\"box\",\"name\":\"A\",\"edge\":2.0}\n");
  EXPECT_EQ(json.err, "");
}

TEST_F(Program, FailuresGiveCodeOne) {
  const Outcome thrown = Run({"probe", "scene.json", "--throw"});
  EXPECT_EQ(thrown.code, 1);
  EXPECT_EQ(thrown.err, "nimbrix: error: thrown by the probe\n");
  plugin_ = folder_.file("none.so");
  const Outcome missing = Run({"probe", "scene.json"});
  EXPECT_EQ(missing.code, 1);
  EXPECT_NE(missing.err.find("error: the plug-in can't be loaded: "), std::string::npos);
  EXPECT_EQ(Run({"--version"}).code, 0);
}

TEST_F(Program, AnInterruptReachesTheCommand) {
  for (const int signal : {SIGINT, SIGTERM}) {
    const pid_t child = Start({"probe", "scene.json", "--wait"});
    // Its note on stderr tells that it waits.
    for (int i = 0; i < 2000 && read_file(folder_.file("err")).empty(); ++i) usleep(5000);
    kill(child, signal);
    const Outcome outcome = Wait(child);
    EXPECT_EQ(outcome.code, 130);
    EXPECT_EQ(outcome.err, "waiting\n");
  }
}

}  // namespace
}  // namespace nbx::test
