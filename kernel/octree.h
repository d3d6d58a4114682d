// Octree over a point set, the geometry's spatial acceleration item.
#pragma once

#include <cstdint>

#include "core/math/math_types.h"
#include "kernel/memory_context.h"
#include "kernel/status.h"

namespace quillix {

// A pointer-free octree over points. The points are ordered along a 63-bit Morton curve, so
// every node covers one contiguous range of that order; a node's children are contiguous in
// the node array. Non-finite points are left out. Building runs its loops in parallel
// (OpenMP); queries are read-only and may run on many threads at once.
class QRVOctree {
 public:
  static constexpr std::int32_t kLeafSize = 16;

  explicit QRVOctree(QRVMemoryContext& memory) : memory_(&memory) {}
  ~QRVOctree() { Clear(); }
  QRVOctree(const QRVOctree&) = delete;
  QRVOctree& operator=(const QRVOctree&) = delete;

  // Builds over `count` points (read, not kept). 6 for a negative count or null points with
  // a positive count; 9 on memory refusal (the tree is left empty).
  QRVStatus Build(const Vec3f* points, std::int32_t count);
  // Releases the tree; returns 0.
  QRVStatus Clear();

  // Calls visit(pointId) for every held point within `radius` (distance <= radius) of
  // `query`, in Morton order.
  template <typename Visit>
  void ForEachWithin(const Vec3f& query, float radius, Visit&& visit) const;

  struct Node {
    Vec3f boundsMin;  // tight bounds of the node's points
    Vec3f boundsMax;
    std::int32_t first;  // range in the Morton order
    std::int32_t count;
    std::int32_t firstChild;  // -1 for a leaf
    std::int32_t childCount;
  };

 private:
  static float BoxDistanceSquared(const Node& node, const Vec3f& q);
  static float DistanceSquared(const Vec3f& a, const Vec3f& b) {
    const float dx = a.x - b.x, dy = a.y - b.y, dz = a.z - b.z;
    return dx * dx + dy * dy + dz * dz;
  }

  QRVMemoryContext* memory_;
  Node* nodes_ = nullptr;
  std::int32_t* order_ = nullptr;  // point ids in Morton order
  Vec3f* points_ = nullptr;        // copies, in Morton order
};

template <typename Visit>
void QRVOctree::ForEachWithin(const Vec3f& query, float radius, Visit&& visit) const {
  if (nodes_ == nullptr || !(radius >= 0.0f)) return;
  const float r2 = radius * radius;
  // Explicit stack: depth is at most 22 levels, 8 children each.
  std::int32_t stack[8 * 24];
  int top = 0;
  stack[top++] = 0;
  while (top > 0) {
    const Node& node = nodes_[stack[--top]];
    if (BoxDistanceSquared(node, query) > r2) continue;
    if (node.firstChild < 0) {
      for (std::int32_t i = node.first; i < node.first + node.count; ++i) {
        if (DistanceSquared(points_[i], query) <= r2) visit(order_[i]);
      }
      continue;
    }
    for (std::int32_t c = node.childCount - 1; c >= 0; --c) stack[top++] = node.firstChild + c;
  }
}

}  // namespace quillix
