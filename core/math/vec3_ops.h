// 3-vector arithmetic for every core, in single or double precision.
//
// Every operation is written out with a fixed evaluation order (left to right, no fused
// multiply-add), because the nodes promise bit-identical float results on every machine: a
// core that needs another order writes it out where it is used, with the reason.
#pragma once

#include <cmath>
#include <type_traits>

#include "core/math/math_types.h"

namespace quillix {

template <class T>
Vec3<T> Add(const Vec3<T>& a, const Vec3<T>& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
template <class T>
Vec3<T> Subtract(const Vec3<T>& a, const Vec3<T>& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <class T>
Vec3<T> Scale(const Vec3<T>& a, std::type_identity_t<T> s) {
  return {a.x * s, a.y * s, a.z * s};
}
template <class T>
Vec3<T> Divide(const Vec3<T>& a, std::type_identity_t<T> s) {
  return {a.x / s, a.y / s, a.z / s};
}
template <class T>
T Dot(const Vec3<T>& a, const Vec3<T>& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
template <class T>
Vec3<T> Cross(const Vec3<T>& a, const Vec3<T>& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
// sqrt(x·x + y·y + z·z).
template <class T>
T Length(const Vec3<T>& a) {
  return std::sqrt(Dot(a, a));
}
// a + (b − a)·t.
template <class T>
Vec3<T> Lerp(const Vec3<T>& a, const Vec3<T>& b, std::type_identity_t<T> t) {
  return Add(a, Scale(Subtract(b, a), t));
}
// a + t·v, the position reached after moving from `a` for time `t` at velocity `v`.
template <class T>
Vec3<T> Advance(const Vec3<T>& a, std::type_identity_t<T> t, const Vec3<T>& v) {
  return Add(a, Scale(v, t));
}

// Writes v / |v| into `out` and returns true when |v| is at least `minLength`; otherwise (NaN
// included) returns false and leaves `out` alone, so that the caller picks its own fallback.
// `v` and `out` may be the same vector.
template <class T>
bool Normalise(const Vec3<T>& v, std::type_identity_t<T> minLength, Vec3<T>& out) {
  const T length = Length(v);
  if (!(length >= minLength)) return false;
  out = Divide(v, length);
  return true;
}

}  // namespace quillix
