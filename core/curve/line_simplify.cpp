#include "core/curve/line_simplify.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>

#include "core/curve/line_simplify_scan.h"
#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

struct Part {
  std::size_t first;  // index of the part's first point
  std::size_t last;   // index of the part's last point (inclusive)
};

void MarkForRemoval(Vec3f& point) { point.x = std::bit_cast<float>(kRemovalMarkBits); }

// Writes three points built from the first `count` (0, 1 or 2) of `points` into out[0..2];
// `points` and `out` may be the same buffer.
void FillToThreePoints(const Vec3f* points, std::size_t count, Vec3f* out) {
  assert(count <= 2);
  if (count == 0) {
    out[0] = out[1] = out[2] = Vec3f{};
  } else if (count == 1) {
    const Vec3f p = points[0];
    out[0] = out[1] = out[2] = p;
  } else {
    const Vec3f p0 = points[0];
    const Vec3f p1 = points[1];
    out[0] = p0;
    out[1] = Scale(Add(p0, p1), 0.5f);
    out[2] = p1;
  }
}

}  // namespace

bool IsRemovalMark(float x) { return std::bit_cast<std::uint32_t>(x) == kRemovalMarkBits; }

void MarkPointsForRemoval(float epsilon, std::span<Vec3f> points, ScanKernel kernel) {
  if (points.size() < 3) return;
  const float tolerance = epsilon * epsilon;
  // The parts left and right of a split share only the split point, which is never marked, so
  // the order in which parts are processed cannot change the marks. Continuing with the smaller
  // part and deferring the larger keeps at most log2(count) parts pending.
  std::array<Part, 64> pending;
  std::size_t pendingCount = 0;
  Part part{0, points.size() - 1};
  for (;;) {
    if (part.last - part.first >= 2) {
      const FarthestPoint farthest = FindFarthestPoint(points, part.first, part.last, kernel);
      if (farthest.squaredDistance < tolerance) {
        for (std::size_t i = part.first + 1; i < part.last; ++i) MarkForRemoval(points[i]);
      } else {
        const Part left{part.first, farthest.index};
        const Part right{farthest.index, part.last};
        const bool leftSmaller = left.last - left.first <= right.last - right.first;
        const Part& smaller = leftSmaller ? left : right;
        const Part& larger = leftSmaller ? right : left;
        if (larger.last - larger.first >= 2) {
          assert(pendingCount < pending.size());
          pending[pendingCount++] = larger;
        }
        part = smaller;
        continue;
      }
    }
    if (pendingCount == 0) return;
    part = pending[--pendingCount];
  }
}

std::size_t CompactMarkedPoints(std::span<Vec3f> points) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (IsRemovalMark(points[i].x)) continue;
    if (kept != i) points[kept] = points[i];
    ++kept;
  }
  return kept;
}

std::size_t SimplifyLine(float epsilon, std::span<Vec3f> points, ScanKernel kernel) {
  if (points.size() < 3 || !(epsilon > 0.0f)) return points.size();
  MarkPointsForRemoval(epsilon, points, kernel);
  return CompactMarkedPoints(points);
}

std::span<const Vec3f> SimplifyPolyline(std::span<const Vec3f> input, float epsilon, bool closed,
                                        bool minThree, std::span<Vec3f> work) {
  const std::size_t n = input.size();
  assert(work.size() >= SimplifyWorkSize(n));
  if (n < 3) {
    if (!minThree) return input;
    FillToThreePoints(input.data(), n, work.data());
    return work.first(3);
  }
  if (!(epsilon > 0.0f)) return input;
  if (n == 3 && minThree) return input;

  std::copy(input.begin(), input.end(), work.begin());
  std::size_t kept = SimplifyLine(epsilon, work.first(n));
  if (closed && kept >= 3) {
    const Vec3f first = work[0];
    const Vec3f last = work[kept - 1];
    if (Length(Subtract(last, first)) * 0.5f < epsilon) {
      work[0] = Lerp(first, last, 0.5f);
      --kept;
    }
  }
  if (kept < 3 && minThree) {
    FillToThreePoints(work.data(), kept, work.data());
    return work.first(3);
  }
  return work.first(kept);
}

std::vector<Vec3f> SimplifyPolyline(std::span<const Vec3f> input, float epsilon, bool closed,
                                    bool minThree) {
  std::vector<Vec3f> work(SimplifyWorkSize(input.size()));
  const std::span<const Vec3f> result = SimplifyPolyline(input, epsilon, closed, minThree, work);
  return {result.begin(), result.end()};
}

}  // namespace quillix
