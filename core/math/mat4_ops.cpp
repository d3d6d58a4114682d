#include "core/math/mat4_ops.h"

namespace quillix {

bool Invert4x4(Mat4f& m) {
  const auto& a = m.m;
  // 2×2 minors of rows 0-1 and of rows 2-3; every 3×3 cofactor is a short combination of
  // them, which keeps the operation count (and the rounding) low.
  const float s0 = a[0][0] * a[1][1] - a[1][0] * a[0][1];
  const float s1 = a[0][0] * a[1][2] - a[1][0] * a[0][2];
  const float s2 = a[0][0] * a[1][3] - a[1][0] * a[0][3];
  const float s3 = a[0][1] * a[1][2] - a[1][1] * a[0][2];
  const float s4 = a[0][1] * a[1][3] - a[1][1] * a[0][3];
  const float s5 = a[0][2] * a[1][3] - a[1][2] * a[0][3];
  const float c5 = a[2][2] * a[3][3] - a[3][2] * a[2][3];
  const float c4 = a[2][1] * a[3][3] - a[3][1] * a[2][3];
  const float c3 = a[2][1] * a[3][2] - a[3][1] * a[2][2];
  const float c2 = a[2][0] * a[3][3] - a[3][0] * a[2][3];
  const float c1 = a[2][0] * a[3][2] - a[3][0] * a[2][2];
  const float c0 = a[2][0] * a[3][1] - a[3][0] * a[2][1];

  const float det = s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
  if (det == 0.0f) return false;

  const float adjugate[4][4] = {
      {a[1][1] * c5 - a[1][2] * c4 + a[1][3] * c3, -a[0][1] * c5 + a[0][2] * c4 - a[0][3] * c3,
       a[3][1] * s5 - a[3][2] * s4 + a[3][3] * s3, -a[2][1] * s5 + a[2][2] * s4 - a[2][3] * s3},
      {-a[1][0] * c5 + a[1][2] * c2 - a[1][3] * c1, a[0][0] * c5 - a[0][2] * c2 + a[0][3] * c1,
       -a[3][0] * s5 + a[3][2] * s2 - a[3][3] * s1, a[2][0] * s5 - a[2][2] * s2 + a[2][3] * s1},
      {a[1][0] * c4 - a[1][1] * c2 + a[1][3] * c0, -a[0][0] * c4 + a[0][1] * c2 - a[0][3] * c0,
       a[3][0] * s4 - a[3][1] * s2 + a[3][3] * s0, -a[2][0] * s4 + a[2][1] * s2 - a[2][3] * s0},
      {-a[1][0] * c3 + a[1][1] * c1 - a[1][2] * c0, a[0][0] * c3 - a[0][1] * c1 + a[0][2] * c0,
       -a[3][0] * s3 + a[3][1] * s1 - a[3][2] * s0, a[2][0] * s3 - a[2][1] * s1 + a[2][2] * s0}};
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) m.m[row][column] = adjugate[row][column] / det;
  }
  return true;
}

Vec3f TransformPoint(Vec3f p, const Mat4f& m) {
  const auto& a = m.m;
  const float x = p.x * a[0][0] + p.y * a[1][0] + p.z * a[2][0] + a[3][0];
  const float y = p.x * a[0][1] + p.y * a[1][1] + p.z * a[2][1] + a[3][1];
  const float z = p.x * a[0][2] + p.y * a[1][2] + p.z * a[2][2] + a[3][2];
  const float w = p.x * a[0][3] + p.y * a[1][3] + p.z * a[2][3] + a[3][3];
  return {x / w, y / w, z / w};
}

}  // namespace quillix
