// How much work a scene asks for before anything of it is made.
#pragma once

namespace host {

class Document;

/// What a scene may ask for where the user hasn't given --force. Machines of today go further, but
/// who means to is asked for a word: such numbers are most often slips of the hand.
inline constexpr double kMostScenePolygons = 2e7;    ///< some 3 GB
inline constexpr double kMostSceneParticles = 5e6;   ///< at once; some 2 GB
inline constexpr double kMostParticleSteps = 1e9;    ///< of all particles, before the first frame
inline constexpr double kMostPictureSamples = 1e11;  ///< a day of one processor

/// For a document that is read but not opened. Throws DocumentError, which names the object that
/// asks for most, where the scene's polygons or particles are beyond the bounds. Meshes from files
/// count nothing: their size isn't known.
void CheckWork(const Document& document);

}  // namespace host
