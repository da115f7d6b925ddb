// Checks before and during the import of a model file. Files may come from anywhere, and the import
// library trusts them.
#pragma once

#include <string>

struct aiScene;

namespace host {

/// Limits of a model. --force lifts them.
inline constexpr double kMostModelPolygons = 2e7;  ///< over all instances of its meshes
inline constexpr double kMostModelPoints = 1e8;    ///< over all shapes of an animated mesh
inline constexpr double kMostModelKeys = 1e7;      ///< of rotations, one per frame
inline constexpr double kMostCornerPairs = 1e10;   ///< of large polygons that must be triangulated

/// Throws DocumentError for a .ply or .glb file whose header claims more data than the file has.
void CheckClaims(const std::string& path);

/// Throws DocumentError if polygons have so many corners that triangulation would take very long.
/// The scene must not be triangulated yet.
void CheckPolygons(const aiScene& scene);

/// Throws DocumentError if `count` exceeds `most`. `what` names the things counted, such as
/// "polygons".
void RefuseBeyond(double count, double most, const std::string& what);

/// While it exists, a crash of this thread ends the program with exit code 2 and one line on stderr
/// that names the file. Damaged files can crash the import library. The program must have nothing
/// to lose at that moment.
class ModelGuard {
 public:
  explicit ModelGuard(const std::string& path);
  ~ModelGuard();
  ModelGuard(const ModelGuard&) = delete;
  ModelGuard& operator=(const ModelGuard&) = delete;
};

}  // namespace host
