// Limits on the size of a scene, checked before any work starts.
#pragma once

namespace host {

class Document;

/// Limits of a scene. --force lifts them. Machines can handle more, but such numbers are usually
/// typing mistakes.
inline constexpr double kMostScenePolygons = 2e7;    ///< about 3 GB
inline constexpr double kMostSceneParticles = 5e6;   ///< at once; about 2 GB
inline constexpr double kMostParticleSteps = 1e9;    ///< over all particles, before the first frame
inline constexpr double kMostPictureSamples = 1e11;  ///< a day on one processor

/// For a document that is read but not yet opened. Throws DocumentError if the scene has too many
/// polygons or particles; the message names the object with the most. Meshes from files are not
/// counted, because their size isn't known yet.
void CheckWork(const Document& document);

}  // namespace host
