// From the load of the plug-in to its end: what it sets up, says and takes down.
#include <QCoreApplication>
#include <clocale>

#include "host/plugin_module.h"
#include "host/scene_schema.h"
#include "support/support.h"

namespace nbx {
namespace {

TEST(PluginStart, SetsUpReportsAndTakesDownEachTime) {
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  for (int round = 0; round < 3; ++round) {
    const test::LogCapture log;
    host::SmallHost host;
    {
      const host::PluginModule plugin(NBX_PLUGIN, host);
      ASSERT_NE(QCoreApplication::instance(), nullptr);
      EXPECT_TRUE(QCoreApplication::libraryPaths().isEmpty());
      EXPECT_EQ(QCoreApplication::applicationName(), "Nimbrix Fluid Dynamics");
      EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), locale.c_str());
    }
    EXPECT_EQ(QCoreApplication::instance(), nullptr);

    const std::string text = log.text(), dashes(80, '-');
    std::size_t at = 0;
    for (const std::string& line :
         {dashes, std::string("Nimbrix v1.0 Rev "), dashes, std::string("Running in render mode"),
          std::string("CINEMA 4D Version 1.0 API 11530"),
          std::to_string(omp_get_num_procs()) + " omp procs", std::string("Phys. mem: "),
          std::string(" OpenGL "), std::string("C4D: "), std::string("No CUDA Devices available"),
          std::string("---\n")}) {
      const std::size_t found = text.find(line, at);
      ASSERT_NE(found, std::string::npos) << line << " is missing or out of order in\n" << text;
      at = found + line.size();
    }
    EXPECT_EQ(at, text.size()) << "nothing more is logged";
  }
}

TEST(PluginStart, SchemaInTheRepositoryIsThatOfTheTables) {
  host::SmallHost host;
  const host::PluginModule plugin(NBX_PLUGIN, host);
  EXPECT_TRUE(host::SceneSchema(host.Classes()) + "\n" == test::read_file(NBX_SCHEMA))
      << "make it anew: nimbrix describe --schema > docs/scene.schema.json";
}

}  // namespace
}  // namespace nbx
