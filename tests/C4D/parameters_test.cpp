// Every parameter in the tables of the plug-in's classes changes what a reader gets of it, and a
// panel shows it gray where it changes nothing, and nowhere else.
#include <functional>
#include <map>
#include <set>
#include <sstream>

#include "C4D/parameters/post_effect_parameters.h"
#include "C4D/parameters/volume_parameters.h"
#include "C4D/parameters/volume_tag_parameters.h"
#include "C4D/rendering/render_volumes.h"
#include "C4D/services/host_access.h"
#include "C4D/services/preferences.h"
#include "C4D/settings/scene_settings.h"
#include "C4D/settings/shading_settings.h"
#include "C4D/settings/source_parameters.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/sources/source_substeps.h"
#include "C4D/sources/source_tags.h"
#include "C4D/test_document.h"
#include "render/direct_light_field.h"
#include "render/scattered_light_field.h"
#include "simulation/records.h"
#include "support/support.h"

namespace nbx {
namespace {

/// What readers get, by the name of the parameter that it comes from. What isn't a number is made
/// one.
using Record = std::map<std::string, double>;

/// `names` holds a name for each value; `prefix` precedes each of them.
template <class... T>
Record named(const std::string& prefix, const char* names, const T&... values) {
  std::istringstream in(names);
  Record record;
  std::string name;
  ((in >> name, record[prefix + name] = static_cast<double>(values)), ...);
  EXPECT_EQ(record.size(), sizeof...(values));
  EXPECT_FALSE(in >> name) << name;
  return record;
}

double number(const Vec3d& v) { return v[0] + 100 * v[1] + 1e4 * v[2]; }
double number(const ColorRamp& ramp) { return ramp.lookup(0.3f)[1]; }
double number(const RationalSpline& curve) { return curve.evaluate(0.1f) + curve.evaluate(0.6f); }

const std::pair<int, std::string> kChannels[] = {
    {kDensity, "density"}, {kTemperature, "temperature"}, {kFuel, "fuel"}, {kBurn, "burn"}};

void add_channel(Record& r, const SolverParams& s, const FrameSink& sink, int key,
                 const std::string& name) {
  const bool on = s.simulated_channels.contains(key);
  r["simulate_" + name] = on;
  if (!on) return;
  const ChannelParams& c = s.channel_params.at(key);
  r["cache_" + name] = sink.cached_channels.contains(key);
  r["box_threshold_" + name] = c.box_threshold, r["diffusion_" + name] = c.diffusion;
  r["buoyancy_" + name] = c.buoyancy, r["direction_" + name] = number(c.direction);
  r["decay_mode_" + name] = static_cast<int>(c.decay_mode), r["conserve_" + name] = c.conserve;
  r[(key == kBurn && c.decay_mode == DecayMode::kLinear ? "decay_linear_" : "decay_") + name] =
      c.decay;
  if (key != kFuel) return;
  for (const auto& [target, to] : kChannels)
    if (c.outputs.contains(target) && s.simulated_channels.contains(target))
      r["fuel_to_" + to] = c.outputs.at(target).amount;
  r["fuel_to_expansion"] = c.outputs.at(kExpansion).amount, r["fuel_driver"] = c.driver_key;
  if (c.driver_key == kNoChannel) return;
  r["fuel_curve"] = number(c.driver_spline), r["fuel_driver_blur"] = c.driver_blur;
}

Record read_run(host::BaseObject& volume) {
  test::Records run;
  FrameSink sink;
  run.clock.sim_time.length = {1, 25};
  run.clock.frame_duration = 0.04;
  read_run_settings(run.params, sink, volume);
  const auto [s, domain] = read_step_settings(run.view, volume, 0.04);
  const auto& walls = domain.face_closed;
  const double wind = number(domain.wind.velocity());
  Record r =
      named("",
            "voxel_size size cfl max_substeps time_scale advect_cubic adaptive_tracer "
            "cache_direct cache_velocity cache_solid fit_to_walls velocity_threshold drag "
            "mask_solid clamp_velocity vorticity wind_direction wind_speed wind_world",
            domain.dx, number(vector_cast<double>(domain.domain_box.hi)), s.cfl, s.max_substeps,
            s.time_scale, s.interp_points, s.adaptive_tracer, sink.cache_direct && !s.keep_traces,
            sink.cached_channels.contains(kVelocity), sink.cached_channels.contains(kSolid),
            s.fit_to_walls, s.velocity_box_threshold, s.drag, s.mask_channels_by_solid,
            s.clamp_velocity, s.vorticity, wind, wind, wind);
  r.merge(named("closed_", "x_min x_max y_min y_max z_max z_min", walls[0], walls[1], walls[2],
                walls[3], walls[4], walls[5]));
  r.merge(named("noise_", "strength size_min size_max persistence period driver",
                s.noise.amplitude * s.noise.frequency, s.noise.bands, s.noise.frequency,
                s.noise.persistence, s.noise.time_frequency, s.noise.driver_key));
  r.merge(named("upres_", "factor noise persistence extra_bands", s.upres_factor,
                s.upres_noise_amount, s.upres_noise_persistence, s.upres_extra_bands));
  if (s.noise.driver_key != kNoChannel) r["noise_curve"] = number(s.noise.driver_spline);
  for (const auto& [key, name] : kChannels) add_channel(r, s, sink, key, name);
  return r;
}

Record read_shader(const std::string& name, const ShaderParams& p) {
  if (p.channel == kNoGrid) return named(name, "_channel", p.channel);
  Record r = named(name,
                   "_channel _blur _curve _density _displace _density_channel _noise_amount "
                   "_noise_gain _noise_scale_a _noise_scale_b _noise_period",
                   p.channel, p.blur, number(p.curve), p.density, p.displace, p.density_channel,
                   p.noise.percent, p.noise.gain, p.noise.scale_a, p.noise.scale_b, p.noise.period);
  if (p.density_channel == kNoGrid) return r;
  r.merge(named(name, "_density_blur _density_curve", p.density_blur, number(p.density_curve)));
  return r;
}

Record read_fire_color(host::BaseObject& volume, const ColorRamp& ramp) {
  const double green = number(ramp);
  if (dynamic_cast<const GradientRamp*>(&ramp))
    return named("fire_", "color_mode gradient gradient_scale", 1, green, green);
  const BlackbodyParams body = blackbody_params(volume);
  return named("fire_", "color_mode temp_min temp_max exposure compression tint_r tint_g tint_b", 0,
               body.min_kelvin, body.max_kelvin, body.exposure, body.compression, body.tint[0],
               body.tint[1], body.tint[2]);
}

Record read_light(const host::BaseObject& volume, bool fire) {
  const std::shared_ptr<LightField> light = make_light_field(volume, {});
  if (const auto* direct = dynamic_cast<const DirectLightField*>(light.get())) {
    const DirectLightParams& p = direct->params();
    Record r = named("", "light_mode multi_scatter phase_g", p.mode, 0, p.anisotropy);
    if (p.mode != LightCache::kNone) r["light_grid_scale"] = p.gridScale;
    return r;
  }
  const auto* scattered = dynamic_cast<const ScatteredLightField*>(light.get());
  if (!scattered) return named("", "light_mode", 0);
  const ScatteredLightParams& p = scattered->params();
  Record r = named("",
                   "light_mode multi_scatter light_grid_scale scatter_sweeps scatter_directions "
                   "scatter_direct scatter_extinction",
                   5 + p.cubic, 1, p.gridScale, p.maxSweeps, p.directions, p.directWeight,
                   p.extinctionScale);
  if (fire) r["scatter_emission"] = p.emissionWeight;
  return r;
}

Record read_shading(host::BaseObject& volume) {
  const VolumeParams p = shading_params(volume);
  const bool smoke = p.smoke.channel != kNoGrid, fire = p.fire.channel != kNoGrid;
  Record r =
      named("", "filter view_step shadow_step motion_blur motion_blur_step depth_fade", p.filter,
            p.viewStep, p.shadowStep, p.motion_blur, p.motion_blur_step, p.depth_fade.has_value());
  if (p.depth_fade) r["depth_fade_curve"] = number(*p.depth_fade);
  r.merge(read_shader("smoke", p.smoke)), r.merge(read_shader("fire", p.fire));
  if (smoke) r["smoke_gradient"] = number(*p.smoke.ramp), r["smoke_albedo"] = p.albedo;
  if (smoke && fire) r["fire_occlusion"] = p.occlusion;
  if (fire) r.merge(read_fire_color(volume, *p.fire.ramp));
  if (smoke) r.merge(read_light(volume, fire));
  return r;
}

Record read_volume(host::BaseObject& volume) {
  const TimeRange range = time_range(volume);
  const double start = range.start.Get(), frame = frame_at_time(volume, {3, 1});
  const CacheDirData cache = cache_dir_data(volume);
  Record r = named("",
                   "time_mode time_start time_end frame_stride frame_offset cache_name "
                   "source_substeps",
                   start, start, range.end.Get(), frame, frame,
                   cache.base.size() + cache.name.size(), source_substeps(volume, {}, 1, 0, 0));
  r.merge(read_run(volume)), r.merge(read_shading(volume));
  return r;
}

Record read_tag(const host::BaseTag& tag) {
  const SimulationObjectParameters p = source_parameters(tag, {}, 0.5);
  Record r =
      named("",
            "enabled solid expansion normal_force direction thickness surface_channel "
            "particle_map",
            find_source_tags(tag.GetDocument()).size(), is_solid(tag), p.amounts.at(kExpansion),
            p.normal_force, number(p.direction), p.thickness, surface_channel(tag), p.particle_map);
  for (const auto& [key, name] : kChannels)
    r[name] = p.amounts.at(key), r[name + "_mode"] = p.add_keys.contains(key);
  if (p.particle_map != ParticleMap::kNone) r["particle_curve"] = number(p.particle_curve);
  // Solids aren't filled, and aren't made of particles.
  if (!is_solid(tag)) r["fill"] = p.fill, r["velocity_transfer"] = p.velocity_transfer;
  return r;
}

std::vector<host::ParameterValue> other_values(const host::ParameterInfo& info) {
  const auto within = [&](double x) { return std::clamp(x, info.minimum, info.maximum); };
  std::vector<host::ParameterValue> values;
  for (const host::CycleEntry& entry : info.cycle) values.push_back(entry.value);
  if (!values.empty()) return values;
  using Type = host::ParameterType;
  if (info.type == Type::Long)
    return {static_cast<std::int32_t>(within(std::get<std::int32_t>(info.default_value) + 7))};
  if (info.type == Type::Real) {
    const double usual = std::get<double>(info.default_value);
    return {within(usual / 2 + 0.3), within(usual + 7)};
  }
  const std::map<Type, std::vector<host::ParameterValue>> others{
      {Type::Bool, {false, true}},
      {Type::Time, {host::BaseTime::FromSeconds(1.5)}},
      {Type::Vector, {host::Vector{3, 5, 7}}},
      {Type::Filename, {host::Filename{"/one/other"}}},
      {Type::Curve, {host::CurvePoints{{0, 0.3}, {1, 0.8}}}},
      {Type::Gradient, {host::Gradient{{{0, {0.1, 0.2, 0.3}}, {1, {0.9, 0.8, 0.7}}}}}}};
  return others.contains(info.type) ? others.at(info.type) : values;
}

using Enabled = std::function<bool(std::int32_t)>;

/// Sets each parameter of the table to other values. `seen` collects those that have an effect.
void change_each(const host::ClassDescription& table, host::BaseContainer& values,
                 const Enabled& enabled, const std::function<Record()>& read,
                 const std::set<std::string>& elsewhere, std::set<std::string>& seen) {
  const Record before = read();
  for (const host::ParameterInfo& info : table.parameters) {
    const std::string name = info.Name();
    if (!info.stored || elsewhere.contains(name)) continue;
    const host::ParameterValue held =
        values.Find(info.id) ? *values.Find(info.id) : info.default_value;
    bool own = false, any = false;
    for (const host::ParameterValue& value : other_values(info)) {
      values.Set(info.id, value);
      const Record after = read();
      any = any || after != before;
      own = own ||
            (after.contains(name) && (!before.contains(name) || after.at(name) != before.at(name)));
    }
    values.Set(info.id, held);
    const bool acts = info.listed && enabled(info.id);
    EXPECT_EQ(acts ? own : any, acts)
        << name << (acts ? " changes nothing" : " acts, but is gray or isn't listed");
    if (own) seen.insert(name);
  }
}

/// The same with elements that hold different things; each parameter counts in one of them.
void change_each(const std::vector<host::BaseList2D*>& elements,
                 const std::function<Record(host::BaseList2D&)>& read,
                 const std::set<std::string>& elsewhere) {
  std::set<std::string> seen = elsewhere;
  for (host::BaseList2D* element : elements) {
    SCOPED_TRACE(element->GetName());
    change_each(
        element->GetDescription(), element->GetDataInstance(),
        [&](std::int32_t id) { return element->IsEnabled(id); }, [&] { return read(*element); },
        elsewhere, seen);
  }
  for (const host::ParameterInfo& info : elements[0]->GetDescription().parameters)
    EXPECT_TRUE(seen.contains(info.Name()) || !info.stored || !info.listed) << info.Name();

  // The defaults of readers are those of the table.
  host::BaseContainer& values = elements[0]->GetDataInstance();
  const Record with_all = read(*elements[0]);
  for (const host::ParameterInfo& info : elements[0]->GetDescription().parameters)
    if (values.Find(info.id) && *values.Find(info.id) == info.default_value) values.Remove(info.id);
  EXPECT_EQ(read(*elements[0]), with_all);
}

TEST(Parameters, OfTheVolumeReachTheirReaders) {
  test::TestDocument document("volumes.json");
  std::vector<host::BaseList2D*> elements;
  for (host::BaseObject* o = document->GetFirstObject(); o; o = o->GetNext()) elements.push_back(o);
  change_each(elements,
              [](host::BaseList2D& v) { return read_volume(static_cast<host::BaseObject&>(v)); },
              {"version",                                          // the conversion of documents
               "cache_lock",                                       // a file in the cache
               "compress_cache", "cache_sync",                     // the writer of frames
               "load_state", "state_file", "state_continue_time",  // the start of a run
               "save_state_every",                                 // its course
               "simulate_on_render", "show_upres", "particle_advection"});  // a render, particles
  EXPECT_FALSE(elements[0]->IsEnabled(OVOLUME.STATE_FILE));
  elements[0]->SetParameter(OVOLUME.LOAD_STATE, true);
  EXPECT_TRUE(elements[0]->IsEnabled(OVOLUME.STATE_CONTINUE_TIME));
}

// What a parameter changes is what its table says. The records say which readers get it.
TEST(Parameters, ChangeWhatTheirTablesSay) {
  test::TestDocument document("volumes.json");
  const auto of_frames = [](const std::string& name) {
    return name == "mask_solid" || (name.starts_with("cache_") && name != "cache_direct");
  };
  for (host::BaseObject* o = document->GetFirstObject(); o; o = o->GetNext()) {
    const Record run = read_run(*o), shading = read_shading(*o);
    for (const host::ParameterInfo& info : o->GetDescription().parameters) {
      const Changes marked = OVOLUME.changes(info.id);
      const std::string name = info.Name();
      EXPECT_NE(marked, Changes::kUnknown) << name;
      const Changes of_run = of_frames(name)              ? Changes::kFrames
                             : name == "cache_direct"     ? Changes::kRun
                             : name.starts_with("upres_") ? Changes::kDetail
                                                          : Changes::kGas;
      EXPECT_TRUE(!run.contains(name) || marked == of_run) << name;
      EXPECT_TRUE(!shading.contains(name) || marked == Changes::kPicture) << name;
      EXPECT_EQ(name.starts_with("upres_"), marked == Changes::kDetail) << name;
    }
  }
  for (const host::ParameterInfo& info : volume_tag_description().parameters)
    EXPECT_EQ(TVOLUME.changes(info.id) == Changes::kGas, info.Name() != "version") << info.symbol;
  for (const host::ParameterInfo& info : post_effect_description().parameters)
    EXPECT_EQ(VPVOLUME.changes(info.id), Changes::kPicture) << info.symbol;
}

TEST(Parameters, OfEmitterTagsReachTheirReaders) {
  test::TestDocument document("tags.json");
  std::vector<host::BaseList2D*> tags;
  for (host::BaseTag* t = document.object("m").GetFirstTag(); t; t = t->GetNext())
    tags.push_back(t);
  change_each(tags, [](host::BaseList2D& t) { return read_tag(static_cast<host::BaseTag&>(t)); },
              {"version",                                   // the conversion of documents
               "selections", "shader", "corner_weights"});  // the emitter's sampler
}

TEST(Parameters, OfThePostEffectReachTheRenderer) {
  test::TestDocument document(
      "", R"("post_effects": [{"type": "smoke", "parameters": {"adaptive": true}}], )");
  host::BaseVideoPost* effect = document->GetActiveVideoPost(kPostEffect);
  const auto read = [&](host::BaseList2D&) {
    VolumeRenderer renderer;
    read_steps(renderer, *effect);
    Record r{{"adaptive", renderer.adaptive}};
    if (renderer.adaptive) r["adaptive_threshold"] = renderer.adaptiveThreshold;
    return r;
  };
  change_each({effect}, read, {"gamma"});  // the colors that the host is given
  effect->SetParameter(VPVOLUME.ADAPTIVE, false);
  EXPECT_FALSE(effect->IsEnabled(VPVOLUME.ADAPTIVE_THRESHOLD));
}

TEST(Parameters, OfThePreferencesReachTheirReaders) {
  host::SmallHost host;
  set_host_services(&host);
  host::BaseContainer values;
  const auto read = [&] {
    EXPECT_TRUE(host.SetWorldPluginData(kPreferences, values));
    return Record{{"autosave", preference(PREF.AUTOSAVE)},
                  {"ask_autosave", preference(PREF.ASK_AUTOSAVE)},
                  {"cache_path", preferred_cache_folder().size()}};
  };
  std::set<std::string> seen;
  change_each(
      preferences_description(), values, [](std::int32_t) { return true; }, read, {}, seen);
  set_host_services(nullptr);
}

}  // namespace
}  // namespace nbx
