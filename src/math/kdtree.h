// A kd-tree over boxes that finds the boxes which a line along an axis meets.
//
// Inner nodes are split where the surface area heuristic expects the least work (MacDonald and
// Booth, Heuristics for ray tracing using space subdivision, 1990), evaluated at equidistant planes
// of the longest axis (Hunt, Mark and Stoll, Fast kd-tree construction with an adaptive
// error-bounded heuristic, 2006), so a level of the tree costs time in proportion to its boxes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

#include "math/vector.h"

namespace nbx {

/// A box in space.
struct Bounds3f {
  Vec3f lo, hi;
};

/// 8 bytes. Inner: the split position with its low two bits replaced by the axis, and the index of
/// the second child; the first child is the next node. Leaf: the count of primitives and 3 in the
/// low bits, and the primitive itself where there is one, else the index of the first in the list.
struct KdNode {
  std::uint32_t head, link;

  static KdNode inner(float split, int axis);
  static KdNode leaf(std::uint32_t count, std::uint32_t link) { return {(count << 2) | 3, link}; }

  bool is_leaf() const { return (head & 3) == 3; }
  int axis() const { return static_cast<int>(head & 3); }
  std::uint32_t count() const { return head >> 2; }
  /// The position that the tree is split at: the one that the node keeps.
  float split() const {
    const std::uint32_t bits = head & ~3u;
    float position;
    std::memcpy(&position, &bits, sizeof position);
    return position;
  }
};

/// Read-only after it is built: any number of threads may query it, each with its own KdVisitor.
class KdTree {
 public:
  /// Builds a tree over primitives 0 .. n - 1 with these finite bounds. If there are 2^30 or more,
  /// logs that and builds no tree.
  explicit KdTree(std::span<const Bounds3f> bounds);

  std::size_t primitives() const { return primitives_; }
  const std::vector<KdNode>& nodes() const { return nodes_; }
  const std::vector<std::uint32_t>& leaf_lists() const { return leaf_lists_; }

 private:
  std::size_t primitives_ = 0;
  std::vector<KdNode> nodes_;
  std::vector<std::uint32_t> leaf_lists_;
};

/// Queries of one thread to a tree, which must outlive it.
class KdVisitor {
 public:
  explicit KdVisitor(const KdTree& tree) : tree_(tree), met_(64) {}

  /// Calls body(primitive), once for each whose bounds may meet the line along `axis` through the
  /// point, whose coordinate on that axis doesn't matter. The order is the tree's.
  template <class Body>
  void line(int axis, const Vec3f& point, Body&& body);

 private:
  /// A slot of a hash table with open addressing, free unless it is of this line.
  struct Meeting {
    std::uint32_t primitive = 0, line = 0;
  };

  /// True at the first meeting of this line with the primitive, which may lie in several leaves.
  bool is_first_meeting(std::uint32_t primitive);
  Meeting& slot(std::uint32_t primitive);
  void grow();

  const KdTree& tree_;
  std::vector<std::uint32_t> stack_;
  std::vector<Meeting> met_;  // as large as one line needs, always a power of two
  std::size_t meetings_ = 0;  // of this line
  std::uint32_t line_ = 0;
};

/// The slot of the primitive in the table, or the slot for it.
inline KdVisitor::Meeting& KdVisitor::slot(std::uint32_t primitive) {
  const std::size_t mask = met_.size() - 1;
  std::size_t at = (primitive * std::uint64_t{0x9e3779b97f4a7c15u} >> 32) & mask;
  while (met_[at].line == line_ && met_[at].primitive != primitive) at = (at + 1) & mask;
  return met_[at];
}

inline bool KdVisitor::is_first_meeting(std::uint32_t primitive) {
  Meeting& meeting = slot(primitive);
  if (meeting.line == line_) return false;
  meeting = {primitive, line_};
  if (2 * ++meetings_ > met_.size()) grow();
  return true;
}

template <class Body>
void KdVisitor::line(int axis, const Vec3f& point, Body&& body) {
  if (tree_.nodes().empty()) return;
  meetings_ = 0;
  if (++line_ == 0) {  // the count of lines wrapped around
    std::fill(met_.begin(), met_.end(), Meeting());
    line_ = 1;
  }
  const auto meet = [&](std::uint32_t primitive) {
    if (is_first_meeting(primitive)) body(primitive);
  };
  const KdNode* nodes = tree_.nodes().data();
  stack_.assign(1, 0);
  while (!stack_.empty()) {
    std::uint32_t at = stack_.back();
    stack_.pop_back();
    while (!nodes[at].is_leaf()) {
      const KdNode node = nodes[at];
      const float c = point[node.axis()], split = node.split();
      // A line in the splitting plane may meet boxes on both sides.
      const bool both = node.axis() == axis || c == split;
      if (both) stack_.push_back(node.link);
      at = both || c < split ? at + 1 : node.link;
    }
    const KdNode leaf = nodes[at];
    if (leaf.count() == 1) meet(leaf.link);
    if (leaf.count() > 1)
      for (std::uint32_t i = 0; i < leaf.count(); ++i) meet(tree_.leaf_lists()[leaf.link + i]);
  }
}

}  // namespace nbx
