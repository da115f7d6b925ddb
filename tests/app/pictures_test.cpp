// Scenes simulated and rendered coarsely by the program, compared with tests/app/pictures. With
// NBX_WRITE_PICTURES set, the pictures are written instead; look at them before you commit them.
#include <QImage>

#include "support/support.h"

namespace nbx::test {
namespace {

void expect_known_look(const std::string& name, const std::vector<std::string>& volumes) {
  SCOPED_TRACE(name);
  const TemporaryFolder folder;
  const std::string picture = folder.file(name + ".png");
  const std::string kept = NBX_SOURCES "/tests/app/pictures/" + name + ".png";
  std::filesystem::copy(NBX_SOURCES "/scenes", folder.path(),
                        std::filesystem::copy_options::recursive);
  const auto run = [&](const std::string& line) {
    return std::system(
        ("cd '" + folder.path() + "' && '" NBX_PROGRAM "' " + line + " >out 2>&1").c_str());
  };
  for (const std::string& volume : volumes)
    ASSERT_EQ(0, run("simulate " + name + ".json --object " + volume + " --frames 0-24 --set " +
                     volume + ".voxel_size=6"))
        << read_file(folder.file("out"));
  ASSERT_EQ(0, run("render " + name +
                   ".json --frames 24 --size 96x72 --samples 8 --set render.bounces=0 --output " +
                   picture))
      << read_file(folder.file("out"));
  if (std::getenv("NBX_WRITE_PICTURES"))
    std::filesystem::copy_file(picture, kept, std::filesystem::copy_options::overwrite_existing);

  const QImage made = QImage(QString::fromStdString(picture)).convertToFormat(QImage::Format_RGB32);
  const QImage known = QImage(QString::fromStdString(kept)).convertToFormat(QImage::Format_RGB32);
  ASSERT_EQ(made.size(), QSize(96, 72));
  ASSERT_EQ(known.size(), made.size());
  double sum = 0;
  int far = 0;
  for (int y = 0; y < 72; ++y)
    for (int x = 0; x < 96; ++x) {
      const QRgb a = made.pixel(x, y), b = known.pixel(x, y);
      const int difference = std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) +
                             std::abs(qBlue(a) - qBlue(b));
      sum += difference / 3.0;
      far += difference > 60;
    }
  // Another processor or compiler changes last bits, and through them single samples: a few pixels,
  // little on average. A picture shifted by one pixel differs by a mean of 0.96 or more.
  EXPECT_LT(sum / (96 * 72), 0.5);
  EXPECT_LT(far, 96 * 72 / 100);
}

TEST(Pictures, LookAsTheyDid) {
  expect_known_look("fire_and_mirror", {"fire"});
  expect_known_look("sunlit_smoke", {"smoke"});
  expect_known_look("two_volumes", {"white", "red"});
  expect_known_look("excluded_volume", {"hidden", "unlit"});
}

}  // namespace
}  // namespace nbx::test
