// Renders scenes given as text, with a post effect of known result.
#pragma once

#include <atomic>

#include "host/render/color.h"
#include "host/render/job/render_session.h"
#include "host/render/trace/frame_renderer.h"
#include "tests/C4D/recording_context.h"
#include "tests/host/scene_support.h"

namespace host::test {

/// A ball of fog around the origin, uniform, dark or glowing.
class Fog final : public VideoPostData {
 public:
  static constexpr double kRadius = 50;
  enum Id : std::int32_t { kFog = 2000100, kDensity = 1, kEncoded = 2, kOddMissing = 3 };
  inline static const Vector kGlow{0.5, 0.25, 1};

  static void Register(SmallHost& small_host) {
    const auto make = []() -> std::unique_ptr<VideoPostData> { return std::make_unique<Fog>(); };
    ClassDescription fog{.name = "fog"};
    fog.parameters = {{kDensity, "FOG_DENSITY", ParameterType::Real, 0.0},
                      {kEncoded, "FOG_ENCODED", ParameterType::Bool, false},
                      {kOddMissing, "FOG_ODD_MISSING", ParameterType::Bool, false}};
    if (!small_host.RegisterVideoPostPlugin(kFog, "Fog", make, fog))
      throw std::runtime_error(small_host.TakeConsole().front());
  }

  RenderResult Execute(BaseVideoPost& node, RenderPhase phase, bool open,
                       BaseRender& render) override {
    open_phases += open ? 1 : -1;
    density_ = node.GetDataInstance().GetReal(kDensity);
    encoded_ = node.GetDataInstance().GetBool(kEncoded);
    if (phase == RenderPhase::Frame && open && render.GetFrame() % 2 != 0 &&
        node.GetDataInstance().GetBool(kOddMissing))
      render.ReportMissing("no fog today");
    return RenderResult::Ok;
  }
  void CalcVolumetric(VolumeData& data) override {
    if (data.ray.type < 32) seen_types |= 1U << data.ray.type;
    const double passing = Passing(data.ray);
    data.color = kGlow * (1 - passing);
    data.transparency = Vector{1, 1, 1} * passing;
    if ((data.encoded = encoded_)) {
      const Vector& c = data.color;
      data.color = {ToSrgb(c.x), ToSrgb(c.y), ToSrgb(c.z)};
      if (data.ray.type != kRayCamera)
        data.transparency = Vector{1, 1, 1} * (1 - ToSrgb(1 - passing));
    }
  }
  void CalcShadow(VolumeData& data) override {
    data.transparency = Vector{1, 1, 1} * Passing(data.ray);
  }
  /// The Beer-Lambert law along the chord.
  double Passing(const VolumeRay& ray) const {
    const double b = Dot(ray.origin, ray.direction);
    const double d = b * b - Dot(ray.origin, ray.origin) + kRadius * kRadius;
    if (d <= 0) return 1;
    const double from = std::max(0.0, -b - std::sqrt(d));
    const double to = std::min(ray.surface_distance, -b + std::sqrt(d));
    return std::exp(-density_ * std::max(0.0, to - from));
  }

  inline static std::atomic<std::uint32_t> seen_types{0};  ///< bit n: rays of type n
  inline static std::atomic<int> open_phases{0};

 private:
  double density_ = 0;
  bool encoded_ = false;
};

inline SmallHost& FogHost() {
  static SmallHost* const small_host = [] {
    auto* made = new SmallHost;  // must outlive the documents of the tests
    Fog::Register(*made);
    return made;
  }();
  return *small_host;
}

/// The scene with these objects, opened at its first frame.
inline std::unique_ptr<Document> Opened(const std::string& objects, const std::string& more = "") {
  auto document =
      ReadDocument("{" + more + "\"objects\": [" + objects + "]}", "/", FogHost().Classes());
  document->Open();
  return document;
}

/// The first frame of a document, open for rendering while this lives.
class OpenFrame {
 public:
  OpenFrame(Document& document, const RenderJob& job, int width = 1, int height = 1)
      : job_(job), document_(document), scene(document, job_.quality, width, height) {
    session.SetFrame(0, scene);
    for (const auto& node : document.VideoPosts())
      scene.effects.push_back(static_cast<VideoPostData*>(node->GetNodeData()));
    Execute(RenderPhase::Sequence, true), Execute(RenderPhase::Frame, true);
  }
  ~OpenFrame() { Execute(RenderPhase::Frame, false), Execute(RenderPhase::Sequence, false); }

 private:
  void Execute(RenderPhase phase, bool open) {
    for (const auto& node : document_.VideoPosts())
      static_cast<VideoPostData*>(node->GetNodeData())->Execute(*node, phase, open, session);
  }
  const RenderJob job_;
  Document& document_;
  nbx::test::RecordingContext context_{FogHost()};

 public:
  RenderSession session{document_, job_, context_};
  RenderScene scene;
};

struct Shot {
  int width = 1, height = 1, samples = 1, threads = 1, bounces = 0;
  double shutter = 0;

  Picture Take(const std::string& objects, const std::string& more = "") const {
    return TakeOf(*Opened(objects, more));
  }
  Picture TakeOf(Document& document) const {
    const RenderJob job{{0},    width, height, {0, 0, width, height}, {samples, shutter, bounces},
                        threads};
    OpenFrame frame(document, job, width, height);
    RayCounts counts;
    return RenderFrame(frame.scene, {width, height, job.window, samples, threads}, counts);
  }
  /// The color of a one-pixel picture, including the background.
  Vector Color(const std::string& objects, const std::string& more = "") const {
    const Pixel p = Take(objects, more).pixels.front();
    return Vector{p.color[0], p.color[1], p.color[2]} +
           Vector{p.backdrop[0], p.backdrop[1], p.backdrop[2]};
  }
};

/// A camera at a position, with heading and pitch and the smallest possible field of view: its
/// pixel spans 0.1 degrees, over which light may differ by kPixelSpan.
inline constexpr double kPixelSpan = 2e-4;
inline std::string Camera(const std::string& position, const std::string& rotation) {
  return R"({"type": "camera", "position": )" + position + R"(, "rotation": )" + rotation +
         R"(, "parameters": {"field_of_view": 0.1, "near": 0}},)";
}

}  // namespace host::test
