// Line simplification, with its AVX2 distance scan and with the plain one, against
// Boost.Geometry's Douglas-Peucker on the same polylines; line resampling against a plain copy
// of the same bytes.
#include <benchmark/benchmark.h>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/linestring.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <cstring>
#include <vector>

#include "bench/curve/polylines.h"
#include "core/curve/line_resample.h"
#include "core/curve/line_simplify.h"
#include "core/curve/line_simplify_scan.h"

namespace {

namespace bg = boost::geometry;
using BoostPoint = bg::model::point<float, 3, bg::cs::cartesian>;
using BoostLine = bg::model::linestring<BoostPoint>;

constexpr std::size_t kMillion = 1'000'000;
constexpr float kWalkEpsilon = 0.5f;
constexpr float kSpiralEpsilon = 0.05f;

const std::vector<quillix::Vec3f>& Walk() {
  static const auto line = quillix::testlines::NoisyWalk(kMillion, 7);
  return line;
}
const std::vector<quillix::Vec3f>& Spiral() {
  static const auto line = quillix::testlines::SpikedSpiral(kMillion, 100'000);
  return line;
}

BoostLine ToBoost(const std::vector<quillix::Vec3f>& points) {
  BoostLine line;
  line.reserve(points.size());
  for (const auto& p : points) line.emplace_back(p.x, p.y, p.z);
  return line;
}

// Copy into the reused work buffer and simplify there, as the node does per element.
void RunSimplifyLine(benchmark::State& state, const std::vector<quillix::Vec3f>& input,
                     float epsilon, quillix::ScanKernel kernel) {
  std::vector<quillix::Vec3f> work(input.size());
  std::size_t kept = 0;
  for (auto _ : state) {
    std::memcpy(work.data(), input.data(), input.size() * sizeof(quillix::Vec3f));
    kept = quillix::SimplifyLine(epsilon, work, kernel);
    benchmark::DoNotOptimize(work.data());
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(input.size()));
  state.counters["kept"] = double(kept);
}

void RunBoostSimplify(benchmark::State& state, const std::vector<quillix::Vec3f>& input,
                      float epsilon) {
  const BoostLine line = ToBoost(input);
  BoostLine out;
  for (auto _ : state) {
    out.clear();
    bg::simplify(line, out, epsilon);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(input.size()));
  state.counters["kept"] = double(out.size());
}

void BM_SimplifyLine_NoisyWalk(benchmark::State& state) {
  RunSimplifyLine(state, Walk(), kWalkEpsilon, quillix::ScanKernel::kFastest);
  state.SetLabel(quillix::HasVectorScan() ? "avx2" : "plain (no avx2)");
}
void BM_SimplifyLineScalar_NoisyWalk(benchmark::State& state) {
  RunSimplifyLine(state, Walk(), kWalkEpsilon, quillix::ScanKernel::kScalar);
}
void BM_BoostSimplify_NoisyWalk(benchmark::State& state) {
  RunBoostSimplify(state, Walk(), kWalkEpsilon);
}
void BM_SimplifyLine_Spiral(benchmark::State& state) {
  RunSimplifyLine(state, Spiral(), kSpiralEpsilon, quillix::ScanKernel::kFastest);
  state.SetLabel(quillix::HasVectorScan() ? "avx2" : "plain (no avx2)");
}
void BM_SimplifyLineScalar_Spiral(benchmark::State& state) {
  RunSimplifyLine(state, Spiral(), kSpiralEpsilon, quillix::ScanKernel::kScalar);
}
void BM_BoostSimplify_Spiral(benchmark::State& state) {
  RunBoostSimplify(state, Spiral(), kSpiralEpsilon);
}

BENCHMARK(BM_SimplifyLine_NoisyWalk)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SimplifyLineScalar_NoisyWalk)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BoostSimplify_NoisyWalk)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SimplifyLine_Spiral)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SimplifyLineScalar_Spiral)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BoostSimplify_Spiral)->Unit(benchmark::kMillisecond);

// 10^6 points to 10^6 points with three smoothing passes, output and segment table reused.
void BM_ResampleLine_Million(benchmark::State& state) {
  const auto& input = Walk();
  std::vector<float> segmentLengths;
  std::vector<quillix::Vec3f> out(kMillion);
  for (auto _ : state) {
    const quillix::ResamplePlan plan =
        quillix::PlanResample(input, float(kMillion), segmentLengths);
    quillix::ResampleLine(input, plan, segmentLengths, 0.7f, 3, out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t(kMillion * sizeof(quillix::Vec3f)));
}

void BM_CopyBaseline_Million(benchmark::State& state) {
  const auto& input = Walk();
  std::vector<quillix::Vec3f> out(kMillion);
  for (auto _ : state) {
    std::memcpy(out.data(), input.data(), kMillion * sizeof(quillix::Vec3f));
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t(kMillion * sizeof(quillix::Vec3f)));
}

BENCHMARK(BM_ResampleLine_Million)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CopyBaseline_Million)->Unit(benchmark::kMillisecond);

}  // namespace
