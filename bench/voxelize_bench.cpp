// Voxelizes meshes into a box of 256^3 cells: surface, inside, both. OpenVDB, where installed,
// converts the same mesh for comparison. Cells are those of the box.
#include <numbers>

#include <omp.h>

#include "bench/passes.h"
#include "scene/cell_center_voxelizer.h"
#include "scene/inside_classification.h"

#ifdef NBX_HAVE_OPENVDB
#include <openvdb/openvdb.h>
#include <openvdb/tools/MeshToVolume.h>
#endif

namespace nbx::bench {

namespace {

constexpr int kEdge = 256;
constexpr std::size_t kCells = std::size_t{kEdge} * kEdge * kEdge;
const IntBox kBox{{0, 0, 0}, {kEdge - 1, kEdge - 1, kEdge - 1}};

/// A bent, closed torus of about that many triangles that fills most of the box.
DetachedPolygonObject torus(std::int64_t triangles) {
  const int n = static_cast<int>(std::lround(std::sqrt(static_cast<double>(triangles) / 2)));
  DetachedPolygonObject mesh;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const double a = 2 * std::numbers::pi * i / n, b = 2 * std::numbers::pi * j / n;
      const double r = 80 + 35 * std::cos(b) + 3 * std::sin(7 * a) * std::cos(5 * b);
      mesh.points.emplace_back(127.3 + r * std::cos(a), 127.6 + r * std::sin(a),
                               127.1 + 35 * std::sin(b));
      const int i1 = (i + 1) % n, j1 = (j + 1) % n;
      mesh.polygons.push_back({i * n + j, i1 * n + j, i1 * n + j1, i * n + j1});
    }
  return mesh;
}

/// Sets the number of OpenMP threads while it lives.
class Threads {
 public:
  explicit Threads(std::int64_t n) : before_(omp_get_max_threads()) {
    omp_set_num_threads(static_cast<int>(n));
  }
  ~Threads() { omp_set_num_threads(before_); }

 private:
  int before_;
};

void surface(SparseField<float, 3>& field, const PolygonWalk& walk) {
  voxelize(field, walk, kBox, {std::sqrt(3.0)});
}
void fill(SparseField<float, 3>& field, const PolygonWalk& walk) {
  classify_inside(field, PolygonObjectContainer(walk, kBox));
}
void both(SparseField<float, 3>& field, const PolygonWalk& walk) {
  fill(field, walk);
  surface(field, walk);
}

/// From the scene's mesh to the field; the arguments are triangles and threads.
void bench_voxelize(benchmark::State& state,
                    void (*body)(SparseField<float, 3>&, const PolygonWalk&)) {
  const DetachedPolygonObject mesh = torus(state.range(0));
  const Threads threads(state.range(1));
  SparseField<float, 3> field;
  measure(state, kCells, [&] {
    field.clear();
    body(field, PolygonWalk({&mesh, 1}, Affine3d::identity()));
  });
}

void sizes(benchmark::internal::Benchmark* bench) {
  for (int threads : {1, 2})
    for (int triangles : {10'000, 100'000, 1'000'000}) bench->Args({triangles, threads});
  bench->ArgNames({"triangles", "threads"})->Unit(benchmark::kMillisecond);
  bench->MeasureProcessCPUTime();  // of all threads: holds on a busy machine too
}
BENCHMARK_CAPTURE(bench_voxelize, surface, surface)->Name("voxelize_surface")->Apply(sizes);
BENCHMARK_CAPTURE(bench_voxelize, fill, fill)->Name("voxelize_fill")->Apply(sizes);
BENCHMARK_CAPTURE(bench_voxelize, both, both)->Name("voxelize_surface_and_fill")->Apply(sizes);

/// The tree over the triangles' bounds alone.
void bench_kdtree(benchmark::State& state) {
  const DetachedPolygonObject mesh = torus(state.range(0));
  const PolygonObjectContainer container(PolygonWalk({&mesh, 1}, Affine3d::identity()), kBox);
  const std::vector<Bounds3f> bounds = triangle_bounds(container);
  const Threads threads(state.range(1));
  measure(state, bounds.size(), [&] { benchmark::DoNotOptimize(KdTree(bounds)); });
}
BENCHMARK(bench_kdtree)->Name("kdtree_build")->Apply(sizes);

#ifdef NBX_HAVE_OPENVDB
/// With its usual narrow band of 3 cells to both sides.
void bench_openvdb(benchmark::State& state) {
  const DetachedPolygonObject mesh = torus(state.range(0));
  std::vector<openvdb::Vec3s> points;
  for (const Vec3d& p : mesh.points) points.emplace_back(p[0], p[1], p[2]);
  std::vector<openvdb::Vec3I> triangles;
  for (const auto& [a, b, c, d] : mesh.polygons) {
    triangles.emplace_back(a, b, c);
    triangles.emplace_back(a, c, d);
  }
  openvdb::initialize();
  measure(state, kCells, [&] {
    const openvdb::tools::QuadAndTriangleDataAdapter<openvdb::Vec3s, openvdb::Vec3I> adapter(
        points, triangles);
    benchmark::DoNotOptimize(
        openvdb::tools::meshToVolume<openvdb::FloatGrid>(adapter, openvdb::math::Transform()));
  });
}
BENCHMARK(bench_openvdb)
    ->Name("openvdb_mesh_to_volume")
    ->Arg(1'000'000)
    ->ArgName("triangles")
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime();
#endif

}  // namespace

}  // namespace nbx::bench
