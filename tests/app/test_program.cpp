// The program as users see it: what it prints where, and its exit codes.
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/wait.h>

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
    std::ofstream(folder_.file("much.json"))
        << R"({"objects": [{"type": "box"}, {"type": "particle_emitter", "parameters": {
               "rate": 1e9, "life": 1}}]})";
  }

  /// Runs a line of the shell in that folder; `$P` is the program.
  Outcome Shell(const std::string& line) {
    std::filesystem::remove(folder_.file("err"));
    const int status = std::system(("cd '" + folder_.path() + "'; P='" NBX_PROGRAM "'; export " +
                                    "NIMBRIX_PREFERENCES='" + folder_.file("preferences.json") +
                                    "' NIMBRIX_PLUGIN='" + plugin_ + "'; " + line)
                                       .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(folder_.file("out")),
            read_file(folder_.file("err"))};
  }

  Outcome Run(const std::vector<std::string>& arguments) {
    std::string line = "$P >out 2>err";
    for (const std::string& word : arguments) line += " '" + word + "'";
    return Shell(line);
  }

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
      {{"describe", "box"},
       {"object \"box\": A box", "edge_length: number, units, from 0.5, up to 1e+06, default 2",
        "mode: plain|fancy, default \"plain\"", "label: text, default \"\", no keyframes"}},
  };
  for (const auto& [words, parts] : cases) {
    const Outcome outcome = Run(words);
    EXPECT_EQ(outcome.code, 0) << words[0];
    EXPECT_EQ(outcome.err, "");
    for (const std::string& part : parts)
      EXPECT_NE(outcome.out.find(part), std::string::npos) << part << "\n" << outcome.out;
  }
  EXPECT_NE(Run({}).err.find("Usage: nimbrix COMMAND"), std::string::npos);
}

TEST_F(Program, BadUsageAndBadInputGiveOneLineAndCodeTwo) {
  const struct {
    std::vector<std::string> words;
    const char* message;
  } cases[] = {
      {{"prob"}, "unknown command \"prob\", did you mean \"probe\"?"},
      {{"probe"}, "SCENE is required"},
      {{"probe", "--frmaes", "1-2", "scene.json"},
       "unknown option \"--frmaes\", did you mean \"--frames\"?"},
      {{"probe", "scene.json", "--frames", "5-1"}, "--frames: \"5-1\" ends before it begins"},
      {{"probe", "scene.json", "--threads", "0"}, "--threads: \"0\" is below 1"},
      {{"probe", "scene.json", "--axis", "z"}, "--axis: \"z\" isn't one of x, y"},
      {{"probe", "scene.json", "--object", "A", "--object", "B"},
       "--object is given more than once"},
      {{"probe", "scene.json", "--since", "--since=4"}, "--since is given more than once"},
      {{"probe", "two.json"},
       "two.json: the scene has 2 box objects (\"A\", \"B\"); choose one "
       "with --object NAME"},
      {{"probe", "bad.json"},
       "bad.json: objects[0].parameters: unknown parameter \"egde_length\", "
       "did you mean \"edge_length\"?"},
      {{"probe", "much.json"},
       "much.json: objects[1]: the scene asks for 10000000 particles at once, more than 5000000; "
       "most of them are here: lower its rate or life, or give --force"},
      {{"probe", "none.json"}, "none.json: can't be opened: No such file or directory"},
      {{"probe", "scene.json", "--set", "A.edge_length=x"},
       "--set A.edge_length=x: expected a number, found \"x\""},
  };
  for (const auto& [words, message] : cases) {
    const Outcome outcome = Run(words);
    EXPECT_EQ(outcome.code, 2) << message;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "nimbrix: error: " + std::string(message) + "\n");
  }
}

TEST_F(Program, OptionsReachTheCommand) {
  const Outcome outcome =
      Run({"probe", "--set", "*.edge_length=3", "--frames", "-2--1", "two.json", "--object=B",
           "--threads", "7", "--set", "B.edge_length=4", "--gain", "2.5"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.out, "B, edge 4.000000, frames -2 -1, gain 2.500000, threads 7\n");
  EXPECT_EQ(outcome.err, "frame -2\nframe -1\n");

  EXPECT_EQ(Run({"probe", "much.json", "--force"}).code, 0);
  // A value that may be left out never swallows the next argument.
  for (const std::string words : {"--since scene.json", "scene.json --since"})
    EXPECT_NE(Shell("$P probe " + words + " >out").out.find("since ever"), std::string::npos);
  for (const std::string words : {"--since -3 scene.json", "scene.json --since=-3"})
    EXPECT_NE(Shell("$P probe " + words + " >out").out.find("since -3"), std::string::npos);

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
}

TEST_F(Program, AnInterruptReachesTheCommand) {
  for (const std::string signal : {"INT", "TERM"}) {
    // Its note on stderr tells that it waits.
    const Outcome outcome = Shell(
        "$P probe scene.json --wait >out 2>err & while kill -0 $! && ! [ -s err ]; "
        "do sleep 0.01; done; kill -" +
        signal + " $!; wait $!");
    EXPECT_EQ(outcome.code, 130);
    EXPECT_EQ(outcome.err, "waiting\n");
  }
}

}  // namespace
}  // namespace nbx::test
