#include "C4D/commands/run_statistics.h"

#include "util/memory.h"

namespace nbx {

StageTimes difference(const StageTimes& a, const StageTimes& b) {
  return {a.src - b.src, a.sol - b.sol, a.res - b.res, a.beg - b.beg, a.pro - b.pro,
          a.vel - b.vel, a.sav - b.sav, a.dsk - b.dsk, a.out - b.out};
}

void add_times(host::EventFields& fields, const StageTimes& t) {
  fields.insert(fields.end(), {{"seconds_sources", t.src},
                               {"seconds_solids", t.sol},
                               {"seconds_container", t.res},
                               {"seconds_hooks", t.beg},
                               {"seconds_channels", t.pro},
                               {"seconds_velocity", t.vel}});
}

void add_extent(host::EventFields& fields, const Simulation3D& sim) {
  const IntBox& box = sim.domain.active_box;
  std::vector<double> corners;
  std::int64_t cells = 0;
  if (!box.empty()) {
    corners.insert(corners.end(), box.lo.v.begin(), box.lo.v.end());
    corners.insert(corners.end(), box.hi.v.begin(), box.hi.v.end());
    const Vec3i n = box.size();
    cells = std::int64_t{n[0]} * n[1] * n[2];
  }
  fields.insert(fields.end(), {{"box", corners},
                               {"cells", cells},
                               {"memory_bytes", static_cast<std::int64_t>(resident_memory())}});
}

void add_health(host::EventFields& fields, const Health& health) {
  const std::pair<int, const char*> channels[] = {{kDensity, "mass_density"},
                                                  {kTemperature, "mass_temperature"},
                                                  {kFuel, "mass_fuel"},
                                                  {kBurn, "mass_burn"}};
  for (const auto& [key, name] : channels)
    if (const auto mass = health.mass.find(key); mass != health.mass.end())
      fields.emplace_back(name, mass->second);
  std::vector<std::string> faces;
  for (std::size_t f = 0; f < 6; ++f)
    if (health.touches[f]) faces.emplace_back(kFaceNames[f]);
  fields.insert(fields.end(), {{"kinetic_energy", health.kinetic_energy},
                               {"largest_divergence", health.largest_divergence},
                               {"residual", health.residual},
                               {"confined_volume", health.confined_volume},
                               {"cycles", std::int64_t{health.cycles}},
                               {"cfl", health.cfl},
                               {"touches", faces}});
}

}  // namespace nbx
