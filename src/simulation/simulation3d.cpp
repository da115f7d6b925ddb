#include "simulation/simulation3d.h"

#include <algorithm>

#include "cache/bfs.h"
#include "util/cuda_use_flags.h"
#include "util/log.h"

namespace nbx {

// The order of creation is the order of every hook.
void Simulation3D::setup() {
  if (fluid_) return;
  const RunView run = view();
  const auto add = [this](auto system) {
    systems_.push_back(std::move(system));
    return static_cast<typename decltype(system)::pointer>(systems_.back().get());
  };
  if (params.upres)
    fluid_ = upres_ = add(std::make_unique<UpresFluid>(run));
  else
    fluid_ = add(std::make_unique<CuslKernels3D>(run));
  pressure_ = add(std::make_unique<PressureSystem>(run));
  noise_ = add(std::make_unique<NoiseForceSystem>(run));
  storables_ = {fluid_, pressure_};
  forces_ = {noise_};
  for (int key : {kFuel, kBurn, kDensity, kTemperature}) {
    ScalarFluidChannel* channel = add(std::make_unique<ScalarFluidChannel>(run, key));
    channels_.push_back(channel);
    storables_.push_back(channel);
    if (key != kBurn) forces_.push_back(channel);
    if (key == kFuel) combustion_sources_.push_back(channel);
  }
  forces_.push_back(add(std::make_unique<VorticitySystem>(run)));

  reset_run();
  call(&SimSystem::clear);
  for (auto& system : systems_) system->resize({0, 0, 0});
}

void Simulation3D::reset_run() {
  remaining_time_ = 0;
  clock.step_index = 0;
  clock.frame_elapsed = 0;
  steps_remaining_ = 0;
  steps_per_frame_ = 1;
  if (sink.target_cache) sink.target_cache->removeAllSlots();
}

void Simulation3D::read_settings(SceneEvaluator& scene) {
  StepSettings settings = scene.read_settings(view(), clock.dt);
  params = std::move(settings.params);
  static_cast<DomainSetup&>(domain) = settings.domain;
}

// The phases of a substep of length 0: nothing moves and nothing pushes.
void Simulation3D::init_state(SceneEvaluator& scene) {
  setup();
  clock.dt = 0;
  domain.active_box = {};
  sources_.clear();
  call(&SimSystem::clear);
  for (auto& system : systems_) system->resize({0, 0, 0});
  for (auto& system : systems_) system->begin_frame(*this);
  read_settings(scene);
  call(&SimSystem::begin_step);
  call(&SimSystem::prepare_advection);
  call(&SimSystem::after_channel_advection);
  call(&SimSystem::after_velocity_advection);
  take_sources(scene);
  if (upres_)
    follow_source(scene);
  else
    fit_container({});
  finish_channels(scene);
  call(&SimSystem::after_sources);
  call(&SimSystem::end_step);
  if (upres_) sources_.clear();
  call(&SimSystem::end_frame);
}

bool Simulation3D::start(SceneEvaluator& scene, const FrameTime& time) {
  clock.frame = time.frame();
  init_state(scene);
  return store_frame(time, 0);
}

bool Simulation3D::load_state(SceneEvaluator& scene, SimFrame& frame) {
  reset_run();
  domain.active_box = {};

  const Vec3i dims = frame.dims();
  const bool has_cells = std::min({dims[0], dims[1], dims[2]}) >= 3;
  if (!has_cells) LogMessage() << "Failed to load state form sim frame: Invalid grid size";

  clock.sim_time = frame.simTime;
  clock.frame = frame.frameTime.frame();
  init_state(scene);
  sources_.clear();  // the state holds those of its time
  // Even without cells, the frame has the velocity of the air around the gas.
  apply_box(has_cells ? frame.box() : IntBox());
  for (FrameStorable* storable : storables_) storable->load(frame);
  return has_cells;
}

NoiseState Simulation3D::noise_state() const { return noise_->state(); }

void Simulation3D::restore_noise(const NoiseState& state) { noise_->restore(state); }

void Simulation3D::catch_up_noise(double start) {
  noise_->catch_up(start, clock.sim_time.time.value());
}

void Simulation3D::update(SceneEvaluator& scene, FrameTime& time, SimProgress* progress) {
  setup();
  const Stopwatch total;
  times_ = {};
  times_.out = since_update_.seconds();
  progress_ = progress;
  clock.frame = time.frame();

  if (steps_remaining_ < 1)
    begin_frame();
  else
    LogMessage() << "continuing update, " << steps_remaining_ << " steps remaining";
  while (steps_remaining_ > 0)
    if (!substep(scene)) return;

  const FrameTime stored = next_frame(time);
  clock.sim_time = next_frame(clock.sim_time);
  Stopwatch save;
  store_frame(stored, 0);  // a failure is logged, and is among the lost frames of the cache
  times_.sav = save.seconds();
  call(&SimSystem::end_frame);
  if (progress_) progress_->progress(1, 1);
  time = stored;
  log_frame_line(total.seconds());
  since_update_.lap();
}

void Simulation3D::begin_frame() {
  remaining_time_ = clock.sim_time.length.value();
  clock.frame_elapsed = 0;
  clock.step_index = 0;
  steps_remaining_ = remaining_time_ != 0 ? std::max(steps_per_frame_, 1) : 0;
  for (auto& system : systems_) system->begin_frame(*this);
}

void Simulation3D::log_frame_line(double total) {
  const StageTimes& t = times_;
  LogMessage() << clock.sim_time.frame() << "F #" << clock.step_index << " src(" << t.src
               << ") sol(" << t.sol << ") res(" << t.res << ") beg(" << t.beg << ") pro(" << t.pro
               << ") vel(" << t.vel << ") tot(" << total << ") sav(" << t.sav << ") out(" << t.out
               << ")" << (cuda_use_flags().on_gpu() ? " GPU" : " CPU");
}

}  // namespace nbx
