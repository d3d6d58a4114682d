// The matching core: the ranking of Quillix__FindMatchingObjects over plain object features,
// and the edit distance it compares names with.
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include <pybind11/stl.h>

#include "core/matching/match_scoring.h"
#include "python/src/arrays.h"

namespace quillix::python {

namespace {

// The command's weight arguments without their "weight" prefix, in term order, and their
// defaults.
constexpr std::array<const char*, kMatchTermCount> kWeightNames = {"name",
                                                                   "point_count",
                                                                   "triangle_count",
                                                                   "bounding_box",
                                                                   "bounding_sphere",
                                                                   "local_surf_area",
                                                                   "local_surf_normal_average",
                                                                   "local_pos",
                                                                   "local_rot",
                                                                   "local_scl",
                                                                   "global_vertex_center",
                                                                   "global_surf_area",
                                                                   "global_surf_normal_average",
                                                                   "global_pos",
                                                                   "global_rot",
                                                                   "global_scl"};
constexpr MatchWeights kDefaultWeights = {0.0f, 1.0f, 1.0f,   1.0f, 1.0f, 1.0f, 1.0f, 0.0f,
                                          0.0f, 0.0f, 0.125f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f};

// The weights of a call: None for the command's defaults, a dict overriding some of them by
// name, or 16 values in term order.
MatchWeights WeightsArg(py::handle value) {
  MatchWeights weights = kDefaultWeights;
  if (value.is_none()) return weights;
  if (py::isinstance<py::dict>(value)) {
    for (const auto& [key, weight] : py::reinterpret_borrow<py::dict>(value)) {
      const std::string name = py::str(key);
      std::size_t term = 0;
      while (term < kMatchTermCount && name != kWeightNames[term]) ++term;
      if (term == kMatchTermCount)
        throw py::value_error("weights: unknown weight \"" + name + "\"");
      const std::string argument = "weights[\"" + name + "\"]";
      const FloatArray given = ToFloatArray(weight, argument.c_str(), "a number");
      RequireShape(given, argument.c_str(), "a number", {});
      weights[term] = given.data()[0];
    }
    return weights;
  }
  const FloatArray given = ToFloatArray(value, "weights", "a dict of weights or 16 values");
  RequireShape(given, "weights", "a dict of weights or 16 values", {kMatchTermCount});
  std::copy_n(given.data(), kMatchTermCount, weights.begin());
  return weights;
}

// A Vec3d field as a (3,) float64 array property.
template <class Owner>
void Vec3Property(py::class_<Owner>& cls, const char* name, Vec3d Owner::*field) {
  cls.def_property(
      name,
      [field](const Owner& owner) {
        const Vec3d& v = owner.*field;
        return py::array_t<double>(3, &v.x);
      },
      [field, name](Owner& owner, py::handle value) {
        const auto v = ToDoubleArray(value, name, "3 numbers");
        RequireShape(v, name, "3 numbers", {3});
        owner.*field = {v.at(0), v.at(1), v.at(2)};
      });
}

py::dict FindMatchingScores(const ObjectFeatures& input, py::handle candidatesValue,
                            py::handle weightsValue, std::int64_t numOut) {
  const std::vector<ObjectFeatures> candidates =
      SequenceArg<ObjectFeatures>(candidatesValue, "candidates", "a list of ObjectFeatures");
  MatchWeights weights = ClampNegativeWeights(WeightsArg(weightsValue));
  weights = WeightsForInput(weights, input.pointCount, input.triangleCount);
  const float weightSum = TermSum(weights);
  std::vector<float> scores(candidates.size(), 0.0f);
  std::vector<std::size_t> order;
  std::vector<std::string> rankedNames;
  std::vector<double> rankedPercentages;
  std::string text;
  // All weights zero: the command stops before scoring, with no return value.
  if (weightSum > 0.0f) {
    GilRelease release(true);
    for (std::size_t i = 0; i < candidates.size(); ++i)
      scores[i] = TermSum(ComputeMatchTerms(input, candidates[i], weights));
    order = RankByScore(scores);
    for (std::size_t index : order) {
      rankedNames.push_back(candidates[index].name);
      rankedPercentages.push_back(MatchPercentage(scores[index], weightSum));
    }
    text = MatchListText(rankedNames, rankedPercentages, ReportedCount(numOut, candidates.size()));
  }
  py::dict out;
  out["order"] = py::array_t<std::int64_t>(py::ssize_t(order.size()));
  auto orderOut = out["order"].cast<py::array_t<std::int64_t>>();
  for (std::size_t k = 0; k < order.size(); ++k) orderOut.mutable_at(k) = std::int64_t(order[k]);
  out["percentages"] =
      py::array_t<double>(py::ssize_t(rankedPercentages.size()), rankedPercentages.data());
  out["scores"] = py::array_t<float>(py::ssize_t(scores.size()), scores.data());
  out["return_value"] = text;
  return out;
}

}  // namespace

void BindMatching(py::module_& m) {
  py::class_<TransformParts> parts(m, "TransformParts",
                                   "Scaling, rotation (3x3, row-vector) and translation.");
  parts.def(py::init<>());
  Vec3Property(parts, "scaling", &TransformParts::scaling);
  Vec3Property(parts, "translation", &TransformParts::translation);
  parts.def_property(
      "rotation",
      [](const TransformParts& p) {
        return py::array_t<double>({3, 3}, &p.rotation.m[0][0]);
      },
      [](TransformParts& p, py::handle value) {
        const auto r = ToDoubleArray(value, "rotation", "a (3, 3) matrix");
        RequireShape(r, "rotation", "a (3, 3) matrix", {3, 3});
        std::memcpy(p.rotation.m, r.data(), sizeof p.rotation.m);
      });

  py::class_<ObjectFeatures> features(
      m, "ObjectFeatures",
      R"(What the matching compares of one object. Counts of 0 stand for a missing geometry.)");
  features.def(py::init<>())
      .def_readwrite("name", &ObjectFeatures::name)
      .def_readwrite("point_count", &ObjectFeatures::pointCount)
      .def_readwrite("triangle_count", &ObjectFeatures::triangleCount)
      .def_readwrite("sphere_radius", &ObjectFeatures::sphereRadius)
      .def_readwrite("local_surface_area", &ObjectFeatures::localSurfaceArea)
      .def_readwrite("global_surface_area", &ObjectFeatures::globalSurfaceArea)
      .def_readwrite("local_transform", &ObjectFeatures::local)
      .def_readwrite("global_transform", &ObjectFeatures::global);
  Vec3Property(features, "box_extent", &ObjectFeatures::boxExtent);
  Vec3Property(features, "global_vertex_center", &ObjectFeatures::globalVertexCenter);
  Vec3Property(features, "local_normal_average", &ObjectFeatures::localNormalAverage);
  Vec3Property(features, "global_normal_average", &ObjectFeatures::globalNormalAverage);

  m.attr("MATCH_WEIGHT_NAMES") =
      py::cast(std::vector<std::string>(kWeightNames.begin(), kWeightNames.end()));
  m.def("find_matching_scores", &FindMatchingScores, py::arg("input"), py::arg("candidates"),
        py::arg("weights") = py::none(), py::arg("num_out") = 1,
        R"(Ranks candidates against the input as Quillix__FindMatchingObjects does.

weights: None (the command's defaults), a dict overriding some by name (MATCH_WEIGHT_NAMES),
or 16 values in that order; negative weights count as 0, and an input without points or
triangles drops the weights it cannot be compared by.
Returns a dict: "scores" (float32, candidate order), "order" (candidate indices, best first,
ties in candidate order), "percentages" (float64, rank order) and "return_value" (the
command's "name,percent,..." text for the best num_out, all when num_out < 1). All weights
zero: nothing is scored (empty order, zero scores, empty text).)");
  m.def(
      "levenshtein_distance",
      [](const std::string& a, const std::string& b) {
        GilRelease release(a.size() * b.size() >= kReleaseThreshold);
        return LevenshteinDistance(a, b);
      },
      py::arg("a"), py::arg("b"),
      "Edit distance of two strings' UTF-8 bytes (insert, delete, substitute each cost 1).");
}

}  // namespace quillix::python
