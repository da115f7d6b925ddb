#include "math/kdtree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include "util/log.h"

namespace nbx {

namespace {

constexpr std::size_t kMostPrimitives = std::size_t{1} << 30;
constexpr std::size_t kSmallestSplit = 4;        // fewer are a leaf
constexpr std::size_t kSmallestTask = 1u << 14;  // smaller subtrees aren't worth a task
constexpr int kPlanes = 16;
// The cost of a test, in steps from node to node. A step reads from a random place in memory, but
// the primitives of a leaf are close together, so a deeper tree takes longer to build and is no
// faster.
constexpr float kTestCost = 0.25f;
constexpr float kEmptyBonus = 0.5f;

using List = std::vector<std::uint32_t>;

struct Subtree {
  std::vector<KdNode> nodes;
  List lists;
};

struct Split {
  int axis = 0;
  float position = 0, cost = 0;
  bool found = false;
};

int longest_axis(const Bounds3f& box) {
  const Vec3f d = box.hi - box.lo;
  if (d[0] > d[1] && d[0] > d[2]) return 0;
  return d[1] > d[2] ? 1 : 2;
}

/// How many boxes start and end in each of the slices between the planes.
struct Histogram {
  std::array<std::uint32_t, kPlanes> starts{}, ends{};
};

class Builder {
 public:
  explicit Builder(std::span<const Bounds3f> bounds) : bounds_(bounds) {}

  /// Appends the tree of the last n entries of `work`, and leaves `work` unchanged.
  void node(Subtree& out, List& work, std::size_t n, const Bounds3f& box, int depth) const;

 private:
  Split best_split(std::span<const std::uint32_t> list, const Bounds3f& box) const;
  void leaf(Subtree& out, std::span<const std::uint32_t> list) const;

