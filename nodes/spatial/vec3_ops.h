// Single-precision 3-vector arithmetic shared by the spatial cores.
//
// Every operation is written out with a fixed evaluation order (left to right, no fused
// multiply-add), because the spatial nodes promise bit-identical float results on every
// machine. Kept in their own namespace so that they never collide with helpers of other
// node families.
#pragma once

#include <cmath>

#include "kernel/math_types.h"

namespace quillix::spatial {

inline Vec3f Add(Vec3f a, Vec3f b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3f Subtract(Vec3f a, Vec3f b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3f Scale(Vec3f a, float s) { return {a.x * s, a.y * s, a.z * s}; }
inline Vec3f Divide(Vec3f a, float s) { return {a.x / s, a.y / s, a.z / s}; }
inline float Dot(Vec3f a, Vec3f b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3f Cross(Vec3f a, Vec3f b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float Length(Vec3f a) { return std::sqrt(Dot(a, a)); }

// a + t·v, the position reached after moving from `a` for time `t` at velocity `v`.
inline Vec3f Advance(Vec3f a, float t, Vec3f v) { return Add(a, Scale(v, t)); }

}  // namespace quillix::spatial
