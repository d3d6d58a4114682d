// Deterministic polylines shared by the curve benchmarks and tests.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "core/math/math_types.h"

namespace quillix::testlines {

// A walk of `count` unit-ish steps with jitter: most points lie close to the line of their
// neighbours, so a tolerance around the step size removes a good share of them.
inline std::vector<Vec3f> NoisyWalk(std::size_t count, std::uint32_t seed) {
  std::mt19937 engine(seed);
  auto uniform = [&engine] { return float(double(engine()) / 4294967296.0) * 2.0f - 1.0f; };
  std::vector<Vec3f> points(count);
  float heading = 0.0f;
  Vec3f position{};
  for (std::size_t i = 0; i < count; ++i) {
    heading += 0.3f * uniform();
    position.x += std::cos(heading);
    position.y += std::sin(heading);
    position.z += 0.2f * uniform();
    points[i] = Vec3f{position.x + 0.3f * uniform(), position.y + 0.3f * uniform(), position.z};
  }
  return points;
}

// An outward spiral with about five points a turn. The farthest point from any chord that
// ends on the spiral lies on the chord's last turn, so splits fall a dozen points before the end
// of their part: the worst case for a simplifier that recurses into the part left of a split.
inline void AppendOutwardSpiral(std::vector<Vec3f>& points, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const double angle = double(i) * 1.21;
    const double radius = 1.0 + double(i) * 0.01;
    points.push_back(Vec3f{float(radius * std::cos(angle)), float(radius * std::sin(angle)),
                           float(double(i) * 1e-4)});
  }
}

// `count` points: a straight run along -y that takes most of them, one spike far out on +y,
// then an outward spiral of `spiralCount` points round the origin. The first split falls on
// the spike (the straight run then goes in one pass) and every split after it falls near the
// end of its part inside the spiral, nesting thousands of parts deep. A spiral alone of a
// million points would nest as deep, but costs quadratic time in any farthest-point scheme.
inline std::vector<Vec3f> SpikedSpiral(std::size_t count, std::size_t spiralCount = 50'000) {
  std::vector<Vec3f> points;
  points.reserve(count);
  const std::size_t runCount = count - spiralCount - 1;
  for (std::size_t i = 0; i < runCount; ++i) {
    points.push_back(
        Vec3f{0.0f, float(-1.0e6 + double(i) * (1.0e6 - 1000.0) / double(runCount)), 0.0f});
  }
  points.push_back(Vec3f{0.0f, 1.0e5f, 0.0f});
  AppendOutwardSpiral(points, spiralCount);
  return points;
}

}  // namespace quillix::testlines
