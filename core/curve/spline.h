// Spline of control points with lazily derived tangents, up vectors and chord lengths, evaluated
// by arc length along its chords.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/curve/counted_array.h"
#include "core/math/math_types.h"
#include "kernel/memory_context.h"
#include "kernel/status.h"

namespace quillix {

// Interpolation of one channel (positions, tangents or up vectors) between control points.
// Any value other than these three means no interpolation (the segment's first point).
inline constexpr std::int32_t kInterpolationLinear = 20;
inline constexpr std::int32_t kInterpolationCubic = 40;  // four-point cubic polynomial
inline constexpr std::int32_t kInterpolationCatmullRom = 50;

struct SplineInterpolation {
  std::int32_t positions = kInterpolationLinear;
  std::int32_t tangents = kInterpolationLinear;
  std::int32_t upVectors = kInterpolationLinear;
};

// One control point as the spline stores it.
struct QRVSplinePoint {
  Vec3f position;
  float weight = 1.0f;  // carried for file compatibility of the kernel family; unused here
  float reserved = 0.0f;
  Vec3f tangent{1.0f, 0.0f, 0.0f};  // unit once derived
  Vec3f up{0.0f, 1.0f, 0.0f};       // unit once derived
  float chord = 0.0f;               // distance to the next point (closing chord for the last)
  std::uint8_t tangentDirty = 1;
  std::uint8_t upDirty = 1;
  std::uint8_t chordDirty = 1;
};

// Position, unit tangent and unit up vector at one place on the spline.
struct SplineSample {
  Vec3f position;
  Vec3f tangent{1.0f, 0.0f, 0.0f};
  Vec3f up{0.0f, 1.0f, 0.0f};
};

// Control points in single precision. Derived data (tangents, normalised up vectors, chord
// lengths, the total length) is computed on first need for the points marked dirty, and
// cached. Not safe for concurrent use: evaluation updates the cache.
class QRVSpline {
 public:
  // An empty spline (no control points) whose blocks are counted by `memory` (may be null).
  explicit QRVSpline(QRVMemoryContext* memory = nullptr);
  QRVSpline(const QRVSpline&) = delete;
  QRVSpline& operator=(const QRVSpline&) = delete;
  QRVSpline(QRVSpline&&) noexcept = default;
  QRVSpline& operator=(QRVSpline&&) noexcept = default;

  // Replaces the control points by one per entry of `positions` (#P), open. `ups` (#U up
  // vectors) gives the up vectors: with #U < #P its last vector repeats, and with #U = 0 every
  // up vector is (0, 1, 0). Returns 9 when the memory context refuses the #P point records
  // (the spline is then empty), 0 otherwise; #P = 0 gives an empty spline.
  QRVStatus Build(std::span<const Vec3f> positions, std::span<const Vec3f> ups);

  // Closing or opening marks the first and last points dirty and the length unknown.
  void SetClosed(bool closed);
  bool Closed() const { return closed_; }
  std::size_t Count() const { return points_.Size(); }

  // Sum of all chords (straight segments, the closing one included for a closed spline); 0 for
  // an empty spline.
  float Length();
  // Control point `i` (< Count()) with its derived data up to date.
  const QRVSplinePoint& Point(std::size_t i);
  // Arc length from the first point to control point `i` (< Count()) along the chords.
  float ArcLengthAt(std::size_t i);

  // The spline at arc length `s` along the chords. s <= 0 (or NaN) gives the first point;
  // s >= Length() the first point of a closed spline or the last of an open one. Within a
  // segment with chord 0 the segment's first point is returned. The cubic types take their
  // neighbours with wrap-around, also on an open spline, so that its first and last segments
  // bend towards the far end. An empty spline gives a default sample.
  SplineSample Evaluate(float s, const SplineInterpolation& interpolation);

 private:
  void Update();

  CountedArray<QRVSplinePoint> points_;
  CountedArray<float> cumulative_;  // cumulative_[i] = chord[0] + ... + chord[i]
  bool closed_ = false;
  float length_ = -1.0f;   // -1: unknown
  bool anyDirty_ = false;  // some point has a dirty flag set
};

}  // namespace quillix
