#include "tools/output/shapes.h"

#include <algorithm>
#include <set>
#include <utility>

namespace quillix {

Vec3f TransformPoint(const Mat4f& m, const Vec3f& p) {
  const auto& r = m.m;
  return {p.x * r[0][0] + p.y * r[1][0] + p.z * r[2][0] + r[3][0],
          p.x * r[0][1] + p.y * r[1][1] + p.z * r[2][1] + r[3][1],
          p.x * r[0][2] + p.y * r[1][2] + p.z * r[2][2] + r[3][2]};
}

std::array<Vec3f, 8> BoxCorners(const Mat4f& m) {
  std::array<Vec3f, 8> corners;
  for (int i = 0; i < 8; ++i) {
    const Vec3f unit{(i & 1) ? 1.0f : -1.0f, (i & 2) ? 1.0f : -1.0f, (i & 4) ? 1.0f : -1.0f};
    corners[i] = TransformPoint(m, unit);
  }
  return corners;
}

Mat4f SphereTransform(const Vec3f& centre, float radius) {
  Mat4f m;
  m.m[0][0] = m.m[1][1] = m.m[2][2] = radius;
  m.m[3][0] = centre.x;
  m.m[3][1] = centre.y;
  m.m[3][2] = centre.z;
  m.m[3][3] = 1.0f;
  return m;
}

std::vector<PolygonRange> SplitPolygons(std::span<const std::int32_t> description) {
  std::vector<PolygonRange> polygons;
  std::size_t first = 0;
  for (std::size_t i = 0; i <= description.size(); ++i) {
    if (i < description.size() && description[i] >= 0) continue;
    if (i > first) polygons.push_back({first, i - first});
    first = i + 1;
  }
  return polygons;
}

bool IndicesInRange(std::span<const std::int32_t> indices, std::size_t vertexCount) {
  for (std::int32_t index : indices) {
    if (index < 0 || static_cast<std::size_t>(index) >= vertexCount) return false;
  }
  return true;
}

std::vector<std::array<std::int32_t, 2>> MeshEdges(std::span<const std::int32_t> description,
                                                   std::size_t vertexCount) {
  std::vector<std::array<std::int32_t, 2>> edges;
  std::set<std::pair<std::int32_t, std::int32_t>> seen;
  for (const PolygonRange& polygon : SplitPolygons(description)) {
    const auto indices = description.subspan(polygon.first, polygon.count);
    if (!IndicesInRange(indices, vertexCount)) continue;
    // A two-vertex polygon would otherwise yield its one edge twice, closing back on itself.
    const std::size_t edgeCount = indices.size() < 3 ? indices.size() - 1 : indices.size();
    for (std::size_t k = 0; k < edgeCount; ++k) {
      const std::int32_t a = indices[k];
      const std::int32_t b = indices[(k + 1) % indices.size()];
      const auto key = std::minmax(a, b);
      if (a == b || !seen.insert({key.first, key.second}).second) continue;
      edges.push_back({key.first, key.second});
    }
  }
  return edges;
}

}  // namespace quillix
