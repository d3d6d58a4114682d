#include "kernel/octree.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace quillix {
namespace {

constexpr int kMaxDepth = 21;
// Below this many points a parallel loop costs more in thread wake-ups than it saves.
constexpr std::int32_t kParallelMinimum = 32768;  // 21 bits per axis in a 63-bit Morton code

std::uint64_t SpreadBits(std::uint32_t v) {
  std::uint64_t x = v & 0x1FFFFFu;
  x = (x | x << 32) & 0x1F00000000FFFFull;
  x = (x | x << 16) & 0x1F0000FF0000FFull;
  x = (x | x << 8) & 0x100F00F00F00F00Full;
  x = (x | x << 4) & 0x10C30C30C30C30C3ull;
  x = (x | x << 2) & 0x1249249249249249ull;
  return x;
}

bool Finite(const Vec3f& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

struct Keyed {
  std::uint64_t code;
  std::int32_t id;
  bool operator<(const Keyed& o) const { return code != o.code ? code < o.code : id < o.id; }
};

// Octant (0..7) of a Morton code at `level` (0 = the root's split).
int Octant(std::uint64_t code, int level) {
  return int((code >> (3 * (kMaxDepth - 1 - level))) & 7u);
}

}  // namespace

QRVStatus QRVOctree::Clear() {
  memory_->Release(nodes_);
  memory_->Release(order_);
  memory_->Release(points_);
  nodes_ = nullptr;
  order_ = nullptr;
  points_ = nullptr;
  nodeCount_ = pointCount_ = depth_ = 0;
  return kStatusOk;
}

QRVStatus QRVOctree::Build(const Vec3f* points, std::int32_t count) {
  Clear();
  if (count < 0 || (count > 0 && points == nullptr)) return kStatusIllegalParameter;

  // Bounds of the finite points.
  float lo[3] = {std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
                 std::numeric_limits<float>::max()};
  float hi[3] = {-lo[0], -lo[1], -lo[2]};
  std::int32_t finite = 0;
  float lx = lo[0], ly = lo[1], lz = lo[2], hx = hi[0], hy = hi[1], hz = hi[2];
#pragma omp parallel for if (count > kParallelMinimum) reduction(min : lx, ly, lz) reduction(max : hx, hy, hz) reduction(+ : finite)
  for (std::int32_t i = 0; i < count; ++i) {
    const Vec3f& p = points[i];
    if (!Finite(p)) continue;
    ++finite;
    lx = std::min(lx, p.x), ly = std::min(ly, p.y), lz = std::min(lz, p.z);
    hx = std::max(hx, p.x), hy = std::max(hy, p.y), hz = std::max(hz, p.z);
  }
  lo[0] = lx, lo[1] = ly, lo[2] = lz, hi[0] = hx, hi[1] = hy, hi[2] = hz;

  Keyed* keyed = memory_->AllocateArray<Keyed>(std::size_t(count));
  order_ = memory_->AllocateArray<std::int32_t>(std::size_t(finite));
  points_ = memory_->AllocateArray<Vec3f>(std::size_t(finite));
  if (keyed == nullptr || order_ == nullptr || points_ == nullptr) {
    memory_->Release(keyed);
    Clear();
    return kStatusNoMemory;
  }

  // Quantise into a cube so that octants are cubes too.
  double extent = 0.0;
  for (int a = 0; a < 3; ++a) extent = std::max(extent, double(hi[a]) - double(lo[a]));
  const double scale = extent > 0.0 ? double((1u << kMaxDepth) - 1) / extent : 0.0;
#pragma omp parallel for if (count > kParallelMinimum) schedule(static)
  for (std::int32_t i = 0; i < count; ++i) {
    const Vec3f& p = points[i];
    if (!Finite(p)) {
      keyed[i] = {std::numeric_limits<std::uint64_t>::max(), i};
      continue;
    }
    const auto q = [&](float v, int a) {
      return std::uint32_t(std::min(double((1u << kMaxDepth) - 1), (double(v) - lo[a]) * scale));
    };
    keyed[i] = {SpreadBits(q(p.x, 0)) | SpreadBits(q(p.y, 1)) << 1 | SpreadBits(q(p.z, 2)) << 2, i};
  }

  // Sort: chunks in parallel, then pairwise merges of neighbouring chunks in parallel.
  const int chunks = std::max(1, std::min(omp_get_max_threads() * 4, count / 4096 + 1));
  const auto bound = [&](int c) { return std::int64_t(count) * c / chunks; };
#pragma omp parallel for if (chunks > 1) schedule(dynamic, 1)
  for (int c = 0; c < chunks; ++c) std::sort(keyed + bound(c), keyed + bound(c + 1));
  for (int width = 1; width < chunks; width *= 2) {
#pragma omp parallel for schedule(dynamic, 1)
    for (int c = 0; c < chunks; c += 2 * width) {
      if (c + width >= chunks) continue;
      std::inplace_merge(keyed + bound(c), keyed + bound(c + width),
                         keyed + bound(std::min(chunks, c + 2 * width)));
    }
  }
  pointCount_ = finite;
#pragma omp parallel for if (finite > kParallelMinimum) schedule(static)
  for (std::int32_t i = 0; i < finite; ++i) {
    order_[i] = keyed[i].id;
    points_[i] = points[keyed[i].id];
  }

  // Nodes level by level: each level's splits are found in parallel, then numbered.
  struct Range {
    std::int32_t first, count;
  };
  // A level never has more nodes than points (each node holds at least one), which sizes
  // childCounts; the node array grows as levels are added and is trimmed at the end.
  std::int64_t capacity = std::int64_t(std::max(finite, 1)) * 2 + 64;
  Node* nodes = memory_->AllocateArray<Node>(std::size_t(capacity));
  std::int32_t* childCounts =
      memory_->AllocateArray<std::int32_t>(std::size_t(std::max(finite, 1)) + 1);
  if (nodes == nullptr || childCounts == nullptr) {
    memory_->Release(keyed), memory_->Release(nodes), memory_->Release(childCounts);
    Clear();
    return kStatusNoMemory;
  }
  nodes[0] = {{}, {}, 0, finite, -1, 0};
  std::int64_t levelBegin = 0, levelEnd = 1, total = 1;
  bool failed = false;
  for (int level = 0; level < kMaxDepth && levelBegin < levelEnd && !failed; ++level) {
    const std::int64_t levelSize = levelEnd - levelBegin;
#pragma omp parallel for if (levelSize > 64) schedule(dynamic, 64)
    for (std::int64_t k = 0; k < levelSize; ++k) {
      const Node& node = nodes[levelBegin + k];
      std::int32_t children = 0;
      if (node.count > kLeafSize) {
        int previous = -1;
        for (std::int32_t i = node.first; i < node.first + node.count; ++i) {
          const int octant = Octant(keyed[i].code, level);
          if (octant != previous) ++children, previous = octant;
        }
        // Points that share one finest cell can never be told apart: the node stays a leaf.
        if (keyed[node.first].code == keyed[node.first + node.count - 1].code) children = 0;
      }
      childCounts[k] = children;
    }
    std::int64_t next = total;
    for (std::int64_t k = 0; k < levelSize; ++k) {
      nodes[levelBegin + k].firstChild = childCounts[k] > 0 ? std::int32_t(next) : -1;
      nodes[levelBegin + k].childCount = childCounts[k];
      next += childCounts[k];
    }
    if (next > capacity) {
      std::int64_t grown = std::max(next * 2, capacity * 2);
      Node* bigger = memory_->AllocateArray<Node>(std::size_t(grown));
      if (bigger == nullptr) {
        failed = true;
        break;
      }
      std::memcpy(bigger, nodes, std::size_t(total) * sizeof(Node));
      memory_->Release(nodes);
      nodes = bigger;
      capacity = grown;
    }
#pragma omp parallel for if (levelSize > 64) schedule(dynamic, 64)
    for (std::int64_t k = 0; k < levelSize; ++k) {
      const Node& node = nodes[levelBegin + k];
      if (node.firstChild < 0) continue;
      std::int32_t child = node.firstChild;
      std::int32_t start = node.first;
      for (std::int32_t i = node.first; i <= node.first + node.count; ++i) {
        const bool end = i == node.first + node.count;
        if (i > start &&
            (end || Octant(keyed[i].code, level) != Octant(keyed[start].code, level))) {
          nodes[child++] = {{}, {}, start, i - start, -1, 0};
          start = i;
        }
      }
    }
    levelBegin = levelEnd;
    levelEnd = total = next;
    depth_ = level + 1;
  }
  memory_->Release(childCounts);
  memory_->Release(keyed);
  if (failed) {
    memory_->Release(nodes);
    Clear();
    return kStatusNoMemory;
  }

  // Tight bounds of every node from its contiguous point range.
#pragma omp parallel for if (total > 256) schedule(dynamic, 256)
  for (std::int64_t k = 0; k < total; ++k) {
    Node& node = nodes[k];
    Vec3f mn{std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
             std::numeric_limits<float>::max()};
    Vec3f mx{-mn.x, -mn.y, -mn.z};
    for (std::int32_t i = node.first; i < node.first + node.count; ++i) {
      const Vec3f& p = points_[i];
      mn = {std::min(mn.x, p.x), std::min(mn.y, p.y), std::min(mn.z, p.z)};
      mx = {std::max(mx.x, p.x), std::max(mx.y, p.y), std::max(mx.z, p.z)};
    }
    node.boundsMin = mn;
    node.boundsMax = mx;
  }

  nodes_ = memory_->AllocateArray<Node>(std::size_t(total));
  if (nodes_ == nullptr) {
    memory_->Release(nodes);
    Clear();
    return kStatusNoMemory;
  }
  std::memcpy(nodes_, nodes, std::size_t(total) * sizeof(Node));
  memory_->Release(nodes);
  nodeCount_ = std::int32_t(total);
  return kStatusOk;
}

float QRVOctree::BoxDistanceSquared(const Node& node, const Vec3f& q) {
  const auto axis = [](float v, float lo, float hi) {
    return v < lo ? lo - v : (v > hi ? v - hi : 0.0f);
  };
  const float dx = axis(q.x, node.boundsMin.x, node.boundsMax.x);
  const float dy = axis(q.y, node.boundsMin.y, node.boundsMax.y);
  const float dz = axis(q.z, node.boundsMin.z, node.boundsMax.z);
  return dx * dx + dy * dy + dz * dz;
}

std::int32_t QRVOctree::Nearest(const Vec3f& query, float* distanceSquared) const {
  if (nodes_ == nullptr || pointCount_ == 0) return -1;
  std::int32_t best = -1;
  float bestD = std::numeric_limits<float>::infinity();
  std::int32_t stack[8 * 24];
  int top = 0;
  stack[top++] = 0;
  while (top > 0) {
    const Node& node = nodes_[stack[--top]];
    if (BoxDistanceSquared(node, query) > bestD) continue;
    if (node.firstChild < 0) {
      for (std::int32_t i = node.first; i < node.first + node.count; ++i) {
        const float d = DistanceSquared(points_[i], query);
        if (d < bestD || (d == bestD && order_[i] < best)) bestD = d, best = order_[i];
      }
      continue;
    }
    // Visit the nearest child first: push the others before it.
    std::int32_t nearest = node.firstChild;
    float nearestD = std::numeric_limits<float>::infinity();
    for (std::int32_t c = 0; c < node.childCount; ++c) {
      const float d = BoxDistanceSquared(nodes_[node.firstChild + c], query);
      if (d < nearestD) nearestD = d, nearest = node.firstChild + c;
    }
    for (std::int32_t c = 0; c < node.childCount; ++c) {
      if (node.firstChild + c != nearest) stack[top++] = node.firstChild + c;
    }
    stack[top++] = nearest;
  }
  if (best >= 0 && distanceSquared != nullptr) *distanceSquared = bestD;
  return best;
}

bool QRVOctree::AnyWithin(const Vec3f& query, float radius) const {
  bool found = false;
  // A full visit is fine here: callers use small radii.
  ForEachWithin(query, radius, [&](std::int32_t) { found = true; });
  return found;
}

}  // namespace quillix
