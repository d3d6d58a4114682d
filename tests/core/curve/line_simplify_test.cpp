#include "core/curve/line_simplify.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "bench/curve/polylines.h"
#include "core/curve/line_simplify_scan.h"

namespace quillix {
namespace {

using Line = std::vector<Vec3f>;

bool SameBits(const Vec3f& a, const Vec3f& b) {
  return std::bit_cast<std::uint32_t>(a.x) == std::bit_cast<std::uint32_t>(b.x) &&
         std::bit_cast<std::uint32_t>(a.y) == std::bit_cast<std::uint32_t>(b.y) &&
         std::bit_cast<std::uint32_t>(a.z) == std::bit_cast<std::uint32_t>(b.z);
}

void ExpectLine(std::span<const Vec3f> actual, const Line& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_TRUE(SameBits(actual[i], expected[i]))
        << "point " << i << ": (" << actual[i].x << ", " << actual[i].y << ", " << actual[i].z
        << ") expected (" << expected[i].x << ", " << expected[i].y << ", " << expected[i].z << ")";
  }
}

std::span<const Vec3f> Simplify(const Line& input, float epsilon, bool closed, bool minThree,
                                Line& work) {
  work.assign(SimplifyWorkSize(input.size()), Vec3f{});
  return SimplifyPolyline(input, epsilon, closed, minThree, work);
}

TEST(SimplifyPolyline, CollinearPointsReduceToTheEndsOrToEndsAndMidpoint) {
  Line line;
  for (int i = 0; i <= 10; ++i) line.push_back({float(i), 2.0f * float(i), -1.0f});
  Line work;
  ExpectLine(Simplify(line, 0.1f, false, false, work), {line.front(), line.back()});
  ExpectLine(Simplify(line, 0.1f, false, true, work),
             {line.front(), {5.0f, 10.0f, -1.0f}, line.back()});
  // The form that allocates its own buffer gives the same points.
  ExpectLine(SimplifyPolyline(line, 0.1f, false, true),
             {line.front(), {5.0f, 10.0f, -1.0f}, line.back()});
}

TEST(SimplifyPolyline, NonPositiveOrNanEpsilonLeavesTheInputUnchanged) {
  const Line line{{0, 0, 0}, {1, 0.01f, 0}, {2, 0, 0}, {3, 0.01f, 0}};
  Line work;
  for (float epsilon : {0.0f, -1.0f, std::nanf("")}) {
    const auto result = Simplify(line, epsilon, true, true, work);
    EXPECT_EQ(result.data(), line.data());
    EXPECT_EQ(result.size(), line.size());
  }
  // Short inputs still get the three-point guarantee.
  ExpectLine(Simplify({{2, 4, 6}}, 0.0f, false, true, work), {{2, 4, 6}, {2, 4, 6}, {2, 4, 6}});
}

TEST(SimplifyPolyline, ShortInputsAreFilledUpToThreePointsOnlyWithMinThree) {
  Line work;
  ExpectLine(Simplify({}, 1.0f, false, true, work), {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
  ExpectLine(Simplify({{1, 2, 3}}, 1.0f, false, true, work), {{1, 2, 3}, {1, 2, 3}, {1, 2, 3}});
  ExpectLine(Simplify({{0, 0, 0}, {2, 4, -6}}, 1.0f, false, true, work),
             {{0, 0, 0}, {1, 2, -3}, {2, 4, -6}});
  ExpectLine(Simplify({{0, 0, 0}, {2, 4, -6}}, 1.0f, true, false, work), {{0, 0, 0}, {2, 4, -6}});
  EXPECT_TRUE(Simplify({}, 1.0f, false, false, work).empty());
}

TEST(SimplifyPolyline, ExactlyThreePointsWithMinThreeAreNeverSimplified) {
  const Line line{{0, 0, 0}, {1, 0.001f, 0}, {2, 0, 0}};
  Line work;
  ExpectLine(Simplify(line, 1.0f, false, true, work), line);
  ExpectLine(Simplify(line, 1.0f, false, false, work), {line[0], line[2]});
}

TEST(SimplifyPolyline, PointExactlyEpsilonAwayIsKept) {
  const Line line{{0, 0, 0}, {1, 1, 0}, {2, 0, 0}};
  Line work;
  ExpectLine(Simplify(line, 1.0f, false, false, work), line);
  ExpectLine(Simplify(line, 1.0001f, false, false, work), {line[0], line[2]});
}

TEST(SimplifyPolyline, PointsBeyondTheChordEndsAreMeasuredToTheNearestEnd) {
  // Interior points overshooting the chord: the projection would call them on the line.
  const Line line{{0, 0, 0}, {-0.9f, 0, 0}, {4.5f, 0, 0}, {4, 0, 0}};
  Line work;
  ExpectLine(Simplify(line, 0.8f, false, false, work), {line[0], line[1], line[3]});
}

TEST(MarkPointsForRemoval, EqualLargestDistancesSplitAtTheLowerIndex) {
  // Points 1 and 3 are both 1 away from the chord; splitting at 1 leaves 2 and 3 within
  // tolerance of the chord (1,1)-(4,0), splitting at 3 would have kept 3 and dropped 1.
  Line line{{0, 0, 0}, {1, 1, 0}, {2, 0, 0}, {3, 1, 0}, {4, 0, 0}};
  line.resize(SimplifyLine(1.0f, line));
  ExpectLine(line, {{0, 0, 0}, {1, 1, 0}, {4, 0, 0}});
}

TEST(MarkPointsForRemoval, DegenerateChordMeasuresFromTheFirstPoint) {
  Line line{{0, 0, 0}, {1, 0, 0}, {0, 3, 0}, {0.5f, 0, 0}, {0, 0, 0}};
  line.resize(SimplifyLine(2.0f, line));
  ExpectLine(line, {{0, 0, 0}, {0, 3, 0}, {0, 0, 0}});
}

TEST(MarkPointsForRemoval, MarksOnlyInteriorPointsWithTheQuietNanPattern) {
  Line line{{0, 0, 0}, {1, 0.1f, 0}, {2, 0, 0}, {3, 5, 0}, {4, 0, 0}};
  MarkPointsForRemoval(1.0f, line);
  EXPECT_FALSE(IsRemovalMark(line[0].x));
  EXPECT_EQ(std::bit_cast<std::uint32_t>(line[1].x), kRemovalMarkBits);
  EXPECT_FALSE(IsRemovalMark(line[3].x));
  EXPECT_FALSE(IsRemovalMark(line[4].x));
  // A point that arrives carrying the mark is dropped by compaction like any marked point.
  Line marked{{0, 0, 0}, {std::bit_cast<float>(kRemovalMarkBits), 9, 9}, {0, 9, 0}, {5, 5, 5}};
  EXPECT_EQ(CompactMarkedPoints(marked), 3u);
  ExpectLine(std::span(marked).first(3), {{0, 0, 0}, {0, 9, 0}, {5, 5, 5}});
}

TEST(SimplifyPolyline, ClosedLineMergesEndsCloserThanTwiceEpsilon) {
  Line work;
  const Line open{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}, {0, 0.9f, 0}};
  ExpectLine(Simplify(open, 0.5f, true, false, work),
             {{0, 0.45f, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}});
  ExpectLine(Simplify(open, 0.5f, false, false, work), open);

  // At exactly twice epsilon apart the ends stay as they are.
  const Line apart{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}, {0, 1, 0}};
  ExpectLine(Simplify(apart, 0.5f, true, false, work), apart);

  // A merge that leaves two points is filled up again when three are required.
  const Line sliver{{0, 0, 0}, {2.5f, 0.01f, 0}, {5, 0, 0}, {0, 0.2f, 0}};
  ExpectLine(Simplify(sliver, 1.0f, true, false, work), {{0, 0.1f, 0}, {5, 0, 0}});
  ExpectLine(Simplify(sliver, 1.0f, true, true, work), {{0, 0.1f, 0}, {2.5f, 0.05f, 0}, {5, 0, 0}});
}

// The marking step as it reads when written recursively on the left part and iteratively on
// the right part, with the recursion turned into a vector so that it cannot overflow here.
// Also reports the depth the recursive form would have reached.
std::size_t ReferenceMarks(Line& points, float epsilon) {
  std::vector<std::pair<std::int32_t, std::int32_t>> callers;
  std::size_t deepest = 0;
  std::int32_t first = 0;
  std::int32_t last = std::int32_t(points.size()) - 1;
  for (;;) {
    while (last - first >= 2) {
      const Vec3f a = points[first], b = points[last];
      const float dx = b.x - a.x, dy = b.y - a.y, dz = b.z - a.z;
      const float length = std::sqrt(dx * dx + dy * dy + dz * dz);
      float best = -1.0f;
      std::int32_t k = first;
      for (std::int32_t i = first + 1; i < last; ++i) {
        const Vec3f p = points[i];
        auto sq = [](float x, float y, float z) { return x * x + y * y + z * z; };
        float s;
        if (length < 1e-15f) {
          s = sq(p.x - a.x, p.y - a.y, p.z - a.z);
        } else {
          const float inv = 1.0f / length;
          const float ux = dx * inv, uy = dy * inv, uz = dz * inv;
          const float t = (p.x - a.x) * ux + (p.y - a.y) * uy + (p.z - a.z) * uz;
          if (t < 0.0f)
            s = sq(p.x - a.x, p.y - a.y, p.z - a.z);
          else if (t > length)
            s = sq(p.x - b.x, p.y - b.y, p.z - b.z);
          else
            s = sq(a.x + t * ux - p.x, a.y + t * uy - p.y, a.z + t * uz - p.z);
        }
        if (s > best) best = s, k = i;
      }
      if (best < epsilon * epsilon) {
        for (std::int32_t i = first + 1; i < last; ++i)
          points[i].x = std::bit_cast<float>(kRemovalMarkBits);
        break;
      }
      callers.push_back({k, last});  // the right part continues after the left "call"
      deepest = std::max(deepest, callers.size());
      last = k;
    }
    if (callers.empty()) return deepest;
    std::tie(first, last) = callers.back();
    callers.pop_back();
  }
}

// Runs `job` on a thread whose whole stack is 32 KiB: a marking step that recursed once per
// nested part would need more than that for a few thousand parts.
template <typename Job>
void RunOnSmallStack(Job& job) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 32 * 1024), 0);
  pthread_t thread;
  auto trampoline = [](void* argument) -> void* {
    (*static_cast<Job*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, trampoline, &job), 0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}

