#include "core/math/mat4_ops.h"

namespace quillix {

template <class T>
bool Invert4x4(Mat4<T>& m) {
  const auto& a = m.m;
  // 2×2 minors of rows 0-1 and of rows 2-3; every 3×3 cofactor is a short combination of
  // them, which keeps the operation count (and the rounding) low.
  const T s0 = a[0][0] * a[1][1] - a[1][0] * a[0][1];
  const T s1 = a[0][0] * a[1][2] - a[1][0] * a[0][2];
  const T s2 = a[0][0] * a[1][3] - a[1][0] * a[0][3];
  const T s3 = a[0][1] * a[1][2] - a[1][1] * a[0][2];
  const T s4 = a[0][1] * a[1][3] - a[1][1] * a[0][3];
  const T s5 = a[0][2] * a[1][3] - a[1][2] * a[0][3];
  const T c5 = a[2][2] * a[3][3] - a[3][2] * a[2][3];
  const T c4 = a[2][1] * a[3][3] - a[3][1] * a[2][3];
  const T c3 = a[2][1] * a[3][2] - a[3][1] * a[2][2];
  const T c2 = a[2][0] * a[3][3] - a[3][0] * a[2][3];
  const T c1 = a[2][0] * a[3][2] - a[3][0] * a[2][2];
  const T c0 = a[2][0] * a[3][1] - a[3][0] * a[2][1];

  const T det = s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0;
  if (det == T(0)) return false;

  const T adjugate[4][4] = {
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

template bool Invert4x4(Mat4f& m);
template bool Invert4x4(Mat4d& m);

}  // namespace quillix
