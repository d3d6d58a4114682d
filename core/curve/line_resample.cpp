#include "core/curve/line_resample.h"

#include <cassert>
#include <cmath>
#include <limits>

#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

constexpr double kLargestCount = double(std::numeric_limits<std::int32_t>::max());

// Count mode: round half away from zero in double precision, then truncate.
std::size_t CountFromValue(float value) {
  const double rounded = value > 0.0f ? double(value) + 0.5 : double(value) - 0.5;
  if (!(rounded >= 2.0) || rounded > kLargestCount) return 0;
  return static_cast<std::size_t>(rounded);
}

// Walks the segment table forwards, one increasing target arc length after another.
class ArcLengthWalk {
 public:
  ArcLengthWalk(std::span<const Vec3f> points, std::span<const float> segmentLengths)
      : points_(points), lengths_(segmentLengths) {}

  Vec3f PointAt(float target) {
    // A target exactly on a vertex stays with the segment that ends there. The cursor stops at
    // the last segment, so rounding at the very end can never read past the table.
    while (target > reached_ && segment_ < lengths_.size()) {
      reached_ += lengths_[segment_];
      ++segment_;
    }
    if (segment_ == 0) return points_.front();
    if (target > reached_) return points_.back();
    const float length = lengths_[segment_ - 1];
    const float start = reached_ - length;
    return Lerp(points_[segment_ - 1], points_[segment_], (target - start) / length);
  }

 private:
  std::span<const Vec3f> points_;
  std::span<const float> lengths_;
  std::size_t segment_ = 0;  // segments passed so far
  float reached_ = 0.0f;     // their summed length
};

}  // namespace

ResamplePlan PlanResample(std::span<const Vec3f> input, float numOutputPoints,
                          std::vector<float>& segmentLengths) {
  ResamplePlan plan;
  segmentLengths.clear();
  if (input.size() < 2) return plan;
  segmentLengths.resize(input.size() - 1);
  float total = 0.0f;
  for (std::size_t i = 0; i + 1 < input.size(); ++i) {
    segmentLengths[i] = Length(Subtract(input[i + 1], input[i]));
    total += segmentLengths[i];
  }
  plan.totalLength = total;
  plan.densityMode = numOutputPoints < 0.0f;
  if (!plan.densityMode) {
    plan.count = CountFromValue(numOutputPoints);
  } else if (total > 0.0f) {
    plan.density = -numOutputPoints;
    const double count = std::ceil(double(total * plan.density));
    plan.count = count <= kLargestCount ? static_cast<std::size_t>(count) : 0;
  }
  return plan;
}

void ResampleLine(std::span<const Vec3f> input, const ResamplePlan& plan,
                  std::span<const float> segmentLengths, float strength, std::int32_t iterations,
                  std::span<Vec3f> out) {
  assert(out.size() == plan.count);
  if (plan.count == 0) return;
  assert(input.size() >= 2 && segmentLengths.size() == input.size() - 1);
  ArcLengthWalk walk(input, segmentLengths);
  out[0] = input.front();
  if (!plan.densityMode) {
    if (!(plan.totalLength > 0.0f)) {
      for (Vec3f& point : out) point = input.front();
      return;
    }
    const float step = plan.totalLength / float(plan.count - 1);
    for (std::size_t i = 1; i + 1 < plan.count; ++i) out[i] = walk.PointAt(float(i) * step);
    out[plan.count - 1] = input.back();
  } else {
    const float spacing = 1.0f / plan.density;
    for (std::size_t i = 1; i < plan.count; ++i) out[i] = walk.PointAt(float(i) * spacing);
  }
  SmoothLine(strength, iterations, out);
}

std::vector<Vec3f> ResampleLine(std::span<const Vec3f> input, float numOutputPoints, float strength,
                                std::int32_t iterations) {
  std::vector<float> segmentLengths;
  const ResamplePlan plan = PlanResample(input, numOutputPoints, segmentLengths);
  std::vector<Vec3f> out(plan.count);
  ResampleLine(input, plan, segmentLengths, strength, iterations, out);
  return out;
}

void SmoothLine(float strength, std::int32_t iterations, std::span<Vec3f> points) {
  float s = strength;
  if (s > 1.0f) s = 1.0f;
  if (!(s >= 0.0f)) s = 0.0f;
  if (!(s > 0.0f) || iterations < 1 || points.size() < 3) return;
  const float keep = 1.0f - s;
  const float half = s * 0.5f;
  const std::size_t last = points.size() - 1;
  for (std::int32_t pass = 0; pass < iterations; ++pass) {
    Vec3f previous = points[0];  // the neighbour's value before this pass
    for (std::size_t i = 1; i < last; ++i) {
      const Vec3f current = points[i];
      points[i] = Add(Scale(current, keep), Scale(Add(previous, points[i + 1]), half));
      previous = current;
    }
  }
}

}  // namespace quillix
