#include "core/matching/object_features.h"

#include "core/math/mat4_ops.h"

#include <cassert>

#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

double TriangleArea(const Vec3d& a, const Vec3d& b, const Vec3d& c) {
  return 0.5 * Length(Cross(Subtract(b, a), Subtract(c, a)));
}

// Sum of the areas of the triangles (corners 3k, 3k+1, 3k+2), each corner mapped by `map`.
template <class Map>
double MappedTriangleArea(std::span<const Vec3d> corners, Map map) {
  assert(corners.size() % 3 == 0);
  double area = 0.0;
  for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
    area += TriangleArea(map(corners[i]), map(corners[i + 1]), map(corners[i + 2]));
  }
  return area;
}

// Mean of the mapped vectors: summed in order, divided once at the end; none give 0.
template <class Map>
Vec3d MappedMean(std::span<const Vec3d> values, Map map) {
  Vec3d sum;
  for (const Vec3d& v : values) sum = Add(sum, map(v));
  if (values.empty()) return {};
  return Divide(sum, double(values.size()));
}

const auto kUnmapped = [](const Vec3d& v) { return v; };

}  // namespace

double TriangleSurfaceArea(std::span<const Vec3d> corners) {
  return MappedTriangleArea(corners, kUnmapped);
}

double TransformedSurfaceArea(std::span<const Vec3d> corners, const Mat4d& transform) {
  return MappedTriangleArea(corners, [&](const Vec3d& p) { return TransformPoint(p, transform); });
}

Vec3d Average(std::span<const Vec3d> values) { return MappedMean(values, kUnmapped); }

Vec3d TransformedPointAverage(std::span<const Vec3d> points, const Mat4d& transform) {
  return MappedMean(points, [&](const Vec3d& p) { return TransformPoint(p, transform); });
}

Vec3d TransformedDirectionAverage(std::span<const Vec3d> directions, const Mat4d& transform) {
  return MappedMean(directions, [&](const Vec3d& d) { return TransformDirection(d, transform); });
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
