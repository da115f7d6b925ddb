#include "C4D/run/scene_warnings.h"

#include "C4D/run/warnings/scene_checks.h"

namespace nbx {

std::vector<SceneWarning> scene_warnings(host::BaseObject& volume, const host::BreakTest* breaks) {
  std::vector<SceneWarning> all;
  const std::optional<SceneSurvey> survey = survey_scene(volume, breaks);
  if (!survey) return all;
  for (const auto check : {check_emitters, check_channels, check_look, check_range, check_voxels,
                           check_substeps, check_settings})
    check(all, *survey);
  return all;
}

}  // namespace nbx
