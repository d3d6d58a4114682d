#include "core/matching/match_scoring.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numbers>

#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

// Angle between two vectors in [0, π]. atan2 of the cross and dot products stays exact for
// parallel vectors, where the arc cosine of a rounded cosine would not give 0. A zero vector
// gives 0.
double AngleBetween(const Vec3d& a, const Vec3d& b) {
  return std::atan2(Length(Cross(a, b)), Dot(a, b));
}

Vec3d Row(const Mat3d& m, int row) { return {m.m[row][0], m.m[row][1], m.m[row][2]}; }

// min/max of two non-negative amounts; 0 when both are 0.
double AmountRatio(double a, double b) {
  const double larger = std::max(a, b);
  if (!(larger > 0.0)) return 0.0;
  return std::max(std::min(a, b) / larger, 0.0);
}

double BoxVolume(const Vec3d& extent) { return extent.x * extent.y * extent.z; }

double NameSimilarity(std::string_view a, std::string_view b) {
  std::string lowerA(a);
  std::string lowerB(b);
  // ASCII only, as names are: no locale may change the comparison between runs.
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
  std::transform(lowerA.begin(), lowerA.end(), lowerA.begin(), lower);
  std::transform(lowerB.begin(), lowerB.end(), lowerB.begin(), lower);
  const std::size_t longer = std::max(lowerA.size(), lowerB.size());
  if (longer == 0) return 1.0;
  return 1.0 - double(LevenshteinDistance(lowerA, lowerB)) / double(longer);
}

double BoxOverlap(const Vec3d& a, const Vec3d& b) {
  const double larger = std::max(BoxVolume(a), BoxVolume(b));
  if (!(larger > 0.0)) return 0.0;
  const double overlap = std::max(std::min(a.x, b.x), 0.0) * std::max(std::min(a.y, b.y), 0.0) *
                         std::max(std::min(a.z, b.z), 0.0);
  return overlap / larger;
}

double SphereOverlap(double radiusA, double radiusB) {
  const double larger = std::max(SphereVolume(radiusA), SphereVolume(radiusB));
  if (!(larger > 0.0)) return 0.0;
  double distance = 0.0;
  return SphereIntersectionVolume({}, radiusA, {}, radiusB, distance) / larger;
}

double NormalSimilarity(const Vec3d& a, const Vec3d& b) {
  return std::clamp(1.0 - AngleBetween(a, b) / std::numbers::pi, 0.0, 1.0);
}

double Closeness(const Vec3d& a, const Vec3d& b) { return 1.0 / (Length(Subtract(a, b)) + 1.0); }

// Mean closeness of the three rotated unit axes. Divided by 3 last, so that identical
// rotations give exactly 1.
double RotationCloseness(const Mat3d& a, const Mat3d& b) {
  double sum = 0.0;
  for (int axis = 0; axis < 3; ++axis) sum += Closeness(Row(a, axis), Row(b, axis));
  return sum / 3.0;
}

}  // namespace

std::size_t LevenshteinDistance(std::string_view a, std::string_view b) {
  if (a.size() < b.size()) std::swap(a, b);  // the row runs over the shorter string
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];  // distance of a[0, i-1) and b[0, j-1)
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      const std::size_t substitute = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({above + 1, row[j - 1] + 1, substitute});
      diagonal = above;
    }
  }
  return row[b.size()];
}

double SphereVolume(double radius) {
  return 4.0 / 3.0 * std::numbers::pi * radius * radius * radius;
}

double SphereIntersectionVolume(const Vec3d& centre1, double r1, const Vec3d& centre2, double r2,
                                double& distance) {
  assert(r1 >= 0.0 && r2 >= 0.0);
  const double d = Length(Subtract(centre2, centre1));
  distance = d;
  if (d >= r1 + r2) return 0.0;
  if (r2 >= d + r1) return SphereVolume(r1);
  if (r1 >= d + r2) return SphereVolume(r2);
  // Lens: here d > 0, since d == 0 always falls into one of the containment cases above.
  const double gap = r1 + r2 - d;
  return std::numbers::pi * gap * gap *
         (d * d + 2.0 * d * (r1 + r2) - 3.0 * (r1 * r1 + r2 * r2) + 6.0 * r1 * r2) / (12.0 * d);
}

MatchWeights ClampNegativeWeights(const MatchWeights& weights) {
  MatchWeights clamped = weights;
  for (float& w : clamped) {
    if (!(w >= 0.0f)) w = 0.0f;
  }
  return clamped;
}

MatchWeights WeightsForInput(const MatchWeights& weights, std::int64_t pointCount,
                             std::int64_t triangleCount) {
  static constexpr MatchTerm kTriangleBased[] = {
      kTermTriangleCount,          kTermBoundingBox,
      kTermBoundingSphere,         kTermLocalSurfArea,
      kTermLocalSurfNormalAverage, kTermGlobalVertexCenter,
      kTermGlobalSurfArea,         kTermGlobalSurfNormalAverage};
  MatchWeights adjusted = weights;
  if (pointCount <= 0) adjusted[kTermPointCount] = 0.0f;
  if (pointCount <= 0 || triangleCount <= 0) {
    for (MatchTerm term : kTriangleBased) adjusted[term] = 0.0f;
  }
  return adjusted;
}

