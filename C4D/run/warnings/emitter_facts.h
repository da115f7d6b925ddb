// What an emitter tag does over the frames of a run.
#pragma once

#include <map>
#include <set>

#include "C4D/run/warnings/world_box.h"
#include "host/interface/scene.h"

namespace nbx {

/// The domain of a volume at the document's time.
struct SourceDomain {
  double voxel_size = 1;
  Affine3d world_to_grid;
  WorldBox cells;  // in cells, up to the outer faces

  explicit SourceDomain(const host::BaseObject& volume);
  WorldBox world() const { return transformed(inverse(world_to_grid), cells); }
};

/// Amounts and extents are the largest of the frames that were looked at.
struct EmitterFacts {
  host::BaseTag* tag;
  bool on = false;  // the tag, its object and all parents are switched on
  bool solid = false;
  std::set<int> animated;  // ChannelKeys whose amount has keyframes

  bool has_shape = false;         // polygons, or particles that are alive
  bool gives = false;             // gas or motion
  bool reaches = false;           // the volume's domain
  bool reaches_another = false;   // that of another volume
  bool works = false;             // it has a shape, gives and reaches the domain in the same frame
  std::map<int, double> amounts;  // by ChannelKey
  double extent = 0;              // longest edge of its box in cells; infinite for particles
  double speed = 0;               // that it gives to the gas, units/s
  WorldBox box, last_box;         // of all frames, and of the last one

  explicit EmitterFacts(host::BaseTag& emitter);
  std::string name() const { return tag->GetObject()->GetName(); }
  bool may_give(int key) const { return animated.contains(key) || amounts.at(key) > 0; }
  bool gives_gas() const;
  /// Nothing that later frames can change matters.
  bool settled() const;
};

/// Adds what the emitter does at the document's time. Call it frame by frame, in order: between two
/// frames the emitter moves from box to box.
void look_at(EmitterFacts& emitter, const SourceDomain& domain,
             const std::vector<SourceDomain>& others);

}  // namespace nbx
