#include "simulation/simulation3d.h"

#include <algorithm>
#include <cmath>

#include "cache/slot_handle.h"
#include "simulation/steps/noise_force_system.h"
#include "simulation/steps/vorticity_system.h"
#include "util/cuda_host_util.h"
#include "util/cuda_use_flags.h"
#include "util/log.h"

namespace nbx {

namespace {

// The frame's matrix works on row vectors in right-handed world coordinates: a flip of z, then the
// simulation's world-to-cell map.
GridMatrix grid_matrix(const Affine3d& world_to_grid) {
  GridMatrix m{};
  for (int row = 0; row < 3; ++row) {
    const double flip = row == 2 ? -1 : 1;
    for (int column = 0; column < 3; ++column)
      m[4 * row + column] = flip * world_to_grid.rows[column][row];
  }
  for (int column = 0; column < 3; ++column) m[12 + column] = world_to_grid.translation[column];
  m[15] = 1;
  return m;
}

}  // namespace

Simulation3D::Simulation3D() {
  cuda_use_flags().use_gpu = true;
  for (int key : {kFuel, kBurn, kDensity, kTemperature})
    settings.channel_params[key] = default_channel_params(key);
}

Simulation3D::~Simulation3D() = default;

// The order of creation is the order of every hook.
void Simulation3D::setup() {
  const std::lock_guard lock(mutex_);
  if (fluid_) return;

  auto fluid = std::make_unique<CuslKernels3D>(settings);
  fluid_ = fluid.get();
  storables_.push_back(fluid_);
  systems_.push_back(std::move(fluid));

  auto pressure = std::make_unique<PressureSystem>(settings);
  pressure_ = pressure.get();
  storables_.push_back(pressure_);
  systems_.push_back(std::move(pressure));

  auto noise = std::make_unique<NoiseForceSystem>(settings);
  noise_ = noise.get();
  forces_.push_back(noise_);
  systems_.push_back(std::move(noise));

  for (int key : {kFuel, kBurn, kDensity, kTemperature}) {
    auto channel = std::make_unique<ScalarFluidChannel>(settings, key);
    channels_.push_back(channel.get());
    field_sources_.push_back(channel.get());
    storables_.push_back(channel.get());
    if (key != kBurn) forces_.push_back(channel.get());
    if (key == kFuel) combustion_sources_.push_back(channel.get());
    systems_.push_back(std::move(channel));
  }

  auto vorticity = std::make_unique<VorticitySystem>(settings);
  forces_.push_back(vorticity.get());
  systems_.push_back(std::move(vorticity));

  reset_run();
  for (auto& system : systems_) system->clear();
  for (auto& system : systems_) system->resize({0, 0, 0});
}

void Simulation3D::reset_run() {
  remaining_time_ = 0;
  step_limit_ = 1;
  settings.step_index = 0;
  settings.frame_elapsed = 0;
  steps_remaining_ = 0;
  steps_per_frame_ = 1;
  if (settings.target_cache) settings.target_cache->removeAllSlots();
}

void Simulation3D::init_state(SceneEvaluator& scene) {
  setup();
  settings.dt = 0;
  settings.active_box = {};
  for (auto& system : systems_) system->clear();
  for (auto& system : systems_) system->resize({0, 0, 0});
  for (auto& system : systems_) system->begin_frame(*this);
  scene.read_settings(*this, 0);
  for (auto& system : systems_) system->begin_step();
  for (auto& system : systems_) system->prepare_advection();
  for (auto& system : systems_) system->after_channel_advection();
  for (auto& system : systems_) system->after_velocity_advection();
  keep_box = {};
  scene.update_inputs(*this, 0);
  adapt(0, {}, false, false);
  for (ScalarFluidChannel* channel : channels_) channel->finish_step(*this, *this);
  for (auto& system : systems_) system->after_sources();
  for (auto& system : systems_) system->end_step();
  for (auto& system : systems_) system->end_frame();
}

bool Simulation3D::start(SceneEvaluator& scene, const FrameTime& time) {
  init_state(scene);
  return store_frame(time, 0);
}

bool Simulation3D::load_state(SceneEvaluator& scene, SimFrame& frame) {
  reset_run();
  settings.active_box = {};
  cuda_use_flags().use_gpu = true;

  const Vec3i dims = frame.dims();
  const bool has_cells = std::min({dims[0], dims[1], dims[2]}) >= 3;
  if (!has_cells) LogMessage() << "Failed to load state form sim frame: Invalid grid size";

  settings.sim_time = frame.simTime;
  init_state(scene);
  clear_sources();  // those of the time before the state's
  // Even without cells a state says how fast the space around the gas moves.
  apply_box(has_cells ? frame.box() : IntBox());
  for (FrameStorable* storable : storables_) storable->load(frame);
  return has_cells;
}

NoiseState Simulation3D::noise_state() const { return noise_->state(); }

void Simulation3D::restore_noise(const NoiseState& state) { noise_->restore(state); }

void Simulation3D::catch_up_noise(double start) {
  noise_->catch_up(start, settings.sim_time.time.value());
}

void Simulation3D::update(SceneEvaluator& scene, FrameTime& time, SimProgress* progress) {
  setup();
  const Stopwatch total;
  times_ = {};
  times_.out = since_update_.seconds();
  progress_ = progress;

  if (steps_remaining_ < 1)
    begin_frame();
  else
    LogMessage() << "continuing update, " << steps_remaining_ << " steps remaining";
  while (steps_remaining_ > 0)
    if (!substep(scene)) return;

  const FrameTime stored = next_frame(time);
  settings.sim_time = next_frame(settings.sim_time);
  Stopwatch save;
  if (!store_frame(stored, 0)) ++frames_not_stored_;
  times_.sav = save.seconds();
  for (auto& system : systems_) system->end_frame();
  if (progress_) progress_->progress(1, 1);
  time = stored;
  log_frame_line(total.seconds());
  since_update_.lap();
}

void Simulation3D::begin_frame() {
  remaining_time_ = settings.sim_time.length.value();
  settings.frame_elapsed = 0;
  settings.step_index = 0;
  steps_remaining_ = remaining_time_ != 0 ? std::max(steps_per_frame_, 1) : 0;
  for (auto& system : systems_) system->begin_frame(*this);
}

// One substep. False if the progress asked to stop.
bool Simulation3D::substep(SceneEvaluator& scene) {
  Stopwatch watch;
  if (!check(0)) return false;
  settings.dt = choose_step();
  scene.read_settings(*this, settings.dt);

  watch.lap();
  for (auto& system : systems_) system->begin_step();
  if (!check(1)) return false;
  for (auto& system : systems_) system->prepare_advection();
  times_.beg += watch.lap();
  if (!check(2)) return false;

  for (ScalarFluidChannel* channel : channels_) channel->decay_and_advect(*fluid_, *this);
  times_.pro += watch.lap();
  for (auto& system : systems_) system->after_channel_advection();
  times_.beg += watch.lap();
  if (!check(3)) return false;

  fluid_->advect_velocity();
  times_.vel += watch.lap();
  if (!check(4)) return false;
  for (auto& system : systems_) system->after_velocity_advection();
  times_.beg += watch.lap();
  if (!check(5)) return false;

  keep_box = {};
  scene.update_inputs(*this, settings.dt);
  times_.src += watch.lap();
  if (!check(6)) return false;
  adapt(settings.dt, {}, true, true);
  times_.res += watch.lap();
  if (!check(7)) return false;

  for (ScalarFluidChannel* channel : channels_) channel->finish_step(*this, *this);
  times_.pro += watch.lap();
  for (auto& system : systems_) system->after_sources();
  times_.beg += watch.lap();
  if (!check(8)) return false;
  adapt_to_expansion();
  times_.res += watch.lap();

  scene.update_solids(*this, settings.dt);
  if (solids.phi)
    for (auto& system : systems_) system->set_solids(solids);
  solids = {};
  times_.sol += watch.lap();
  if (!check(9)) return false;

  fluid_->update(settings.dt, *pressure_, *this, *this);
  times_.vel += watch.lap();
  // A solve that was stopped leaves a velocity that must not become a frame.
  if (pressure_->last_solve().end == SolveEnd::kAborted) return false;
  for (auto& system : systems_) system->end_step();
  divergence_sources_.clear();
  mem_stats();

  settings.step_index += 1;
  steps_remaining_ -= 1;
  remaining_time_ -= settings.dt;
  settings.frame_elapsed += settings.dt;
  if (progress_) progress_->substep_done(*this);
  return true;
}

// Plans the substeps left in the frame, all of equal length, by the CFL limit. The frame always
// ends within max_substeps: the limit gives way, not the frame.
double Simulation3D::choose_step() {
  const double frame_length = settings.sim_time.length.value();
  step_limit_ = settings.max_substeps >= 2 ? fluid_->max_step() : frame_length;
  const auto steps = [&](double duration, double step, int most) {
    const double n = std::max(std::ceil(duration / step), 1.0);
    return n < most ? static_cast<int>(n) : most;
  };
  const int left = std::max(settings.max_substeps - settings.step_index, 1);
  steps_remaining_ = steps(remaining_time_, step_limit_, left);
  const double step = remaining_time_ / steps_remaining_;
  steps_per_frame_ = steps(frame_length, step, std::max(settings.max_substeps, 1));
  return step;
}

bool Simulation3D::check(int k) {
  const int i = settings.step_index;
  return !progress_ || progress_->progress(10 * i + k, 10 * (steps_remaining_ + i));
}

// The solver's own cycles fill the bar within the current substep.
bool Simulation3D::abort_requested(int done, int total) {
  const int i = settings.step_index;
  return progress_ && !progress_->progress(done + i * total, total * (steps_remaining_ + i));
}

void Simulation3D::add_detail(FluidSystem& fluid) {
  for (VelocityForce* force : forces_) force->add_detail(fluid);
}

void Simulation3D::combustion(MField& target, int key) {
  for (CombustionSource* source : combustion_sources_) source->combustion(target, key);
}

MField* Simulation3D::get_field(int key) {
  for (FieldSource* source : field_sources_)
    if (MField* field = source->get_field(key)) return field;
  return nullptr;
}

void Simulation3D::fill_frame(SimFrame& frame, const SimSettings& stored, const FrameTime& time) {
  const GridMatrix matrix = grid_matrix(stored.world_to_grid);
  for (FrameStorable* storable : storables_) storable->store(frame, stored, matrix);
  frame.simTime = stored.sim_time;
  frame.frameTime = time;
  frame.valid = true;
  frame.saved = false;
}

bool Simulation3D::store_frame(const FrameTime& time, int substep) {
  if (!settings.target_cache) {
    LogMessage() << "Failed to store simulation frame " << time.frame();
    return false;
  }
  const double before = settings.target_cache->seconds_waited();
  try {
    const bool direct = settings.cache_direct;
    const bool stored = direct ? write_frame(time, substep) : queue_frame(time, substep);
    times_.dsk = settings.target_cache->seconds_waited() - before;
    return stored;
  } catch (const CUDAException&) {
    LogMessage() << "CUDA exception during store";
    throw;
  }
}

bool Simulation3D::write_frame(const FrameTime& time, int substep) {
  SimFrame frame;
  frame.ownsData = false;  // the writer is done before the state moves on
  frame.substep = substep;
  fill_frame(frame, settings, time);
  return settings.target_cache->write_through(frame);
}

bool Simulation3D::queue_frame(const FrameTime& time, int substep) {
  SlotHandle slot = SlotHandle::for_storing(settings.target_cache, time.frame(), substep);
  fill_frame(*slot, settings, time);
  slot.stored();
  return true;
}

void Simulation3D::log_frame_line(double total) {
  const StageTimes& t = times_;
  LogMessage() << settings.sim_time.frame() << "F #" << settings.step_index << " src(" << t.src
               << ") sol(" << t.sol << ") res(" << t.res << ") beg(" << t.beg << ") pro(" << t.pro
               << ") vel(" << t.vel << ") tot(" << total << ") sav(" << t.sav << ") out(" << t.out
               << ")" << (cuda_use_flags().on_gpu() ? " GPU" : " CPU");
}

}  // namespace nbx
