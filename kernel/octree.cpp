#include "kernel/octree.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "kernel/mesh_view.h"

namespace quillix {
namespace {

constexpr int kMaxDepth = 21;  // 21 bits per axis in a 63-bit Morton code

using Node = QRVOctree::Node;

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

struct Bounds {
  float lo[3];
  float hi[3];
  std::int32_t finite;  // points counted in the bounds
};

// Bounds of the finite points.
Bounds FiniteBounds(const Vec3f* points, std::int32_t count) {
  float lx = std::numeric_limits<float>::max(), ly = lx, lz = lx;
  float hx = -lx, hy = -lx, hz = -lx;
  std::int32_t finite = 0;
#pragma omp parallel for if (count > kMeshParallelMinimum) reduction(min : lx, ly, lz) reduction(max : hx, hy, hz) reduction(+ : finite)
  for (std::int32_t i = 0; i < count; ++i) {
    const Vec3f& p = points[i];
    if (!Finite(p)) continue;
    ++finite;
    lx = std::min(lx, p.x), ly = std::min(ly, p.y), lz = std::min(lz, p.z);
    hx = std::max(hx, p.x), hy = std::max(hy, p.y), hz = std::max(hz, p.z);
  }
  return {{lx, ly, lz}, {hx, hy, hz}, finite};
}

// The Morton code of every point, quantised into the bounds' enclosing cube so that octants
// are cubes too; non-finite points get the largest code and so sort last.
void ComputeMortonCodes(const Vec3f* points, std::int32_t count, const Bounds& bounds,
                        Keyed* keyed) {
  double extent = 0.0;
  for (int a = 0; a < 3; ++a)
    extent = std::max(extent, double(bounds.hi[a]) - double(bounds.lo[a]));
  const double scale = extent > 0.0 ? double((1u << kMaxDepth) - 1) / extent : 0.0;
#pragma omp parallel for if (count > kMeshParallelMinimum) schedule(static)
  for (std::int32_t i = 0; i < count; ++i) {
    const Vec3f& p = points[i];
    if (!Finite(p)) {
      keyed[i] = {std::numeric_limits<std::uint64_t>::max(), i};
      continue;
    }
    const auto q = [&](float v, int a) {
      return std::uint32_t(
          std::min(double((1u << kMaxDepth) - 1), (double(v) - bounds.lo[a]) * scale));
    };
    keyed[i] = {SpreadBits(q(p.x, 0)) | SpreadBits(q(p.y, 1)) << 1 | SpreadBits(q(p.z, 2)) << 2, i};
  }
}

// Sorts by code then id: chunks in parallel, then pairwise merges of neighbouring chunks in
// parallel.
void SortByCode(Keyed* keyed, std::int32_t count) {
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
}

// The node array of the sorted codes of `finite` points, level by level: each level's splits
// are found in parallel, then numbered. Returns the array (from `memory`, `total` nodes, its
// block possibly larger) or null on refusal.
Node* BuildLevels(const Keyed* keyed, std::int32_t finite, QRVMemoryContext& memory,
                  std::int64_t& total) {
  // A level never has more nodes than points (each node holds at least one), which sizes
  // childCounts; the node array grows as levels are added.
  std::int64_t capacity = std::int64_t(std::max(finite, 1)) * 2 + 64;
  Node* nodes = memory.AllocateArray<Node>(std::size_t(capacity));
  std::int32_t* childCounts =
      memory.AllocateArray<std::int32_t>(std::size_t(std::max(finite, 1)) + 1);
  if (nodes == nullptr || childCounts == nullptr) {
    memory.Release(nodes), memory.Release(childCounts);
    return nullptr;
  }
  nodes[0] = {{}, {}, 0, finite, -1, 0};
  std::int64_t levelBegin = 0, levelEnd = 1;
  total = 1;
  for (int level = 0; level < kMaxDepth && levelBegin < levelEnd; ++level) {
    const std::int64_t levelSize = levelEnd - levelBegin;
#pragma omp parallel for if (levelSize > 64) schedule(dynamic, 64)
    for (std::int64_t k = 0; k < levelSize; ++k) {
      const Node& node = nodes[levelBegin + k];
      std::int32_t children = 0;
      if (node.count > QRVOctree::kLeafSize) {
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
      const std::int64_t grown = std::max(next * 2, capacity * 2);
      Node* bigger = memory.AllocateArray<Node>(std::size_t(grown));
      if (bigger == nullptr) {
        memory.Release(nodes), memory.Release(childCounts);
        return nullptr;
      }
      std::memcpy(bigger, nodes, std::size_t(total) * sizeof(Node));
      memory.Release(nodes);
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
  }
  memory.Release(childCounts);
  return nodes;
}

// Tight bounds of every node from its contiguous range of the sorted points.
void TightenBounds(Node* nodes, std::int64_t total, const Vec3f* sorted) {
#pragma omp parallel for if (total > 256) schedule(dynamic, 256)
  for (std::int64_t k = 0; k < total; ++k) {
    Node& node = nodes[k];
    Vec3f mn{std::numeric_limits<float>::max(), std::numeric_limits<float>::max(),
             std::numeric_limits<float>::max()};
    Vec3f mx{-mn.x, -mn.y, -mn.z};
    for (std::int32_t i = node.first; i < node.first + node.count; ++i) {
      const Vec3f& p = sorted[i];
      mn = {std::min(mn.x, p.x), std::min(mn.y, p.y), std::min(mn.z, p.z)};
      mx = {std::max(mx.x, p.x), std::max(mx.y, p.y), std::max(mx.z, p.z)};
    }
    node.boundsMin = mn;
    node.boundsMax = mx;
  }
}

}  // namespace

QRVStatus QRVOctree::Clear() {
  memory_->Release(nodes_);
  memory_->Release(order_);
  memory_->Release(points_);
  nodes_ = nullptr;
  order_ = nullptr;
  points_ = nullptr;
  return kStatusOk;
}

QRVStatus QRVOctree::Build(const Vec3f* points, std::int32_t count) {
  Clear();
  if (count < 0 || (count > 0 && points == nullptr)) return kStatusIllegalParameter;
  const Bounds bounds = FiniteBounds(points, count);
  const std::int32_t finite = bounds.finite;
  Keyed* keyed = memory_->AllocateArray<Keyed>(std::size_t(count));
  order_ = memory_->AllocateArray<std::int32_t>(std::size_t(finite));
  points_ = memory_->AllocateArray<Vec3f>(std::size_t(finite));
  if (keyed == nullptr || order_ == nullptr || points_ == nullptr) {
    memory_->Release(keyed);
    Clear();
    return kStatusNoMemory;
  }
  ComputeMortonCodes(points, count, bounds, keyed);
  SortByCode(keyed, count);
#pragma omp parallel for if (finite > kMeshParallelMinimum) schedule(static)
  for (std::int32_t i = 0; i < finite; ++i) {
    order_[i] = keyed[i].id;
    points_[i] = points[keyed[i].id];
  }

  std::int64_t total = 0;
  Node* nodes = BuildLevels(keyed, finite, *memory_, total);
  memory_->Release(keyed);
  if (nodes == nullptr) {
    Clear();
    return kStatusNoMemory;
  }
  TightenBounds(nodes, total, points_);
  // The node array grew by doublings; keep it at its exact size.
  nodes_ = memory_->AllocateArray<Node>(std::size_t(total));
  if (nodes_ == nullptr) {
    memory_->Release(nodes);
    Clear();
    return kStatusNoMemory;
  }
  std::memcpy(nodes_, nodes, std::size_t(total) * sizeof(Node));
  memory_->Release(nodes);
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

}  // namespace quillix