  std::span<const Bounds3f> bounds_;
};

void Builder::leaf(Subtree& out, std::span<const std::uint32_t> list) const {
  const auto n = static_cast<std::uint32_t>(list.size());
  if (n == 1) {
    out.nodes.push_back(KdNode::leaf(1, list[0]));
    return;
  }
  out.nodes.push_back(KdNode::leaf(n, static_cast<std::uint32_t>(out.lists.size())));
  out.lists.insert(out.lists.end(), list.begin(), list.end());
}

/// The plane with the least of
///
///     cost = 1 + (1 - e) kTestCost (p_low n_low + p_high n_high)
///
/// with p the share of the node's surface that a child has, n the boxes in it, and e a bonus where
/// a child is empty.
Split Builder::best_split(std::span<const std::uint32_t> list, const Bounds3f& box) const {
  Split best;
  best.axis = longest_axis(box);
  const Vec3f d = box.hi - box.lo;
  const float low = box.lo[best.axis], length = d[best.axis];
  if (!(length > 0)) return best;

  Histogram slices;
  const float scale = kPlanes / length;
  const auto slice = [&](float x) {
    return static_cast<std::size_t>(std::clamp((x - low) * scale, 0.0f, kPlanes - 1.0f));
  };
  for (std::uint32_t i : list) {
    ++slices.starts[slice(bounds_[i].lo[best.axis])];
    ++slices.ends[slice(bounds_[i].hi[best.axis])];
  }

  const float a = d[(best.axis + 1) % 3], b = d[(best.axis + 2) % 3];
  const float area = std::max(length * (a + b) + a * b, 0x1p-23f);
  auto above = static_cast<std::uint32_t>(list.size());
  std::uint32_t below = 0;
  for (int plane = 1; plane < kPlanes; ++plane) {
    below += slices.starts[plane - 1];
    above -= slices.ends[plane - 1];
    const float x = length * static_cast<float>(plane) / kPlanes;
    const float p_low = (x * (a + b) + a * b) / area;
    const float p_high = ((length - x) * (a + b) + a * b) / area;
    const float bonus = below == 0 || above == 0 ? kEmptyBonus : 0;
    const float cost =
        1 + (1 - bonus) * kTestCost *
                (p_low * static_cast<float>(below) + p_high * static_cast<float>(above));
    if (best.found && cost >= best.cost) continue;
    best.position = KdNode::inner(low + x, best.axis).split();
    best.cost = cost;
    best.found = true;
  }
  best.found = best.found && best.position > low && best.position < box.hi[best.axis];
  return best;
}

/// Appends the other's nodes to `out`.
void append(Subtree& out, const Subtree& other) {
  const auto nodes = static_cast<std::uint32_t>(out.nodes.size());
  const auto lists = static_cast<std::uint32_t>(out.lists.size());
  for (KdNode node : other.nodes) {
    if (!node.is_leaf()) node.link += nodes;
    if (node.is_leaf() && node.count() > 1) node.link += lists;
    out.nodes.push_back(node);
  }
  out.lists.insert(out.lists.end(), other.lists.begin(), other.lists.end());
}

void Builder::node(Subtree& out, List& work, std::size_t n, const Bounds3f& box, int depth) const {
  const std::size_t first = work.size() - n;
  const std::span<const std::uint32_t> list(work.data() + first, n);
  Split split;
  if (depth > 0 && n >= kSmallestSplit) split = best_split(list, box);
  if (!split.found || split.cost > kTestCost * static_cast<float>(n)) {
    leaf(out, list);
    return;
  }

  // Boxes on both sides go into both lists; a flat box in the plane goes into the low list.
  const auto lo = [&](std::uint32_t i) { return bounds_[i].lo[split.axis]; };
  const auto hi = [&](std::uint32_t i) { return bounds_[i].hi[split.axis]; };
  const float s = split.position;
  for (std::size_t i = first; i < first + n; ++i)
    if (hi(work[i]) > s) work.push_back(work[i]);
  const std::size_t high = work.size();
  for (std::size_t i = first; i < first + n; ++i)
    if (lo(work[i]) < s || hi(work[i]) <= s) work.push_back(work[i]);
  const std::size_t n_low = work.size() - high, n_high = high - first - n;
  Bounds3f low_box = box, high_box = box;
  low_box.hi[split.axis] = high_box.lo[split.axis] = s;

  const std::size_t at = out.nodes.size();
  out.nodes.push_back(KdNode::inner(s, split.axis));
  const auto next = [&] { return static_cast<std::uint32_t>(out.nodes.size()); };
  if (n < kSmallestTask) {
    node(out, work, n_low, low_box, depth - 1);
    work.resize(high);
    out.nodes[at].link = next();
    node(out, work, n_high, high_box, depth - 1);
  } else {
    Subtree low_tree, high_tree;
    List low_work(work.begin() + high, work.end());
    work.resize(high);
#pragma omp task default(shared)
    node(low_tree, low_work, n_low, low_box, depth - 1);
    node(high_tree, work, n_high, high_box, depth - 1);
#pragma omp taskwait
    append(out, low_tree);
    out.nodes[at].link = next();
    append(out, high_tree);
  }
  work.resize(first + n);
}

}  // namespace

KdNode KdNode::inner(float split, int axis) {
  std::uint32_t bits;
  std::memcpy(&bits, &split, sizeof bits);
  return {(bits & ~3u) | static_cast<std::uint32_t>(axis), 0};
}

KdTree::KdTree(std::span<const Bounds3f> bounds) {
  const std::size_t n = bounds.size();
  if (n == 0) return;
  if (n >= kMostPrimitives) {
    LogMessage() << "FATAL: kdtree primitive count overflow " << n;
    return;
  }
  primitives_ = n;
  Bounds3f all = bounds[0];
  for (const Bounds3f& b : bounds)
    for (int a = 0; a < 3; ++a) {
      all.lo[a] = std::min(all.lo[a], b.lo[a]);
      all.hi[a] = std::max(all.hi[a], b.hi[a]);
    }
  const int depth = static_cast<int>(std::ceil(std::log2(n) * 1.3 + 8));
  List work(n);
  std::iota(work.begin(), work.end(), 0u);
  Subtree tree;
  const Builder builder(bounds);
#pragma omp parallel
#pragma omp single
  builder.node(tree, work, n, all, depth);
  nodes_ = std::move(tree.nodes);
  leaf_lists_ = std::move(tree.lists);
}

void KdVisitor::grow() {
  const std::vector<Meeting> old = std::exchange(met_, std::vector<Meeting>(2 * met_.size()));
  for (const Meeting& meeting : old)
    if (meeting.line == line_) slot(meeting.primitive) = meeting;
}

}  // namespace nbx
