// The command `new` from the command line: each scene shows gas, and a model gets a scene.
#include <QImage>

#include "support/support.h"

namespace nbx::test {
namespace {

class NewCommand : public ::testing::Test {
 protected:
  void run(const std::string& line) {
    const std::string out = folder_.file("out");
    const std::string command =
        "cd '" + folder_.path() + "' && '" NBX_PROGRAM "' " + line + " >" + out + " 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << line << "\n" << read_file(out);
    output_ = read_file(out);
  }
  QImage picture(const std::string& scene, int frame, const std::string& options) {
    run("render " + scene + " --size 48x48 --samples 2 --output p.png " + options + " --frames " +
        std::to_string(frame));
    return QImage(QString::fromStdString(folder_.file("p.png")))
        .convertToFormat(QImage::Format_RGB32);
  }
  /// Renders without and with the gas, and counts the pixels that it changes.
  void expect_gas(const std::string& scene, int first, int last, const std::string& voxel) {
    SCOPED_TRACE(scene);
    const QImage empty = picture(scene, last, "--missing empty");
    run("simulate " + scene + " --frames " + std::to_string(first) + "-" + std::to_string(last) +
        " --set '*.voxel_size=" + voxel + "'");
    EXPECT_EQ(output_.find("warning"), std::string::npos) << output_;
    const QImage full = picture(scene, last, "");
    EXPECT_EQ(output_.find("warning"), std::string::npos) << output_;
    int changed = 0, lit = 0;
    for (int y = 0; y < 48; ++y)
      for (int x = 0; x < 48; ++x) {
        const QRgb a = empty.pixel(x, y), b = full.pixel(x, y);
        changed += std::abs(qGreen(a) - qGreen(b)) > 12;
        lit += qGreen(a) > 12;
      }
    EXPECT_GT(changed, 20);
    EXPECT_GT(lit, 48 * 48 / 4) << "ground, background and objects";
  }

  TemporaryFolder folder_;
  std::string output_;
};

TEST_F(NewCommand, EverySceneShowsGas) {
  const struct {
    std::string kind;
    int first, last;
    std::string voxel;
  } cases[] = {{"smoke", 0, 12, "4"},   {"fire", 0, 12, "4"},    {"explosion", 0, 8, "8"},
               {"steam", 0, 16, "0.8"}, {"candle", 0, 6, "0.4"}, {"dust", 8, 24, "6"}};
  for (const auto& c : cases) {
    run("new " + c.kind);
    expect_gas(c.kind + ".json", c.first, c.last, c.voxel);
  }
}

TEST_F(NewCommand, AModelGetsAScene) {
  std::filesystem::create_directory(folder_.file("models"));
  std::filesystem::copy(NBX_SOURCES "/scenes/meshes/knot.ply", folder_.file("models"));
  run("new --from models/knot.ply shots/smoke.json");
  EXPECT_NE(output_.find("nimbrix simulate shots/smoke.json\n"), std::string::npos);
  EXPECT_NE(read_file(folder_.file("shots/smoke.json")).find("\"../models/knot.ply\""),
            std::string::npos);
  expect_gas("shots/smoke.json", 0, 10, "1");
}

}  // namespace
}  // namespace nbx::test
