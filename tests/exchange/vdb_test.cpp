// Frames written as OpenVDB files, checked with OpenVDB itself, and read back.
#include <openvdb/openvdb.h>

#include "cache/grid_type.h"
#include "exchange/vdb_file.h"
#include "exchange/vdb_info.h"
#include "support/support.h"

namespace nbx {
namespace {

// World (x, y, z) of cell (i, j, k) is (10 - 2 j, 20 + 2 i, 30 + 2 k) in host units: voxels of 2,
// the grid's x axis along y, its y axis along -x.
const GridMatrix kMatrix{0, -0.5, 0, 0, 0.5, 0, 0, 0, 0, 0, 0.5, 0, -10, 5, -15, 1};
const Vec3i kOffset{-1, 2, 3}, kDims{9, 8, 7};
const std::map<int, std::string> kNames{{kGridDensity, "smoke"}, {kGridVelocityX, "vel"}};
const std::map<std::string, int> kTypes{{"smoke", kGridDensity}, {"vel", kGridVelocityX}};

class Vdb : public testing::Test {
 protected:
  Vdb() {
    frame.frameTime = {{-3, 30}, {1, 30}};
    frame.simTime = {{1, 7}, {1, 50}};
    for (int type : {2, 5, 6, 7}) {
      Vec3i dims = kDims;
      if (type >= kGridVelocityX) ++dims[type - kGridVelocityX];
      const FieldHandle field = acquire_field(dims);
      test::fill_random(*field, static_cast<unsigned>(type), 0.5f, 3);
      frame.add(field, type, kOffset, kMatrix);
    }
  }
  openvdb::GridPtrVec written(const VdbOptions& options) {
    write_vdb(path, frame, options);
    openvdb::io::File file(path);
    file.open();
    EXPECT_EQ(file.getMetadata()->metaValue<std::int32_t>("frame"), -3);
    return *file.getGrids();
  }

