#include "core/curve/line_resample.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace quillix {
namespace {

using Line = std::vector<Vec3f>;

void ExpectPoints(const Line& actual, const Line& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_FLOAT_EQ(actual[i].x, expected[i].x) << "point " << i;
    EXPECT_FLOAT_EQ(actual[i].y, expected[i].y) << "point " << i;
    EXPECT_FLOAT_EQ(actual[i].z, expected[i].z) << "point " << i;
  }
}

TEST(ResampleLine, CountModeSpacesPointsEvenlyFromFirstToLast) {
  const Line segment{{0, 0, 0}, {4, 0, 8}};
  ExpectPoints(ResampleLine(segment, 5.0f, 0.0f, 0),
               {{0, 0, 0}, {1, 0, 2}, {2, 0, 4}, {3, 0, 6}, {4, 0, 8}});
  // Smoothing never moves the ends.
  const Line smoothed = ResampleLine(segment, 5.0f, 0.7f, 3);
  ASSERT_EQ(smoothed.size(), 5u);
  EXPECT_FLOAT_EQ(smoothed.front().z, 0.0f);
  EXPECT_FLOAT_EQ(smoothed.back().z, 8.0f);

  // Across vertices the spacing follows the arc length, and the last point is exact.
  const Line bent{{0, 0, 0}, {1, 0, 0}, {1, 3, 0}};
  ExpectPoints(ResampleLine(bent, 3.0f, 0.0f, 0), {{0, 0, 0}, {1, 1, 0}, {1, 3, 0}});
}

TEST(ResampleLine, CountRoundsHalfAwayFromZeroAndNeedsTwoPoints) {
  const Line segment{{0, 0, 0}, {1, 0, 0}};
  for (float v : {0.0f, -0.0f, 1.0f, 1.4f, std::nanf(""), 3.0e9f, INFINITY}) {
    EXPECT_TRUE(ResampleLine(segment, v, 0.0f, 0).empty()) << v;
  }
  ExpectPoints(ResampleLine(segment, 1.5f, 0.0f, 0), {{0, 0, 0}, {1, 0, 0}});
  EXPECT_EQ(ResampleLine(segment, 2.5f, 0.0f, 0).size(), 3u);
  EXPECT_EQ(ResampleLine(segment, 20.49f, 0.0f, 0).size(), 20u);
  EXPECT_TRUE(ResampleLine(Line{{1, 1, 1}}, 5.0f, 0.0f, 0).empty());
  EXPECT_TRUE(ResampleLine(Line{}, -5.0f, 0.0f, 0).empty());
}

TEST(ResampleLine, DensityModeStopsAtTheLastWholeSpacing) {
  const Line line{{0, 0, 0}, {2, 0, 0}, {2, 1, 0}};  // length 3
  ExpectPoints(ResampleLine(line, -2.0f, 0.0f, 0),
               {{0, 0, 0}, {0.5f, 0, 0}, {1, 0, 0}, {1.5f, 0, 0}, {2, 0, 0}, {2, 0.5f, 0}});
  // ceil: 3 * 0.9 = 2.7 gives three points, the last at 2/0.9.
  const Line thinned = ResampleLine(line, -0.9f, 0.0f, 0);
  ASSERT_EQ(thinned.size(), 3u);
  EXPECT_FLOAT_EQ(thinned[2].x, 2.0f);
  EXPECT_NEAR(thinned[2].y, 2.0f / 0.9f - 2.0f, 1e-6f);
}

TEST(ResampleLine, ZeroLengthLineGivesCopiesInCountModeAndNothingInDensityMode) {
  const Line still{{3, 2, 1}, {3, 2, 1}, {3, 2, 1}};
  ExpectPoints(ResampleLine(still, 4.0f, 1.0f, 5), Line(4, Vec3f{3, 2, 1}));
  EXPECT_TRUE(ResampleLine(still, -4.0f, 1.0f, 5).empty());
}

// Every resampled point lies at its target arc length, also where rounding pushes the last
// targets to (or past) the end of the segment table; under the address sanitizer this also
// proves that the walk never reads past the table.
TEST(ResampleLine, PointsLieAtTheirArcLengthsUpToTheVeryEnd) {
  std::mt19937 engine(11);
  std::uniform_real_distribution<float> coordinate(-3.0f, 3.0f);
  for (int trial = 0; trial < 200; ++trial) {
    Line line(2 + engine() % 9);
    for (Vec3f& p : line) p = {coordinate(engine), coordinate(engine), coordinate(engine)};
    if (trial % 3 == 0) line[1] = line[0];  // a zero-length segment
    std::vector<double> cumulative{0.0};
    for (std::size_t i = 1; i < line.size(); ++i) {
      const double dx = line[i].x - line[i - 1].x, dy = line[i].y - line[i - 1].y,
                   dz = line[i].z - line[i - 1].z;
      cumulative.push_back(cumulative.back() + std::sqrt(dx * dx + dy * dy + dz * dz));
    }
    const float density = 0.5f + float(engine() % 1000) / 37.0f;
    const Line out = ResampleLine(line, -density, 0.0f, 0);
    ASSERT_EQ(out.size(), std::size_t(std::ceil(double(float(cumulative.back()) * density))));
    for (std::size_t i = 0; i < out.size(); ++i) {
      const double target = std::min(double(i) / density, cumulative.back());
      std::size_t j = 1;
      while (j + 1 < line.size() && cumulative[j] < target) ++j;
      const double f = cumulative[j] > cumulative[j - 1]
                           ? (target - cumulative[j - 1]) / (cumulative[j] - cumulative[j - 1])
                           : 0.0;
      EXPECT_NEAR(out[i].x, line[j - 1].x + (line[j].x - line[j - 1].x) * f, 1e-3);
      EXPECT_NEAR(out[i].y, line[j - 1].y + (line[j].y - line[j - 1].y) * f, 1e-3);
      EXPECT_NEAR(out[i].z, line[j - 1].z + (line[j].z - line[j - 1].z) * f, 1e-3);
    }
  }
}

TEST(SmoothLine, FullStrengthAveragesThePreviousPassesNeighbours) {
  Line zigzag{{0, 0, 0}, {1, 4, 0}, {2, 0, 0}, {3, 4, 0}, {4, 0, 0}};
  SmoothLine(1.0f, 1, zigzag);
  // Point 2 uses point 1's value from before the pass (4), not the freshly smoothed 0.
  ExpectPoints(zigzag, {{0, 0, 0}, {1, 0, 0}, {2, 4, 0}, {3, 0, 0}, {4, 0, 0}});
  Line clamped{{0, 0, 0}, {1, 4, 0}, {2, 0, 0}, {3, 4, 0}, {4, 0, 0}};
  SmoothLine(7.5f, 1, clamped);
  ExpectPoints(clamped, zigzag);
  SmoothLine(0.5f, 1, zigzag);
  ExpectPoints(zigzag, {{0, 0, 0}, {1, 1, 0}, {2, 2, 0}, {3, 1, 0}, {4, 0, 0}});
}

TEST(SmoothLine, ZeroNegativeOrNanStrengthAndNoIterationsLeaveThePointsAlone) {
  const Line original{{0, 0, 0}, {1, 4, 0}, {2, 0, 0}, {3, 4, 0}};
  for (float strength : {0.0f, -0.5f, std::nanf("")}) {
    Line points = original;
    SmoothLine(strength, 3, points);
    ExpectPoints(points, original);
  }
  for (std::int32_t iterations : {0, -4}) {
    Line points = original;
    SmoothLine(1.0f, iterations, points);
    ExpectPoints(points, original);
  }
}

}  // namespace
}  // namespace quillix
