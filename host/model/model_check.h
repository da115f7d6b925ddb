// What is looked at before and while the import library reads a model file: files come from
// anywhere, and the library takes them at their word.
#pragma once

#include <string>

struct aiScene;

namespace host {

/// What a model may ask for where the user hasn't given --force.
inline constexpr double kMostModelPolygons = 2e7;  ///< of all places at which its meshes stand
inline constexpr double kMostModelPoints = 1e8;    ///< of all shapes of a mesh that moves
inline constexpr double kMostModelKeys = 1e7;      ///< of rotations, which get one at each frame
inline constexpr double kMostCornerPairs = 1e10;   ///< of large polygons, which are cut up

/// Throws DocumentError for a .ply or .glb file that claims to hold more than its bytes can.
void CheckClaims(const std::string& path);

/// Throws DocumentError where polygons have so many corners that it would take very long to cut
/// them into triangles. The scene is as it was read.
void CheckPolygons(const aiScene& scene);

/// Throws DocumentError: `what` ("polygons") are `count`, more than `most`.
void RefuseBeyond(double count, double most, const std::string& what);

/// While one lives, a crash of this thread ends the program with a line on stderr that names the
/// file, and with exit code 2: damaged files bring the import library to it. The program must have
/// nothing to lose meanwhile.
class ModelGuard {
 public:
  explicit ModelGuard(const std::string& path);
  ~ModelGuard();
  ModelGuard(const ModelGuard&) = delete;
  ModelGuard& operator=(const ModelGuard&) = delete;
};

}  // namespace host
