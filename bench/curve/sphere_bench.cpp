// Sphere distribution: 10^5 spheres along a 10^4-point spline in corner mode, with the peak
// bytes the kernel held (spline, corner search, records), beside the same spline filled
// without corners.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench/curve/polylines.h"
#include "core/curve/sphere_distribution.h"
#include "kernel/memory_context.h"

namespace {

constexpr std::size_t kSplinePoints = 10'000;
constexpr std::int32_t kMaxSpheres = 100'000;

void RunDistribution(benchmark::State& state, float cornerThreshold) {
  const std::vector<quillix::Vec3f> positions = quillix::testlines::NoisyWalk(kSplinePoints, 3);
  const std::vector<float> radii{0.02f, 0.035f, 0.025f};
  quillix::SphereDistributionParams params;
  params.radii = radii;
  params.cornerThreshold = cornerThreshold;
  params.maxSpheres = kMaxSpheres;
  params.interpolation = {quillix::kInterpolationCatmullRom, quillix::kInterpolationLinear,
                          quillix::kInterpolationLinear};
  quillix::QRVMemoryContext memory;
  std::size_t spheres = 0;
  std::size_t corners = 0;
  for (auto _ : state) {
    memory.ResetPeak();
    quillix::QRVSpline spline(&memory);
    spline.Build(positions, {});
    quillix::CountedArray<quillix::SphereRecord> records(&memory);
    quillix::DistributeSpheres(spline, params, records);
    spheres = records.Size();
    corners = 0;
    for (std::size_t i = 0; i < records.Size(); ++i) corners += records[i].m[3][3] == 1.0f;
    benchmark::DoNotOptimize(records.Data());
  }
  state.SetItemsProcessed(state.iterations() * std::int64_t(spheres));
  state.counters["spheres"] = double(spheres);
  state.counters["corners"] = double(corners);
  state.counters["peak_MiB"] = double(memory.PeakBytes()) / (1024.0 * 1024.0);
}

void BM_DistributeSpheres_Corners(benchmark::State& state) { RunDistribution(state, 0.5f); }
void BM_DistributeSpheres_NoCorners(benchmark::State& state) { RunDistribution(state, 0.0f); }

BENCHMARK(BM_DistributeSpheres_Corners)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DistributeSpheres_NoCorners)->Unit(benchmark::kMillisecond);

}  // namespace
