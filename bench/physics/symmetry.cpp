#include "bench/physics/symmetry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "bench/physics/cases.h"

namespace nbx::physics {

namespace {

Faces faces_of(MirrorScene scene) { return scene == MirrorScene::kBurst ? Faces{} : kClosed; }

// The mirror image of a sample.
struct Mirror {
  int axis;
  Vec3i operator()(const Field<float>& f, Vec3i at) const {
    at[axis] = f.dims()[axis] - 1 - at[axis];
    return at;
  }
};

// Calls body(value, image) for each sample inside of the ghosts.
template <class F, class Body>
void with_images(F& f, const Mirror& mirror, Body body) {
  const Vec3i n = f.dims();
  for (int k = 1; k < n[2] - 1; ++k)
    for (int j = 1; j < n[1] - 1; ++j)
      for (int i = 1; i < n[0] - 1; ++i) {
        const Vec3i m = mirror(f, {i, j, k});
        body(f(i, j, k), f(m[0], m[1], m[2]));
      }
}

bool symmetric_across(MirrorScene scene, int axis) {
  return scene != MirrorScene::kPlume || axis != 1;
}

// The middle half of the box across x and z; along y from `low` on, `height` cells.
Weights block(const Vec3i& n, int low, int height) {
  const auto middle = [](int i, int size) { return i >= size / 4 && i < size - size / 4; };
  return weights_where(n, [&](const Vec3i& at) {
    return middle(at[0], n[0]) && middle(at[2], n[2]) && at[1] >= low && at[1] < low + height;
  });
}

// A ball at rest in the middle, an eighth of the box wide.
Solids ball(const Domain& domain, const Vec3i& n) {
  const auto field = [&](const Vec3i& dims) {
    auto made = std::make_shared<MField>(kCpu, dims);
    made->zero();
    return made;
  };
  Solids solids{field(domain.center_dims()), field(domain.face_dims(0)), field(domain.face_dims(1)),
                field(domain.face_dims(2))};
  Field<float>& phi = solids.phi->write_cpu();
  for (int k = 0; k < phi.nz(); ++k)
    for (int j = 0; j < phi.ny(); ++j)
      for (int i = 0; i < phi.nx(); ++i) {
        const Vec3d x = Vec3d(2 * i - n[0] - 1, 2 * j - n[1] - 1, 2 * k - n[2] - 1) * 0.5;
        const double d = length(x) - n[0] / 8.0;
        phi(i, j, k) = static_cast<float>(d * std::abs(d));
      }
  return solids;
}

}  // namespace

MirrorBox::MirrorBox(const MirrorSetup& setup)
    : box(setup.cells, 1.0 / setup.cells[0], faces_of(setup.scene)), setup_(setup) {
  SolverParams& params = box.run.params;
  params.interp_points = setup.interp_points;
  params.vorticity = setup.vorticity;
  params.pressure_tolerance = setup.tolerance;
  params.max_cycles = params.solid_iterations = setup.cycles;
  if (setup.ball)
    box.solids = [n = setup.cells](const Domain& domain, double) { return ball(domain, n); };
  fill();
  symmetrize();
}

void MirrorBox::fill() {
  const Vec3i n = setup_.cells;
  if (setup_.scene == MirrorScene::kVortices) {
    const Vec3d k = Vec3d(1.0 / n[0], 1.0 / n[1], 1.0 / n[2]) * (2 * std::numbers::pi / box.dx());
    const auto odd = [](double a) { return std::sin(a) + 0.4 * std::sin(2 * a); };
    const auto even = [](double a) { return std::cos(a) + 0.3 * std::cos(2 * a); };
    box.set_velocity([=](const Vec3d& x) {
      const double X = k[0] * x[0], Y = k[1] * x[1], Z = k[2] * x[2];
      return Vec3d(odd(X) * even(Y) * even(Z), -2 * even(X) * odd(Y) * even(Z),
                   even(X) * even(Y) * odd(Z));
    });
    box.set_channel(kDensity, [k](const Vec3d& x) { return std::pow(std::cos(k[0] * x[0]), 2); });
    return;
  }
  SimulationObjectParameters gas;
  const bool plume = setup_.scene == MirrorScene::kPlume;
  gas.amounts = {{kDensity, 1}, {plume ? kTemperature : kExpansion, plume ? 1 : 4}};
  box.set_buoyancy(kTemperature, plume ? 1 : 0);
  const Weights weights = plume ? block(n, 1, 2) : block(n, n[1] / 4, n[1] - n[1] / 4 * 2);
  box.sources = [gas, weights](StepSources& given) { given.add_source_object(gas, *weights); };
  box.step(0.05);
}

void MirrorBox::symmetrize() {
  const auto equal = [](Field<float>& f, int axis, float sign) {
    with_images(f, Mirror{axis}, [sign](float& value, float& image) {
      value = (value + sign * image) / 2;
      image = sign * value;
    });
  };
  for (int axis = 0; axis < 3; ++axis) {
    if (!symmetric_across(setup_.scene, axis)) continue;
    for (int component = 0; component < 3; ++component)
      equal(box.run.fluid().component(component).write_cpu(), axis,
            component == axis ? -1.0f : 1.0f);
    for (int key : {kDensity, kTemperature})
      equal(box.run.channel_field(key)->write_cpu(), axis, 1);
  }
}

double MirrorBox::transport() {
  symmetrize();
  box.run.fluid().advect_velocity();
  return asymmetry();
}

double MirrorBox::projection() {
  symmetrize();
  box.project();
  return asymmetry();
}

namespace {

// The largest difference between a field and its image across `axis`, over the largest value.
double field_asymmetry(std::initializer_list<const Field<float>*> fields, int axis) {
  double difference = 0, largest = 0;
  int component = 0;
  for (const Field<float>* f : fields) {
    const float sign = fields.size() > 1 && component++ == axis ? -1.0f : 1.0f;
    with_images(*f, Mirror{axis}, [&](float value, float image) {
      difference = std::max<double>(difference, std::abs(value - sign * image));
      largest = std::max<double>(largest, std::abs(value));
    });
  }
  return difference / largest;
}

}  // namespace

double MirrorBox::asymmetry() {
  double worst = 0;
  for (int axis = 0; axis < 3; ++axis) {
    if (!symmetric_across(setup_.scene, axis)) continue;
    const auto u = [&](int component) { return &box.velocity(component); };
    worst = std::max({worst, field_asymmetry({u(0), u(1), u(2)}, axis),
                      field_asymmetry({&box.channel(kDensity)}, axis)});
  }
  return worst;
}

namespace {

// What steps add to the asymmetry if the gas is made symmetric before each of them.
struct Added {
  std::vector<double> step, transport, projection;
};

Added added_by_steps(const MirrorSetup& setup, int steps) {
  MirrorBox mirror(setup);
  Added added;
  for (int i = 0; i < steps; ++i) {
    mirror.symmetrize();
    mirror.step();
    added.step.push_back(mirror.asymmetry());
    added.transport.push_back(mirror.transport());
    added.projection.push_back(mirror.projection());
  }
  return added;
}

struct NamedSetup {
  const char* name;
  MirrorSetup setup;
};

std::vector<NamedSetup> setups() {
  using enum MirrorScene;
  return {
      {"vortices", {kVortices}},
      {"vortices, odd sizes", {kVortices, {21, 19, 17}}},
      {"vortices, ball", {kVortices, {21, 21, 21}, true}},
      {"vortices, cubic", {.scene = kVortices, .interp_points = 4}},
      {"vortices, confinement", {.scene = kVortices, .vorticity = 1}},
      {"vortices, 0.01 in 10 cycles", {.scene = kVortices, .tolerance = 0.01, .cycles = 10}},
      {"burst", {kBurst}},
      {"burst, 0.01 in 10 cycles", {.scene = kBurst, .tolerance = 0.01, .cycles = 10}},
      {"plume", {kPlume, {20, 21, 19}}},
      {"plume, ball", {kPlume, {20, 21, 19}, true}},
      {"plume, 0.01 in 10 cycles", {.scene = kPlume, .tolerance = 0.01, .cycles = 10}},
  };
}

}  // namespace

// The curves are the asymmetry over the steps, one for each setup.
Result symmetry(Effort effort) {
  const int steps = effort == Effort::kFull ? 100 : 20;
  Result result;
  result.columns = {"step"};
  for (int step = 0; step <= steps; step += 5) result.rows.push_back({1.0 * step});
  for (const NamedSetup& c : setups()) {
    MirrorBox mirror(c.setup);
    result.columns.emplace_back(c.name);
    for (int step = 0; step <= steps; ++step) {
      if (step > 0) mirror.step();
      if (step % 5 == 0) result.rows[step / 5].push_back(mirror.asymmetry());
    }
    const Added added = added_by_steps(c.setup, steps / 2);
    const std::string name = c.name;
    result.figures.push_back(
        {name + ": after " + std::to_string(steps) + " steps", result.rows.back().back()});
    result.figures.push_back({name + ": a step adds, median", median(added.step)});
    result.figures.push_back({name + ": a step adds, worst", largest(added.step)});
    result.figures.push_back({name + ": transport adds, median", median(added.transport)});
    result.figures.push_back({name + ": projection adds, median", median(added.projection)});
  }
  return result;
}

}  // namespace nbx::physics
