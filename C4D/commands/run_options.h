// The options of commands about a run, as parameters of the volume.
#pragma once

#include <string>
#include <vector>

#include "host/interface/command_data.h"
#include "util/outcome.h"

namespace nbx {

/// `scene.json: volume "smoke": `, the start of messages about the volume.
std::string volume_subject(const host::BaseObject& volume);

std::string absolute_path(const std::string& path);

/// The volume objects of a document in the order of the tree; with `enabled`, without those that
/// are switched off.
std::vector<host::BaseObject*> find_volumes(host::BaseDocument& document, bool enabled);

/// Gives the volume the range of --frames. A failure if frames are left out.
Outcome take_frames(const host::CommandArguments& arguments, host::BaseObject& volume);

/// Gives the volume the cache of --cache, or else the place of its own as a full path, and returns
/// it. Empty if the next run makes a new one. Nothing is written.
std::string set_cache(const host::CommandArguments& arguments, host::BaseObject& volume);

/// A failure if the volume's range or domain is impossible. Leaves the document at the start of the
/// range.
Outcome check_domain_and_range(host::BaseObject& volume);

}  // namespace nbx
