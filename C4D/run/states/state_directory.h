// The states of a cache: "LastSimState.bcf" is that of the end of the last run,
// "0000000012SimState.bcf" that of a frame which a run has passed.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "C4D/run/states/simulation_state.h"

namespace nbx {

std::string last_state_file(const std::string& directory);
std::string state_file(const std::string& directory, int frame);

struct StateFile {
  std::string path;
  std::optional<int> frame;  // nothing if the file can't be read
};
/// The states of a cache, the latest first; before them those that can't be read.
std::vector<StateFile> list_states(const std::string& directory);

struct FoundState {
  std::unique_ptr<SavedState> state;  // null if there is none
  std::string problems;               // why not, or which later states can't be read
};
/// The last state of a cache, or the last one at or before the frame `at_most`. A state of a frame
/// that an earlier run has left doesn't count.
FoundState find_state(const std::string& directory, std::optional<int> at_most);
/// The state of this frame. No problems if there is none. The second only looks for the file.
FoundState find_state_of(const std::string& directory, int frame);
bool has_state_of(const std::string& directory, int frame);

/// Gives the new cache `to` the states of `from` up to the frame `last`, with their notes.
Outcome share_states(const std::string& from, const std::string& to, int last);

/// Removes what killed writers have left.
void remove_unfinished_states(const std::string& directory);

}  // namespace nbx