TEST(MarkPointsForRemoval, MillionPointsSplittingNearTheEndMatchTheRecursiveMarksOnASmallStack) {
  Line points = testlines::SpikedSpiral(1'000'000, 100'000);
  Line expected = points;
  const std::size_t recursiveDepth = ReferenceMarks(expected, 0.05f);
  EXPECT_GT(recursiveDepth, 3'000u);
  auto job = [&points] { MarkPointsForRemoval(0.05f, points); };
  RunOnSmallStack(job);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    ASSERT_TRUE(SameBits(points[i], expected[i])) << "point " << i;
    kept += !IsRemovalMark(points[i].x);
  }
  EXPECT_LT(kept, 200'000u);  // the straight run went in one pass
}

TEST(MarkPointsForRemoval, NoisyWalkMatchesTheRecursiveMarks) {
  Line points = testlines::NoisyWalk(200'000, 7);
  Line expected = points;
  ReferenceMarks(expected, 0.5f);
  MarkPointsForRemoval(0.5f, points);
  std::size_t marked = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    ASSERT_TRUE(SameBits(points[i], expected[i])) << "point " << i;
    marked += IsRemovalMark(points[i].x);
  }
  EXPECT_GT(marked, 0u);
  EXPECT_LT(marked, points.size() - 2);
}

// The AVX2 farthest-point scan against the plain loop: same distance bits, same index, and so
// the same simplified lines, including NaN, infinities, ties and every length around the
// vector width.

// Coordinate generators, from tie-heavy to anything-goes.
enum class Mix { kFewValues, kSmooth, kNasty };

float Coordinate(std::mt19937& engine, Mix mix) {
  std::uniform_real_distribution<float> real(-10.0f, 10.0f);
  if (mix == Mix::kFewValues) return float(int(engine() % 3) - 1);  // -1, 0, 1: many ties
  if (mix == Mix::kSmooth) return real(engine);
  switch (engine() % 12) {
    case 0:
      return std::numeric_limits<float>::quiet_NaN();
    case 1:
      return std::numeric_limits<float>::infinity();
    case 2:
      return -std::numeric_limits<float>::infinity();
    case 3:
      return 3.0e38f;  // squares overflow
    case 4:
      return std::numeric_limits<float>::denorm_min();
    case 5:
      return std::bit_cast<float>(kRemovalMarkBits);
    case 6:
      return float(int(engine() % 3) - 1);
    default:
      return real(engine);
  }
}

Line RandomLine(std::mt19937& engine, std::size_t count, Mix mix) {
  Line line(count);
  for (auto& p : line) p = {Coordinate(engine, mix), Coordinate(engine, mix), 0.0f};
  if (mix != Mix::kSmooth)
    for (auto& p : line) p.z = Coordinate(engine, mix);
  if (count > 0 && engine() % 4 == 0) line.back() = line.front();             // a degenerate chord
  if (count > 4 && engine() % 4 == 0) line[count / 2] = line[count / 2 + 1];  // repeated point
  return line;
}

void ExpectSameScan(const Line& line, std::size_t first, std::size_t last) {
  const FarthestPoint plain = FindFarthestPoint(line, first, last, ScanKernel::kScalar);
  const FarthestPoint fast = FindFarthestPoint(line, first, last, ScanKernel::kFastest);
  ASSERT_EQ(std::bit_cast<std::uint32_t>(fast.squaredDistance),
            std::bit_cast<std::uint32_t>(plain.squaredDistance))
      << "part " << first << ".." << last;
  ASSERT_EQ(fast.index, plain.index) << "part " << first << ".." << last;
}

// Marks and compaction with both loops: the marks carry the kept indices, the compacted
// points their values.
void ExpectSameSimplification(const Line& line, float epsilon) {
  Line plain = line, fast = line;
  MarkPointsForRemoval(epsilon, plain, ScanKernel::kScalar);
  MarkPointsForRemoval(epsilon, fast, ScanKernel::kFastest);
  for (std::size_t i = 0; i < line.size(); ++i)
    ASSERT_TRUE(SameBits(fast[i], plain[i])) << "point " << i << " of " << line.size();
  Line plainOut = line, fastOut = line;
  const std::size_t plainKept = SimplifyLine(epsilon, plainOut, ScanKernel::kScalar);
  ASSERT_EQ(SimplifyLine(epsilon, fastOut, ScanKernel::kFastest), plainKept);
  for (std::size_t i = 0; i < plainKept; ++i) ASSERT_TRUE(SameBits(fastOut[i], plainOut[i]));
}

class VectorScan : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!HasVectorScan()) GTEST_SKIP() << "no AVX2 here: both kernels run the plain loop";
  }
};

