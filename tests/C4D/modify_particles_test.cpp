#include "C4D/volume/modify_particles.h"

#include "C4D/settings/volume_grid.h"
#include "C4D/test_document.h"
#include "cache/cache_registry.h"
#include "cache/grid_type.h"
#include "support/support.h"

namespace nbx {
namespace {

// The cells are 20^3 of 2 units; the gas goes round the y axis of the grid.
TEST(ModifyParticles, ParticlesFollowTheCachedFlow) {
  const test::TemporaryFolder folder;
  const auto store = getCache(folder.path());
  SimFrame frame;
  for (int axis = 0; axis < 3; ++axis) {
    Vec3i dims(22, 22, 22);
    ++dims[axis];
    const FieldHandle f = acquire_field(dims);
    test::each_cell(dims, 0, [&](int i, int j, int k) {
      (*f)(i, j, k) = 0.03f * static_cast<float>(axis == 0 ? 10.5 - k : axis == 2 ? i - 10.5 : 0);
    });
    frame.add(f, kGridVelocityX + axis, {-1, -1, -1},
              {0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, 0.5, 0, 9.5, 9.5, 9.5, 1});
  }
  for (double number = 0; number <= 50; ++number) {
    frame.frameTime = frame.simTime = {{number, 25}, {1, 25}};
    ASSERT_TRUE(store->write_through(frame));
  }
  const auto flight = [&](const std::string& strength, const std::string& x = "10") {
    test::TestDocument document(test::data(
        // The path comes last: its random letters must not be taken for one of the words.
        "floating_particle.json", {{"STRENGTH", strength}, {"X", x}, {"CACHE", folder.path()}}));
    document->SetTime({2, 1});
    document->ExecutePasses(nullptr, true, true, true);
    const host::Particles& particles = document.object("e").GetParticles();
    EXPECT_EQ(particles.size(), 1u);
    return particles.at(0).position;
  };
  // The speed grows with the radius: 0.03 m/s in each cell of 2 units make 1.5 radians a second.
  // The step of a frame follows the tangent, so the circle widens a little.
  const host::Vector end = flight("1");
  EXPECT_NEAR(std::hypot(end.x, end.z), 10, 1.0);
  EXPECT_NEAR(std::atan2(-end.z, end.x), 1.5 * 2, 0.12);
  EXPECT_NEAR(end.y, 0, 1e-6);
  EXPECT_NEAR(std::hypot(flight("0").x - 10, flight("0").z), 0, 1e-9);
  EXPECT_LT(flight("1", "19.5").x, 19) << "the last cell of the domain";
  EXPECT_EQ(flight("1", "21.5").x, 21.5) << "outside";
}

}  // namespace
}  // namespace nbx
