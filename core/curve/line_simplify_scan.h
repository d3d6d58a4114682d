// The farthest-point scan of the line simplifier: the one loop the simplifier spends its time
// in, as a plain loop and as an AVX2 loop that yields the same result bit for bit.
#pragma once

#include <cstddef>
#include <span>

#include "core/curve/line_simplify.h"
#include "core/math/math_types.h"

namespace quillix {

// The farthest interior point of a part: its squared distance from the part's chord segment
// and its index.
struct FarthestPoint {
  float squaredDistance;
  std::size_t index;
};

// Scans the interior points first+1 .. last-1 of `points` (first < last < #P) for the one
// farthest from the segment points[first]–points[last]. Distances are squared single-precision
// distances to the segment (to the nearer end beyond either end); a chord shorter than 1e-15
// measures to points[first]. NaN distances never win. Among equal distances the lowest index
// wins; with no interior point, or only NaN distances, the result is {-1, first}.
// ScanKernel::kScalar forces the plain loop; kFastest takes the AVX2 loop when the processor
// has it, with the same result.
FarthestPoint FindFarthestPoint(std::span<const Vec3f> points, std::size_t first, std::size_t last,
                                ScanKernel kernel);

// True when ScanKernel::kFastest runs the AVX2 loop on this processor.
bool HasVectorScan();

}  // namespace quillix
