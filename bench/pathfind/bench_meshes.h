// Meshes for the path-finding benchmarks.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <unordered_map>
#include <vector>

#include "tests/kernel/test_meshes.h"

namespace quillix::bench {

using testing::PlainMesh;

inline std::vector<Vec3f> IcosahedronCorners() {
  const float t = (1.0f + std::sqrt(5.0f)) / 2.0f;
  return {{-1, t, 0},  {1, t, 0},  {-1, -t, 0}, {1, -t, 0}, {0, -1, t},  {0, 1, t},
          {0, -1, -t}, {0, 1, -t}, {t, 0, -1},  {t, 0, 1},  {-t, 0, -1}, {-t, 0, 1}};
}
inline std::vector<std::int32_t> IcosahedronTriangles() {
  return {0, 11, 5,  0, 5,  1, 0, 1, 7, 0, 7,  10, 0, 10, 11, 1, 5, 9, 5, 11,
          4, 11, 10, 2, 10, 7, 6, 7, 1, 8, 3,  9,  4, 3,  4,  2, 3, 2, 6, 3,
          6, 8,  3,  8, 9,  4, 9, 5, 2, 4, 11, 6,  2, 10, 8,  6, 7, 9, 8, 1};
}

// A modeller's geodesic sphere: every icosahedron face divided into frequency² triangles, the
// points pushed onto the unit sphere; 10 × frequency² + 2 vertices (998,562 for 316), numbered
// face by face and row by row, so that neighbours mostly lie close in memory.
inline PlainMesh GeodesicSphere(int frequency) {
  const std::vector<Vec3f> corners = IcosahedronCorners();
  const std::vector<std::int32_t> faces = IcosahedronTriangles();
  PlainMesh mesh;
  // A point is named by its weights on the face's corners; points on shared edges and corners
  // get the same name from every face that holds them.
  std::unordered_map<std::uint64_t, std::int32_t> named;
  const auto point = [&](const std::int32_t* face, int i, int j) {
    const int k = frequency - i - j;
    std::pair<std::int32_t, int> parts[3] = {{face[0], k}, {face[1], i}, {face[2], j}};
    std::sort(std::begin(parts), std::end(parts), [](const auto& x, const auto& y) {
      return std::pair(x.second == 0, x.first) < std::pair(y.second == 0, y.first);
    });
    std::uint64_t key = 0;
    for (const auto& [corner, weight] : parts)
      key = key << 20 | (weight == 0 ? 0 : std::uint64_t(corner) << 16 | std::uint64_t(weight));
    auto [it, inserted] = named.try_emplace(key, std::int32_t(mesh.positions.size()));
    if (inserted) {
      const Vec3f &a = corners[face[0]], &b = corners[face[1]], &c = corners[face[2]];
      const float f = float(frequency);
      const Vec3f q = {(a.x * k + b.x * i + c.x * j) / f, (a.y * k + b.y * i + c.y * j) / f,
                       (a.z * k + b.z * i + c.z * j) / f};
      const float len = std::sqrt(q.x * q.x + q.y * q.y + q.z * q.z);
      mesh.positions.push_back({q.x / len, q.y / len, q.z / len});
    }
    return it->second;
  };
  for (std::size_t f = 0; f < faces.size(); f += 3) {
    const std::int32_t* face = faces.data() + f;
    for (int j = 0; j < frequency; ++j) {
      for (int i = 0; i + j < frequency; ++i) {
        mesh.indices.insert(mesh.indices.end(),
                            {point(face, i, j), point(face, i + 1, j), point(face, i, j + 1)});
        if (i + j + 1 < frequency) {
          mesh.indices.insert(mesh.indices.end(), {point(face, i + 1, j), point(face, i + 1, j + 1),
                                                   point(face, i, j + 1)});
        }
      }
    }
  }
  mesh.sizes.assign(mesh.indices.size() / 3, 3);
  return mesh;
}

// A closed, scanned-looking surface: an icosahedron subdivided `levels` times (10 × 4^levels
// + 2 vertices), pushed onto a lumpy sphere and jittered, so that triangles vary in size and
// shape the way a scanner's reconstruction does. Deterministic for a given seed.
inline PlainMesh ScannedBlob(int levels, unsigned seed = 11) {
  std::vector<Vec3f> p = IcosahedronCorners();
  std::vector<std::int32_t> tri = IcosahedronTriangles();
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
