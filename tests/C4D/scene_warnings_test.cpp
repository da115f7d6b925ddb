// Each row breaks a good scene in one place. The good scenes give no warning.
#include "C4D/run/scene_warnings.h"

#include "C4D/parameters/volume_parameters.h"
#include "C4D/services/host_conversion.h"
#include "C4D/settings/volume_cache.h"
#include "C4D/test_document.h"

namespace nbx {
namespace {

/// A document of frames 0 to 12 with the volume "gas".
std::string scene(const std::string& parameters, const std::string& objects) {
  return R"({"fps": 25, "start": 0, "end": 12, "objects": [{"type": "volume", "name": "gas",
    "parameters": {"size": [60, 80, 60], "voxel_size": 2, )" +
         parameters + "}}, " + objects + "]}";
}
/// An object "wick" with an emitter.
std::string wick(const std::string& type, const std::string& emitter) {
  return R"({"name": "wick", )" + type + R"(, "tags": [)" + emitter + "]}";
}
const std::string kSphere =
    R"("position": [0, -20, 0], "type": "sphere", "parameters": {"radius": 6})";
const std::string kDensity = R"({"type": "emitter", "parameters": {"density": 1}})";
const std::string kLook =
    R"("simulate_density": true, "smoke_channel": "density", "max_substeps": 4)";

const std::string kSmoke = scene(kLook, wick(kSphere, kDensity));
const std::string kFire = scene(
    R"("simulate_fuel": true, "simulate_burn": true, "fuel_driver": "temperature",
       "fuel_curve": [[0.4, 0], [1, 1]], "fire_channel": "burn", "noise_strength": 5,
       "fire_density_channel": "temperature", "noise_driver": "burn")",
    wick(kSphere, R"({"type": "emitter", "parameters": {"fuel": 1, "temperature": 0.8}})"));
const std::string kSparks =
    scene(kLook,
          wick(R"("type": "particle_emitter", "parameters": {"rate": 99, "speed": 20})", kDensity));
const std::string kSelected =
    scene(kLook, wick(R"("type": "mesh", "points": [[-9, 0, -9], [9, 0, -9], [9, 0, 9]],
                   "polygons": [[0, 1, 2]])",
                      R"({"type": "selection", "name": "top", "polygons": [0]},
                   {"type": "emitter", "parameters": {"density": 1, "selections": ["top"]}})"));

std::string with(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, text.npos) << from;
  return at == text.npos ? text : text.replace(at, from.size(), to);
}

std::vector<SceneWarning> warnings_of(const std::string& text) {
  test::TestDocument document(text);
  host::BaseObject& volume = document.object("gas");
  const host::BaseTime start = time_range(volume).start;
  evaluate(*document, start);
  const auto found = scene_warnings(volume);
  EXPECT_EQ(document->GetTime(), start);
  return found;
}

struct Mistake {
  const std::string& good;
  std::string from, to, object, parameter, words;
};

const Mistake kMistakes[] = {
    {kSmoke, "[0, -20, 0]", "[0, 300, 0]", "wick", "position",
     "its box is (-6, 294, -6) to (6, 306, 6), the domain's (-30, -40, -30) to (30, 40, 30)"},
    {kSmoke, R"("name": "wick",)", R"("name": "wick", "enabled": false,)", "wick", "enabled",
     "the object \"wick\" is switched off"},
    {kSmoke, R"("density": 1)", R"("density": 1, "enabled": false)", "wick", "enabled",
     "enabled is off"},
    {kSmoke, R"("density": 1)", R"("density": 0)", "wick", "density", "are 0"},
    {kSmoke, R"({"density": 1})", R"({}, "keyframes": {"parameters.density":
       [[0, 0], [50, 0], [60, 1]]})",
     "wick", "density", "the keyframes of density give 0 in frames 0 to 12"},
    {kSmoke, R"("type": "sphere", "parameters": {"radius": 6})", R"("type": "null")", "wick",
     "type", "neither polygons nor"},
    {kSmoke, R"("density": 1)", R"("density": 1, "fuel": 2)", "wick", "fuel",
     "emitter \"wick\": fuel is 2, but simulate_fuel is off: turn it on, or set fuel to 0"},
    {kSmoke, R"("radius": 6)", R"("radius": 0.5)", "wick", "voxel_size", "1 units across"},
    {kSmoke, R"("density": 1)", R"("density": 1, "particle_curve": [[0, 1], [1, 0]])", "wick",
     "particle_curve", "no effect while particle_map is nothing"},
    {kSmoke, R"("smoke_channel": "density")", R"("smoke_channel": "none")", "gas", "smoke_channel",
     "pictures show nothing: smoke_channel is none, and fire_channel is "
     "temperature, which nothing makes: set smoke_channel to density"},
    {kSmoke, R"("smoke_channel")", R"("simulate_fuel": true, "smoke_channel")", "gas",
     "simulate_fuel", "nothing makes fuel: set fuel of an emitter"},
    {kSmoke, R"("smoke_channel")", R"("smoke_density": 0, "smoke_channel")", "gas", "smoke_density",
     "invisible"},
    {kSmoke, R"("smoke_channel")", R"("fuel_to_density": 2, "smoke_channel")", "gas",
     "fuel_to_density", "has no effect while simulate_fuel is off"},
    {kSmoke, R"("smoke_channel")", R"("wind_direction": [0, 0, 1], "smoke_channel")", "gas",
     "wind_direction", "has no effect while wind_speed is 0"},
    {kSmoke, R"("max_substeps": 4)", R"("max_substeps": 1, "cfl": 3)", "gas", "cfl",
     "cfl has no effect while max_substeps is 1"},
    {kSmoke, R"("max_substeps": 4)", R"("max_substeps": 4, "wind_speed": 1000)", "gas",
     "max_substeps", "the wind carries gas 20 voxels in a frame, which takes 10 substeps"},
    {kSmoke, R"("density": 1)", R"("density": 1, "direction": [0, 1000, 0])", "gas", "max_substeps",
     "emitter \"wick\" carries gas 20 voxels"},
    {kSmoke, R"("voxel_size": 2)", R"("voxel_size": 12)", "gas", "size", "only 6 x 8 x 6 voxels"},
    {kSmoke, R"("max_substeps": 4)", R"("max_substeps": 4, "time_mode": "own_range",
     "time_start": 8, "time_end": 8.4)",
     "gas", "time_end", "frames 200 to 210 are not all in the document, which has frames 0 to 12"},
    {kFire, R"("temperature": 0.8)", R"("temperature": 0.3)", "gas", "fuel_curve",
     "emitters give temperature of at most 0.3, where fuel_curve is 0"},
    {kFire, R"("fuel_driver")", R"("decay_fuel": 0, "fuel_driver")", "gas", "decay_fuel", "never"},
    {kFire, R"("fire_channel": "burn")", R"("fire_channel": "fuel")", "gas", "fire_channel",
     "fire_channel is fuel, but cache_fuel is off"},
    {kFire, R"("noise_driver": "burn")", R"("noise_driver": "density")", "gas", "noise_driver",
     "simulate_density is off, so the noise is the same everywhere"},
    {kFire, R"("fuel": 1, )", "", "gas", "simulate_fuel", "nothing makes fuel"},
    {kFire, R"("fire_density_channel")", R"("fire_density_curve": [[0, 0], [9, 0]],
     "fire_density_channel")",
     "gas", "fire_density_curve", "0 everywhere"},
    {kSparks, R"("rate": 99)", R"("rate": 99, "start": 4)", "wick", "rate",
     "no particle is alive in frames 0 to 12"},
    {kSelected, R"("polygons": [0]})", R"("polygons": []})", "wick", "selections",
     "hold no polygon"},
};