  test::TemporaryFolder folder;
  const std::string path = folder.file("frame.vdb");
  SimFrame frame;
};

TEST_F(Vdb, VoxelsAndVelocitiesLieWhereTheFrameHasThem) {
  // Density 7 only in cell (3, 4, 5) and in the ghost layer; gas that moves by (1, 2, 3) along the
  // grid's axes.
  Field<float>& density = *frame.grid(kGridDensity);
  std::fill_n(density.data(), density.count(), 0.0f);
  density(4, 2, 2) = density(0, 2, 2) = 7;
  for (int a = 0; a < 3; ++a) {
    Field<float>& component = *frame.grid(kGridVelocityX + a);
    std::fill_n(component.data(), component.count(), static_cast<float>(1 + a));
  }
  const struct {
    bool meters, z_up;
    openvdb::Vec3d place, speed;
  } cases[] = {{true, false, {0.02, 0.26, 0.40}, {-2, 1, 3}},
               {false, false, {2, 26, 40}, {-200, 100, 300}},
               {false, true, {2, -40, 26}, {-200, -300, 100}}};
  for (const auto& c : cases) {
    const auto grids = written({c.meters, c.z_up, false, false, kNames});
    ASSERT_EQ(grids.size(), 2u);
    const auto smoke = openvdb::gridPtrCast<openvdb::FloatGrid>(grids[0]);
    EXPECT_EQ(smoke->getName(), "smoke");
    EXPECT_EQ(smoke->getGridClass(), openvdb::GRID_FOG_VOLUME);
    EXPECT_EQ(smoke->activeVoxelCount(), 1u);
    const openvdb::Coord cell(3, 4, 5);
    EXPECT_EQ(smoke->tree().getValue(cell), 7);
    EXPECT_LT((smoke->indexToWorld(cell) - c.place).length(), 1e-9) << smoke->indexToWorld(cell);
    const auto vel = openvdb::gridPtrCast<openvdb::Vec3SGrid>(grids[1]);
    EXPECT_LT((openvdb::Vec3d(vel->tree().getValue(cell)) - c.speed).length(), 1e-4);
    EXPECT_EQ(vel->activeVoxelCount(), 7u * 6 * 5);
    EXPECT_EQ(vel->metaValue<std::string>("units"), c.meters ? "m" : "cm");
  }
}

TEST_F(Vdb, FramesComeBack) {
  for (const bool half : {false, true})
    for (const bool z_up : {false, true})
      for (const bool staggered : {false, true}) {
        const VdbOptions options{!z_up, z_up, staggered, half, kNames};
        write_vdb(path, frame, options);
        SimFrame back;
        const VdbContent content = read_vdb(back, path, kTypes, options);
        EXPECT_EQ(content.numbers.at("frame"), -3);
        EXPECT_NEAR(content.numbers.at("frames_per_second"), 30, 1e-9);
        EXPECT_EQ(back.simTime, frame.simTime);
        ASSERT_EQ(back.grids.size(), 4u);
        for (auto& [type, grid] : back.grids) {
          EXPECT_EQ(grid.offset, kOffset);
          for (std::size_t i = 0; i < 16; ++i) EXPECT_NEAR(grid.gridMatrix[i], kMatrix[i], 1e-12);
          const Field<float>&f = *frame.grid(type), &g = *grid.field;
          ASSERT_EQ(g.dims(), f.dims());
          const int a = staggered_axis(type);
          const bool mean = a >= 0 && !staggered;
          // Half floats have 11 bits; scaling by 100 and rotation round a few times.
          const double tolerance = half ? 1e-3 : a >= 0 ? 1e-6 : 0;
          test::each_cell(f.dims(), mean ? 2 : 1, [&](int i, int j, int k) {
            // A face between the mean values of its two cells.
            const int x = a == 0, y = a == 1, z = a == 2;
            const double expected = mean ? 0.25 * f(i - x, j - y, k - z) + 0.5 * f(i, j, k) +
                                               0.25 * f(i + x, j + y, k + z)
                                         : f(i, j, k);
            ASSERT_NEAR(g(i, j, k), expected, tolerance * (mean ? 4 : 1) * expected)
                << a << " " << i << " " << j << " " << k;
          });
          if (a < 0) {
            EXPECT_EQ(g(0, 3, 3), 0);
          }
        }
      }
}

// Cells far from solids get the end of the band, and 16 bits no infinity.
TEST_F(Vdb, ValuesSuitOtherPrograms) {
  constexpr float kFar = std::numeric_limits<float>::max();
  Field<float>& density = *frame.grid(kGridDensity);
  std::fill_n(density.data(), density.count(), 0.0f);
  density(4, 2, 2) = kFar;
  (*frame.grid(kGridVelocityY))(4, 2, 2) = -700;
  const FieldHandle solid = acquire_field(kDims);
  std::fill_n(solid->data(), solid->count(), kFar);
  (*solid)(4, 2, 2) = -70000, (*solid)(5, 2, 2) = 2.5f;
  frame.add(solid, kGridSolid, kOffset, kMatrix);
  for (const bool half : {false, true}) {
    const VdbOptions options{
        .meters = false,
        .staggered = true,
        .half = half,
        .names = {{kGridDensity, "smoke"}, {kGridVelocityX, "vel"}, {kGridSolid, "walls"}}};
    EXPECT_EQ(write_vdb(path, frame, options), half ? 3u : 0u);
    VdbFileInfo info = read_vdb_info(path);
    EXPECT_EQ(info.metadata.at("frame"), "-3");
    std::map<std::string, VdbGridInfo> grids;
    for (const VdbGridInfo& grid : info.grids) grids[grid.name] = grid;
    const VdbGridInfo &smoke = grids["smoke"], &vel = grids["vel"], &walls = grids["walls"];
    EXPECT_EQ(smoke.values->max, half ? 65504 : kFar);
    EXPECT_EQ(smoke.box.lo, Vec3i(3, 4, 5));
    EXPECT_EQ(smoke.box.hi, Vec3i(3, 4, 5));
    EXPECT_LT(length(smoke.low - Vec3d(1, 25, 39)) + length(smoke.high - Vec3d(3, 27, 41)), 1e-9);
    EXPECT_EQ(smoke.metadata.count("frame"), 0u) << "the file has it";
    EXPECT_NEAR(vel.values->max, half ? 65504 : 70000, 5);
    EXPECT_EQ(vel.metadata.at("value_unit"), "cm/s");
    EXPECT_EQ(vel.half, half);
    EXPECT_EQ(walls.active, 2u);
    EXPECT_EQ(walls.values->min, half ? -65504 : -70000);
    EXPECT_EQ(walls.values->max, 2.5f);
    EXPECT_EQ(walls.metadata.at("value_unit"), "squared voxels");
    EXPECT_NE(walls.grid_class, smoke.grid_class);
  }
  SimFrame back;
  read_vdb(back, path, {{"walls", kGridSolid}}, {.meters = false, .names = {}});
  EXPECT_EQ((*back.grid(kGridSolid))(2, 2, 2), 3) << "not inside of a solid";
}

TEST_F(Vdb, FilesOfAnyOriginAreDescribed) {
  const auto mask = openvdb::BoolGrid::create();
  mask->setName("mask");
  mask->tree().setValue({1, 2, 3}, true);
  const auto ages = openvdb::Int32Grid::create(5);
  ages->setName("age");
  ages->fill(openvdb::CoordBBox({0, 0, 0}, {7, 7, 7}), 4);  // a tile
  ages->tree().setValue({-1, 0, 0}, 517);
  ages->transform().postScale(openvdb::Vec3d(1, 1, 2));
  const auto heat = openvdb::FloatGrid::create();
  heat->setName("heat");
  const auto blank = heat->deepCopy();
  heat->tree().setValue({0, 0, 0}, 7);
  heat->tree().setValue({1, 0, 0}, std::numeric_limits<float>::quiet_NaN());
  openvdb::io::File(path).write(openvdb::GridPtrVec{mask, ages, heat});
  std::map<std::string, VdbGridInfo> grids;
  for (const VdbGridInfo& grid : read_vdb_info(path).grids) grids[grid.name] = grid;
  EXPECT_EQ(grids["mask"].type, "bool");
  EXPECT_EQ(grids["mask"].active, 1u);
  EXPECT_FALSE(grids["mask"].values);
  EXPECT_EQ(grids["age"].active, 513u);
  EXPECT_EQ(grids["age"].values->mean, 5) << "voxels count, not tiles";
  EXPECT_EQ(grids["age"].voxel, Vec3d(1, 1, 2));
  EXPECT_EQ(grids["heat"].values->nans, 1u);
  EXPECT_EQ(grids["heat"].values->mean, 7);

  const std::string whole = test::read_file(path);
  for (std::size_t size = 0; size < whole.size(); size += whole.size() / 40) {
    std::ofstream(path, std::ios::binary) << whole.substr(0, size);
    EXPECT_THROW(read_vdb_info(path), std::exception) << size;
  }
  openvdb::io::File(path).write(openvdb::GridPtrVec{blank});
  EXPECT_TRUE(read_vdb_info(path).grids.at(0).box.empty());
  EXPECT_FALSE(read_vdb_info(path).grids.at(0).values);
}

TEST_F(Vdb, WhatIsNoFrameIsRefused) {
  const auto refusal = [&]() -> std::string {
    try {
      SimFrame back;
      read_vdb(back, path, kTypes, {});
    } catch (const Exception& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_NE(refusal(), "");  // no such file
  std::ofstream(path) << "no volume at all";
  EXPECT_NE(refusal(), "");
  auto grids = written({.names = kNames});
  const auto rewrite = [&] { openvdb::io::File(path).write(grids); };
  grids[1]->setTransform(openvdb::math::Transform::createLinearTransform(0.5));
  rewrite();
  EXPECT_EQ(refusal(), "grid \"vel\" uses other voxels than \"smoke\"");
  for (const auto& grid : grids) grid->transform().postScale(openvdb::Vec3d(1, 1, 2));
  rewrite();
  EXPECT_EQ(refusal(), "its voxels aren't right-handed cubes");
  grids.pop_back();
  grids[0]->setTransform(openvdb::math::Transform::createLinearTransform(0.5));
  openvdb::gridPtrCast<openvdb::FloatGrid>(grids[0])->tree().setValue({1 << 20, 0, 1 << 20}, 1);
  rewrite();
  EXPECT_EQ(refusal(), "its box is too large");
  grids[0]->setName("other");
  rewrite();
  EXPECT_EQ(refusal(),
            "it contains no grid with a known name; use --name CHANNEL=NAME to assign a channel");

  write_vdb(path, frame, {.names = kNames});
  EXPECT_THROW(write_vdb(folder.file("no/such/folder.vdb"), frame, {.names = kNames}), Exception);
}

}  // namespace
}  // namespace nbx
