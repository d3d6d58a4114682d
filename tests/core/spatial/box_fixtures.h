// Matrices, random boxes and an exact separating-axis test shared by the spatial tests and
// benchmarks.
#pragma once

#include <cmath>
#include <cstdint>
#include <random>

#include "core/math/math_types.h"

namespace quillix::testing {

// Row-vector affine matrix with rows 0 to 2 = the given axes and row 3 = the translation.
inline Mat4f AffineMatrix(Vec3f row0, Vec3f row1, Vec3f row2, Vec3f translation) {
  Mat4f m;
  const Vec3f rows[4] = {row0, row1, row2, translation};
  for (int r = 0; r < 4; ++r) {
    m.m[r][0] = rows[r].x;
    m.m[r][1] = rows[r].y;
    m.m[r][2] = rows[r].z;
    m.m[r][3] = r == 3 ? 1.0f : 0.0f;
  }
  return m;
}

inline Mat4f ScaleTranslate(Vec3f scale, Vec3f translation) {
  return AffineMatrix({scale.x, 0, 0}, {0, scale.y, 0}, {0, 0, scale.z}, translation);
}

inline Mat4f Translation(Vec3f translation) { return ScaleTranslate({1, 1, 1}, translation); }

// Uniform `scale`, then rotations about X, Y and Z in that order (row-vector convention),
// then the translation.
inline Mat4f Rotation(double xDegrees, double yDegrees, double zDegrees, float scale,
                      Vec3f translation) {
  const double k = 3.14159265358979323846 / 180.0;
  const double cx = std::cos(xDegrees * k), sx = std::sin(xDegrees * k);
  const double cy = std::cos(yDegrees * k), sy = std::sin(yDegrees * k);
  const double cz = std::cos(zDegrees * k), sz = std::sin(zDegrees * k);
  const double rx[3][3] = {{1, 0, 0}, {0, cx, sx}, {0, -sx, cx}};
  const double ry[3][3] = {{cy, 0, -sy}, {0, 1, 0}, {sy, 0, cy}};
  const double rz[3][3] = {{cz, sz, 0}, {-sz, cz, 0}, {0, 0, 1}};
  double xy[3][3];
  Vec3f rows[3];
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j)
      xy[i][j] = rx[i][0] * ry[0][j] + rx[i][1] * ry[1][j] + rx[i][2] * ry[2][j];
  }
  for (int i = 0; i < 3; ++i) {
    double r[3];
    for (int j = 0; j < 3; ++j)
      r[j] = (xy[i][0] * rz[0][j] + xy[i][1] * rz[1][j] + xy[i][2] * rz[2][j]) * scale;
    rows[i] = {static_cast<float>(r[0]), static_cast<float>(r[1]), static_cast<float>(r[2])};
  }
  return AffineMatrix(rows[0], rows[1], rows[2], translation);
}

inline Mat4f RotationZ(double degrees, Vec3f translation) {
  return Rotation(0.0, 0.0, degrees, 1.0f, translation);
}

// Random boxes: any rotation, scales 0.1 to 2 per axis, a shear on a quarter of them,
// centres in [-extent, extent]³.
class RandomBoxes {
 public:
  explicit RandomBoxes(std::uint32_t seed, float extent = 2.5f) : engine_(seed), extent_(extent) {}

  Mat4f Next() {
    // Uniform rotation from a normalised Gaussian quaternion.
    double q[4];
    double norm = 0.0;
    for (double& v : q) {
      v = gauss_(engine_);
      norm += v * v;
    }
    norm = std::sqrt(norm);
    for (double& v : q) v /= norm;
    const double w = q[0], x = q[1], y = q[2], z = q[3];
    const double rotation[3][3] = {
        {1 - 2 * (y * y + z * z), 2 * (x * y + w * z), 2 * (x * z - w * y)},
        {2 * (x * y - w * z), 1 - 2 * (x * x + z * z), 2 * (y * z + w * x)},
        {2 * (x * z + w * y), 2 * (y * z - w * x), 1 - 2 * (x * x + y * y)}};
    Vec3f rows[3];
    for (int r = 0; r < 3; ++r) {
      const double s = Uniform(0.1, 2.0);
      rows[r] = {static_cast<float>(rotation[r][0] * s), static_cast<float>(rotation[r][1] * s),
                 static_cast<float>(rotation[r][2] * s)};
    }
    if (Uniform(0.0, 1.0) < 0.25) {
      const float k = static_cast<float>(Uniform(-0.8, 0.8));
      rows[1] = {rows[1].x + k * rows[0].x, rows[1].y + k * rows[0].y, rows[1].z + k * rows[0].z};
    }
    const Vec3f centre{static_cast<float>(Uniform(-extent_, extent_)),
                       static_cast<float>(Uniform(-extent_, extent_)),
                       static_cast<float>(Uniform(-extent_, extent_))};
    return AffineMatrix(rows[0], rows[1], rows[2], centre);
  }

