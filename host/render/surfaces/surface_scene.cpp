#include "host/render/surfaces/surface_scene.h"

#include <stdexcept>

#include <embree3/rtcore.h>

#include "host/render/color.h"
#include "host/render/scene_walk.h"

namespace host {

struct SurfaceScene::Handles {
  ~Handles() {
    if (scene) rtcReleaseScene(scene);
    if (device) rtcReleaseDevice(device);
  }
  RTCDevice device = nullptr;
  RTCScene scene = nullptr;
};

namespace {

constexpr int kShutterSteps = 3;

/// Data of a query that Embree passes to the filters.
struct RayContext {
  RTCIntersectContext base;  // must be first: Embree passes a pointer to it
  const std::vector<SurfaceMesh>* meshes = nullptr;
  std::uint32_t type = 0;
  double time = 0;
  Vector passing{1, 1, 1};
};

Vector CornerUvw(const SurfaceMesh& mesh, std::size_t triangle, double u, double v) {
  if (mesh.uvws.empty()) return {};
  const auto& [a, b, c] = mesh.uvws[triangle];
  return a * (1 - u - v) + b * u + c * v;
}

/// Ignores surfaces that this type of ray doesn't see.
void FilterByType(const RTCFilterFunctionNArguments* arguments) {
  const auto& context = *reinterpret_cast<const RayContext*>(arguments->context);
  const unsigned mesh = RTCHitN_geomID(arguments->hit, arguments->N, 0);
  if (!(*context.meshes)[mesh].visibility.Meets(context.type)) *arguments->valid = 0;
}

/// Multiplies the transparency of surfaces. Stops at the first opaque one.
void FilterShadow(const RTCFilterFunctionNArguments* arguments) {
  auto& context = *reinterpret_cast<RayContext*>(arguments->context);
  const SurfaceMesh& mesh = (*context.meshes)[RTCHitN_geomID(arguments->hit, arguments->N, 0)];
  const unsigned triangle = RTCHitN_primID(arguments->hit, arguments->N, 0);
  if (mesh.visibility.casts_shadows) {
    const SurfaceMaterial& material = mesh.materials[mesh.material[triangle]];
    const double u = RTCHitN_u(arguments->hit, arguments->N, 0);
    const double v = RTCHitN_v(arguments->hit, arguments->N, 0);
    context.passing =
        Times(context.passing, material.Passing(CornerUvw(mesh, triangle, u, v), context.time));
    if (IsBlack(context.passing)) return;
  }
  *arguments->valid = 0;
}

RTCRay ToEmbree(const SurfaceRay& ray) {
  RTCRay r{};
  r.org_x = static_cast<float>(ray.origin.x);
  r.org_y = static_cast<float>(ray.origin.y);
  r.org_z = static_cast<float>(ray.origin.z);
  r.dir_x = static_cast<float>(ray.direction.x);
  r.dir_y = static_cast<float>(ray.direction.y);
  r.dir_z = static_cast<float>(ray.direction.z);
  r.tfar = static_cast<float>(ray.length);
  r.time = static_cast<float>(ray.shutter);
  r.mask = 0xffffffffU;
  return r;
}

void AddGeometry(RTCDevice device, RTCScene scene, const SurfaceMesh& mesh, unsigned id) {
  RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
  const unsigned steps = mesh.Steps();
  rtcSetGeometryTimeStepCount(geometry, steps);
  for (unsigned step = 0; step < steps; ++step) {
    const auto& points = mesh.points[step];
    void* to = rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, step, RTC_FORMAT_FLOAT3,
                                       sizeof(SurfaceMesh::Point), points.size());
    if (to) std::copy(points.begin(), points.end(), static_cast<SurfaceMesh::Point*>(to));
  }
  void* to = rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                                     sizeof(SurfaceMesh::Corners), mesh.triangles.size());
  if (to)
    std::copy(mesh.triangles.begin(), mesh.triangles.end(), static_cast<SurfaceMesh::Corners*>(to));
  rtcCommitGeometry(geometry);
  rtcAttachGeometryByID(scene, geometry, id);
  rtcReleaseGeometry(geometry);
}

/// The interpolated normal in a triangle, at a time between two steps.
Vector NormalAt(const SurfaceMesh& mesh, std::size_t triangle, double u, double v, double shutter) {
  const auto at_step = [&](std::size_t step) {
    const SurfaceMesh::Point* n = &mesh.normals[step][3 * triangle];
    const auto corner = [n](int k) { return Vector{n[k][0], n[k][1], n[k][2]}; };
    return corner(0) * (1 - u - v) + corner(1) * u + corner(2) * v;
  };
  if (mesh.Steps() == 1) return Normalized(at_step(0));
  const double at = shutter * (mesh.Steps() - 1);
  const std::size_t step = std::min(static_cast<std::size_t>(at), mesh.Steps() - 2);
  return Normalized(Mix(at_step(step), at_step(step + 1), at - step));
}