TEST_F(VectorScan, SameFarthestPointForEveryLengthAroundTheVectorWidth) {
  std::mt19937 engine(11);
  for (Mix mix : {Mix::kFewValues, Mix::kSmooth, Mix::kNasty}) {
    for (int round = 0; round < 40; ++round) {
      // Up to three leading points shift the interior against the eight-point blocks.
      for (std::size_t lead = 0; lead < 4; ++lead) {
        for (std::size_t interior = 0; interior <= 40; ++interior) {
          const Line line = RandomLine(engine, lead + interior + 2, mix);
          ExpectSameScan(line, lead, lead + interior + 1);
        }
      }
    }
  }
}

TEST_F(VectorScan, TiesGoToTheLowestIndexWhicheverLaneHoldsIt) {
  // Interior points all at one distance from the chord, with equally high bumps every seven
  // points from `early` on, so that the bumps fall in every lane: the earliest must win.
  for (std::size_t early = 1; early < 40; ++early) {
    Line line(42, Vec3f{0.0f, 1.0f, 0.0f});
    line.front() = {-1.0f, 0.0f, 0.0f};
    line.back() = {1.0f, 0.0f, 0.0f};
    for (std::size_t i = early; i < 41; i += 7) line[i].y = 2.0f;
    ExpectSameScan(line, 0, 41);
    EXPECT_EQ(FindFarthestPoint(line, 0, 41, ScanKernel::kFastest).index, early);
  }
  // Every interior point on the chord: all distances 0, the first interior point wins.
  Line collinear(37);
  for (std::size_t i = 0; i < collinear.size(); ++i) collinear[i] = {float(i), 0.0f, 0.0f};
  ExpectSameScan(collinear, 0, 36);
  EXPECT_EQ(FindFarthestPoint(collinear, 0, 36, ScanKernel::kFastest).index, 1u);
}

