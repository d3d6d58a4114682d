#include "core/curve/sphere_distribution.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <new>

#include "core/curve/line_simplify.h"
#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

constexpr float kTiny = 1e-15f;
constexpr float kPi = 3.14159265358979f;

float ClampedAcos(float cosine) { return std::acos(std::clamp(cosine, -1.0f, 1.0f)); }

Vec3f Row(const Mat3f& m, int i) { return {m.m[i][0], m.m[i][1], m.m[i][2]}; }

Mat3f Multiply(const Mat3f& a, const Mat3f& b) {
  Mat3f product;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j)
      product.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j];
  }
  return product;
}

// Rotation by `angle` radians about the unit `axis`, in the axis-angle (Rodrigues) form stored
// row by row.
Mat3f AxisAngleRotation(const Vec3f& axis, float angle) {
  const float c = std::cos(angle);
  const float s = std::sin(angle);
  const float t = 1.0f - c;
  const float x = axis.x, y = axis.y, z = axis.z;
  return {{{x * x * t + c, x * y * t - s * z, x * z * t + s * y},
           {x * y * t + s * z, y * y * t + c, y * z * t - s * x},
           {x * z * t - s * y, y * z * t + s * x, z * z * t + c}}};
}

// The frame whose row `secondRow` is along the part of `second` perpendicular to `main`. The
// first rotation turns a coordinate axis onto `main`: about `turnAxis` (main × that axis)
// through the angle whose cosine is along / |main|, where `along` is main's component on the
// axis; or, when `turnAxis` vanishes, about `halfTurnAxis` through 0 or π. The twist about
// `main` then keeps that row where it is.
Mat3f TwistedFrame(const Vec3f& main, const Vec3f& second, int secondRow, const Vec3f& turnAxis,
                   const Vec3f& halfTurnAxis, float along) {
  const float mainLength = Length(main);
  const float turnLength = Length(turnAxis);
  const Mat3f first =
      turnLength < kTiny
          ? AxisAngleRotation(halfTurnAxis, along > 0.0f ? 0.0f : kPi)
          : AxisAngleRotation(Scale(turnAxis, 1.0f / turnLength), ClampedAcos(along / mainLength));
  if (!(mainLength >= kTiny)) return first;
  const Vec3f direction = Scale(main, 1.0f / mainLength);
  const Vec3f perpendicular = Subtract(second, Scale(direction, Dot(second, direction)));
  const Vec3f current = Row(first, secondRow);
  const float lengths = Length(perpendicular) * Length(current);
  if (!(lengths >= kTiny)) return first;
  float twist = ClampedAcos(Dot(current, perpendicular) / lengths);
  if (Dot(Cross(current, perpendicular), direction) < 0.0f) twist = -twist;
  // Rows are turned as row vectors (v * M), which turns them the opposite way to the column
  // form of the axis-angle matrix; hence the negated angle.
  return Multiply(first, AxisAngleRotation(direction, -twist));
}

SphereRecord MakeRecord(const Mat3f& frame, float radius, float scale, std::size_t radiusIndex,
                        const Vec3f& centre, float cornerFlag) {
  SphereRecord record;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) record.m[i][j] = frame.m[i][j];
  }
  record.m[0][3] = radius;
  record.m[1][3] = scale;
  record.m[2][3] = float(radiusIndex);
  record.m[3][0] = centre.x;
  record.m[3][1] = centre.y;
  record.m[3][2] = centre.z;
  record.m[3][3] = cornerFlag;
  return record;
}

// Packs the arc-length range [from, to] with spheres of the radius sequence of `seed`, at most
// `maxCount`. The sequence is drawn twice from the same seed (count, then place) instead of
// being stored.
QRVStatus FillStretch(QRVSpline& spline, const SphereDistributionParams& params, float from,
                      float to, std::int32_t seed, std::size_t maxCount,
                      CountedArray<SphereRecord>& out) {
  const float available = to - from;
  if (!(available > 0.0f)) return kStatusOk;
  const std::size_t radiusCount = params.radii.size();
  RadiusSequence counting(params.distribution, seed, radiusCount);
  float diameters = 0.0f;
  std::size_t count = 0;
  while (count < maxCount) {
    const float diameter = 2.0f * params.radii[counting.Next()];
    if (diameters + diameter > available) break;
    diameters += diameter;
    ++count;
  }
  if (count == 0) return kStatusOk;
  if (!out.Grow(count)) return kStatusNoMemory;
  const float scale = available / diameters;
  RadiusSequence placing(params.distribution, seed, radiusCount);
  float covered = 0.0f;
  for (std::size_t j = 0; j < count; ++j) {
    const std::size_t index = placing.Next();
    const float radius = params.radii[index];
    const SplineSample sample =
        spline.Evaluate(from + covered + radius * scale, params.interpolation);
    out.PushBack(MakeRecord(OrientationFrame(params.alignment, sample.tangent, sample.up), radius,
                            scale, index, sample.position, 0.0f));
    covered += 2.0f * radius * scale;
  }
  return kStatusOk;
}

