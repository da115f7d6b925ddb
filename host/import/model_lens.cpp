#include "host/import/model_lens.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <assimp/scene.h>

#include "host/base/document_error.h"
#include "host/interface/camera.h"
#include "host/interface/light.h"

namespace host {
namespace {

constexpr double kDegree = 180 / std::numbers::pi;
constexpr double kLumensPerWatt = 683;

/// Splits a color of any strength into color and intensity.
void SetColor(BaseContainer& data, const Vector& color) {
  const double strength = std::max({color.x, color.y, color.z});
  data.SetReal(LIGHT_INTENSITY, strength);
  if (strength > 0)
    data.SetVector(LIGHT_COLOR, {color.x / strength, color.y / strength, color.z / strength});
}

Vector ColorOf(const Json& json) {
  const Json color = json.value("color", Json::array({1, 1, 1}));
  return {color.at(0).get<double>(), color.at(1).get<double>(), color.at(2).get<double>()};
}

ModelLens GltfLight(const Json& json) {
  ModelLens lens{.type = kLightObject};
  BaseContainer& data = lens.parameters;
  const std::string type = json.value("type", "point");
  data.SetLong(LIGHT_TYPE, type == "directional" ? LIGHT_TYPE_DIRECTIONAL
                           : type == "spot"      ? LIGHT_TYPE_SPOT
                                                 : LIGHT_TYPE_POINT);
  SetColor(data,
           ColorOf(json) * (json.value("intensity", 1.0) / kLumensPerWatt / std::numbers::pi));
  if (type != "directional") {
    data.SetLong(LIGHT_FALLOFF, LIGHT_FALLOFF_INVERSE_SQUARE);
    data.SetReal(LIGHT_FALLOFF_DISTANCE, 1);
  }
  if (type == "spot") {
    const Json spot = json.value("spot", Json::object());
    const double outer = spot.value("outerConeAngle", std::numbers::pi / 4);
    data.SetReal(LIGHT_OUTER_ANGLE, std::min(2 * outer * kDegree, 180.0));
    data.SetReal(LIGHT_INNER_ANGLE,
                 std::min(2 * spot.value("innerConeAngle", 0.0) * kDegree, 180.0));
  }
  return lens;
}

ModelLens GltfCamera(const Json& json) {
  ModelLens lens{.type = kCameraObject};
  const Json perspective = json.value("perspective", Json::object());
  lens.aspect = perspective.value("aspectRatio", 0.0);
  const double half = std::tan(perspective.value("yfov", 0.6) / 2);
  const double width = half * (lens.aspect > 0 ? lens.aspect : 16.0 / 9);
  lens.parameters.SetReal(CAMERA_FIELD_OF_VIEW,
                          std::clamp(2 * std::atan(width) * kDegree, 0.1, 170.0));
  lens.parameters.SetReal(CAMERA_NEAR, std::max(perspective.value("znear", 0.05), 1e-8));
  return lens;
}

/// A matrix whose z axis is the direction from the file, in the host's space.
Matrix TurnTo(const aiVector3D& direction, const aiVector3D& up) {
  const auto wide = [](const aiVector3D& v) { return Vector{v.x, v.y, -v.z}; };
  Vector z = wide(direction);
  if (!(Length(z) > 0)) return {};
  z = z * (1 / Length(z));
  if (Length(z - Vector{0, 0, 1}) < 1e-6) return {};
  Vector x = Cross(wide(up), z);
  if (Length(x) < 1e-6) x = Cross(std::fabs(z.y) < 0.9 ? Vector{0, 1, 0} : Vector{0, 0, 1}, z);
  x = x * (1 / Length(x));
  return {{}, x, Cross(z, x), z};
}

ModelLens OtherLight(const aiLight& light) {
  ModelLens lens{.type = kLightObject};
  BaseContainer& data = lens.parameters;
  const aiColor3D& color = light.mColorDiffuse;
  SetColor(data, {color.r, color.g, color.b});
  data.SetLong(LIGHT_TYPE, light.mType == aiLightSource_DIRECTIONAL ? LIGHT_TYPE_DIRECTIONAL
                           : light.mType == aiLightSource_SPOT      ? LIGHT_TYPE_SPOT
                           : light.mType == aiLightSource_AREA      ? LIGHT_TYPE_AREA
                                                                    : LIGHT_TYPE_POINT);
  const auto degrees = [](float radians) { return std::clamp(radians * kDegree, 0.0, 180.0); };
  if (light.mType == aiLightSource_SPOT) {
    data.SetReal(LIGHT_INNER_ANGLE, degrees(light.mAngleInnerCone));
    data.SetReal(LIGHT_OUTER_ANGLE, degrees(light.mAngleOuterCone));
  }
  if (light.mType != aiLightSource_POINT) lens.turn = TurnTo(light.mDirection, light.mUp);
  return lens;
}

ModelLens OtherCamera(const aiCamera& camera) {
  ModelLens lens{.type = kCameraObject};
  lens.aspect = camera.mAspect;
  lens.parameters.SetReal(CAMERA_FIELD_OF_VIEW,
                          std::clamp(camera.mHorizontalFOV * kDegree, 0.1, 170.0));
  lens.turn = TurnTo(camera.mLookAt, camera.mUp);
  return lens;
}

void ReadGltf(const ModelFile& file, const aiNode& node, std::map<const aiNode*, ModelLens>& all) {
  static const Json::json_pointer light_of("/extensions/KHR_lights_punctual/light"),
      lights("/extensions/KHR_lights_punctual/lights");
  const int index = file.GltfIndex(node);
  if (index >= 0) {
    const Json& json = file.Gltf().at("nodes").at(index);
    if (json.contains("camera"))
      all[&node] = GltfCamera(file.Gltf().at("cameras").at(json.at("camera").get<std::size_t>()));
    if (json.contains(light_of) && file.Gltf().contains(lights))
      all[&node] = GltfLight(file.Gltf().at(lights).at(json.at(light_of).get<std::size_t>()));
  }
  for (unsigned i = 0; i < node.mNumChildren; ++i) ReadGltf(file, *node.mChildren[i], all);
}

}  // namespace

void ModelLens::Apply(SceneObject& object, double scale) const {
  BaseContainer& data = object.GetDataInstance();
  for (const ParameterInfo& info : object.State().type->description.parameters) {
    const ParameterValue* value = parameters.Find(info.id);
    if (!value) continue;
    data.Set(info.id, info.unit == "units" ? std::get<double>(*value) * scale : *value);
  }
}

std::map<const aiNode*, ModelLens> ReadLenses(const ModelFile& file) {
  std::map<const aiNode*, ModelLens> all;
  const aiScene& scene = file.Scene();
  if (file.IsGltf()) {
    try {
      ReadGltf(file, *scene.mRootNode, all);
    } catch (const Json::exception&) {
      throw DocumentError("a light or a camera isn't valid glTF; export the file again");
    }
    return all;
  }
  for (unsigned i = 0; i < scene.mNumLights; ++i)
    if (const aiNode* node = scene.mRootNode->FindNode(scene.mLights[i]->mName))
      all[node] = OtherLight(*scene.mLights[i]);
  for (unsigned i = 0; i < scene.mNumCameras; ++i)
    if (const aiNode* node = scene.mRootNode->FindNode(scene.mCameras[i]->mName))
      all[node] = OtherCamera(*scene.mCameras[i]);
  return all;
}

}  // namespace host
