#include "C4D/services/load_string.h"

#include <map>

namespace nbx {

namespace {

// Names of classes and commands.
const std::map<std::int32_t, const char*> names{
    {10000, "Volume"},
    {10002, "Smoke and Fire"},
    {10004, "Emitter"},
    {10042, "Start Simulation"},
    {10047, "Nimbrix"},
    {10049, "Fluid Data"},
    {10050, "Nimbrix"},
    {10051, "Fluid Particles"},
    {10062, "Nimbrix Help"},
    {10069, "Check for Update"},
    {10071, "Preview"},
    {10107, "Continue Simulation"},
    {10108, "Start Up-Resolution"},
    {10117, "Simulation Window"},
};

// Titles, labels and states of the dialogs and the preferences.
const std::map<std::int32_t, const char*> labels{
    {10008, "Simulating"},
    {10014, "Folder for new caches"},
    {10018, "Simulation of"},
    {10021, "Stop"},
    {10024, "Frame"},
    {10025, "Elapsed"},
    {10026, "Remaining"},
    {10030, "Finished"},
    {10031, "Aborted"},
    {10034, "Memory"},
    {10036, "Peak"},
    {10048, "Folder of caches"},
    {10055, "Browse..."},
    {10058, "Check Now"},
    {10059, "Save the scene before a run"},
    {10064, "Check for updates once a day"},
    {10070, "Preview of"},
    {10077, "Preparing volumes"},
    {10083, "stopping after"},
    {10084, "Start"},
    {10097, "Light in smoke, stage"},
    {10109, "Ask before a saved scene is overwritten"},
    {10115, "CPU"},
    {10116, "GPU"},
};

// Boxes: a title and a text.
const std::map<std::int32_t, const char*> boxes{
    {10009, "The cache has no folder"},
    {10012, "A folder for the cache can't be made. The log tells why."},
    {10028, "A simulation is running"},
    {10029, "Stop it and start the new one?"},
    {10043, "No volume object"},
    {10044, "Select the volume object that is to be simulated."},
    {10063, "A newer version is there"},
    {10065, "No update"},
    {10066, "This is the newest version."},
    {10085, "The cache holds an earlier run"},
    {10086, "Simulate over it, or into a new cache?"},
    {10088, "Nothing to refine"},
    {10089, "An up-resolution run needs a finished cache with the velocity in its frames."},
    {10090, "The simulation is busy"},
    {10091, "A render is simulating. Wait until it is done."},
    {10093, "The cache is locked"},
    {10094, "Unlock the cache of the volume object, or give it another one."},
    {10118,
     "The render settings have another frame rate than the document. The simulation uses the "
     "document's."},
    {10119, "Frame rates differ"},
};

}  // namespace

std::string load_string(std::int32_t id) {
  for (const auto* texts : {&names, &labels, &boxes})
    if (const auto found = texts->find(id); found != texts->end()) return found->second;
  return {};
}

}  // namespace nbx