QRVStatus FillCorners(QRVSpline& spline, const SphereDistributionParams& params,
                      CountedArray<SphereRecord>& out, std::size_t maxCount) {
  const std::size_t n = spline.Count();
  CountedArray<Vec3f> positions(out.Context());
  CountedArray<std::uint32_t> corners(out.Context());
  if (!positions.Resize(n) || !corners.Reserve(n)) return kStatusNoMemory;
  for (std::size_t i = 0; i < n; ++i) positions[i] = spline.Point(i).position;
  MarkPointsForRemoval(params.cornerThreshold, positions.Span());
  for (std::size_t i = 0; i < n; ++i) {
    if (!IsRemovalMark(positions[i].x)) corners.PushBack(std::uint32_t(i));
  }
  positions.Free();

  const std::size_t cornerCount = corners.Size();
  const bool open = !spline.Closed();
  const float length = spline.Length();
  // Corners sit on their control points, except the two ends of an open spline, which move in
  // by their own radius so that the sphere stays within the spline.
  auto centreArc = [&](std::size_t c, float radius) {
    if (open && c == 0) return radius;
    if (open && c + 1 == cornerCount) return length - radius;
    return spline.ArcLengthAt(corners[c]);
  };
  auto cornerSample = [&](std::size_t c, float arc) {
    if (open && (c == 0 || c + 1 == cornerCount)) return spline.Evaluate(arc, params.interpolation);
    const QRVSplinePoint& point = spline.Point(corners[c]);
    return SplineSample{point.position, point.tangent, point.up};
  };

  const std::size_t start = out.Size();
  RadiusSequence sequence(params.distribution, params.seed, params.radii.size());
  std::size_t index = sequence.Next();
  float radius = params.cornerScale * params.radii[index];
  float arc = centreArc(0, radius);
  const float firstRadius = radius;
  for (std::size_t c = 0; c < cornerCount; ++c) {
    const SplineSample sample = cornerSample(c, arc);
    if (!out.PushBack(MakeRecord(OrientationFrame(params.alignment, sample.tangent, sample.up),
                                 radius, 1.0f, index, sample.position, 1.0f))) {
      return kStatusNoMemory;
    }
    if (out.Size() - start >= maxCount) break;
    const bool hasNext = c + 1 < cornerCount;
    // A closed spline also has the stretch from its last corner back to the first.
    if (!hasNext && (open || cornerCount < 2)) break;
    const std::int32_t stretchSeed = sequence.NextSeed();
    std::size_t nextIndex = index;
    float nextRadius = firstRadius;
    float nextArc = length;
    if (hasNext) {
      nextIndex = sequence.Next();
      nextRadius = params.cornerScale * params.radii[nextIndex];
      nextArc = centreArc(c + 1, nextRadius);
    }
    const QRVStatus status = FillStretch(spline, params, arc + radius, nextArc - nextRadius,
                                         stretchSeed, maxCount - (out.Size() - start), out);
    if (status != kStatusOk) return status;
    if (out.Size() - start >= maxCount) break;
    index = nextIndex;
    radius = nextRadius;
    arc = nextArc;
  }
  return kStatusOk;
}

}  // namespace

Mat3f OrientationFrame(std::int32_t alignment, const Vec3f& tangent, const Vec3f& up) {
  // Turn X onto the tangent about (0, T.z, -T.y), or Y onto the up vector about (-U.z, 0, U.x).
  if (alignment == 1) {
    return TwistedFrame(tangent, up, 1, {0.0f, tangent.z, -tangent.y}, {0.0f, 1.0f, 0.0f},
                        tangent.x);
  }
  if (alignment == 2) {
    return TwistedFrame(up, tangent, 0, {-up.z, 0.0f, up.x}, {0.0f, 0.0f, 1.0f}, up.y);
  }
  return Mat3f::Identity();
}

RadiusSequence::RadiusSequence(std::int32_t distribution, std::int32_t seed, std::size_t count)
    : distribution_(distribution), count_(count), engine_(static_cast<std::uint32_t>(seed)) {
  assert(seed >= 0 && count > 0);
  cyclic_ = std::size_t(seed) % count;
}