  double Uniform(double lo, double hi) {
    return lo + (hi - lo) * std::uniform_real_distribution<double>(0.0, 1.0)(engine_);
  }

 private:
  std::mt19937 engine_;
  std::normal_distribution<double> gauss_{0.0, 1.0};
  double extent_;
};

// Two parallelepipeds (images of [-1, 1]³ under affine row-vector matrices; the fourth
// column is ignored) seen along the fifteen candidate separating axes: the three face
// normals of each and the nine cross products of their edge directions.
template <class Real>
struct SeparatingAxes {
  struct V {
    Real x, y, z;
  };
  static V Row(const Mat4f& m, int r) {
    return {Real(m.m[r][0]), Real(m.m[r][1]), Real(m.m[r][2])};
  }
  static Real Dot(V p, V q) { return p.x * q.x + p.y * q.y + p.z * q.z; }
  static V Cross(V p, V q) {
    return {p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
  }

  SeparatingAxes(const Mat4f& a, const Mat4f& b) {
    const V ca = Row(a, 3);
    const V cb = Row(b, 3);
    between = {cb.x - ca.x, cb.y - ca.y, cb.z - ca.z};
    for (int i = 0; i < 3; ++i) {
      edgesA[i] = Row(a, i);
      edgesB[i] = Row(b, i);
    }
    int n = 0;
    for (int i = 0; i < 3; ++i) {
      axes[n++] = Cross(edgesA[(i + 1) % 3], edgesA[(i + 2) % 3]);
      axes[n++] = Cross(edgesB[(i + 1) % 3], edgesB[(i + 2) % 3]);
    }
    for (const V& ea : edgesA) {
      for (const V& eb : edgesB) axes[n++] = Cross(ea, eb);
    }
  }

  // Sum of the two projections' half-widths minus the projected centre distance, all scaled
  // by |axis|: negative when `axis` separates the boxes.
  Real Overlap(V axis) const {
    Real reach = 0;
    for (int i = 0; i < 3; ++i)
      reach += std::fabs(Dot(edgesA[i], axis)) + std::fabs(Dot(edgesB[i], axis));
    return reach - std::fabs(Dot(between, axis));
  }

  V edgesA[3];
  V edgesB[3];
  V between;
  V axes[15];
};

// Smallest overlap of the two boxes' projections over the fifteen axes, per unit of axis
// length: negative when some axis separates them, positive when they intersect with (at
// least about) that margin. Axes from near-parallel edges are skipped; the face normals
// cover their direction.
template <class Real>
Real SeparatingAxisOverlap(const Mat4f& a, const Mat4f& b) {
  const SeparatingAxes<Real> boxes(a, b);
  Real smallest = Real(1e30);
  for (const auto& axis : boxes.axes) {
    const Real length = std::sqrt(SeparatingAxes<Real>::Dot(axis, axis));
    if (length < Real(1e-6)) continue;
    const Real overlap = boxes.Overlap(axis) / length;
    if (overlap < smallest) smallest = overlap;
  }
  return smallest;
}

// The exact test as a plain yes/no that stops at the first separating axis: the baseline
// that the benchmarks measure the cascade against.
template <class Real>
bool SeparatingAxisIntersect(const Mat4f& a, const Mat4f& b) {
  const SeparatingAxes<Real> boxes(a, b);
  for (const auto& axis : boxes.axes) {
    if (boxes.Overlap(axis) < 0) return false;
  }
  return true;
}

}  // namespace quillix::testing
