// The core calls the Python package makes, timed in C++ with the same inputs as
// bench/python/binding_overhead.py, which runs this program and reports the binding's
// overhead per call against it. Each case allocates its result as the binding does not have
// to: only the core call is timed.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "core/curve/line_resample.h"
#include "core/curve/line_simplify.h"
#include "core/mesh/path_chain.h"
#include "core/mesh/vertex_path.h"
#include "core/spatial/box_intersect.h"
#include "core/spatial/ellipsoid.h"

namespace {

using quillix::Vec3f;

// x = 0.01 i, y = sin(0.1 i), z = 0, as the script builds it.
std::vector<Vec3f> Wave(std::size_t count) {
  std::vector<Vec3f> points(count);
  for (std::size_t i = 0; i < count; ++i)
    points[i] = {float(0.01 * double(i)), float(std::sin(0.1 * double(i))), 0.0f};
  return points;
}

void BM_SimplifyPolyline(benchmark::State& state) {
  const std::vector<Vec3f> points = Wave(std::size_t(state.range(0)));
  std::vector<Vec3f> work(quillix::SimplifyWorkSize(points.size()));
  for (auto _ : state) {
    benchmark::DoNotOptimize(quillix::SimplifyPolyline(points, 0.05f, false, false, work).size());
  }
}
BENCHMARK(BM_SimplifyPolyline)->Arg(8)->Arg(100000);

void BM_ResamplePolyline(benchmark::State& state) {
  const std::vector<Vec3f> points = Wave(std::size_t(state.range(0)));
  std::vector<float> lengths;
  for (auto _ : state) {
    const quillix::ResamplePlan plan =
        quillix::PlanResample(points, float(state.range(0)), lengths);
    std::vector<Vec3f> out(plan.count);
    quillix::ResampleLine(points, plan, lengths, 0.7f, 3, out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_ResamplePolyline)->Arg(8)->Arg(1000000);

// Box i: identity axes scaled by 1 + (i mod 7) / 7, centre (0.37 i mod 20, 0, 0); against
// the unit box at the origin, on one thread.
void BM_BoxesIntersect(benchmark::State& state) {
  const std::size_t count = std::size_t(state.range(0));
  std::vector<quillix::Mat4f> boxes(count, quillix::Mat4f::Identity());
  for (std::size_t i = 0; i < count; ++i) {
    const float scale = 1.0f + float(i % 7) / 7.0f;
    for (int r = 0; r < 3; ++r) boxes[i].m[r][r] = scale;
    boxes[i].m[3][0] = float(std::fmod(0.37 * double(i), 20.0));
  }
  const quillix::Mat4f unit = quillix::Mat4f::Identity();
  std::vector<std::uint8_t> out(count);
  for (auto _ : state) {
    const quillix::PreparedBox a = quillix::PrepareBox(quillix::EllipsoidFromMatrix(unit), true);
    for (std::size_t i = 0; i < count; ++i) {
      out[i] = quillix::BoxesIntersect(
          a, quillix::PrepareBox(quillix::EllipsoidFromMatrix(boxes[i]), false), 0);
    }
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_BoxesIntersect)->Arg(1)->Arg(1000000);

// A side × side vertex grid of quads; one search from the middle to ten vertices along.
void BM_VertexPath(benchmark::State& state) {
  const std::int32_t side = std::int32_t(state.range(0));
  std::vector<Vec3f> positions;
  std::vector<std::int32_t> description;
  for (std::int32_t y = 0; y < side; ++y)
    for (std::int32_t x = 0; x < side; ++x) positions.push_back({float(x), float(y), 0.0f});
  for (std::int32_t y = 0; y + 1 < side; ++y) {
    for (std::int32_t x = 0; x + 1 < side; ++x) {
      const std::int32_t c = y * side + x;
      description.insert(description.end(), {c, c + 1, c + side + 1, c + side, -1});
    }
  }
  quillix::QRVGeometry geo;
  if (quillix::BuildPathGeometry(positions, description, geo) != 0) state.SkipWithError("build");
  const std::int32_t start = (side / 2) * side + side / 2;
  quillix::VertexPathWork work;
  std::vector<std::int32_t> path(positions.size());
  for (auto _ : state) {
    std::int32_t* out = path.data();
    std::int32_t length = geo.VertexCount();
    quillix::QRVStatus status = 0;
    quillix::FindVertexPath(geo, start, start + 10, out, length, 0, nullptr, status, geo.Memory(),
                            &work);
    benchmark::DoNotOptimize(length);
  }
}
BENCHMARK(BM_VertexPath)->Arg(10)->Arg(1000);

}  // namespace
