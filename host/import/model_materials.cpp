#include "host/import/model_materials.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>

#include <assimp/GltfMaterial.h>
#include <assimp/scene.h>

#include "host/interface/material.h"
#include "host/scene/builtin_classes.h"

namespace host {
namespace {

class MaterialImport {
 public:
  MaterialImport(const ModelFile& file, Document& document, const SceneClasses& classes)
      : file_(file), document_(document), classes_(classes) {}

  SceneMaterial* Add(const aiMaterial& source) {
    SceneMaterial* material = document_.AddMaterial(classes_.materials.All().front());
    aiString name;
    if (source.Get(AI_MATKEY_NAME, name) == AI_SUCCESS && name.length > 0)
      material->SetName(name.C_Str());
    BaseContainer& data = material->GetDataInstance();
    const Vector color = ColorOf(source);
    const double metallic = Number(source, AI_MATKEY_METALLIC_FACTOR, 0);
    float roughness = 0;
    if (source.Get(AI_MATKEY_ROUGHNESS_FACTOR, roughness) == AI_SUCCESS) {
      const double plain = 0.04 * (1 - metallic);
      data.SetVector(MATERIAL_REFLECTION, Vector{plain, plain, plain} + color * metallic);
      data.SetReal(MATERIAL_ROUGHNESS, std::clamp<double>(roughness, 0, 1));
    }
    data.SetVector(MATERIAL_COLOR, color * (1 - metallic));
    aiColor3D emission;
    if (source.Get(AI_MATKEY_COLOR_EMISSIVE, emission) == AI_SUCCESS)
      data.SetVector(MATERIAL_EMISSION,
                     ToVector(emission) * Number(source, AI_MATKEY_EMISSIVE_INTENSITY, 1));
    const double passes = 1 - std::clamp(Number(source, AI_MATKEY_OPACITY, 1), 0.0, 1.0);
    data.SetVector(MATERIAL_TRANSPARENCY, {passes, passes, passes});
    const auto texture = [&](std::int32_t id, aiTextureType first, aiTextureType second) {
      if (SceneShader* shader = Picture(source, first, second)) data.SetLink(id, shader);
    };
    texture(MATERIAL_COLOR_TEXTURE, aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE);
    texture(MATERIAL_EMISSION_TEXTURE, aiTextureType_EMISSION_COLOR, aiTextureType_EMISSIVE);
    return material;
  }

 private:
  static Vector ToVector(const aiColor3D& c) {
    return {std::max(c.r, 0.F), std::max(c.g, 0.F), std::max(c.b, 0.F)};
  }

  static double Number(const aiMaterial& source, const char* key, unsigned type, unsigned index,
                       double fallback) {
    float number = 0;
    return source.Get(key, type, index, number) == AI_SUCCESS ? number : fallback;
  }

  static Vector ColorOf(const aiMaterial& source) {
    aiColor4D color;
    if (source.Get(AI_MATKEY_BASE_COLOR, color) == AI_SUCCESS ||
        source.Get(AI_MATKEY_COLOR_DIFFUSE, color) == AI_SUCCESS)
      return ToVector({color.r, color.g, color.b});
    return {0.8, 0.8, 0.8};
  }

  /// The picture of the first texture type that the material has, or null.
  SceneShader* Picture(const aiMaterial& source, aiTextureType first, aiTextureType second) {
    aiString path;
    if (source.GetTexture(first, 0, &path) != AI_SUCCESS &&
        source.GetTexture(second, 0, &path) != AI_SUCCESS)
      return nullptr;
    // Pictures inside the model file are numbered: "*0".
    std::string name = path.C_Str();
    name =
        name.front() == '*' ? std::filesystem::path(file_.Path()).filename().string() + name : name;
    const auto [found, is_new] = pictures_.try_emplace(name, nullptr);
    if (is_new) {
      found->second = document_.AddShader(*classes_.shaders.Find(kImageShader));
      found->second->SetName(name);
      found->second->GetDataInstance().SetFilename(kShaderFile, {name});
    }
    return found->second;
  }

  const ModelFile& file_;
  Document& document_;
  const SceneClasses& classes_;
  std::map<std::string, SceneShader*> pictures_;
};

}  // namespace

std::vector<SceneMaterial*> ImportMaterials(const ModelFile& file, Document& document,
                                            const SceneClasses& classes) {
  const aiScene& scene = file.Scene();
  std::vector<SceneMaterial*> materials(scene.mNumMaterials);
  MaterialImport import(file, document, classes);
  for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
    const unsigned index = scene.mMeshes[i]->mMaterialIndex;
    aiString name;
    // The importer adds a default material to meshes without one.
    const bool made_up = scene.mMaterials[index]->Get(AI_MATKEY_NAME, name) != AI_SUCCESS ||
                         name == aiString(AI_DEFAULT_MATERIAL_NAME) || name.length == 0;
    if (!materials[index] && !made_up) materials[index] = import.Add(*scene.mMaterials[index]);
  }
  return materials;
}

}  // namespace host
