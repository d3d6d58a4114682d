#include "kernel/mesh_measures.h"

#include <cmath>
#include <cstdint>

namespace quillix {
namespace {

// Fan-triangulated area of one polygon, in double.
double PolygonArea(const Vec3f* positions, const std::int32_t* corners, std::int32_t size) {
  if (size < 3) return 0.0;
  const Vec3f& o = positions[corners[0]];
  double sum = 0.0;
  for (std::int32_t k = 1; k + 1 < size; ++k) {
    const Vec3f& a = positions[corners[k]];
    const Vec3f& b = positions[corners[k + 1]];
    const double ax = double(a.x) - o.x, ay = double(a.y) - o.y, az = double(a.z) - o.z;
    const double bx = double(b.x) - o.x, by = double(b.y) - o.y, bz = double(b.z) - o.z;
    const double cx = ay * bz - az * by, cy = az * bx - ax * bz, cz = ax * by - ay * bx;
    sum += std::sqrt(cx * cx + cy * cy + cz * cz);
  }
  return 0.5 * sum;
}

}  // namespace

float* ComputePolygonAreas(const MeshView& mesh, QRVMemoryContext& memory) {
  float* areas = memory.AllocateArray<float>(std::size_t(mesh.polygonCount));
  if (areas == nullptr) return nullptr;
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < mesh.polygonCount; ++p) {
    areas[p] = float(PolygonArea(mesh.positions, mesh.polygonIndices + node, mesh.polygonSizes[p]));
    node += mesh.polygonSizes[p];
  }
  return areas;
}

}  // namespace quillix
