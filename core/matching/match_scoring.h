// Similarity scoring of scene objects against an input object.
//
// Each candidate gets sixteen terms, one per weight, each between 0 and its weight (the
// point-count term excepted, see below); its score is their sum, and its percentage is the
// score relative to the sum of the weights, scaled to 99.99 so that a perfect match never
// reads as 100 per cent. RankMatches runs the whole comparison over features that the caller
// gathered (object_features.h holds their geometry maths); the other functions are its steps
// and the texts that report a ranking. Everything here is plain arithmetic over plain values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/math/math_types.h"

namespace quillix {

// The parts of a transform that the matching compares: scaling per axis, rotation (row i
// is the rotated unit axis i) and translation. The identity transform by default.
struct TransformParts {
  Vec3d scaling{1.0, 1.0, 1.0};
  Mat3d rotation = Mat3d::Identity();
  Vec3d translation;
};

// The sixteen terms, in the order of the command's weight arguments.
enum MatchTerm : std::size_t {
  kTermName,
  kTermPointCount,
  kTermTriangleCount,
  kTermBoundingBox,
  kTermBoundingSphere,
  kTermLocalSurfArea,
  kTermLocalSurfNormalAverage,
  kTermLocalPos,
  kTermLocalRot,
  kTermLocalScl,
  kTermGlobalVertexCenter,
  kTermGlobalSurfArea,
  kTermGlobalSurfNormalAverage,
  kTermGlobalPos,
  kTermGlobalRot,
  kTermGlobalScl,
  kMatchTermCount
};

using MatchWeights = std::array<float, kMatchTermCount>;
using MatchTerms = std::array<float, kMatchTermCount>;

// What the scoring knows of one object. Counts of 0 stand for a missing geometry.
struct ObjectFeatures {
  std::string name;  // 8-bit; compared case-insensitively (ASCII)
  std::int64_t pointCount = 0;
  std::int64_t triangleCount = 0;
  Vec3d boxExtent;            // local bounding box, full extent per axis
  double sphereRadius = 0.0;  // local bounding sphere
  double localSurfaceArea = 0.0;
  double globalSurfaceArea = 0.0;
  Vec3d globalVertexCenter;  // average of the triangle corners in world space
  Vec3d localNormalAverage;
  Vec3d globalNormalAverage;
  TransformParts local;
  TransformParts global;
};

// Edit distance of two byte strings (insertion, deletion and substitution each cost 1).
// An empty string is at the other's length. O(|a|·|b|) time, O(min(|a|, |b|)) memory.
std::size_t LevenshteinDistance(std::string_view a, std::string_view b);

// Volume shared by the spheres (centre1, r1) and (centre2, r2); `distance` receives the
// distance of the centres. 0 when the spheres are apart or touch (d ≥ r1 + r2); the
// smaller sphere's volume when it lies inside the other; the lens volume otherwise.
// Radii must not be negative.
double SphereIntersectionVolume(const Vec3d& centre1, double r1, const Vec3d& centre2, double r2,
                                double& distance);

// (4/3)·π·r³.
double SphereVolume(double radius);

// `weights` with every negative (or NaN) weight raised to 0.
MatchWeights ClampNegativeWeights(const MatchWeights& weights);

// `weights` adjusted to what an input object of the given counts can be compared by: with
// no points every geometry weight (counts, boxes, areas, normals, vertex centre) is 0; with
// no triangles every triangle-based one (all of those but the point count) is 0. Name,
// position, rotation and scale weights are kept.
MatchWeights WeightsForInput(const MatchWeights& weights, std::int64_t pointCount,
                             std::int64_t triangleCount);

// Sum of the sixteen weights or terms, added in term order: the weight sum, or a candidate's
// score when given its terms.
float TermSum(const MatchTerms& values);

// The sixteen terms of `candidate` against `input`; a term whose weight is not greater than
// 0 is 0. The point-count term is deliberately left unweighted: it is the bare count ratio
// whenever its weight is positive (see the definition).
MatchTerms ComputeMatchTerms(const ObjectFeatures& input, const ObjectFeatures& candidate,
                             const MatchWeights& weights);

// Indices of `scores` ordered by score, highest first; equal scores keep their order and a
// NaN score ranks last.
std::vector<std::size_t> RankByScore(std::span<const float> scores);

// score / weightSum × 99.99, computed as a ratio first so that a score equal to the weight
// sum gives exactly 99.99. A weightSum not greater than 0 gives 0.
double MatchPercentage(float score, float weightSum);

// One candidate's place in a ranking.
struct RankedMatch {
  std::size_t candidate = 0;  // index into the ranked candidates
  float score = 0.0f;         // TermSum of its terms; 0 for a candidate left out
  double percentage = 0.0;    // MatchPercentage of the score
};

// Ranks `candidates` by their similarity to `reference`, best first.
//  - reference: the object the candidates are compared with.
//  - candidates: #C entries; an empty entry is a candidate left out of the comparison (one
//    the caller skips): it scores 0 but keeps its place in the ranking.
//  - weights: as the user gives them. Negative and NaN weights count as 0
//    (ClampNegativeWeights) and the geometry weights that the reference's counts rule out
//    are dropped (WeightsForInput); the percentages are relative to the sum of the weights
//    that remain (TermSum).
// Returns #C entries, one per candidate, in RankByScore order: highest score first, equal
// scores in candidate order. Each score is TermSum(ComputeMatchTerms(reference,
// candidate, weights)). When no weight remains every score and percentage is 0 and the
// candidates keep their order. No candidates give an empty ranking.
std::vector<RankedMatch> RankMatches(const ObjectFeatures& reference,
                                     std::span<const std::optional<ObjectFeatures>> candidates,
                                     const MatchWeights& weights);

// How many candidates are reported: all of them when `numOut` is below 1, otherwise
// `numOut` reduced to `candidateCount`.
std::size_t ReportedCount(std::int64_t numOut, std::size_t candidateCount);

// Evaluation frame as the host reads it: anything above 1e100 means "the current frame",
// which the host spells as the largest double.
double EffectiveFrame(double frame);

// One verbose line of the final matches: the percentage as "%.1f", the literal text "%%    "
// (two percent signs and four blanks, kept as they stand), the name and a double quote.
std::string FinalMatchLine(double percentage, std::string_view name);

// The command's return value: "name,percentage" for the leading `count` entries of the
// ranked lists while the percentage is greater than 0, entries joined by ","; percentages
// printed as "%.2f". `rankedNames` and `rankedPercentages` are parallel, in rank order; a
// `count` beyond their length is reduced to it.
std::string MatchListText(std::span<const std::string> rankedNames,
                          std::span<const double> rankedPercentages, std::size_t count);

}  // namespace quillix
