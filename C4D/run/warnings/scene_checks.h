// The checks behind scene_warnings, one subject each. Every one adds its warnings to `all`.
#pragma once

#include "C4D/run/scene_warnings.h"
#include "C4D/run/warnings/scene_survey.h"

namespace nbx {

using SceneWarnings = std::vector<SceneWarning>;

/// Emitters that give nothing, lie outside, are smaller than a voxel, or give what isn't simulated.
void check_emitters(SceneWarnings& all, const SceneSurvey& survey);
/// Channels that nothing makes, drivers that aren't simulated, fuel that never burns.
void check_channels(SceneWarnings& all, const SceneSurvey& survey);
/// Smoke and fire that pictures can't show.
void check_look(SceneWarnings& all, const SceneSurvey& survey);
/// Frames beyond those of the document.
void check_range(SceneWarnings& all, const SceneSurvey& survey);
/// A domain of a few voxels.
void check_voxels(SceneWarnings& all, const SceneSurvey& survey);
/// Gas that is too fast for MAX_SUBSTEPS.
void check_substeps(SceneWarnings& all, const SceneSurvey& survey);
/// Parameters that the user set although others take away their effect.
void check_settings(SceneWarnings& all, const SceneSurvey& survey);

}  // namespace nbx
