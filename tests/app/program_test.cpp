// The program as users see it: its output and exit codes.

#include <sys/wait.h>

#include "support/support.h"

namespace nbx::test {
namespace {

struct Outcome {
  int code;
  std::string out, err;
};

/// The program with the test plug-in, and a folder with a scene.
class Program : public ::testing::Test {
 protected:
  Program() { std::filesystem::copy(NBX_SOURCES "/tests/app/data/program", folder_.path()); }

  /// Runs a shell command in that folder. `$P` is the program.
  Outcome Shell(const std::string& line) {
    std::filesystem::remove(folder_.file("err"));
    const int status = std::system(("cd '" + folder_.path() + "'; P='" NBX_PROGRAM "'; export " +
                                    "NIMBRIX_PREFERENCES='" + folder_.file("preferences.json") +
                                    "' NIMBRIX_PLUGIN='" + plugin_ + "'; " + line)
                                       .c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(folder_.file("out")),
            read_file(folder_.file("err"))};
  }

  Outcome Run(const std::string& arguments) { return Shell("$P >out 2>err " + arguments); }

  TemporaryFolder folder_;
  std::string plugin_ = NBX_TEST_PLUGIN;
};

/// Calls body(words, line) for each line in a file of data/, where `words` are the arguments from
/// the preceding line that starts with a dollar sign.
template <class Body>
void EachLine(const char* file, Body body) {
  std::ifstream in(std::string(NBX_SOURCES "/tests/app/data/") + file);
  std::string words;
  for (std::string line; std::getline(in, line);)
    line[0] == '$' ? void(words = line.substr(2)) : body(words, line);
  EXPECT_FALSE(words.empty());
}

TEST_F(Program, HelpAndVersionGoToStdout) {
  EachLine("help.txt", [&](const std::string& words, const std::string& part) {
    const Outcome outcome = Run(words);
    EXPECT_EQ(outcome.code, 0) << words;
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find(part), std::string::npos) << part << "\n" << outcome.out;
  });
  EXPECT_NE(Run("").err.find("Usage: nimbrix COMMAND"), std::string::npos);
}

TEST_F(Program, BadUsageAndBadInputGiveOneLineAndCodeTwo) {
  EachLine("refusals.txt", [&](const std::string& words, const std::string& message) {
    const Outcome outcome = Run(words);
    EXPECT_EQ(outcome.code, 2) << words;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "nimbrix: error: " + message + "\n");
  });
  EXPECT_EQ(Shell("ls x.* >out 2>err").out, "") << "a refused render left a file";
}

TEST_F(Program, OptionsReachTheCommand) {
  const Outcome outcome =
      Run("probe --set '*.edge_length=3' --frames -2--1 two.json --object=B --threads 7 --set "
          "B.edge_length=4 --gain 2.5");
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.out, "B, edge 4.000000, frames -2 -1, gain 2.500000, threads 7\n");
  EXPECT_EQ(outcome.err, "frame -2\nframe -1\n");

  EXPECT_EQ(Run("probe much.json --force").code, 0);
  const Outcome json = Run("probe scene.json --json --quiet --frames 1");
  EXPECT_EQ(json.out, "{\"event\":\"box\",\"name\":\"A\",\"edge\":2.0}\n");
  EXPECT_EQ(json.err, "");
}

TEST_F(Program, FailuresGiveCodeOne) {
  const Outcome thrown = Run("probe scene.json --throw");
  EXPECT_EQ(thrown.code, 1);
  EXPECT_EQ(thrown.err, "nimbrix: error: thrown by the probe\n");
  plugin_ = folder_.file("none.so");
  const Outcome missing = Run("probe scene.json");
  EXPECT_EQ(missing.code, 1);
  EXPECT_NE(missing.err.find("error: the plug-in can't be loaded: "), std::string::npos);
}

TEST_F(Program, AnInterruptReachesTheCommand) {
  for (const std::string signal : {"INT", "TERM"}) {
    // Its note on stderr shows that it is waiting.
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