float TermSum(const MatchTerms& values) {
  float sum = 0.0f;
  for (float value : values) sum += value;
  return sum;
}

MatchTerms ComputeMatchTerms(const ObjectFeatures& input, const ObjectFeatures& candidate,
                             const MatchWeights& weights) {
  MatchTerms terms{};
  const auto set = [&](MatchTerm term, double similarity) {
    if (weights[term] > 0.0f) terms[term] = float(similarity * double(weights[term]));
  };
  set(kTermName, NameSimilarity(input.name, candidate.name));
  // The point-count term is the bare ratio, not multiplied by its weight, while the weight
  // still counts in the weight sum: a point-count weight other than 1 shifts every
  // percentage. Kept that way so that results stay comparable with earlier releases.
  if (weights[kTermPointCount] > 0.0f) {
    terms[kTermPointCount] =
        float(AmountRatio(double(input.pointCount), double(candidate.pointCount)));
  }
  set(kTermTriangleCount,
      AmountRatio(double(input.triangleCount), double(candidate.triangleCount)));
  set(kTermBoundingBox, BoxOverlap(input.boxExtent, candidate.boxExtent));
  set(kTermBoundingSphere, SphereOverlap(input.sphereRadius, candidate.sphereRadius));
  set(kTermLocalSurfArea, AmountRatio(input.localSurfaceArea, candidate.localSurfaceArea));
  set(kTermLocalSurfNormalAverage,
      NormalSimilarity(input.localNormalAverage, candidate.localNormalAverage));
  set(kTermLocalPos, Closeness(input.local.translation, candidate.local.translation));
  set(kTermLocalRot, RotationCloseness(input.local.rotation, candidate.local.rotation));
  set(kTermLocalScl, Closeness(input.local.scaling, candidate.local.scaling));
  set(kTermGlobalVertexCenter, Closeness(input.globalVertexCenter, candidate.globalVertexCenter));
  set(kTermGlobalSurfArea, AmountRatio(input.globalSurfaceArea, candidate.globalSurfaceArea));
  set(kTermGlobalSurfNormalAverage,
      NormalSimilarity(input.globalNormalAverage, candidate.globalNormalAverage));
  set(kTermGlobalPos, Closeness(input.global.translation, candidate.global.translation));
  set(kTermGlobalRot, RotationCloseness(input.global.rotation, candidate.global.rotation));
  set(kTermGlobalScl, Closeness(input.global.scaling, candidate.global.scaling));
  return terms;
}

std::vector<std::size_t> RankByScore(std::span<const float> scores) {
  std::vector<std::size_t> order(scores.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  // NaN ranks last, so that the comparison stays a strict weak order.
  const auto key = [&](std::size_t i) {
    return std::isnan(scores[i]) ? -std::numeric_limits<float>::infinity() : scores[i];
  };
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return key(a) > key(b); });
  return order;
}

double MatchPercentage(float score, float weightSum) {
  if (!(weightSum > 0.0f)) return 0.0;
  return double(score) / double(weightSum) * 99.99;
}

std::vector<RankedMatch> RankMatches(const ObjectFeatures& reference,
                                     std::span<const std::optional<ObjectFeatures>> candidates,
                                     const MatchWeights& weights) {
  const MatchWeights effective =
      WeightsForInput(ClampNegativeWeights(weights), reference.pointCount, reference.triangleCount);
  const float weightSum = TermSum(effective);
  std::vector<float> scores(candidates.size(), 0.0f);
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates[i]) continue;  // left out: scores 0
    scores[i] = TermSum(ComputeMatchTerms(reference, *candidates[i], effective));
  }
  std::vector<RankedMatch> ranking;
  ranking.reserve(candidates.size());
  for (std::size_t index : RankByScore(scores)) {
    ranking.push_back({index, scores[index], MatchPercentage(scores[index], weightSum)});
  }
  return ranking;
}

std::size_t ReportedCount(std::int64_t numOut, std::size_t candidateCount) {
  if (numOut < 1) return candidateCount;
  return std::min(static_cast<std::size_t>(numOut), candidateCount);
}

double EffectiveFrame(double frame) {
  return frame > 1e100 ? std::numeric_limits<double>::max() : frame;
}

std::string FinalMatchLine(double percentage, std::string_view name) {
  char number[320];  // room for any double in fixed notation
  std::snprintf(number, sizeof number, "%.1f", percentage);
  std::string line = number;
  line += "%%    ";
  line += name;
  line += '"';
  return line;
}

std::string MatchListText(std::span<const std::string> rankedNames,
                          std::span<const double> rankedPercentages, std::size_t count) {
  assert(rankedNames.size() == rankedPercentages.size());
  count = std::min(count, rankedNames.size());
  std::string text;
  for (std::size_t i = 0; i < count && rankedPercentages[i] > 0.0; ++i) {
    char number[320];  // room for any double in fixed notation
    std::snprintf(number, sizeof number, "%.2f", rankedPercentages[i]);
    if (i > 0) text += ',';
    text += rankedNames[i];
    text += ',';
    text += number;
  }
  return text;
}

}  // namespace quillix
