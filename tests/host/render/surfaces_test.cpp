
#include "tests/host/render/shot.h"

namespace host::test {
namespace {

/// The members of a file in data, to stand before the objects of a scene.
std::string Members(const std::string& name) {
  const std::string text = Data(name);
  return text.substr(1, text.rfind('}') - 1) + ",";
}
const std::string kMaterials = Members("materials.json");

std::string Solid(const std::string& type, const std::string& material,
                  const std::string& more = "") {
  return "{\"type\": \"" + type + "\", " + more +
         "\"tags\": [{\"type\": \"texture\", \"parameters\": {\"material\": \"" + material +
         "\"}}]}";
}

std::string Sun(double pitch, const std::string& more = "\"angle\": 0") {
  return R"({"type": "light", "rotation": [0, )" + std::to_string(pitch) +
         R"(, 0], "parameters": {"type": "directional", "color": [1, 0.5, 2], "intensity": 3, )" +
         more + "}},";
}

const std::string kFromAbove = Camera("[0, 40, 0]", "[0, 90, 0]");

TEST(RenderSurfaces, LightFallsByTheCosineAndTheSquareOfTheDistance) {
  const Vector clay{1.5, 0.6, 1.5};  // light color times clay color
  for (const double pitch : {90.0, 30.0, 5.0, -30.0}) {
    SCOPED_TRACE(pitch);
    const double cosine = std::max(0.0, std::sin(pitch * kPi / 180));
    ExpectNear(Shot{}.Color(Sun(pitch) + kFromAbove + Solid("plane", "clay"), kMaterials),
               clay * cosine, 1e-6);
  }
  // A lamp above the point (100, 0, 0) with reference distance 50: at distance 125 by the inverse
  // square, with a cosine of 0.6. The axis of the spot is 53.13 degrees away from the point.
  for (const auto& [parameters, share] :
       {std::pair(R"("falloff": "none")", 1.0),
        {R"("falloff": "inverse_square")", 0.16},
        {R"("type": "spot", "inner_angle": 107, "outer_angle": 120)", 1},
        {R"("type": "spot", "inner_angle": 20, "outer_angle": 106)", 0}}) {
    SCOPED_TRACE(parameters);
    const std::string lamp =
        R"({"type": "light", "position": [100, 75, 0], "rotation": [0, 90, 0],)"
        R"("parameters": {"falloff_distance": 50, )" +
        std::string(parameters) + "}},";
    ExpectNear(Shot{}.Color(lamp + kFromAbove + Solid("plane", "clay"), kMaterials),
               Vector{0.5, 0.4, 0.25} * (0.6 * share), kPixelSpan);
  }
}

TEST(RenderSurfaces, AnAreaLightAgreesWithItsFormFactor) {
  // A rectangle of 120 x 80 at height 100, parallel to the floor: four times the factor of a
  // quarter seen from below its corner (J. R. Howell, A catalog of radiation heat transfer
  // configuration factors, B-3).
  const double x = 0.6, y = 0.4, rx = std::sqrt(1 + x * x), ry = std::sqrt(1 + y * y);
  const double factor = 4 / (2 * kPi) * (x / rx * std::atan(y / rx) + y / ry * std::atan(x / ry));
  const double expected = 100.0 * 100 * kPi * factor / (120 * 80);
  const std::string lamp =
      R"({"type": "light", "position": [0, 100, 0], "rotation": [0, 90, 0], "parameters": {)"
      R"("type": "area", "size_x": 120, "size_y": 80, "falloff": "inverse_square"}},)";
  const Vector color =
      Shot{.samples = 4096}.Color(lamp + kFromAbove + Solid("plane", "clay"), kMaterials);
  // The samples of the light differ by a fifth; three standard errors of independent samples.
  EXPECT_NEAR(color.x, 0.5 * expected, 0.5 * expected * 3 * 0.2 / 64);
}

TEST(RenderSurfaces, ShadowsAreSoftByTheSizeOfTheLight) {
  const auto at = [](double x, const std::string& light) {
    const std::string camera = Camera("[" + std::to_string(x) + ", 20, 0]", "[0, 90, 0]");
    const std::string roof = Solid("plane", "clay", R"("position": [-200, 50, 0], )");
    return Shot{.samples = 1024}
               .Color(light + camera + roof + "," + Solid("plane", "clay"), kMaterials)
               .x /
           1.5;
  };
  const std::string soft = Sun(90, "\"angle\": 20"), none = Sun(90, R"("shadow": "none")"),
                    hard = Sun(90, R"("angle": 20, "shadow": "hard")");
  // Light reaches below the edge of the roof at x = 0 by 50 tan 10 = 8.8 units.
  double before = -0.01;
  for (const double x : {-12.0, -7.0, -4.0, -2.0, 0.0, 2.0, 4.0, 7.0, 12.0}) {
    const double share = at(x, soft);
    EXPECT_GE(share, before) << x;
    before = share - 0.01;
    const double expected = x < -10 ? 0 : x > 10 ? 1 : x == 0 ? 0.5 : share;
    EXPECT_NEAR(share, expected, 0.02);  // the mean cosine of the cone is 0.99
  }
  EXPECT_EQ(at(-1, hard), 0);
  EXPECT_NEAR(at(1, hard), 1, 1e-6);
  EXPECT_NEAR(at(-12, none), 1, 1e-6);
}

TEST(RenderSurfaces, MirrorsGlassAndFoilTreatTheBackgroundAsTheyShould) {
  const Vector background{0.25, 0.5, 0.75};
  const auto seen = [](const std::string& solid, int samples) {
    return Shot{.samples = samples}.Color(Sun(-90) + kFromAbove + solid, kMaterials);
  };
  ExpectNear(seen(Solid("plane", "mirror"), 1), Times(background, {0.5, 0.6, 1}), 1e-6);
  ExpectNear(seen(Solid("plane", "foil"), 64), Times(background, {0.5, 0.25, 1}), 1e-6);
  ExpectNear(seen(Solid("sphere", "glass", R"("position": [0, -120, 0], )"), 16), background, 1e-6);
  // A rough mirror of width 0.25 seen head-on. Facets tilted by t, with tan2 t = 0.0625 u / (1 - u)
  // for u uniform in [0, 1], reflect light at 2 t, minus masking.
  double whole = 0;
  for (int i = 0; i < 10000; ++i) {
    const double u = (i + 0.5) * 1e-4, out = 2 * std::atan(0.25 * std::sqrt(u / (1 - u)));
    if (out < kPi / 2) whole += 2e-4 / (1 + std::sqrt(1 + std::pow(0.25 * std::tan(out), 2)));
  }
  EXPECT_NEAR(seen(Solid("plane", "dull"), 4096).y, 0.5 * whole, 1e-3);
  // Below the foil, light has its color.
  const std::string foil = Solid("plane", "foil", R"("position": [0, 80, 0], )");
  ExpectNear(Shot{}.Color(Sun(90) + kFromAbove + foil + "," + Solid("plane", "clay"), kMaterials),
             Times({1.5, 0.6, 1.5}, {0.5, 0.25, 1}), 1e-6);
}

TEST(RenderSurfaces, LightsAndRaysPassByWhatIsExcluded) {
  const auto compositing = [](const std::string& parameters) {
    return R"("tags": [{"type": "compositing", "parameters": {)" + parameters + "}}]";
  };
  const auto seen = [&](const std::string& sun, const std::string& parameters) {
    return Shot{}.Color(Sun(90, sun) + kFromAbove +
                            R"({"type": "null", "name": "set", "children": [{"type": "plane", )" +
                            compositing(parameters) + "}]}",
                        kMaterials);
  };
  const Vector lit{2.4, 1.2, 4.8}, background{0.25, 0.5, 0.75};
  ExpectNear(seen(R"("angle": 0, "exclude": [])", ""), lit, 1e-6);
  ExpectNear(seen(R"("angle": 0, "exclude": ["set"])", ""), {}, 0);
  ExpectNear(seen("\"angle\": 0", "\"seen_by_camera\": false"), background, 1e-6);
  ExpectNear(seen("\"angle\": 0", "\"seen_by_reflection\": false"), lit, 1e-6);
  ExpectNear(seen("\"angle\": 0", R"("matte": true, "matte_color": [0.1, 0.2, 0.3])"),
             {0.1, 0.2, 0.3}, 1e-6);
  // Above the floor: planes hidden from the camera, with and without a shadow; a roof and the sun
  // in a group hidden in renders.
  const std::string roof = R"({"type": "plane", "position": [0, 20, 0])";
  const std::string hidden = R"({"type": "null", "visible_in_render": false, "children": [)";
  std::string sun = Sun(90);
  sun.pop_back();
  for (const auto& [objects, color] :
       {std::pair(Sun(90) + roof + ", " + compositing("\"seen_by_camera\": false") + "}", Vector()),
        {Sun(90) + roof + ", " + compositing(R"("seen_by_camera": false, "cast_shadows": false)") +
             "}",
         lit},
        {Sun(90) + hidden + roof + "}]}", lit},
        {Sun(-90) + hidden + sun + "]}", {}}})
    ExpectNear(Shot{}.Color(kFromAbove + objects + R"(, {"type": "plane"})"), color, 1e-6);
}

// Later steps of the shutter, and evaluations while the frame is open, must not replace the
// textures that the surfaces were read with.
TEST(RenderSurfaces, TexturesStayThoseOfTheFrame) {
  const auto document =
      Opened(kFromAbove + Solid("plane", "picture"), Members("changing_picture.json"));
  const SurfaceScene surfaces(*document, 1);
  for (const int frame : {1, 0, 2}) {
    document->SetTime(BaseTime::FromFrame(frame, document->GetFps()));
    document->ExecutePasses(nullptr, true, true, true);
  }
  const std::optional<SurfaceHit> hit = surfaces.Intersect({{10, 5, 10}, {0, -1, 0}});
  ASSERT_TRUE(hit);
  EXPECT_EQ(hit->material->emission.At({}, 0), (Vector{1, 2, 3}));
}

TEST(RenderSurfaces, LightBouncesAsOftenAsAskedFor) {
  // In a closed glowing ball with albedo 1/2, each bounce adds half of the previous one.
  const std::string inside = Camera("[0, 0, 0]", "[0, 0, 0]") + Solid("sphere", "lamp");
  for (const int bounces : {0, 1, 3}) {
    SCOPED_TRACE(bounces);
    const double sum = 2 - std::pow(0.5, bounces);
    ExpectNear(Shot{.samples = 8, .bounces = bounces}.Color(inside, kMaterials),
               Vector{1, 2, 3} * sum, 1e-5);
  }
}

TEST(RenderSurfaces, TheShutterBlursMovingObjects) {
  // The plane passes below the camera in the second half of the frame.
  const std::string moving = Solid(
      "plane", "lamp",
      R"("parameters": {"width": 100}, "keyframes": {"position": [[0, [-150, 0, 0]], [1, [50, 0, 0]]]}, )");
  const auto alpha = [&](double shutter) {
    const Shot shot{.samples = 256, .shutter = shutter};
    return shot.Take(kFromAbove + moving, kMaterials).pixels.front().alpha;
  };
  EXPECT_EQ(alpha(0), 0);
  EXPECT_NEAR(alpha(1), 0.5, 0.02);
}

TEST(RenderSurfaces, WithoutACameraThePictureShowsTheWholeScene) {
  const Picture picture =
      Shot{.width = 40, .height = 20, .samples = 4}.Take(Solid("sphere", "clay"), kMaterials);
  int rows = 0;
  for (int y = 1; y < 19; ++y) rows += picture.At(20, y).alpha > 0.5;
  EXPECT_GT(rows, 10);
  EXPECT_LT(picture.At(20, 0).alpha + picture.At(20, 19).alpha, 0.5);
  EXPECT_GT(picture.At(17, 7).color[0], 0.1) << "and there is light";
}

TEST(RenderSurfaces, RaysThatArentFiniteMeetNothing) {
  const auto document = Opened(Solid("sphere", "clay"), kMaterials);
  const SurfaceScene surfaces(*document, 0);
  const double inf = std::numeric_limits<double>::infinity(), nan = std::nan("");
  const Vector from{0, 0, -300}, ahead{0, 0, 1};
  EXPECT_TRUE(surfaces.Intersect({from, ahead}));
  EXPECT_EQ(surfaces.Passing({from, ahead}), Vector());
  for (const auto& [origin, direction] : {std::pair{Vector{0, 0, -inf}, ahead},
                                          {Vector{0, nan, 0}, ahead},
                                          {Vector{1e39, 0, 0}, ahead},
                                          {from, Vector{0, 0, nan}},
                                          {from, Vector{inf, 0, 0}},
                                          {from, Vector{}}}) {
    EXPECT_FALSE(surfaces.Intersect({origin, direction}));
    EXPECT_EQ(surfaces.Passing({origin, direction}), Vector());
  }
  for (const std::string far : {R"("position": [1e300, 0, 0], )", R"("scale": [1, 1e308, 1], )"})
    EXPECT_THROW(Shot{}.Take(Solid("sphere", "clay", far), kMaterials), std::runtime_error) << far;
  EXPECT_THROW(Shot{}.Take(Camera("[1e35, 0, 0]", "[0, 0, 0]") + Solid("cube", "clay")),
               std::runtime_error);
}

TEST(RenderSurfaces, ThreadsMakeNoDifference) {
  const std::string scene = Sun(60, "\"angle\": 5") + Solid("sphere", "dull") + "," +
                            Solid("plane", "clay", R"("position": [0, -100, 0], )");
  Shot shot{.width = 37, .height = 21, .samples = 3, .bounces = 2};
  const auto one = shot.Take(scene, kMaterials).pixels;
  shot.threads = 3;
  const auto three = shot.Take(scene, kMaterials).pixels;
  ASSERT_EQ(one.size(), 37U * 21U);
  ASSERT_EQ(three.size(), one.size());
  EXPECT_EQ(0, std::memcmp(one.data(), three.data(), one.size() * sizeof(Pixel)));
}

}  // namespace
}  // namespace host::test
