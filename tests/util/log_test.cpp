// The log and the user's settings.
#include "util/log.h"

#include <QSettings>
#include <QString>
#include <regex>
#include <set>
#include <thread>

#include "support/support.h"
#include "util/format_size.h"
#include "util/settings.h"

namespace nbx {

namespace {

// Keeps the default log out of the user's own settings. Runs before anything reads their path.
const std::string& settings_folder() {
  static const test::TemporaryFolder folder;
  static const std::string path = folder.path();
  return path;
}
[[maybe_unused]] const int isolated = setenv("XDG_CONFIG_HOME", settings_folder().c_str(), 1);

// The texts of the lines. A prefix has the seconds with 3 decimals in at least 7 characters, as
// "[  1.500] ".
std::vector<std::string> texts_of(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> texts;
  for (std::string line; std::getline(in, line);) {
    EXPECT_TRUE(std::regex_match(line.substr(0, 10), std::regex(R"(\[[ \d]{3}\.\d{3}\] )")))
        << line;
    texts.push_back(line.substr(10));
  }
  return texts;
}

}  // namespace

TEST(FormatSize, UnitsChangeAt1025) {
  constexpr std::uint64_t kKilo = 1024, kMega = kKilo * 1024;
  EXPECT_EQ(format_size(0, 2), "0.00KB");
  EXPECT_EQ(format_size(1025 * kKilo - 512, 1), "1024.5KB");
  EXPECT_EQ(format_size(1025 * kKilo, 3), "1.001MB");
  EXPECT_EQ(format_size(1025 * kMega - 1, 0), "1025MB");
  EXPECT_EQ(format_size(1025 * kMega, 2), "1.00GB");
}

TEST(Log, ThreadsWriteWholeLines) {
  const test::LogCapture log;
  const std::string padding(300, 'x');
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([t, &padding] {
      for (int i = 0; i < 200; ++i)
        LogMessage() << t << QString::fromUtf8("\xc3\xbc") << i << padding << '|';
    });
  for (std::thread& t : threads) t.join();
  const std::vector<std::string> texts = texts_of(log.text());
  EXPECT_EQ(texts.size(), 4u * 200);
  const std::set<std::string> seen(texts.begin(), texts.end());
  for (int line = 0; line < 4 * 200; ++line)
    EXPECT_TRUE(seen.contains(std::to_string(line / 200) + "\xc3\xbc" + std::to_string(line % 200) +
                              padding + "|"));
}

TEST(Log, DefaultFileLiesBesideTheSettingsAndStartsAnewOrIsNone) {
  set_log_file("");
  const std::string folder = settings_folder() + "/kelvra";
  std::filesystem::create_directories(folder);
  std::ofstream(folder + "/nimbrix.log") << "of an earlier process\n";
  EXPECT_EQ(log_file(), folder + "/nimbrix.log");
  LogMessage() << "hello";
  EXPECT_FALSE(set_log_file(folder + "/no/such/folder/log"));
  LogMessage() << "still here";
  EXPECT_EQ(texts_of(test::read_file(folder + "/nimbrix.log")).size(), 2u);
  // A file has the name of the folder.
  set_log_file("");
  std::filesystem::remove_all(folder);
  std::ofstream(folder) << "in the way";
  LogMessage() << "lost";
  EXPECT_EQ(log_file(), "");
}

TEST(Settings, KeepValuesInTheUsersFolder) {
  const test::TemporaryFolder folder;
  const test::LogCapture log;
  const auto use = [](const std::string& path) {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QString::fromStdString(path));
  };
  use(folder.path());
  {
    const Settings first, copy(first);
    first.settings().setValue("size", 7);
    EXPECT_EQ(copy.settings().value("size").toInt(), 7);
  }
  EXPECT_NE(test::read_file(folder.file("kelvra visual computing/Nimbrix Fluid Dynamics.conf"))
                .find("size=7"),
            std::string::npos);
  EXPECT_EQ(log.text(), "");

  std::ofstream(folder.file("in the way")) << "a file";
  use(folder.file("in the way"));
  const Settings lost;
  EXPECT_TRUE(log.contains("ERROR: user scope settings not writable " + folder.file("in the way")));
}

}  // namespace nbx
