// Texts that the user reads: names of classes and commands, states, and boxes.
#pragma once

#include <string>

namespace nbx::texts {

inline const std::string kNimbrix = "Nimbrix";
inline const std::string kVolume = "Volume";
inline const std::string kSmokeAndFire = "Smoke and Fire";
inline const std::string kEmitter = "Emitter";
inline const std::string kHelp = "Nimbrix Help";
inline const std::string kStartSimulation = "Start Simulation";
inline const std::string kContinueSimulation = "Continue Simulation";

inline const std::string kUpResolution = "Up-Resolution";

inline const std::string kSimulating = "Simulating";
inline const std::string kPreparingVolumes = "Preparing volumes";
inline const std::string kLightInSmoke = "Light in smoke, stage";

struct Box {
  std::string title, text;
};

inline const Box kNoVolume{"No volume object", "Select the volume object to simulate."};
inline const Box kRunning{"A simulation is running", "Stop it and start the new one?"};
inline const Box kCacheHoldsRun{"The cache holds an earlier run",
                                "Simulate over it, or into a new cache?"};
inline const Box kNoCacheFolder{"The cache has no folder",
                                "A folder for the cache can't be made. The log says why."};
inline const Box kCacheLocked{"The cache is locked",
                              "Unlock the cache of the volume object, or give it another one."};
inline const Box kNoUpresSource{
    "The cache has no velocity to add detail to",
    "Turn cache_velocity on and simulate the volume; then start the up-resolution."};
inline const Box kOtherUpresFactor{
    "The up-resolution run in the cache has voxels of another size",
    "Continue it with the upres_factor that it was made with, or start it again."};
inline const Box kFrameRatesDiffer{
    "Frame rates differ",
    "The render settings have another frame rate than the document. The simulation uses the "
    "document's."};

}  // namespace nbx::texts
