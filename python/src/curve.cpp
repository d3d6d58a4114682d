// The curve cores: polyline simplification and resampling (Quillix_slins, Quillix_rlins) and
// spheres along a spline (Quillix_dsals, Quillix_dsals2), one element per call.
#include <cmath>
#include <cstring>
#include <vector>

#include <pybind11/stl.h>

#include "core/curve/line_resample.h"
#include "core/curve/line_simplify.h"
#include "core/curve/sphere_distribution.h"
#include "python/src/arrays.h"

namespace quillix::python {

namespace {

FloatArray SimplifyPolylineBinding(py::handle pointsValue, float epsilon, bool closed,
                                   bool minThree) {
  const PointsArg input = ToPoints(pointsValue, "points");
  std::vector<Vec3f> work(SimplifyWorkSize(input.points.size()));
  std::span<const Vec3f> result;
  {
    GilRelease release(input.points.size() >= kReleaseThreshold);
    result = SimplifyPolyline(input.points, epsilon, closed, minThree, work);
  }
  FloatArray out = NewPoints(result.size());
  if (!result.empty()) std::memcpy(out.mutable_data(), result.data(), result.size_bytes());
  return out;
}

// The node's one port for both modes: a count as it stands, a density as its negation.
float NumOutputPoints(const std::optional<double>& count, const std::optional<double>& density) {
  if (count && density) throw py::value_error("give count or density, not both");
  if (density) {
    if (!(*density > 0.0)) throw py::value_error("density: expected a positive number");
    return -static_cast<float>(*density);
  }
  if (count) {
    if (!(*count >= 0.0)) throw py::value_error("count: expected a non-negative number");
    return static_cast<float>(*count);
  }
  return 20.0f;
}

FloatArray ResamplePolylineBinding(py::handle pointsValue, std::optional<double> count,
                                   std::optional<double> density, float strength,
                                   std::int32_t iterations) {
  const float numOutputPoints = NumOutputPoints(count, density);
  const PointsArg input = ToPoints(pointsValue, "points");
  std::vector<float> segmentLengths;
  ResamplePlan plan;
  {
    GilRelease release(input.points.size() >= kReleaseThreshold);
    plan = PlanResample(input.points, numOutputPoints, segmentLengths);
  }
  RequireMemory(density ? "density" : "count", plan.count, sizeof(Vec3f));
  FloatArray out = NewPoints(plan.count);
  {
    GilRelease release(input.points.size() + plan.count >= kReleaseThreshold);
    ResampleLine(input.points, plan, segmentLengths, strength, iterations,
                 {MutablePoints(out), plan.count});
  }
  return out;
}

// The interpolation of either node: an int is Quillix_dsals's bit flags, three ints are
// Quillix_dsals2's types for positions, tangents and up vectors.
SplineInterpolation InterpolationArg(py::handle value) {
  static constexpr const char* kExpected = "an int (bit flags) or three ints (types)";
  const IntArray given = ToIntArray(value, "interpolation", kExpected);
  if (given.ndim() == 0) return InterpolationFromFlags(given.data()[0]);
  RequireShape(given, "interpolation", kExpected, {3});
  return {given.at(0), given.at(1), given.at(2)};
}

FloatArray SpheresAlongSpline(py::handle positionsValue, py::handle upsValue,
                              py::handle intervalsValue, py::handle radiiValue,
                              float cornerThreshold, float cornerScale, bool closed,
                              std::int32_t alignment, std::int32_t distribution, std::int32_t seed,
                              py::handle interpolationValue, std::int32_t maxSpheres) {
  const PointsArg positions = ToPoints(positionsValue, "positions");
  const PointsArg ups = ToPoints(upsValue, "up_vectors");
  const IntArray intervals = ToIntArray(intervalsValue, "interval_indices", "a 1-D int32 array");
  RequireShape(intervals, "interval_indices", "a 1-D int32 array", {-1});
  const FloatArray radii = ToFloatArray(radiiValue, "radii", "a 1-D float32 array");
  RequireShape(radii, "radii", "a 1-D float32 array", {-1});

  SphereDistributionParams params;
  params.radii = {radii.data(), std::size_t(radii.size())};
  params.alignment = alignment;
  params.interpolation = InterpolationArg(interpolationValue);
  params.cornerScale = cornerScale;
  params.distribution = distribution;
  params.seed = seed;
  params.cornerThreshold = cornerThreshold;
  params.maxSpheres = maxSpheres;
  std::vector<SphereRecord> records;
  // The node gives an element nothing without two points, an up vector and a radius.
  if (positions.points.size() >= 2 && !ups.points.empty() && radii.size() > 0) {
    GilRelease release(positions.points.size() >= kReleaseThreshold);
    DistributeSpheresOverIntervals(positions.points, ups.points,
                                   {intervals.data(), std::size_t(intervals.size())}, closed,
                                   params, records);
  }
  const std::span<const SphereRecord> spheres(records);
  FloatArray out = NewMatrices(spheres.size());
  if (!spheres.empty()) std::memcpy(out.mutable_data(), spheres.data(), spheres.size_bytes());
  return out;
}

}  // namespace

void BindCurve(py::module_& m) {
  m.def("simplify_polyline", &SimplifyPolylineBinding, py::arg("points"), py::arg("epsilon") = 1.0f,
        py::arg("closed") = false, py::arg("min_three") = false,
        R"(Simplifies one polyline to the distance tolerance `epsilon` (Quillix_slins).

points: (N, 3) float32 positions (other real dtypes are converted).
Returns an (M, 3) float32 array, M <= N, unless `min_three` fills a shorter result up to three
points. `epsilon` not greater than 0 (NaN included) returns the points unchanged; `closed`
merges the two ends when they lie within epsilon of each other.)");
  m.def("resample_polyline", &ResamplePolylineBinding, py::arg("points"),
        py::arg("count") = py::none(), py::arg("density") = py::none(),
        py::arg("smooth_strength") = 0.7f, py::arg("smooth_iterations") = 3,
        R"(Resamples one polyline evenly by arc length, then smooths it (Quillix_rlins).

points: (N, 3) float32 positions. Give `count` (output points, rounded half away from zero;
below 2 gives none) or `density` (points per unit length, > 0), not both; neither means
count 20. Returns an (M, 3) float32 array; fewer than 2 input points give (0, 3).)");
  m.def(
      "spheres_along_spline", &SpheresAlongSpline, py::arg("positions"),
      py::arg("up_vectors") = std::vector<std::vector<float>>{{0.0f, 0.0f, 0.0f}},
      py::arg("interval_indices") = std::vector<std::int32_t>{-1},
      py::arg("radii") = std::vector<float>{1.0f}, py::arg("corner_threshold") = 1.0f,
      py::arg("corner_scale") = 1.0f, py::arg("closed") = false, py::arg("alignment") = 1,
      py::arg("distribution") = 0, py::arg("random_seed") = 0, py::arg("interpolation") = 3,
      py::arg("max_spheres") = 16777216,
      R"(Spheres packed along one spline, as encoded 4x4 matrices (Quillix_dsals / Quillix_dsals2).

positions: (N, 3) control points; up_vectors: (U, 3); interval_indices: 1-D int32 (a single
negative index is one interval over everything); radii: 1-D float32.
interpolation: an int is Quillix_dsals's bit flags (bit 0 linear tangents, bit 1 linear up
vectors); three ints (positions, tangents, up vectors) are Quillix_dsals2's types (20 linear,
40 cubic, 50 Catmull-Rom).
Returns a (K, 4, 4) float32 array: rows 0-2 the orientation (column 3 radius, spacing scale,
radius index), row 3 the centre and 1 for a corner sphere. Empty with fewer than 2 positions,
no up vector or no radius.)");
}

}  // namespace quillix::python
