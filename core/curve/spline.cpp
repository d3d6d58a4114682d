#include "core/curve/spline.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

constexpr float kTiny = 1e-15f;

Vec3f Cubic(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2, const Vec3f& p3, float t) {
  const Vec3f a3 = Add(Subtract(Subtract(p3, p2), p0), p1);
  const Vec3f a2 = Subtract(Subtract(p0, p1), a3);
  const Vec3f a1 = Subtract(p2, p0);
  const float t2 = t * t;
  const float t3 = t2 * t;
  return Add(Add(Add(Scale(a3, t3), Scale(a2, t2)), Scale(a1, t)), p1);
}

Vec3f CatmullRom(const Vec3f& p0, const Vec3f& p1, const Vec3f& p2, const Vec3f& p3, float t) {
  // p1 + 0.5 t ((p2 - p0) + t ((2 p0 - 5 p1 + 4 p2 - p3) + t (3 (p1 - p2) + p3 - p0)))
  const Vec3f c1 = Subtract(p2, p0);
  const Vec3f c2 = Subtract(Add(Subtract(Scale(p0, 2.0f), Scale(p1, 5.0f)), Scale(p2, 4.0f)), p3);
  const Vec3f c3 = Subtract(Add(Scale(Subtract(p1, p2), 3.0f), p3), p0);
  const Vec3f inner = Add(c1, Scale(Add(c2, Scale(c3, t)), t));
  return Add(p1, Scale(inner, 0.5f * t));
}

// One channel at fraction t of the segment whose neighbours are given.
Vec3f Interpolate(std::int32_t type, const Vec3f& prev, const Vec3f& from, const Vec3f& to,
                  const Vec3f& next2, float t) {
  switch (type) {
    case kInterpolationLinear:
      return Lerp(from, to, t);
    case kInterpolationCubic:
      return Cubic(prev, from, to, next2, t);
    case kInterpolationCatmullRom:
      return CatmullRom(prev, from, to, next2, t);
    default:
      return from;
  }
}

bool IsStep(std::int32_t type) {
  return type != kInterpolationLinear && type != kInterpolationCubic &&
         type != kInterpolationCatmullRom;
}

SplineSample SampleOf(const QRVSplinePoint& point) {
  return {point.position, point.tangent, point.up};
}

}  // namespace

QRVSpline::QRVSpline(QRVMemoryContext* memory) : points_(memory), cumulative_(memory) {}

QRVStatus QRVSpline::Build(std::span<const Vec3f> positions, std::span<const Vec3f> ups) {
  points_.Free();
  cumulative_.Free();
  closed_ = false;
  length_ = -1.0f;
  if (!points_.Resize(positions.size()) || !cumulative_.Resize(positions.size())) {
    points_.Free();
    cumulative_.Free();
    return kStatusNoMemory;
  }
  for (std::size_t i = 0; i < positions.size(); ++i) {
    QRVSplinePoint point;
    point.position = positions[i];
    if (!ups.empty()) point.up = ups[std::min(i, ups.size() - 1)];
    points_[i] = point;
  }
  anyDirty_ = !positions.empty();
  return kStatusOk;
}

void QRVSpline::SetClosed(bool closed) {
  closed_ = closed;
  length_ = -1.0f;
  if (points_.Empty()) return;
  anyDirty_ = true;
  for (QRVSplinePoint* point : {&points_[0], &points_[points_.Size() - 1]}) {
    point->tangentDirty = point->upDirty = point->chordDirty = 1;
  }
}

