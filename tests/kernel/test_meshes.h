// Small mesh builders shared by the kernel and path-finding tests and benchmarks.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "core/math/math_types.h"
#include "kernel/geometry.h"

namespace quillix::testing {

// A polygon mesh as plain arrays: sizes one byte per polygon, indices concatenated.
struct PlainMesh {
  std::vector<Vec3f> positions;
  std::vector<std::uint8_t> sizes;
  std::vector<std::int32_t> indices;
};

// A grid of (columns + 1) × (rows + 1) vertices in the xy plane, vertex (i, j) at index
// j * (columns + 1) + i, one quad per cell. `jitter` moves every vertex randomly by up to
// that fraction of a cell, so that routes stop being equally long.
inline PlainMesh QuadGrid(int columns, int rows, float jitter = 0.0f, unsigned seed = 1) {
  PlainMesh mesh;
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> offset(-jitter, jitter);
  const int stride = columns + 1;
  mesh.positions.reserve(std::size_t(stride) * (rows + 1));
  for (int j = 0; j <= rows; ++j) {
    for (int i = 0; i <= columns; ++i) {
      const float dx = jitter > 0.0f ? offset(random) : 0.0f;
      const float dy = jitter > 0.0f ? offset(random) : 0.0f;
      mesh.positions.push_back({float(i) + dx, float(j) + dy, 0.0f});
    }
  }
  mesh.sizes.assign(std::size_t(columns) * rows, 4);
  mesh.indices.reserve(std::size_t(columns) * rows * 4);
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < columns; ++i) {
      const std::int32_t a = j * stride + i;
      mesh.indices.insert(mesh.indices.end(), {a, a + 1, a + 1 + stride, a + stride});
    }
  }
  return mesh;
}

// A triangle fan around vertex 0 with `spokes` rim vertices (closed when `closed`).
inline PlainMesh Fan(int spokes, bool closed) {
  PlainMesh mesh;
  mesh.positions.push_back({0.0f, 0.0f, 0.0f});
  for (int k = 0; k < spokes; ++k) {
    const float a = 6.2831853f * float(k) / float(spokes);
    mesh.positions.push_back({std::cos(a), std::sin(a), 0.0f});
  }
  const int triangles = closed ? spokes : spokes - 1;
  for (int k = 0; k < triangles; ++k) {
    mesh.sizes.push_back(3);
    mesh.indices.insert(mesh.indices.end(), {0, 1 + k, 1 + (k + 1) % spokes});
  }
  return mesh;
}

// Sets `geo` to `mesh` (float positions, byte sizes with an index array) with the optional
// channel and motion; returns Set's status.
inline QRVStatus SetPlainMesh(QRVGeometry& geo, const PlainMesh& mesh,
                              const QRVChannelInput& channel = {},
                              const QRVVertexChannelInput& motion = {}) {
  return geo.Set(mesh.positions.data(), std::int32_t(mesh.positions.size()), kEncodingFloat,
                 mesh.sizes.data(), mesh.indices.data(), std::int32_t(mesh.sizes.size()),
                 kDescriptionByteSizes, channel, {}, {}, motion);
}

// `mesh` as a host's polygonal description: each polygon's indices closed by -1.
inline std::vector<std::int32_t> PolygonalDescription(const PlainMesh& mesh) {
  std::vector<std::int32_t> description;
  std::size_t node = 0;
  for (std::uint8_t size : mesh.sizes) {
    for (std::uint8_t k = 0; k < size; ++k) description.push_back(mesh.indices[node++]);
    description.push_back(-1);
  }
  return description;
}

}  // namespace quillix::testing