TEST_F(VectorScan, OnlyNanDistancesLeaveNoFarthestPoint) {
  Line line(30, Vec3f{std::numeric_limits<float>::quiet_NaN(), 0.0f, 0.0f});
  line.front() = {0.0f, 0.0f, 0.0f};
  line.back() = {1.0f, 0.0f, 0.0f};
  const FarthestPoint fast = FindFarthestPoint(line, 0, 29, ScanKernel::kFastest);
  EXPECT_EQ(fast.squaredDistance, -1.0f);
  EXPECT_EQ(fast.index, 0u);
  ExpectSameScan(line, 0, 29);
}

TEST_F(VectorScan, SameSimplifiedLinesForRandomAndLongLines) {
  std::mt19937 engine(5);
  for (Mix mix : {Mix::kFewValues, Mix::kSmooth, Mix::kNasty}) {
    for (int round = 0; round < 20; ++round) {
      for (std::size_t count = 0; count <= 42; ++count) {
        const Line line = RandomLine(engine, count, mix);
        for (float epsilon : {1e-30f, 0.5f, 3.0f}) ExpectSameSimplification(line, epsilon);
      }
    }
  }
  // Ties everywhere split a part next to its end again and again: quadratic, so shorter.
  ExpectSameSimplification(RandomLine(engine, 10'000, Mix::kFewValues), 0.5f);
  ExpectSameSimplification(RandomLine(engine, 100'000, Mix::kNasty), 0.5f);
  ExpectSameSimplification(testlines::NoisyWalk(100'000, 3), 0.5f);
  ExpectSameSimplification(testlines::SpikedSpiral(100'000, 10'000), 0.05f);
}

}  // namespace
}  // namespace quillix
