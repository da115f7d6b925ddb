#include "C4D/run/simulation_thread.h"

#include "C4D/test_document.h"
#include "cache/cache_registry.h"
#include "support/support.h"

namespace nbx {
namespace {

TEST(SimulationThread, WritesFramesAsTheVolumeSays) {
  const test::TemporaryFolder folder;
  const auto store = getCache(folder.path());
  for (const bool other : {false, true}) {
    const std::string compress = other ? "true" : "false", sync = other ? "false" : "true";
    test::TestDocument document(R"({"type": "volume", "name": "v", "parameters": {"size": [9, 9, 9],
        "compress_cache": )" + compress +
                                R"(, "cache_sync": )" + sync + R"(, "cache_name": ")" +
                                folder.path() + "\"}}");
    SimulationThread renderer, run;
    ASSERT_TRUE(run.prepare_sim(&document.object("v"), &renderer)) << run.failure();
    EXPECT_EQ(store->codec, other ? Codec::kPredictive : Codec::kRunLength);
    EXPECT_EQ(store->sync, other ? Sync::kNone : Sync::kDisk);
  }
}

}  // namespace
}  // namespace nbx
