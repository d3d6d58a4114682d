// Meshes for the path-finding benchmarks.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

#include "tests/kernel/test_meshes.h"

namespace quillix::bench {

using testing::PlainMesh;

// A closed, scanned-looking surface: an icosahedron subdivided `levels` times (10 × 4^levels
// + 2 vertices), pushed onto a lumpy sphere and jittered, so that triangles vary in size and
// shape the way a scanner's reconstruction does. Deterministic for a given seed.
inline PlainMesh ScannedBlob(int levels, unsigned seed = 11) {
  const float t = (1.0f + std::sqrt(5.0f)) / 2.0f;
  std::vector<Vec3f> p = {{-1, t, 0}, {1, t, 0}, {-1, -t, 0}, {1, -t, 0},
                          {0, -1, t}, {0, 1, t}, {0, -1, -t}, {0, 1, -t},
                          {t, 0, -1}, {t, 0, 1}, {-t, 0, -1}, {-t, 0, 1}};
  std::vector<std::int32_t> tri = {0, 11, 5, 0, 5,  1,  0,  1,  7,  0,  7, 10, 0, 10, 11,
                                   1, 5,  9, 5, 11, 4,  11, 10, 2,  10, 7, 6,  7, 1,  8,
                                   3, 9,  4, 3, 4,  2,  3,  2,  6,  3,  6, 8,  3, 8,  9,
                                   4, 9,  5, 2, 4,  11, 6,  2,  10, 8,  6, 7,  9, 8,  1};
  for (int level = 0; level < levels; ++level) {
    std::unordered_map<std::uint64_t, std::int32_t> middle;
    const auto mid = [&](std::int32_t a, std::int32_t b) {
      const std::uint64_t key = std::uint64_t(std::min(a, b)) << 32 | std::uint32_t(std::max(a, b));
      auto [it, inserted] = middle.try_emplace(key, std::int32_t(p.size()));
      if (inserted)
        p.push_back({(p[a].x + p[b].x) / 2, (p[a].y + p[b].y) / 2, (p[a].z + p[b].z) / 2});
      return it->second;
    };
    std::vector<std::int32_t> next;
    next.reserve(tri.size() * 4);
    for (std::size_t k = 0; k < tri.size(); k += 3) {
      const std::int32_t a = tri[k], b = tri[k + 1], c = tri[k + 2];
      const std::int32_t ab = mid(a, b), bc = mid(b, c), ca = mid(c, a);
      next.insert(next.end(), {a, ab, ca, b, bc, ab, c, ca, bc, ab, bc, ca});
    }
    tri.swap(next);
  }
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> jitter(-0.3f, 0.3f);
  const float spacing = 1.1f / float(1 << levels);
  PlainMesh mesh;
  mesh.positions.reserve(p.size());
  for (Vec3f v : p) {
    const float len = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
    v = {v.x / len, v.y / len, v.z / len};
    const float lump = 1.0f + 0.15f * std::sin(5 * v.x) * std::sin(7 * v.y) * std::sin(3 * v.z + 1);
    mesh.positions.push_back({v.x * lump + jitter(random) * spacing,
                              v.y * lump + jitter(random) * spacing,
                              v.z * lump + jitter(random) * spacing});
  }
  mesh.sizes.assign(tri.size() / 3, 3);
  mesh.indices = std::move(tri);
  return mesh;
}

}  // namespace quillix::bench
