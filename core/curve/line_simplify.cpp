#include "core/curve/line_simplify.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstddef>

namespace quillix {
namespace {

struct Part {
  std::int32_t first;  // index of the part's first point
  std::int32_t last;   // index of the part's last point (inclusive)
};

float SquaredDistance(const Vec3f& a, const Vec3f& b) {
  const float dx = a.x - b.x;
  const float dy = a.y - b.y;
  const float dz = a.z - b.z;
  return dx * dx + dy * dy + dz * dz;
}

void MarkForRemoval(Vec3f& point) { point.x = std::bit_cast<float>(kRemovalMarkBits); }

// Squared distance of the farthest interior point of points[first..last] from the chord
// segment, and its index (lowest index among equal distances; first when there is none).
struct Farthest {
  float squaredDistance;
  std::int32_t index;
};

Farthest FindFarthest(const Vec3f* points, std::int32_t first, std::int32_t last) {
  const Vec3f a = points[first];
  const Vec3f b = points[last];
  const float dx = b.x - a.x;
  const float dy = b.y - a.y;
  const float dz = b.z - a.z;
  const float length = std::sqrt(dx * dx + dy * dy + dz * dz);
  float best = -1.0f;
  std::int32_t bestIndex = first;
  if (length < 1e-15f) {
    for (std::int32_t i = first + 1; i < last; ++i) {
      const float s = SquaredDistance(points[i], a);
      if (s > best) {
        best = s;
        bestIndex = i;
      }
    }
    return {best, bestIndex};
  }
  const float inverse = 1.0f / length;
  const float ux = dx * inverse;
  const float uy = dy * inverse;
  const float uz = dz * inverse;
  for (std::int32_t i = first + 1; i < last; ++i) {
    const Vec3f p = points[i];
    const float t = (p.x - a.x) * ux + (p.y - a.y) * uy + (p.z - a.z) * uz;
    float s;
    if (t < 0.0f) {
      s = SquaredDistance(p, a);
    } else if (t > length) {
      s = SquaredDistance(p, b);
    } else {
      const Vec3f foot{a.x + t * ux, a.y + t * uy, a.z + t * uz};
      s = SquaredDistance(foot, p);
    }
    if (s > best) {
      best = s;
      bestIndex = i;
    }
  }
  return {best, bestIndex};
}

}  // namespace

bool IsRemovalMark(float x) { return std::bit_cast<std::uint32_t>(x) == kRemovalMarkBits; }

void SimplifyLineRecursive(Vec3f* points, std::int32_t count, float epsilon) {
  if (points == nullptr || count < 3) return;
  const float tolerance = epsilon * epsilon;
  // The parts left and right of a split share only the split point, which is never marked, so
  // the order in which parts are processed cannot change the marks. Continuing with the smaller
  // part and deferring the larger keeps at most log2(count) parts pending.
  std::array<Part, 64> pending;
  std::size_t pendingCount = 0;
  Part part{0, count - 1};
  for (;;) {
    if (part.last - part.first >= 2) {
      const Farthest farthest = FindFarthest(points, part.first, part.last);
      if (farthest.squaredDistance < tolerance) {
        for (std::int32_t i = part.first + 1; i < part.last; ++i) MarkForRemoval(points[i]);
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

void SimplifyLine(Vec3f* points, std::int32_t& count, float epsilon) {
  if (points == nullptr || count < 3 || !(epsilon > 0.0f)) return;
  SimplifyLineRecursive(points, count, epsilon);
  count = static_cast<std::int32_t>(
      CompactMarkedPoints(std::span<Vec3f>(points, static_cast<std::size_t>(count))));
}

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
    out[1] = Vec3f{(p0.x + p1.x) * 0.5f, (p0.y + p1.y) * 0.5f, (p0.z + p1.z) * 0.5f};
    out[2] = p1;
  }
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
  std::int32_t kept = static_cast<std::int32_t>(n);
  SimplifyLine(work.data(), kept, epsilon);
  if (closed && kept >= 3) {
    const Vec3f first = work[0];
    const Vec3f last = work[static_cast<std::size_t>(kept) - 1];
    const float distance = std::sqrt(SquaredDistance(last, first));
    if (distance * 0.5f < epsilon) {
      work[0] = Vec3f{first.x + (last.x - first.x) * 0.5f, first.y + (last.y - first.y) * 0.5f,
                      first.z + (last.z - first.z) * 0.5f};
      --kept;
    }
  }
  if (kept < 3 && minThree) {
    FillToThreePoints(work.data(), static_cast<std::size_t>(kept), work.data());
    return work.first(3);
  }
  return work.first(static_cast<std::size_t>(kept));
}

}  // namespace quillix
