#include "core/matching/object_features.h"

#include "core/math/mat4_ops.h"

#include <cassert>

#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

double TriangleArea(const Vec3d& a, const Vec3d& b, const Vec3d& c) {
  return 0.5 * Length(Cross(Subtract(b, a), Subtract(c, a)));
}

// Running sum of vectors, divided once at the end.
struct VectorMean {
  Vec3d sum;
  std::size_t count = 0;
  void Add(const Vec3d& v) {
    sum = quillix::Add(sum, v);
    ++count;
  }
  Vec3d Value() const {
    if (count == 0) return {};
    return Divide(sum, double(count));
  }
};

}  // namespace

double TriangleSurfaceArea(std::span<const Vec3d> corners) {
  assert(corners.size() % 3 == 0);
  double area = 0.0;
  for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
    area += TriangleArea(corners[i], corners[i + 1], corners[i + 2]);
  }
  return area;
}

double TransformedSurfaceArea(std::span<const Vec3d> corners, const Mat4d& transform) {
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

Vec3d TransformedPointAverage(std::span<const Vec3d> points, const Mat4d& transform) {
  VectorMean mean;
  for (const Vec3d& p : points) mean.Add(TransformPoint(p, transform));
  return mean.Value();
}

Vec3d TransformedDirectionAverage(std::span<const Vec3d> directions, const Mat4d& transform) {
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