// What looks like a mistake at the first frame, or beside other objects, but isn't one.
struct Doubt {
  const std::string& good;
  std::string from, to;
};

const std::string kOther = R"({"type": "volume", "name": "other", "position": [0, 300, 0],
  "parameters": {"simulate_fuel": true}}, )";

const Doubt kDoubts[] = {
    // Frame 7 alone has gas.
    {kSmoke, R"({"density": 1})", R"({}, "keyframes": {"parameters.density":
       [[6, 0], [7, 1], [8, 0]]})"},
    // It crosses the domain between two frames.
    {kSmoke, R"("position": [0, -20, 0])",
     R"("keyframes": {"position": [[3, [-200, 0, 0]], [4, [200, 0, 0]]]})"},
    {kSmoke, R"("position": [0, -20, 0])",
     R"("keyframes": {"scale": [[0, [0.01, 0.01, 0.01]], [9, [1, 1, 1]]]})"},
    {kSmoke, R"({"name": "wick")",
     kOther + wick(with(kSphere, "-20", "300"), with(kDensity, "1", R"(1, "fuel": 1)")) +
         R"(, {"name": "second")"},
    {kSmoke, R"({"name": "wick")", R"({"name": "spare", "type": "sphere", "enabled": false,
     "tags": [{"type": "emitter"}]}, {"name": "wick")"},
    {kSmoke, R"({"name": "wick")", R"({"name": "wall", "type": "cube", "position": [0, 900, 0],
     "tags": [{"type": "emitter", "parameters": {"solid": true}}]}, {"name": "wick")"},
    {kSmoke, R"("smoke_channel")", R"("simulate_temperature": false, "buoyancy_temperature": 0,
     "cache_temperature": false, "smoke_channel")"},
    {kSmoke, R"("max_substeps": 4})", R"("max_substeps": 4, "wind_direction": [0, 0, 1]},
     "keyframes": {"parameters.wind_speed": [[0, 0], [9, 50]]})"},
    {kSparks, R"("rate": 99)", R"("rate": 99, "start": 0.3)"},
    {kFire, R"(, "temperature": 0.8})", R"(}, "keyframes": {
     "parameters.temperature": [[0, 0], [10, 1]]})"},
};

TEST(SceneWarnings, NameObjectParameterAndCureOfEachMistake) {
  for (const std::string* good : {&kSmoke, &kFire, &kSparks, &kSelected})
    for (const SceneWarning& w : warnings_of(*good)) ADD_FAILURE() << *good << "\n" << w.text;
  for (const Mistake& mistake : kMistakes) {
    SCOPED_TRACE(mistake.to);
    const auto found = warnings_of(with(mistake.good, mistake.from, mistake.to));
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].object, mistake.object);
    EXPECT_EQ(found[0].parameter, mistake.parameter) << found[0].text;
    EXPECT_NE(found[0].text.find(mistake.words), std::string::npos) << found[0].text;
  }
}

TEST(SceneWarnings, LeaveOutWhatKeyframesOrOtherObjectsMakeGood) {
  for (const Doubt& doubt : kDoubts) {
    const std::string text = with(doubt.good, doubt.from, doubt.to);
    for (const SceneWarning& w : warnings_of(text)) ADD_FAILURE() << text << "\n" << w.text;
  }
}

}  // namespace
}  // namespace nbx
