// 4×4 matrix operations in the row-vector convention of math_types.h, in single or double
// precision: mapping points and directions, and the general inverse.
//
// Three ways to map a 3-vector, because callers mean three different things:
//  - TransformPoint: an affine transform (scale, rotation, shear, translation). The fourth
//    column is ignored, so a matrix carrying other data there still maps points affinely.
//  - TransformPointProjective: the full homogeneous map, divided by w.
//  - TransformDirection: the linear part only (rows 0 to 2), for directions and normals.
// Each sum is evaluated left to right, ((x·m0 + y·m1) + z·m2) + m3, without fused
// multiply-add, so that results are the same bits on every machine.
#pragma once

#include "core/math/math_types.h"

namespace quillix {

// `d` as the row (x, y, z) times rows 0 to 2 of `m`: the translation and the fourth column
// are ignored.
template <class T>
Vec3<T> TransformDirection(const Vec3<T>& d, const Mat4<T>& m) {
  const auto& a = m.m;
  return {d.x * a[0][0] + d.y * a[1][0] + d.z * a[2][0],
          d.x * a[0][1] + d.y * a[1][1] + d.z * a[2][1],
          d.x * a[0][2] + d.y * a[1][2] + d.z * a[2][2]};
}

// `p` as the row (x, y, z, 1) times `m`, first three components: TransformDirection plus
// row 3. The fourth column is ignored (no homogeneous division).
template <class T>
Vec3<T> TransformPoint(const Vec3<T>& p, const Mat4<T>& m) {
  const Vec3<T> linear = TransformDirection(p, m);
  return {linear.x + m.m[3][0], linear.y + m.m[3][1], linear.z + m.m[3][2]};
}

// `p` as the row (x, y, z, 1) times `m`, each of the first three components divided by the
// fourth (homogeneous) one; a division per component, not a multiplication by 1/w. w = 0
// gives infinities or NaN, as the division does.
template <class T>
Vec3<T> TransformPointProjective(const Vec3<T>& p, const Mat4<T>& m) {
  const auto& a = m.m;
  const Vec3<T> q = TransformPoint(p, m);
  const T w = p.x * a[0][3] + p.y * a[1][3] + p.z * a[2][3] + a[3][3];
  return {q.x / w, q.y / w, q.z / w};
}

// Inverts `m` in place as its adjugate divided by its determinant (cofactor expansion),
// each entry divided rather than multiplied by 1/det. Returns false and leaves `m` untouched
// when the determinant is exactly 0; any other determinant, however small, is divided by. A
// NaN determinant is not 0, so a matrix holding NaN comes back filled with NaN and the call
// returns true. Instantiated for float and double.
template <class T>
bool Invert4x4(Mat4<T>& m);

}  // namespace quillix
