#include "util/log.h"

#include <QString>
#include <cstdio>
#include <set>
#include <thread>

#include "support/support.h"

namespace nbx {

namespace {

// Keeps the default log out of the user's settings. Before anything asks for their place.
const std::string& settings_folder() {
  static const test::TemporaryFolder folder;
  static const std::string path = folder.path();
  return path;
}
[[maybe_unused]] const int isolated = setenv("XDG_CONFIG_HOME", settings_folder().c_str(), 1);

// The texts of the lines. A prefix has the seconds with 3 decimals, at least 7 wide: "[  1.500] ".
std::vector<std::string> texts_of(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> texts;
  for (std::string line; std::getline(in, line);) {
    double seconds = 0;
    char prefix[64];
    EXPECT_EQ(std::sscanf(line.c_str(), "[%lf", &seconds), 1) << line;
    std::snprintf(prefix, sizeof prefix, "[%7.3f] ", seconds);
    EXPECT_EQ(line.substr(0, 10), prefix);
    texts.push_back(line.substr(10));
  }
  return texts;
}

}  // namespace

TEST(Log, LineIsPrefixAndText) {
  const test::LogCapture log;
  LogMessage();
  LogMessage() << "a" << 1.5 << 'c';
  LogMessage() << QString::fromUtf8("gr\xc3\xbc\xc3\x9f") << " and more";
  EXPECT_EQ(texts_of(log.text()),
            (std::vector<std::string>{"", "a1.5c", "gr\xc3\xbc\xc3\x9f and more"}));
  EXPECT_EQ(log.text().back(), '\n');
}

TEST(Log, ThreadsWriteWholeLines) {
  constexpr int kThreads = 4, kLines = 200;
  const test::LogCapture log;
  const std::string padding(300, 'x');
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([t, &padding] {
      for (int i = 0; i < kLines; ++i) LogMessage() << t << "/" << i << padding << "|";
    });
  for (std::thread& t : threads) t.join();

  const std::vector<std::string> texts = texts_of(log.text());
  EXPECT_EQ(texts.size(), std::size_t{kThreads * kLines});
  const std::set<std::string> seen(texts.begin(), texts.end());
  for (int t = 0; t < kThreads; ++t)
    for (int i = 0; i < kLines; ++i)
      EXPECT_TRUE(seen.contains(std::to_string(t) + "/" + std::to_string(i) + padding + "|"));
}

TEST(Log, DefaultFileLiesBesideTheSettingsAndStartsAnew) {
  set_log_file("");
  const std::string folder = settings_folder() + "/kelvra";
  std::filesystem::create_directories(folder);
  std::ofstream(folder + "/nimbrix.log") << "of an earlier process\n";
  EXPECT_EQ(log_file(), folder + "/nimbrix.log");
  LogMessage() << "hello";
  EXPECT_EQ(texts_of(test::read_file(folder + "/nimbrix.log")).size(), 1u);
  set_log_file("");
}

TEST(Log, MissingFileIsNoError) {
  const test::TemporaryFolder folder;
  {
    const test::LogCapture log;
    const std::string before = log_file();
    EXPECT_FALSE(set_log_file(folder.file("no/such/folder/log")));
    EXPECT_EQ(log_file(), before);
    LogMessage() << "still here";
    EXPECT_TRUE(log.contains("still here"));
  }
  // The default place can't be made either: a file stands where its folder should be.
  const std::string blocker = settings_folder() + "/kelvra";
  std::filesystem::remove_all(blocker);
  std::ofstream(blocker) << "in the way";
  LogMessage() << "lost";
  EXPECT_EQ(log_file(), "");
  std::filesystem::remove(blocker);
  LogMessage() << "found";
  EXPECT_EQ(texts_of(test::read_file(blocker + "/nimbrix.log")).size(), 1u);
  set_log_file("");
}

}  // namespace nbx
