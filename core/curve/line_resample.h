// Arc-length resampling of polylines and in-place Laplacian smoothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/math/math_types.h"

namespace quillix {

// What ResampleLine will produce for one input, worked out before the output is sized.
struct ResamplePlan {
  std::size_t count = 0;     // output points
  float totalLength = 0.0f;  // sum of the segment lengths, in index order
  bool densityMode = false;  // numOutputPoints < 0
  float density = 0.0f;      // |numOutputPoints| in density mode: points per unit length
};

// Works out the resampling of `input` (#P points) before any output is sized. Fills
// `segmentLengths` with the #P-1 single-precision segment lengths (resized here, so a caller
// may reuse one table for many lines; empty for #P < 2) and returns the plan:
//  - fewer than 2 input points: count 0.
//  - numOutputPoints >= 0, -0 or NaN (count mode): count = numOutputPoints rounded half away
//    from zero, 0 when that is below 2 (or NaN). Coincident points give `count` copies.
//  - numOutputPoints < 0 (density mode, D = |numOutputPoints|): count = ceil(T * D), the
//    product in single precision; 0 when the total length T is not positive.
// A count that does not fit a signed 32-bit array size (host arrays count in 32 bits, and such
// a request can only come from a runaway value) yields count 0.
ResamplePlan PlanResample(std::span<const Vec3f> input, float numOutputPoints,
                          std::vector<float>& segmentLengths);

// Writes the plan's points into `out` (caller-allocated, exactly plan.count points; nothing is
// written for count 0) and smooths them in place:
//  - count mode: out[0] = first input point, out[count-1] = last input point exactly, out[i]
//    at arc length i * (T / (count-1)); when T is not positive every point is the first input
//    point and nothing is smoothed.
//  - density mode: out[i] at arc length i * (1/D), starting at the first input point; the last
//    input point is not appended, so the output stops at the last whole spacing.
// `segmentLengths` is the table PlanResample filled for the same input. Then SmoothLine with
// `strength` and `iterations`.
void ResampleLine(std::span<const Vec3f> input, const ResamplePlan& plan,
                  std::span<const float> segmentLengths, float strength, std::int32_t iterations,
                  std::span<Vec3f> out);

// The same for callers without an output array of their own: plans, allocates and resamples;
// the result has the plan's count of points (empty for every degenerate input above).
std::vector<Vec3f> ResampleLine(std::span<const Vec3f> input, float numOutputPoints, float strength,
                                std::int32_t iterations);

// Laplacian smoothing of the #P points of `points` in place, `iterations` passes: every
// interior point becomes (1 - s) * p[i] + (s * 0.5) * (p[i-1] + p[i+1]) from the previous
// pass's values (a Jacobi update done in one forward sweep). The strength s is clamped: above 1
// counts as 1, below 0 or NaN as 0. The end points never move; nothing happens for s = 0,
// iterations < 1 or fewer than 3 points.
void SmoothLine(float strength, std::int32_t iterations, std::span<Vec3f> points);

}  // namespace quillix