/// Fills in the hit. Distance and normal are already set.
void Describe(const SurfaceRay& ray, const SurfaceMesh& mesh, std::size_t triangle, double u,
              double v, SurfaceHit& hit) {
  hit.point = ray.origin + ray.direction * hit.distance;
  // Single precision keeps about seven digits of the largest coordinate.
  const Vector& p = hit.point;
  hit.offset =
      1e-5 + 1e-6 * (std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)}) + hit.distance);
  hit.uvw = CornerUvw(mesh, triangle, u, v);
  hit.object = mesh.owner;
  hit.material = &mesh.materials[mesh.material[triangle]];
  if (!hit.material->Place(hit.uvw)) hit.material = &mesh.materials.front();

  // The normals at the corners point to the outer side.
  hit.smooth = NormalAt(mesh, triangle, u, v, ray.shutter);
  if (Dot(hit.normal, hit.smooth) < 0) hit.normal = hit.normal * -1;
  hit.outer = Dot(hit.normal, ray.direction) <= 0;
  if (!hit.outer) {
    hit.normal = hit.normal * -1;
    hit.smooth = hit.smooth * -1;
  }
  // If the smooth normal faces away from the ray, the surface would be shaded from behind.
  if (Dot(hit.smooth, ray.direction) >= 0) hit.smooth = hit.normal;
}

bool IsFiniteFloat(const Vector& v) {
  constexpr double most = std::numeric_limits<float>::max();
  return std::abs(v.x) <= most && std::abs(v.y) <= most && std::abs(v.z) <= most;  // false for NaN
}

}  // namespace

bool IsTraceable(const Vector& origin, const Vector& direction) {
  return IsFiniteFloat(origin) && IsFiniteFloat(direction) && Dot(direction, direction) > 0;
}

void ForShutterSteps(BaseDocument& document, double shutter, const std::function<void()>& at_step) {
  const BaseTime frame = document.GetTime();
  at_step();
  if (shutter <= 0) return;
  // Use thousandths of a frame, so that times stay fractions.
  const auto thousandths = static_cast<std::int64_t>(shutter * 1000 / (kShutterSteps - 1));
  for (int step = 1; step < kShutterSteps; ++step) {
    const FrameRate rate = document.GetFps();
    document.SetTime(frame +
                     BaseTime(step * thousandths * rate.Denominator(), rate.Numerator() * 1000));
    document.ExecutePasses(nullptr, true, true, true);
    at_step();
  }
  document.SetTime(frame);
  document.ExecutePasses(nullptr, true, true, true);
}

SurfaceScene::SurfaceScene(BaseDocument& document, double shutter)
    : time_(document.GetTime().Get()), handles_(std::make_unique<Handles>()) {
  const std::vector<BaseObject*> objects = VisibleObjects(document);
  bool first = true;
  ForShutterSteps(document, shutter, [&] {
    std::size_t index = 0;
    for (BaseObject* object : objects) {
      PolygonObject* polygons = GetPolygons(object);
      if (!polygons || polygons->GetPolygonCount() == 0) continue;
      if (first)
        meshes_.push_back(ReadMesh(*polygons, *object));
      else if (!AddStep(meshes_[index], *polygons, *object))
        throw std::runtime_error("the mesh " + object->GetName() + " changes its number of points");
      ++index;
    }
    first = false;
  });
  Commit();
}

SurfaceScene::~SurfaceScene() = default;

void SurfaceScene::Commit() {
  handles_->device = rtcNewDevice(nullptr);
  if (!handles_->device) throw std::runtime_error("Embree can't be started");
  handles_->scene = rtcNewScene(handles_->device);
  rtcSetSceneFlags(
      handles_->scene,
      static_cast<RTCSceneFlags>(RTC_SCENE_FLAG_ROBUST | RTC_SCENE_FLAG_CONTEXT_FILTER_FUNCTION));
  for (std::size_t i = 0; i < meshes_.size(); ++i)
    AddGeometry(handles_->device, handles_->scene, meshes_[i], i);
  rtcCommitScene(handles_->scene);
  if (const RTCError error = rtcGetDeviceError(handles_->device); error != RTC_ERROR_NONE)
    throw std::runtime_error(error == RTC_ERROR_OUT_OF_MEMORY
                                 ? "the surfaces don't fit into memory"
                                 : "Embree error " + std::to_string(error));
}

std::optional<SurfaceHit> SurfaceScene::Intersect(const SurfaceRay& ray) const {
  if (meshes_.empty() || !IsTraceable(ray.origin, ray.direction)) return {};
  RayContext context{};
  rtcInitIntersectContext(&context.base);
  context.base.filter = FilterByType;
  context.meshes = &meshes_;
  context.type = ray.type;
  RTCRayHit query{};
  query.ray = ToEmbree(ray);
  query.hit.geomID = query.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
  rtcIntersect1(handles_->scene, &context.base, &query);
  if (query.hit.geomID == RTC_INVALID_GEOMETRY_ID) return {};
  SurfaceHit hit;
  hit.distance = query.ray.tfar;
  hit.normal = Normalized({query.hit.Ng_x, query.hit.Ng_y, query.hit.Ng_z});
  Describe(ray, meshes_[query.hit.geomID], query.hit.primID, query.hit.u, query.hit.v, hit);
  return hit;
}

Vector SurfaceScene::Passing(const SurfaceRay& ray) const {
  if (!IsTraceable(ray.origin, ray.direction)) return {};
  if (meshes_.empty()) return {1, 1, 1};
  RayContext context{};
  rtcInitIntersectContext(&context.base);
  context.base.filter = FilterShadow;
  context.meshes = &meshes_;
  context.time = time_;
  context.passing = {1, 1, 1};
  RTCRay query = ToEmbree(ray);
  rtcOccluded1(handles_->scene, &context.base, &query);
  return query.tfar < 0 ? Vector{} : context.passing;
}

}  // namespace host
