#include "core/matching/match_scoring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <numbers>
#include <optional>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace quillix {
namespace {

// Edit distance by breadth-first search over single edits, restricted to the letters in
// play and to strings no longer than the longer input plus one: a search over the edit
// graph itself, independent of any dynamic programme.
std::size_t EditDistanceBySearch(const std::string& from, const std::string& to,
                                 const std::string& alphabet) {
  const std::size_t maxLength = std::max(from.size(), to.size()) + 1;
  std::unordered_map<std::string, std::size_t> depth{{from, 0}};
  std::deque<std::string> queue{from};
  while (!queue.empty()) {
    const std::string s = queue.front();
    queue.pop_front();
    const std::size_t d = depth[s];
    if (s == to) return d;
    std::vector<std::string> next;
    for (std::size_t i = 0; i < s.size(); ++i) {
      next.push_back(s.substr(0, i) + s.substr(i + 1));
      for (char c : alphabet) next.push_back(s.substr(0, i) + c + s.substr(i + 1));
    }
    if (s.size() < maxLength) {
      for (std::size_t i = 0; i <= s.size(); ++i) {
        for (char c : alphabet) next.push_back(s.substr(0, i) + c + s.substr(i));
      }
    }
    for (std::string& n : next) {
      if (depth.emplace(n, d + 1).second) queue.push_back(std::move(n));
    }
  }
  return std::numeric_limits<std::size_t>::max();
}

TEST(LevenshteinDistance, AgreesWithSearchOverEditsOnRandomStrings) {
  std::mt19937 random(1234);
  const std::string alphabet = "abc";
  std::uniform_int_distribution<int> length(0, 5);
  std::uniform_int_distribution<int> letter(0, 2);
  const auto randomString = [&] {
    std::string s(length(random), 'a');
    for (char& c : s) c = alphabet[letter(random)];
    return s;
  };
  for (int trial = 0; trial < 200; ++trial) {
    const std::string a = randomString();
    const std::string b = randomString();
    const std::size_t expected = EditDistanceBySearch(a, b, alphabet);
    EXPECT_EQ(LevenshteinDistance(a, b), expected) << '"' << a << "\" \"" << b << '"';
    EXPECT_EQ(LevenshteinDistance(b, a), expected) << '"' << b << "\" \"" << a << '"';
  }
  EXPECT_EQ(LevenshteinDistance(std::string(300, 'x'), std::string(200, 'x') + "y"), 100u);
}

// Volume shared by two spheres on the x axis (centres 0 and d), by the midpoint rule over
// the common cross-section discs.
double LensVolumeByIntegration(double r1, double r2, double d) {
  const int steps = 200000;
  const double lo = -r1;
  const double hi = r1;
  const double h = (hi - lo) / steps;
  double volume = 0.0;
  for (int i = 0; i < steps; ++i) {
    const double x = lo + (i + 0.5) * h;
    const double disc = std::min(r1 * r1 - x * x, r2 * r2 - (x - d) * (x - d));
    if (disc > 0.0) volume += std::numbers::pi * disc * h;
  }
  return volume;
}

TEST(SphereIntersectionVolume, AgreesWithNumericalIntegration) {
  std::mt19937 random(99);
  std::uniform_real_distribution<double> radius(0.1, 3.0);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  for (int trial = 0; trial < 40; ++trial) {
    const double r1 = radius(random);
    const double r2 = radius(random);
    const double d = std::uniform_real_distribution<double>(0.0, (r1 + r2) * 1.2)(random);
    // Centres along a random direction, so that the distance is measured in 3D.
    Vec3d dir{unit(random), unit(random), unit(random)};
    const double len = std::sqrt(dir.x * dir.x + dir.y * dir.y + dir.z * dir.z);
    const Vec3d c1{1.0, -2.0, 0.5};
    const Vec3d c2{c1.x + dir.x / len * d, c1.y + dir.y / len * d, c1.z + dir.z / len * d};
    double distance = -1.0;
    const double volume = SphereIntersectionVolume(c1, r1, c2, r2, distance);
    EXPECT_NEAR(distance, d, 1e-12);
    const double scale = SphereVolume(std::max(r1, r2));
    EXPECT_NEAR(volume, LensVolumeByIntegration(r1, r2, d), 1e-6 * scale)
        << "r1 " << r1 << " r2 " << r2 << " d " << d;
  }
}

MatchWeights DefaultWeights() {
  return {0.0f, 1.0f, 1.0f,   1.0f, 1.0f, 1.0f, 1.0f, 0.0f,
          0.0f, 0.0f, 0.125f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};
}

MatchWeights AllWeights(float w) {
  MatchWeights weights;
  weights.fill(w);
  return weights;
}

Mat3d RotationZ(double degrees) {
  const double a = degrees * std::numbers::pi / 180.0;
  Mat3d r = Mat3d::Identity();
  r.m[0][0] = std::cos(a);
  r.m[0][1] = std::sin(a);
  r.m[1][0] = -std::sin(a);
  r.m[1][1] = std::cos(a);
  return r;
}

ObjectFeatures SampleObject() {
  ObjectFeatures f;
  f.name = "Torus";
  f.pointCount = 100;
  f.triangleCount = 200;
  f.boxExtent = {2.0, 1.0, 3.0};
  f.sphereRadius = 1.5;
  f.localSurfaceArea = 12.0;
  f.globalSurfaceArea = 48.0;
  f.globalVertexCenter = {1.0, 2.0, 3.0};
  f.localNormalAverage = {0.0, 0.3, 0.0};
  f.globalNormalAverage = {0.1, 0.2, 0.0};
  f.local.scaling = {1.0, 2.0, 1.0};
  f.local.rotation = RotationZ(30.0);
  f.local.translation = {4.0, 0.0, -1.0};
  f.global = f.local;
  f.global.translation = {4.0, 1.0, -1.0};
  return f;
}

TEST(MatchTerms, PerfectMatchGivesEachWeightAnd99Point99PerCent) {
  const ObjectFeatures input = SampleObject();
  for (const MatchWeights& weights : {DefaultWeights(), AllWeights(1.0f), AllWeights(0.3f)}) {
    MatchWeights w = weights;
    w[kTermPointCount] = 1.0f;
    const MatchTerms terms = ComputeMatchTerms(input, input, w);
    for (std::size_t t = 0; t < kMatchTermCount; ++t) EXPECT_EQ(terms[t], w[t]) << "term " << t;
    EXPECT_EQ(MatchPercentage(TermSum(terms), TermSum(w)), 99.99);
  }
  // A point-count weight of 0 leaves its term out altogether: still 99.99.
  MatchWeights w = DefaultWeights();
  w[kTermPointCount] = 0.0f;
  EXPECT_EQ(MatchPercentage(TermSum(ComputeMatchTerms(input, input, w)), TermSum(w)), 99.99);
}

TEST(MatchTerms, PointCountTermIgnoresItsWeightAndShiftsAPerfectMatch) {
  const ObjectFeatures input = SampleObject();
  ObjectFeatures half = input;
  half.pointCount = 50;
  half.triangleCount = 50;
  MatchWeights heavy = DefaultWeights();
  heavy[kTermPointCount] = 3.0f;
  heavy[kTermTriangleCount] = 2.0f;
  EXPECT_EQ(ComputeMatchTerms(input, half, heavy)[kTermPointCount], 0.5f);     // 50/100
  EXPECT_EQ(ComputeMatchTerms(input, half, heavy)[kTermTriangleCount], 0.5f);  // 50/200 × 2
  const MatchTerms perfect = ComputeMatchTerms(input, input, heavy);
  EXPECT_EQ(perfect[kTermPointCount], 1.0f);
  EXPECT_LT(MatchPercentage(TermSum(perfect), TermSum(heavy)), 99.99);
}

TEST(MatchTerms, EachTermMeasuresItsOwnFeature) {
  const ObjectFeatures input = SampleObject();
  const MatchWeights weights = AllWeights(2.0f);
  ObjectFeatures other = input;
  other.name = "torus_copy";  // distance 5 against a length of 10
  other.pointCount = 0;       // 0 of 100 points
  other.triangleCount = 0;
  other.boxExtent = {1.0, 2.0, 3.0};  // overlap 1·1·3 of 6
  other.sphereRadius = 3.0;           // (1.5/3)³ of the volume
  other.localSurfaceArea = 3.0;       // 3 of 12
  other.globalSurfaceArea = 0.0;
  other.localNormalAverage = {0.0, -2.0, 0.0};   // opposite
  other.globalNormalAverage = {-0.2, 0.1, 0.0};  // perpendicular
  other.local.translation = {4.0, 3.0, 3.0};     // 5 away
  other.local.rotation = RotationZ(120.0);       // x and y axes 90° off: √2 apart
  other.local.scaling = {1.0, 2.0, 4.0};         // 3 away
  other.globalVertexCenter = {1.0, 2.0, 4.0};    // 1 away
  const MatchTerms t = ComputeMatchTerms(input, other, weights);
  EXPECT_FLOAT_EQ(t[kTermName], 2.0f * 0.5f);
  EXPECT_EQ(t[kTermPointCount], 0.0f);
  EXPECT_EQ(t[kTermTriangleCount], 0.0f);
  EXPECT_FLOAT_EQ(t[kTermBoundingBox], 2.0f * 0.5f);
  EXPECT_FLOAT_EQ(t[kTermBoundingSphere], 2.0f * 0.125f);
  EXPECT_FLOAT_EQ(t[kTermLocalSurfArea], 2.0f * 0.25f);
  EXPECT_EQ(t[kTermGlobalSurfArea], 0.0f);
  EXPECT_NEAR(t[kTermLocalSurfNormalAverage], 0.0f, 1e-7f);
  EXPECT_FLOAT_EQ(t[kTermGlobalSurfNormalAverage], 2.0f * 0.5f);
  EXPECT_FLOAT_EQ(t[kTermLocalPos], 2.0f / 6.0f);
  const double axis = 1.0 / (std::sqrt(2.0) + 1.0);
  EXPECT_FLOAT_EQ(t[kTermLocalRot], float(2.0 * (2.0 * axis + 1.0) / 3.0));
  EXPECT_FLOAT_EQ(t[kTermLocalScl], 2.0f / 4.0f);
  EXPECT_FLOAT_EQ(t[kTermGlobalVertexCenter], 2.0f / 2.0f);
  EXPECT_FLOAT_EQ(t[kTermGlobalPos], 2.0f);  // globals unchanged
  EXPECT_FLOAT_EQ(t[kTermGlobalRot], 2.0f);
  EXPECT_FLOAT_EQ(t[kTermGlobalScl], 2.0f);
}

TEST(MatchTerms, ZeroWeightsAndDegenerateFeaturesGiveZeroTerms) {
  const ObjectFeatures input = SampleObject();
  EXPECT_EQ(TermSum(ComputeMatchTerms(input, input, AllWeights(0.0f))), 0.0f);
  EXPECT_EQ(MatchPercentage(0.0f, TermSum(AllWeights(0.0f))), 0.0);

  ObjectFeatures empty;  // a candidate without geometry: counts, volumes and areas of 0
  ObjectFeatures emptyToo;
  const MatchTerms t = ComputeMatchTerms(empty, emptyToo, AllWeights(1.0f));
  for (MatchTerm term : {kTermPointCount, kTermTriangleCount, kTermBoundingBox, kTermBoundingSphere,
                         kTermLocalSurfArea, kTermGlobalSurfArea}) {
    EXPECT_EQ(t[term], 0.0f) << "term " << term;
  }
  EXPECT_EQ(t[kTermName], 1.0f);  // two empty names are the same name
  for (float term : t) EXPECT_FALSE(std::isnan(term));
}

TEST(MatchWeights, NegativeWeightsAreRaisedAndInputsWithoutGeometryKeepOnlyTransformsAndName) {
  MatchWeights w = AllWeights(1.0f);
  w[kTermLocalPos] = -2.0f;
  w[kTermGlobalScl] = std::numeric_limits<float>::quiet_NaN();
  const MatchWeights clamped = ClampNegativeWeights(w);
  EXPECT_EQ(clamped[kTermLocalPos], 0.0f);
  EXPECT_EQ(clamped[kTermGlobalScl], 0.0f);
  EXPECT_EQ(TermSum(clamped), 14.0f);

  const MatchWeights noPoints = WeightsForInput(AllWeights(1.0f), 0, 0);
  const MatchWeights noTriangles = WeightsForInput(AllWeights(1.0f), 8, 0);
  const MatchWeights full = WeightsForInput(AllWeights(1.0f), 8, 12);
  const std::vector<MatchTerm> kept = {kTermName,      kTermLocalPos,  kTermLocalRot, kTermLocalScl,
                                       kTermGlobalPos, kTermGlobalRot, kTermGlobalScl};
  for (std::size_t t = 0; t < kMatchTermCount; ++t) {
    const bool isKept = std::find(kept.begin(), kept.end(), t) != kept.end();
    EXPECT_EQ(noPoints[t], isKept ? 1.0f : 0.0f) << "term " << t;
    EXPECT_EQ(noTriangles[t], isKept || t == kTermPointCount ? 1.0f : 0.0f) << "term " << t;
    EXPECT_EQ(full[t], 1.0f);
  }
}

TEST(RankByScore, HighestFirstAndEqualScoresKeepTheirOrder) {
  const std::vector<float> scores = {0.5f, 2.0f, 0.5f, std::nanf(""), 2.0f, 0.0f, 0.5f};
  EXPECT_EQ(RankByScore(scores), (std::vector<std::size_t>{1, 4, 0, 2, 6, 5, 3}));
  EXPECT_TRUE(RankByScore({}).empty());
}

TEST(RankMatches, RanksEveryCandidateWithTheCommandsWeightRules) {
  const ObjectFeatures input = SampleObject();
  ObjectFeatures half = input;
  half.pointCount = 50;
  ObjectFeatures quarter = input;
  quarter.pointCount = 25;
  std::vector<std::optional<ObjectFeatures>> candidates = {quarter, std::nullopt, input, half,
                                                           input};
  MatchWeights weights = DefaultWeights();
  weights[kTermLocalPos] = -3.0f;  // counts as 0, not against the sum
  const std::vector<RankedMatch> ranking = RankMatches(input, candidates, weights);
  const float sum = TermSum(DefaultWeights());
  ASSERT_EQ(ranking.size(), 5u);
  // Equal scores keep the candidates' order; the left-out one scores 0 and ranks last.
  const std::vector<std::size_t> order = {2, 4, 3, 0, 1};
  for (std::size_t k = 0; k < order.size(); ++k) {
    EXPECT_EQ(ranking[k].candidate, order[k]) << "place " << k;
    const float expected =
        candidates[order[k]]
            ? TermSum(ComputeMatchTerms(input, *candidates[order[k]], DefaultWeights()))
            : 0.0f;
    EXPECT_EQ(ranking[k].score, expected) << "place " << k;
    EXPECT_EQ(ranking[k].percentage, MatchPercentage(expected, sum)) << "place " << k;
  }
  EXPECT_EQ(ranking[0].percentage, 99.99);

  // A reference without points drops every geometry weight: nothing is left to compare.
  ObjectFeatures bare = input;
  bare.pointCount = 0;
  const std::vector<RankedMatch> none = RankMatches(bare, candidates, DefaultWeights());
  for (std::size_t k = 0; k < none.size(); ++k) {
    EXPECT_EQ(none[k].candidate, k);
    EXPECT_EQ(none[k].score, 0.0f);
    EXPECT_EQ(none[k].percentage, 0.0);
  }
  EXPECT_TRUE(RankMatches(input, {}, weights).empty());
}

TEST(MatchTexts, ReturnValueListsLeadingPositiveMatchesOfTheReportedCount) {
  EXPECT_EQ(FinalMatchLine(99.99, "cube1"), "100.0%%    cube1\"");
  const std::vector<std::string> names = {"a", "b", "c", "d"};
  const std::vector<double> percents = {99.99, 50.126, 0.0, 10.0};
  EXPECT_EQ(MatchListText(names, percents, ReportedCount(1, 4)), "a,99.99");
  // Stops at the first percentage that is not positive, even with later positive ones.
  EXPECT_EQ(MatchListText(names, percents, ReportedCount(0, 4)), "a,99.99,b,50.13");
  EXPECT_EQ(MatchListText(names, percents, ReportedCount(99, 4)), "a,99.99,b,50.13");
}

}  // namespace
}  // namespace quillix
