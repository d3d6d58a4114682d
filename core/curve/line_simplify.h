// Farthest-point polyline simplification with an in-place removal mark.
#pragma once

#include <cstdint>
#include <span>

#include "core/math/math_types.h"

namespace quillix {

// Bit pattern written over a point's x coordinate to mark it for removal (a quiet NaN that
// arithmetic never produces by itself). Compaction drops exactly the points whose x carries it,
// including any input point that already did.
inline constexpr std::uint32_t kRemovalMarkBits = 0x7FBFFFFFu;

// True when `x` carries the removal mark bit for bit.
bool IsRemovalMark(float x);

// Marking step over points[0 .. count-1]: splits at the interior point farthest from the
// chord first–last (lowest index among equal distances) while that distance is at least
// `epsilon`, and marks every interior point of a part whose farthest point is closer than
// `epsilon`. The first and last points are never marked. Distances are squared single-precision
// distances to the chord segment; a chord shorter than 1e-15 measures to the first point.
// Works with an explicit stack of at most ~32 pending parts, so the stack never grows with the
// input. Does nothing when `count` < 3 or `points` is null.
void SimplifyLineRecursive(Vec3f* points, std::int32_t count, float epsilon);

// Marks with SimplifyLineRecursive and compacts in place: the kept points move to the front in
// their input order and `count` becomes their number. Does nothing when `points` is null,
// `count` < 3 or `epsilon` is not greater than 0 (NaN included).
void SimplifyLine(Vec3f* points, std::int32_t& count, float epsilon);

// Drops every point whose x carries the removal mark, keeping the others in order at the
// front of `points`; returns how many were kept.
std::size_t CompactMarkedPoints(std::span<Vec3f> points);

// Writes three points built from the first `count` (0, 1 or 2) points of `points` into
// out[0..2]: (0,0,0) three times for none, three copies of one point, or (p0, midpoint, p1)
// for two. `points` and `out` may be the same buffer.
void FillToThreePoints(const Vec3f* points, std::size_t count, Vec3f* out);

// Work buffer size (in points) that SimplifyPolyline needs for an input of `inputCount`.
inline std::size_t SimplifyWorkSize(std::size_t inputCount) {
  return inputCount < 3 ? 3 : inputCount;
}

// One element of the simplification node: `input` with tolerance `epsilon`, the closed-line
// end merge and the at-least-three-points guarantee. Returns the result as a view either of
// `input` itself (when it comes out unchanged) or of the front of `work`, which the caller
// allocates with at least SimplifyWorkSize(input.size()) points and may reuse for every element.
//  - epsilon not greater than 0 (NaN included), or fewer than 3 points: the input unchanged,
//    or with `minThree` filled up to three points (FillToThreePoints).
//  - exactly 3 points with `minThree`: the input unchanged.
//  - otherwise SimplifyLine; then with `closed` and at least 3 points left, the first point
//    becomes the midpoint of first and last and the last is dropped when half their distance
//    is below epsilon; a result under 3 points is filled up to three when `minThree` is set.
std::span<const Vec3f> SimplifyPolyline(std::span<const Vec3f> input, float epsilon, bool closed,
                                        bool minThree, std::span<Vec3f> work);

}  // namespace quillix
