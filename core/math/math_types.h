// The value types every core shares: 3-vectors and 3×3 / 4×4 matrices, in single or double
// precision.
//
// One transform convention throughout, the host's row-vector one: a point is the row
// (x, y, z, 1) times the matrix; rows 0 to 2 hold the scaled (and rotated) axes, row 3 the
// translation. Matrices are stored row-major, m[row][column], laid out like the host's, so a
// binding can view a host matrix or vector array in place.
#pragma once

namespace quillix {

template <class T>
struct Vec3 {
  T x = T(0);
  T y = T(0);
  T z = T(0);
};
using Vec3f = Vec3<float>;
using Vec3d = Vec3<double>;

// N×N matrix, row-vector convention (see above): for N = 3, row i is the image of unit axis
// i. Zero by default.
template <class T, int N>
struct Mat {
  T m[N][N] = {};
  static constexpr Mat Identity() {
    Mat identity;
    for (int i = 0; i < N; ++i) identity.m[i][i] = T(1);
    return identity;
  }
};
template <class T>
using Mat3 = Mat<T, 3>;
template <class T>
using Mat4 = Mat<T, 4>;
using Mat3f = Mat3<float>;
using Mat3d = Mat3<double>;
using Mat4f = Mat4<float>;
using Mat4d = Mat4<double>;

}  // namespace quillix
