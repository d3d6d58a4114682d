// Farthest-point polyline simplification with an in-place removal mark.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/math/math_types.h"

namespace quillix {

// Bit pattern written over a point's x coordinate to mark it for removal (a quiet NaN that
// arithmetic never produces by itself). Compaction drops exactly the points whose x carries it,
// including any input point that already did.
inline constexpr std::uint32_t kRemovalMarkBits = 0x7FBFFFFFu;

// True when `x` carries the removal mark bit for bit.
bool IsRemovalMark(float x);

// Which loop measures the distances to a chord. Both give the same bits; kScalar exists so
// that tests and benchmarks can hold the vector loop against the plain one.
enum class ScanKernel {
  kFastest,  // AVX2 where the processor has it, the plain loop otherwise
  kScalar,   // always the plain loop
};

// The marking step over the #P points of `points`, in place: splits at the interior point
// farthest from the chord first–last (lowest index among equal distances) while that distance
// is at least `epsilon`, and marks every interior point of a part whose farthest point is
// closer than `epsilon`. Distances are squared single-precision distances to the chord segment;
// a chord shorter than 1e-15 measures to the first point. The first and last points are never
// marked, and nothing is marked for fewer than 3 points. Nothing is moved: the caller compacts
// (CompactMarkedPoints) or reads the marks. Works with a fixed stack of pending parts, so the
// call stack never grows with the input.
void MarkPointsForRemoval(float epsilon, std::span<Vec3f> points,
                          ScanKernel kernel = ScanKernel::kFastest);

// Drops every point whose x carries the removal mark, moving the others to the front of
// `points` in their order; returns how many were kept. The points after those are left as
// they happen to be.
std::size_t CompactMarkedPoints(std::span<Vec3f> points);

// Simplifies the #P points of `points` in place (MarkPointsForRemoval, then
// CompactMarkedPoints) and returns how many were kept at the front. Leaves the points as they
// are and returns #P when #P < 3 or `epsilon` is not greater than 0 (NaN included).
std::size_t SimplifyLine(float epsilon, std::span<Vec3f> points,
                         ScanKernel kernel = ScanKernel::kFastest);

// Work buffer size (in points) that SimplifyPolyline needs for an input of `inputCount`.
inline std::size_t SimplifyWorkSize(std::size_t inputCount) {
  return inputCount < 3 ? 3 : inputCount;
}

// One polyline of the simplification node: `input` (#P points) with tolerance `epsilon`, the
// closed-line end merge and the at-least-three-points guarantee. The result is a view either
// of `input` itself (when it comes out unchanged) or of the front of `work`, which the caller
// allocates with at least SimplifyWorkSize(#P) points and may reuse for every polyline; it is
// valid until `work` is reused.
//  - epsilon not greater than 0 (NaN included), or #P < 3: the input unchanged, or with
//    `minThree` filled up to three points: three times (0, 0, 0) for none, three copies of a
//    single point, (p0, midpoint, p1) for two.
//  - #P = 3 with `minThree`: the input unchanged.
//  - otherwise SimplifyLine; then with `closed` and at least 3 points left, the first point
//    becomes the midpoint of first and last and the last is dropped when half their distance
//    is below epsilon; a result under 3 points is filled up to three as above when `minThree`
//    is set.
std::span<const Vec3f> SimplifyPolyline(std::span<const Vec3f> input, float epsilon, bool closed,
                                        bool minThree, std::span<Vec3f> work);

// The same for callers without a work buffer of their own: the result as a new array.
std::vector<Vec3f> SimplifyPolyline(std::span<const Vec3f> input, float epsilon, bool closed,
                                    bool minThree);

}  // namespace quillix
