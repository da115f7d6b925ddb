// Particles: where and when they are born, how they fly, and that the road to a time doesn't
// matter.
#include <gtest/gtest.h>

#include "tests/host/scene_support.h"

namespace host::test {
namespace {

// 10 births a second at 25 frames a second, from an emitter that goes 100 units a second along x,
// turned so that its z points along the world's x: heading turns z towards x.
const char* const kEmitter = R"({"type": "particle_system", "children": [
  {"type": "particle_emitter", "rotation": [90, 0, 0],
   "keyframes": {"position": [[0, [0, 0, 0]], [100, [400, 0, 0]]]},
   "parameters": {"rate": 10, "life": 1, "speed": 20, "gravity": [0, -8, 0], "seed": 3MORE}}]},
  {"type": "particle_group", "name": "Group", "parameters": {"system": "Particle System"}})";

std::string Emitter(const std::string& more) {
  std::string text = kEmitter;
  return text.replace(text.find("MORE"), 4, more);
}

void GoTo(Document& document, double frame) {
  document.SetTime(BaseTime(static_cast<std::int64_t>(frame * 1000), 25000));
  document.ExecutePasses(nullptr, true, true, true);
}

TEST(Particles, AreBornOnTimeAndFlyTheirParabola) {
  const auto document = ReadObjects(Emitter(""));
  const SceneObject& group = *document->FindByName("Group").front();
  for (const double frame : {0.0, 0.5, 7.5, 24.0, 63.25}) {
    GoTo(*document, frame);
    const double t = frame / 25;
    // Birth j comes at j / 10 s; the particle lives for a second.
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
    const auto document = ReadObjects(objects);
    for (const double frame : frames) GoTo(*document, frame);
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
  EXPECT_NE(
      state({40.6},
            Emitter(R"(, "spread": 40, "seed": 4)").replace(text.find(", \"seed\": 3"), 11, "")),
      direct);
}

class Counter final : public ObjectData {
 public:
  void ModifyParticles(const BaseObject&, const Particles&, std::vector<ParticleModification>&,
                       double) override {
    ++calls;
  }
  static int calls;
};
int Counter::calls = 0;

// Substeps and shutters look a frame ahead and go back.
TEST(Particles, LookingAheadDoesntStartAnew) {
  SceneClasses classes;
  ASSERT_EQ(classes.objects.Add(
                {9, "Counter", {.name = "counter"}, [] { return std::make_unique<Counter>(); }}),
            "");
  const auto document = ReadDocument(
      R"({"objects": [{"type": "particle_emitter", "parameters": {"life": 99}},
          {"type": "counter"}]})",
      "/", classes);
  for (int frame = 1; frame <= 100; ++frame)
    for (const double ahead : {0.0, 1.0, 0.25, 0.5, 1.0}) GoTo(*document, frame + ahead);
  EXPECT_GE(Counter::calls, 300);
  EXPECT_LE(Counter::calls, 320) << "one whole step and two parts of one in each frame";
}

/// Lifts all particles left of x = 20, and tells the times at which it was asked.
class Lift final : public ObjectData {
 public:
  void ModifyParticles(const BaseObject& object, const Particles& particles,
                       std::vector<ParticleModification>& changes, double step) override {
    EXPECT_NEAR(step, 0.04, 1e-12);
    EXPECT_EQ(object.GetMg().off.x, object.GetDocument().GetTime().Get() * 25);
    for (std::size_t i = 0; i < particles.size(); ++i) {
      if (particles[i].position.x >= 20) continue;
      changes[i].velocity = changes[i].velocity + object.GetDataInstance().GetVector(1);
      ++changes[i].count;
    }
  }
};

TEST(Particles, FollowTheMeanOfTheModifiersThatHaveASay) {
  SceneClasses classes;
  ASSERT_EQ(classes.objects.Add({9,
                                 "Lift",
                                 {.name = "lift",
                                  .parameters = {{.id = 1,
                                                  .symbol = "LIFT_FORCE",
                                                  .type = ParameterType::Vector,
                                                  .default_value = Vector{}}}},
                                 [] { return std::make_unique<Lift>(); }}),
            "");
  const std::string lift =
      R"({"type": "lift", "keyframes": {"position": [[0, [0, 0, 0]], [100, [100, 0, 0]]]},)";
  const auto document = ReadDocument(
      R"({"objects": [{"type": "particle_emitter", "parameters": {"rate": 100, "speed": 0,
          "life": 9, "size": [80, 0, 0]}},)" +
          lift + R"("parameters": {"force": [0, 30, 0]}},)" + lift +
          R"("parameters": {"force": [0, 0, 10]}},)" + lift +
          R"("enabled": false, "parameters": {"force": [0, 900, 0]}}]})",
      "/", classes);
  GoTo(*document, 50);
  std::size_t moved = 0;
  for (const Particle& p : document->GetFirstObject()->GetParticles()) {
    const bool lifted = p.position.x < 20;
    moved += lifted ? 1 : 0;
    // The step of its birth is without modifiers.
    const double whole = lifted ? (49 - std::floor(p.number * 0.25)) / 25 : 0;
    EXPECT_NEAR(p.position.y, 15 * whole, 1e-6) << p.age;
    EXPECT_NEAR(p.position.z, 5 * whole, 1e-6);
  }
  EXPECT_GT(moved, 100U);
  EXPECT_LT(moved, 190U);
}

}  // namespace
}  // namespace host::test
