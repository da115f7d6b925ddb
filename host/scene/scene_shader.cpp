#include "host/scene/element.h"
#include "host/scene/own_classes.h"
#include "host/scene/texture.h"

namespace host {

void SceneShader::Update(const std::string& place) {
  if (texture_ && made_from_ == state_.data) return;
  const std::string file = state_.document->Resolve(state_.data.GetFilename(kShaderFile)).path;
  texture_ = MakeTexture(state_.type->id, state_.data, file, place);
  made_from_ = state_.data;
}

}  // namespace host
