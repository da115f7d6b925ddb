// Animation: keyframes, transforms and the resulting world matrices; births, motion and deaths of
// particles, which depend on the time but not on the times evaluated before.

#include "host/scene/track.h"
#include "host/scene/transform.h"
#include "tests/host/scene_support.h"

namespace host::test {
namespace {

double At(const Track& track, double frame) { return std::get<double>(track.Evaluate(frame)); }

TEST(Animation, LinearTracksHoldAtTheirEndsAndWholeNumbersUntilTheNextKey) {
  const Track track{Interpolation::Linear, {{-10, 1.0}, {0, 3.0}, {5, -2.0}}};
  const double cases[][2] = {{-1e9, 1}, {-10, 1}, {-5, 2}, {0, 3}, {1, 2}, {5, -2}, {1e9, -2}};
  for (const auto& [frame, value] : cases) EXPECT_DOUBLE_EQ(At(track, frame), value) << frame;
  const Track whole{Interpolation::Linear, {{0, std::int32_t{1}}, {10, std::int32_t{5}}}};
  EXPECT_EQ(std::get<std::int32_t>(whole.Evaluate(9.99)), 1);
  EXPECT_EQ(std::get<std::int32_t>(whole.Evaluate(10)), 5);
}

TEST(Animation, SmoothTracksPassTheirKeysAndStayBetweenThem) {
  const Track two{Interpolation::Smooth, {{0, 0.0}, {10, 1.0}}};
  // With level ends the cubic is 3 t^2 - 2 t^3.
  for (int i = 0; i <= 10; ++i) EXPECT_NEAR(At(two, i), i * i * (3 - 0.2 * i) / 100, 1e-15) << i;

  const Track many{Interpolation::Smooth, {{0, 0.0}, {1, 5.0}, {4, 5.5}, {5, -1.0}, {9, -1.0}}};
  for (std::size_t i = 0; i + 1 < many.keys.size(); ++i) {
    const double p0 = std::get<double>(many.keys[i].value);
    const double p1 = std::get<double>(many.keys[i + 1].value);
    const double f0 = many.keys[i].frame, f1 = many.keys[i + 1].frame;
    EXPECT_EQ(At(many, f0), p0);
    double last = p0;
    for (int s = 1; s <= 50; ++s) {
      const double value = At(many, f0 + (f1 - f0) * s / 50);
      EXPECT_GE((value - last) * (p1 - p0), -1e-14) << "turns back between keys " << i;
      last = value;
    }
    // No kink at a key: the slopes at both sides agree.
    const double h = 1e-6;
    EXPECT_NEAR((At(many, f1 + h) - p1) / h, (p1 - At(many, f1 - h)) / h, 1e-4) << i;
  }
}

TEST(Animation, RotationsTurnAxisIntoAxis) {
  // Heading z to x, pitch y to z, bank x to y.
  EXPECT_EQ(ToMatrix({{}, {90, 0, 0}, {1, 1, 1}}).v3, (Vector{1, 0, 0}));
  EXPECT_EQ(ToMatrix({{}, {0, 90, 0}, {1, 1, 1}}).v2, (Vector{0, 0, 1}));
  EXPECT_EQ(ToMatrix({{}, {0, 0, -270}, {1, 1, 1}}).v1, (Vector{0, 1, 0}));
  // Bank first, then pitch, then heading: x goes to y, then z, then x; scaled before all that.
  const Matrix m = ToMatrix({{5, 6, 7}, {90, 90, 90}, {2, 3, 4}});
  EXPECT_EQ(m * (Vector{1, 0, 0}), (Vector{7, 6, 7}));
}

TEST(Animation, WorldMatricesFollowTheParentsKeyframes) {
  const auto document = Read(Data("moving_parents.json"));
  document->Open();
  SceneObject* box = document->GetFirstObject()->GetDown()->GetDown();
  const struct {
    int frame;
    Vector place;
    double edge, amount;
  } cases[] = {{0, {2, 0, 20}, 1, 0},
               {25, {100 - 2, 0, -20}, 2, 50},  // rotated by 180 degrees: z to -z, x to -x
               {75, {100 - 2, 0, -20}, 3, 50}};
  for (const auto& c : cases) {
    GoToFrame(*document, c.frame);
    ExpectNear(box->GetMg().off, c.place);
    EXPECT_EQ(box->GetDataInstance().GetReal(test_plugin::kSize), c.edge) << c.frame;
    EXPECT_EQ(box->GetDataInstance().GetBool(test_plugin::kActive), c.frame > 0) << c.frame;
    EXPECT_EQ(box->GetFirstTag()->GetDataInstance().GetReal(test_plugin::kAmount), c.amount);
  }
  // Between frames, like a substep: halfway, where z has turned to x, and x to -z.
  GoToFrame(*document, 12.5);
  ExpectNear(box->GetMg().off, Vector{50 + 20, 0, -2});
  box->GetFirstTag()->ScaleKeys(test_plugin::kAmount, 0.1);
  GoToFrame(*document, 25);
  EXPECT_EQ(box->GetFirstTag()->GetDataInstance().GetReal(test_plugin::kAmount), 5);
}

// 10 births per second at 25 frames per second, from an emitter that moves along x at 100 units per
// second and is rotated so that its z points along the world's x: heading turns z toward x.
std::string Emitter(const std::string& more) {
  std::string text = Data("emitter.json");
  return text.replace(text.find("MORE"), 4, more);
}

TEST(Particles, AreBornOnTimeAndFlyTheirParabola) {
  const auto document = Read(Emitter(""));
  const SceneObject& group = *document->FindByName("Group").front();
  for (const double frame : {0.0, 0.5, 7.5, 24.0, 63.25}) {
    GoToFrame(*document, frame);
    const double t = frame / 25;
    // Particle j is born at j / 10 s and lives for a second.
    const auto born = static_cast<std::size_t>(std::ceil(t * 10 - 1e-9));
    const std::size_t dead = t < 1 ? 0 : static_cast<std::size_t>(std::floor((t - 1) * 10)) + 1;
    const Particles& particles = group.GetParticles();
    ASSERT_EQ(particles.size(), born - dead) << frame;
    for (const Particle& p : particles) {
      const double birth = p.number / 10.0, age = t - birth;
      EXPECT_NEAR(p.age, age, 1e-9);
      EXPECT_NEAR(p.position.x, 100 * birth + 20 * age, 1e-9);
      EXPECT_NEAR(p.position.y, -4 * age * age, 1e-9);
      EXPECT_NEAR(p.velocity.y, -8 * age, 1e-9);
      EXPECT_EQ(p.bits, 3U);
    }
  }
}

TEST(Particles, DependOnTheTimeAlone) {
  const std::string text = Emitter(
      R"(, "spread": 40, "size": [5, 5, 1], "life_variation": 0.5, "speed_variation": 0.3)");
  const auto state = [&](std::initializer_list<double> frames, const std::string& objects) {
    const auto document = Read(objects);
    for (const double frame : frames) GoToFrame(*document, frame);
    std::vector<double> numbers;
    for (const Particle& p : document->FindByName("Group").front()->GetParticles())
      numbers.insert(numbers.end(), {p.position.x, p.position.y, p.position.z, p.velocity.x, p.age,
                                     p.life, p.spin.x});
    return numbers;
  };
  const std::vector<double> direct = state({40.6}, text);
  EXPECT_GT(direct.size(), 40U);
  EXPECT_EQ(state({3, 3.2, 17.9, 40, 40.6}, text), direct);
  EXPECT_EQ(state({80, 2, 40.6}, text), direct);
  EXPECT_EQ(state({41, 40.6}, text), direct) << "from the frame before";
  EXPECT_EQ(state({41, 40.2, 42, 41, 41.3, 40.6}, text), direct);
  std::string other = text;
  EXPECT_NE(state({40.6}, other.replace(other.find("\"seed\": 3"), 9, "\"seed\": 4")), direct);
}

/// Lifts all particles left of x = 20 and counts the calls.
class Lift final : public ObjectData {
 public:
  void ModifyParticles(const BaseObject& object, const Particles& particles,
                       std::vector<ParticleModification>& changes, double step) override {
    ++calls;
    longest = std::max(longest, step);
    EXPECT_NEAR(object.GetMg().off.x, object.GetDocument().GetTime().Get() * 25, 1e-9);
    for (std::size_t i = 0; i < particles.size(); ++i) {
      if (particles[i].position.x >= 20) continue;
      changes[i].velocity = changes[i].velocity + object.GetDataInstance().GetVector(1);
      ++changes[i].count;
    }
  }
  inline static int calls = 0;
  inline static double longest = 0;
};

/// A scene with an emitter with these parameters, and modifiers that lift by one unit per frame.
std::unique_ptr<Document> ReadLifted(const std::string& parameters,
                                     const std::vector<std::string>& lifts) {
  static const SceneClasses classes = [] {
    SceneClasses all;
    ClassDescription lift{.name = "lift"};
    lift.parameters = {{1, "LIFT_FORCE", ParameterType::Vector, Vector{}}};
    const auto make = [] { return std::make_unique<Lift>(); };
    EXPECT_EQ(all.objects.Add({9, "Lift", lift, make}), "");
    return all;
  }();
  std::string text =
      R"({"objects": [{"type": "particle_emitter", "parameters": {)" + parameters + "}}";
  for (const std::string& more : lifts)
    text += R"(, {"type": "lift", )" + more +
            R"(, "keyframes": {"position": [[0, [0, 0, 0]], [200, [200, 0, 0]]]}})";
  return ReadDocument(text + "]}", "/", classes);
}

// Substeps and shutters look one frame ahead and return.
TEST(Particles, LookingAheadDoesNotRestart) {
  const auto document = ReadLifted(R"("life": 99)", {R"("enabled": true)"});
  Lift::calls = 0;
  for (int frame = 1; frame <= 100; ++frame)
    for (const double ahead : {0.0, 1.0, 0.25, 0.5, 1.0}) GoToFrame(*document, frame + ahead);
  EXPECT_GE(Lift::calls, 300);
  EXPECT_LE(Lift::calls, 320) << "one whole step and two parts of one in each frame";
}

TEST(Particles, FollowTheMeanOfTheirModifiers) {
  const auto document = ReadLifted(
      R"("rate": 100, "speed": 0, "life": 9, "size": [80, 0, 0])",
      {R"("parameters": {"force": [0, 30, 0]})", R"("parameters": {"force": [0, 0, 10]})",
       R"("enabled": false, "parameters": {"force": [0, 900, 0]})"});
  Lift::longest = 0;
  GoToFrame(*document, 50);
  EXPECT_NEAR(Lift::longest, 0.04, 1e-12);
  std::size_t moved = 0;
  for (const Particle& p : document->GetFirstObject()->GetParticles()) {
    const bool lifted = p.position.x < 20;
    moved += lifted ? 1 : 0;
    // Modifiers don't act in the step of the birth.
    const double whole = lifted ? (49 - std::floor(p.number * 0.25)) / 25 : 0;
    EXPECT_NEAR(p.position.y, 15 * whole, 1e-6) << p.age;
    EXPECT_NEAR(p.position.z, 5 * whole, 1e-6);
  }
  EXPECT_GT(moved, 100U);
  EXPECT_LT(moved, 190U);
}

}  // namespace
}  // namespace host::test
