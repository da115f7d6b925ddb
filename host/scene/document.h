// A scene in memory: the BaseDocument of the host.
//
// A document gets ready in three steps: read it (document_reader.h), apply overrides (overrides.h),
// then Open it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/interface/scene.h"
#include "host/scene/element.h"
#include "host/scene/particle_run.h"

namespace host {

class Document final : public BaseDocument {
 public:
  Document();  ///< empty, with default render settings

  std::string GetDocumentName() const override { return name; }
  Filename GetDocumentPath() const override { return {folder}; }
  Filename Resolve(const Filename& path) const override;
  FrameRate GetFps() const override { return fps; }
  BaseTime GetMinTime() const override { return BaseTime::FromFrame(start, fps); }
  BaseTime GetMaxTime() const override { return BaseTime::FromFrame(end, fps); }
  BaseTime GetLoopMinTime() const override { return BaseTime::FromFrame(preview_start, fps); }
  BaseTime GetLoopMaxTime() const override { return BaseTime::FromFrame(preview_end, fps); }
  BaseTime GetTime() const override { return time_; }
  void SetTime(const BaseTime& time) override { time_ = time; }
  bool ExecutePasses(const BreakTest* breaks, bool animation, bool expressions,
                     bool caches) override;
  SceneObject* GetFirstObject() const override {
    return objects_.empty() ? nullptr : objects_.front().get();
  }
  SceneVideoPost* GetActiveVideoPost(std::int32_t type) const override;

  SceneMaterial* GetFirstMaterial() const override {
    return materials_.empty() ? nullptr : materials_.front().get();
  }
  SceneShader* GetFirstShader() const override {
    return shaders_.empty() ? nullptr : shaders_.front().get();
  }
  SceneRender& GetActiveRenderData() const override { return *render_; }

  /// Adds an object at the end of the children of `parent`, or of the top level if that is null.
  /// Its parameters have their defaults. Null if the plug-in refuses.
  SceneObject* AddObject(const ElementClass& type, SceneObject* parent);
  /// Adds a tag at the end of the object's tags. Null if the plug-in refuses.
  SceneTag* AddTag(const ElementClass& type, SceneObject& object);
  SceneMaterial* AddMaterial(const ElementClass& type);
  SceneShader* AddShader(const ElementClass& type);
  SceneVideoPost* AddVideoPost(const ElementClass& type);

  /// Evaluates all keyframes at that frame.
  void Animate(double frame);

  /// Reads the mesh files and pictures, evaluates the document at its first frame and sends
  /// kMessageDocumentLoaded. Throws DocumentError for a mesh or picture that can't be read.
  void Open();

  const std::vector<std::unique_ptr<SceneObject>>& Objects() const { return objects_; }
  /// All objects in document order, parents first.
  std::vector<SceneObject*> AllObjects() const;
  std::vector<SceneObject*> FindByName(const std::string& object_name) const;
  /// The place of the object in the document: "objects[2].children[0]".
  std::string PlaceOf(const SceneObject& object) const;
  const std::vector<std::unique_ptr<SceneMaterial>>& Materials() const { return materials_; }
  const std::vector<std::unique_ptr<SceneShader>>& Shaders() const { return shaders_; }
  /// One for each post effect class that was registered when the document was read.
  const std::vector<std::unique_ptr<SceneVideoPost>>& VideoPosts() const { return video_posts_; }

  std::string name;    ///< file name; empty if it was never saved
  std::string folder;  ///< absolute
  FrameRate fps = 25;
  std::string fps_text;  ///< the JSON text of the rate as read; empty if there was none
  bool force = false;    ///< reads files of any size
  std::int32_t start = 0, end = 100;  ///< frames
  std::int32_t preview_start = 0, preview_end = 100;

  /// Comments of the text that belong to no element.
  std::vector<JsonComment> comments;
  /// Warnings of the reader, such as clamped values.
  std::vector<std::string> warnings;

 private:
  BaseTime time_;
  std::vector<std::unique_ptr<SceneObject>> objects_;
  std::vector<std::unique_ptr<SceneMaterial>> materials_;
  std::vector<std::unique_ptr<SceneShader>> shaders_;
  std::vector<std::unique_ptr<SceneVideoPost>> video_posts_;
  std::unique_ptr<SceneRender> render_;
  ParticleRun particle_run_;
};

}  // namespace host
