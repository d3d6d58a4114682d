#include "core/matching/object_features.h"

#include <cassert>
#include <cmath>

namespace quillix {
namespace {

Vec3d Cross(const Vec3d& a, const Vec3d& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double TriangleArea(const Vec3d& a, const Vec3d& b, const Vec3d& c) {
  const Vec3d ab{b.x - a.x, b.y - a.y, b.z - a.z};
  const Vec3d ac{c.x - a.x, c.y - a.y, c.z - a.z};
  const Vec3d n = Cross(ab, ac);
  return 0.5 * std::sqrt(n.x * n.x + n.y * n.y + n.z * n.z);
}

// Running sum of vectors, divided once at the end.
struct VectorMean {
  Vec3d sum;
  std::size_t count = 0;
  void Add(const Vec3d& v) {
    sum.x += v.x;
    sum.y += v.y;
    sum.z += v.z;
    ++count;
  }
  Vec3d Value() const {
    if (count == 0) return {};
    const double n = double(count);
    return {sum.x / n, sum.y / n, sum.z / n};
  }
};

}  // namespace

Vec3d TransformDirection(const Vec3d& direction, const Matrix4d& transform) {
  const auto& r = transform.m;
  const Vec3d& d = direction;
  return {d.x * r[0][0] + d.y * r[1][0] + d.z * r[2][0],
          d.x * r[0][1] + d.y * r[1][1] + d.z * r[2][1],
          d.x * r[0][2] + d.y * r[1][2] + d.z * r[2][2]};
}

Vec3d TransformPoint(const Vec3d& point, const Matrix4d& transform) {
  const Vec3d v = TransformDirection(point, transform);
  return {v.x + transform.m[3][0], v.y + transform.m[3][1], v.z + transform.m[3][2]};
}

double TriangleSurfaceArea(std::span<const Vec3d> corners) {
  assert(corners.size() % 3 == 0);
  double area = 0.0;
  for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
    area += TriangleArea(corners[i], corners[i + 1], corners[i + 2]);
  }
  return area;
}

double TransformedSurfaceArea(std::span<const Vec3d> corners, const Matrix4d& transform) {
  assert(corners.size() % 3 == 0);
  double area = 0.0;
  for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
    area += TriangleArea(TransformPoint(corners[i], transform),
                         TransformPoint(corners[i + 1], transform),
                         TransformPoint(corners[i + 2], transform));
  }
  return area;
}

Vec3d Average(std::span<const Vec3d> values) {
  VectorMean mean;
  for (const Vec3d& v : values) mean.Add(v);
  return mean.Value();
}

Vec3d TransformedPointAverage(std::span<const Vec3d> points, const Matrix4d& transform) {
  VectorMean mean;
  for (const Vec3d& p : points) mean.Add(TransformPoint(p, transform));
  return mean.Value();
}

Vec3d TransformedDirectionAverage(std::span<const Vec3d> directions,
                                     const Matrix4d& transform) {
  VectorMean mean;
  for (const Vec3d& d : directions) mean.Add(TransformDirection(d, transform));
  return mean.Value();
}

FeatureNeeds NeededFeatures(const MatchWeights& weights) {
  const auto on = [&](MatchTerm term) { return weights[term] > 0.0f; };
  FeatureNeeds needs;
  needs.boundingBox = on(kTermBoundingBox);
  needs.boundingSphere = on(kTermBoundingSphere);
  needs.localArea = on(kTermLocalSurfArea);
  needs.globalArea = on(kTermGlobalSurfArea);
  needs.vertexCenter = on(kTermGlobalVertexCenter);
  needs.localNormals = on(kTermLocalSurfNormalAverage);
  needs.globalNormals = on(kTermGlobalSurfNormalAverage);
  needs.triangles = needs.localArea || needs.globalArea || needs.vertexCenter;
  needs.localTransform = on(kTermLocalPos) || on(kTermLocalRot) || on(kTermLocalScl);
  needs.globalTransform = on(kTermGlobalPos) || on(kTermGlobalRot) || on(kTermGlobalScl) ||
                          needs.globalArea || needs.vertexCenter || needs.globalNormals;
  return needs;
}

}  // namespace quillix
