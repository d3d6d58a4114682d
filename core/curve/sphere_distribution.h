// Spheres packed along a spline: radius sequences, orientation frames, stretch filling, corner
// spheres, and the cutting of a control-point list into intervals.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "core/curve/counted_array.h"
#include "core/curve/spline.h"
#include "core/math/math_types.h"
#include "kernel/status.h"

namespace quillix {

// Orientation of a sphere from the spline's tangent and up vector, as a rotation whose rows are
// the sphere's axes (row-vector convention):
//  - alignment 1: row 0 along the tangent, row 1 along the part of `up` perpendicular to it;
//  - alignment 2: row 1 along the up vector, row 0 along the part of `tangent` perpendicular to it;
//  - any other value: identity.
// Each is built as a first rotation that turns the X (or Y) axis onto the main direction,
// followed by a twist about that direction. When the second vector is parallel to the first
// (no perpendicular part) the twist is 0. The rotations about an axis are the axis-angle
// (Rodrigues) matrices stored row by row: row 0 = (x²(1-c)+c, xy(1-c)-sz, xz(1-c)+sy), ...
Mat3f OrientationFrame(std::int32_t alignment, const Vec3f& tangent, const Vec3f& up);

// How radii are picked from a list of `count` radii.
inline constexpr std::int32_t kDistributionCyclic = 0;
inline constexpr std::int32_t kDistributionRandom = 1;

// The sequence of radius indices for one seed: cyclic (seed mod count, then +1 mod count),
// random (32-bit Mersenne Twister seeded with `seed`, each output mod count), or index 0 for
// any other distribution. The seed must be non-negative and `count` positive.
class RadiusSequence {
 public:
  RadiusSequence(std::int32_t distribution, std::int32_t seed, std::size_t count);
  // The next index, below `count`.
  std::size_t Next();
  // The seed handed to the next stretch in corner mode: the next cyclic index (as a plain
  // index), a fresh draw made non-negative, or 0; it takes its place in the sequence.
  std::int32_t NextSeed();

 private:
  std::int32_t distribution_;
  std::size_t count_;
  std::size_t cyclic_ = 0;
  std::mt19937 engine_;
};

// One sphere as the nodes output it: 16 floats read row by row as a 4×4 matrix. Elements
// 0-2, 4-6 and 8-10 hold the orientation rows; 3 the radius; 7 the stretch's spacing scale
// (1 for a corner sphere); 11 the radius index as a float; 12-14 the centre; 15 is 1 for a
// corner sphere and 0 otherwise.
using SphereRecord = Mat4f;

// The settings of one distribution; the radii are the caller's and must outlive the call.
struct SphereDistributionParams {
  std::span<const float> radii;  // every radius > 0, at least one
  std::int32_t alignment = 1;
  SplineInterpolation interpolation;
  float cornerScale = 1.0f;  // >= 0
  std::int32_t distribution = kDistributionCyclic;
  std::int32_t seed = 0;               // >= 0
  float cornerThreshold = 1.0f;        // > 0: corner mode
  float startFraction = 0.0f;          // of the spline's length; corner mode needs 0
  float endFraction = 1.0f;            // corner mode needs 1
  std::int32_t maxSpheres = 16777216;  // >= 0
};

// Fills `spline` with spheres and appends their records to `out`, whose memory context counts
// the records and the corner search (a null context uses the C heap). Returns
//  0 success (possibly no spheres: too short a stretch, maxSpheres 0),
//  5 the spline has no control points,
//  6 no radii, a radius not > 0 (NaN included), cornerScale < 0 or NaN, maxSpheres < 0 or
//    seed < 0,
//  7 corner mode with a start fraction other than 0 or an end fraction other than 1,
//  9 the memory context refused an allocation.
// On any failure `out` is left as it was on entry.
//
// Without corners (cornerThreshold not > 0) the stretch from startFraction (at least 0) to
// endFraction (at most 1) of the length is packed with as many radius-list spheres as fit end
// to end, the gaps spread evenly (scale = stretch / sum of diameters). In corner mode the
// points that survive the line simplifier with cornerThreshold as tolerance each get a sphere
// of cornerScale times their radius, and the stretches between them are packed the same way.
// On an open spline the first corner sphere is centred one radius in from the start and the
// last one radius in from the end, so that neither reaches past the spline's ends.
QRVStatus DistributeSpheres(QRVSpline& spline, const SphereDistributionParams& params,
                            CountedArray<SphereRecord>& out);

// Part of a control-point list that forms one spline.
struct ControlInterval {
  std::size_t first = 0;    // first control point
  std::size_t count = 0;    // control points
  std::size_t firstUp = 0;  // first up vector
  std::size_t upCount = 0;  // up vectors (0: none)
};

// Cuts `pointCount` control points (and `upCount` up vectors the same way) into intervals.
// A single negative index means one interval over everything. Otherwise index j is the last
// point of interval j (inclusive): interval j starts after index j-1 (at 0 for the first),
// clamped to the points, and never runs past them; an interval may come out empty. Points
// after the last index belong to no interval.
std::vector<ControlInterval> CutIntervals(std::size_t pointCount, std::size_t upCount,
                                          std::span<const std::int32_t> intervalIndices);

// Interpolation of the first node variant from its bit flags: positions always linear,
// tangents linear when bit 0 is set, up vectors linear when bit 1 is set (else no
// interpolation).
SplineInterpolation InterpolationFromFlags(std::int32_t flags);

// One element of the nodes: cuts the #P control points `positions` and the #U up vectors
// `ups` into intervals (CutIntervals with `intervalIndices`), builds a spline over each
// interval of two points or more (closed when `closed`), distributes spheres along it with
// `params` and appends the records interval by interval to `out` (resized here; it may hold
// records of earlier calls, which are kept). An interval whose distribution fails on its
// arguments (5, 6, 7) adds nothing, so the result may be empty. Returns 9, with `out` emptied,
// when memory is refused, 0 otherwise.
QRVStatus DistributeSpheresOverIntervals(std::span<const Vec3f> positions,
                                         std::span<const Vec3f> ups,
                                         std::span<const std::int32_t> intervalIndices, bool closed,
                                         const SphereDistributionParams& params,
                                         std::vector<SphereRecord>& out);

}  // namespace quillix
