#include "core/spatial/ellipsoid.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "core/math/mat4_ops.h"
#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

// Half-chord of `shape` towards `target`, or nothing when `target` lies inside or on `shape`
// (the caller then reports contact).
std::optional<float> RadiusTowards(const PreparedEllipsoid& shape, Vec3f target) {
  const Vec3f local = TransformPointProjective(target, shape.inverse);
  const float squaredLength = Dot(local, local);
  if (squaredLength <= 1.0f) return std::nullopt;
  // The unit-sphere point towards the target maps onto the centre line, since an affine map
  // keeps lines through the local origin straight and through the centre.
  const Vec3f onSphere = Divide(local, std::sqrt(squaredLength));
  const Vec3f onSurface = TransformPointProjective(onSphere, shape.record.matrix);
  return Length(Subtract(onSurface, shape.record.centre));
}

}  // namespace

EllipsoidRecord EllipsoidFromMatrix(const Mat4f& m) {
  EllipsoidRecord record;
  Vec3f* const axes[3] = {&record.axisX, &record.axisY, &record.axisZ};
  float* const scales[3] = {&record.scale.x, &record.scale.y, &record.scale.z};
  for (int row = 0; row < 3; ++row) {
    const Vec3f r{m.m[row][0], m.m[row][1], m.m[row][2]};
    const float length = Length(r);
    *scales[row] = length;
    *axes[row] = length == 0.0f ? Vec3f{} : Scale(r, 1.0f / length);
    const Vec3f scaled = Scale(*axes[row], length);
    record.matrix.m[row][0] = scaled.x;
    record.matrix.m[row][1] = scaled.y;
    record.matrix.m[row][2] = scaled.z;
    record.matrix.m[row][3] = 0.0f;
  }
  record.centre = {m.m[3][0], m.m[3][1], m.m[3][2]};
  record.matrix.m[3][0] = record.centre.x;
  record.matrix.m[3][1] = record.centre.y;
  record.matrix.m[3][2] = record.centre.z;
  record.matrix.m[3][3] = 1.0f;
  return record;
}

PreparedEllipsoid PrepareEllipsoid(const EllipsoidRecord& record) {
  PreparedEllipsoid prepared{record, record.matrix};
  // Deliberately unchecked: a singular matrix stays as it is and serves as its own inverse.
  Invert4x4(prepared.inverse);
  return prepared;
}

float EllipsoidDistance(const PreparedEllipsoid& a, const PreparedEllipsoid& b) {
  const float centreDistance = Length(Subtract(b.record.centre, a.record.centre));
  if (centreDistance <= 0.0f) return 0.0f;
  const std::optional<float> radiusA = RadiusTowards(a, b.record.centre);
  if (!radiusA) return 0.0f;
  const std::optional<float> radiusB = RadiusTowards(b, a.record.centre);
  if (!radiusB) return 0.0f;
  return std::max(0.0f, centreDistance - *radiusA - *radiusB);
}

float EllipsoidDistance(const Mat4f& a, const Mat4f& b) {
  return EllipsoidDistance(PrepareEllipsoid(EllipsoidFromMatrix(a)),
                           PrepareEllipsoid(EllipsoidFromMatrix(b)));
}

}  // namespace quillix