std::size_t RadiusSequence::Next() {
  if (distribution_ == kDistributionCyclic) {
    const std::size_t index = cyclic_;
    cyclic_ = (cyclic_ + 1) % count_;
    return index;
  }
  if (distribution_ == kDistributionRandom) return std::size_t(engine_() % count_);
  return 0;
}

std::int32_t RadiusSequence::NextSeed() {
  if (distribution_ == kDistributionCyclic) return std::int32_t(Next());
  if (distribution_ == kDistributionRandom) return std::int32_t(engine_() & 0x7FFFFFFFu);
  return 0;
}

QRVStatus DistributeSpheres(QRVSpline& spline, const SphereDistributionParams& params,
                            CountedArray<SphereRecord>& out) {
  if (spline.Count() == 0) return kStatusInvalidState;
  if (params.radii.empty() || !(params.cornerScale >= 0.0f) || params.maxSpheres < 0 ||
      params.seed < 0) {
    return kStatusIllegalParameter;
  }
  for (float radius : params.radii) {
    if (!(radius > 0.0f)) return kStatusIllegalParameter;
  }
  const bool cornerMode = params.cornerThreshold > 0.0f;
  if (cornerMode && (params.startFraction != 0.0f || params.endFraction != 1.0f)) {
    return kStatusIllegalCombination;
  }
  if (params.maxSpheres == 0) return kStatusOk;

  const std::size_t entrySize = out.Size();
  QRVStatus status;
  if (cornerMode) {
    status = FillCorners(spline, params, out, std::size_t(params.maxSpheres));
  } else {
    const float length = spline.Length();
    const float start = params.startFraction < 0.0f ? 0.0f : params.startFraction;
    const float end = std::min(params.endFraction, 1.0f);
    status = FillStretch(spline, params, start * length, end * length, params.seed,
                         std::size_t(params.maxSpheres), out);
  }
  if (status != kStatusOk) out.Resize(entrySize);
  return status;
}

std::vector<ControlInterval> CutIntervals(std::size_t pointCount, std::size_t upCount,
                                          std::span<const std::int32_t> intervalIndices) {
  std::vector<ControlInterval> intervals;
  if (intervalIndices.size() == 1 && intervalIndices[0] < 0) {
    intervals.push_back({0, pointCount, 0, upCount});
    return intervals;
  }
  // Start and length of interval j within `total` items; 64-bit so that index + 1 never wraps.
  auto cut = [&](std::size_t j, std::size_t total, std::size_t& first, std::size_t& count) {
    const std::int64_t size = std::int64_t(total);
    std::int64_t start = j == 0 ? 0 : std::int64_t(intervalIndices[j - 1]) + 1;
    start = std::clamp<std::int64_t>(start, 0, size > 0 ? size - 1 : 0);
    const std::int64_t length =
        std::min(size - start, std::int64_t(intervalIndices[j]) - start + 1);
    first = std::size_t(start);
    count = length > 0 ? std::size_t(length) : 0;
  };
  intervals.reserve(intervalIndices.size());
  for (std::size_t j = 0; j < intervalIndices.size(); ++j) {
    ControlInterval interval;
    cut(j, pointCount, interval.first, interval.count);
    cut(j, upCount, interval.firstUp, interval.upCount);
    intervals.push_back(interval);
  }
  return intervals;
}

SplineInterpolation InterpolationFromFlags(std::int32_t flags) {
  constexpr std::int32_t kStep = 0;
  return {kInterpolationLinear, (flags & 1) != 0 ? kInterpolationLinear : kStep,
          (flags & 2) != 0 ? kInterpolationLinear : kStep};
}

QRVStatus DistributeSpheresOverIntervals(std::span<const Vec3f> positions,
                                         std::span<const Vec3f> ups,
                                         std::span<const std::int32_t> intervalIndices, bool closed,
                                         const SphereDistributionParams& params,
                                         std::vector<SphereRecord>& out) {
  CountedArray<SphereRecord> records;
  for (const ControlInterval& interval :
       CutIntervals(positions.size(), ups.size(), intervalIndices)) {
    if (interval.count < 2) continue;
    QRVSpline spline;
    QRVStatus status = spline.Build(positions.subspan(interval.first, interval.count),
                                    ups.subspan(interval.firstUp, interval.upCount));
    if (status == kStatusOk) {
      spline.SetClosed(closed);
      records.Clear();
      status = DistributeSpheres(spline, params, records);
    }
    if (status == kStatusOk) {
      try {
        out.insert(out.end(), records.Span().begin(), records.Span().end());
      } catch (const std::bad_alloc&) {
        status = kStatusNoMemory;
      }
    }
    if (status == kStatusNoMemory) {
      out.clear();
      return status;
    }
  }
  return kStatusOk;
}

}  // namespace quillix