void QRVSpline::Update() {
  const std::size_t n = points_.Size();
  if (n == 0 || !anyDirty_) return;
  anyDirty_ = false;
  QRVSplinePoint* p = points_.Data();
  bool chordsChanged = length_ < 0.0f;

  // Tangents: the sum of the incoming and outgoing chord vectors; an end of an open spline
  // has only one of them. Points whose sum vanishes stay dirty for the second pass.
  bool anyDirtyTangent = false;
  for (std::size_t i = 0; i < n; ++i) {
    if (!p[i].tangentDirty) continue;
    Vec3f sum{};
    if (i > 0 || closed_) sum = Subtract(p[i].position, p[i > 0 ? i - 1 : n - 1].position);
    if (i + 1 < n || closed_)
      sum = Add(sum, Subtract(p[i + 1 < n ? i + 1 : 0].position, p[i].position));
    if (Normalise(sum, kTiny, p[i].tangent)) {
      p[i].tangentDirty = 0;
    } else {
      anyDirtyTangent = true;
    }
  }
  // A point without a direction of its own (a run of coincident points) borrows the sum of the
  // tangents of the nearest points before and after it that have one. Points fixed here are
  // not borrowed from, so the result does not depend on the order of the fix-ups.
  if (anyDirtyTangent) {
    std::size_t before = n;  // nearest clean point before i, n for none
    std::size_t after = 0;   // cursor for the nearest clean point after i
    for (std::size_t i = 0; i < n; ++i) {
      if (!p[i].tangentDirty) {
        before = i;
        continue;
      }
      if (after <= i) after = i + 1;
      while (after < n && p[after].tangentDirty) ++after;
      Vec3f sum{};
      if (before < n) sum = p[before].tangent;
      if (after < n) sum = Add(sum, p[after].tangent);
      if (!Normalise(sum, kTiny, p[i].tangent)) p[i].tangent = Vec3f{1.0f, 0.0f, 0.0f};
      p[i].tangentDirty = 2;  // fixed, but not a source for the points after it
    }
    for (std::size_t i = 0; i < n; ++i) p[i].tangentDirty = 0;
  }

  for (std::size_t i = 0; i < n; ++i) {
    if (p[i].upDirty) {
      if (!Normalise(p[i].up, kTiny, p[i].up)) p[i].up = Vec3f{0.0f, 1.0f, 0.0f};
      p[i].upDirty = 0;
    }
    if (p[i].chordDirty) {
      if (i + 1 < n)
        p[i].chord = quillix::Length(Subtract(p[i + 1].position, p[i].position));
      else
        p[i].chord = closed_ ? quillix::Length(Subtract(p[0].position, p[i].position)) : 0.0f;
      p[i].chordDirty = 0;
      chordsChanged = true;
    }
  }
  if (chordsChanged) {
    float sum = 0.0f;
    for (std::size_t i = 0; i < n; ++i) {
      sum += p[i].chord;
      cumulative_[i] = sum;
    }
    length_ = sum;
  }
}

float QRVSpline::Length() {
  if (points_.Empty()) return 0.0f;
  Update();
  return length_;
}

const QRVSplinePoint& QRVSpline::Point(std::size_t i) {
  assert(i < points_.Size());
  Update();
  return points_[i];
}

float QRVSpline::ArcLengthAt(std::size_t i) {
  assert(i < points_.Size());
  Update();
  return i == 0 ? 0.0f : cumulative_[i - 1];
}

SplineSample QRVSpline::Evaluate(float s, const SplineInterpolation& interpolation) {
  const std::size_t n = points_.Size();
  if (n == 0) return {};
  Update();
  const QRVSplinePoint* p = points_.Data();
  if (!(s > 0.0f)) return SampleOf(p[0]);
  if (s >= length_) return SampleOf(closed_ ? p[0] : p[n - 1]);

  // The first segment whose cumulative length reaches s; the running sums never decrease, so
  // a binary search finds the same segment as a scan from the start.
  const float* cumulative = cumulative_.Data();
  std::size_t i = std::size_t(std::lower_bound(cumulative, cumulative + (n - 1), s) - cumulative);
  if (i == n - 1 && !closed_) return SampleOf(p[n - 1]);  // only with NaN chords
  if (!(p[i].chord > 0.0f)) return SampleOf(p[i]);
  const float t = 1.0f - (cumulative[i] - s) / p[i].chord;

  const std::size_t prev = (i + n - 1) % n;
  const std::size_t to = (i + 1) % n;
  const std::size_t next2 = (i + 2) % n;
  SplineSample sample;
  sample.position = Interpolate(interpolation.positions, p[prev].position, p[i].position,
                                p[to].position, p[next2].position, t);

  const Vec3f tangent = IsStep(interpolation.tangents)
                            ? Subtract(p[to].position, p[i].position)
                            : Interpolate(interpolation.tangents, p[prev].tangent, p[i].tangent,
                                          p[to].tangent, p[next2].tangent, t);
  if (!Normalise(tangent, kTiny, sample.tangent)) sample.tangent = p[i].tangent;

  if (IsStep(interpolation.upVectors)) {
    sample.up = p[i].up;
  } else {
    const Vec3f up =
        Interpolate(interpolation.upVectors, p[prev].up, p[i].up, p[to].up, p[next2].up, t);
    if (!Normalise(up, kTiny, sample.up)) sample.up = p[i].up;
  }
  return sample;
}

}  // namespace quillix
