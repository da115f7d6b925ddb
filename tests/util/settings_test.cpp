#include "util/settings.h"

#include <QSettings>

#include "support/support.h"

namespace nbx {
namespace {

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

}  // namespace
}  // namespace nbx
