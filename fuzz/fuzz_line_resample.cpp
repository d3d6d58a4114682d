// The resampler and smoother on fuzzed polylines and settings: NaN, infinities, huge and tiny
// coordinates, counts and densities of every sign and size, any strength and iteration count.
// The plan's count must fit a host array; the output is written exactly to that count.
#include <cstdint>
#include <limits>
#include <vector>

#include "core/curve/line_resample.h"
#include "fuzz/fuzz_common.h"

using namespace quillix;
using quillix::fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider in(bytes, size);
  float numOutputPoints = quillix::fuzz::ConsumeNastyFloat(in);
  if (in.ConsumeBool()) numOutputPoints = float(in.ConsumeIntegralInRange<int>(-64, 300));
  const float strength = quillix::fuzz::ConsumeNastyFloat(in);
  std::int32_t iterations = quillix::fuzz::SmallOrAnyCount(in, 8);
  if (iterations > 64) iterations = 64;  // each pass is linear; many passes add time, not paths
  std::vector<Vec3f> points(in.ConsumeIntegralInRange<std::size_t>(0, 512));
  for (auto& p : points) {
    if (in.remaining_bytes() == 0) break;
    p = {quillix::fuzz::ConsumeNastyFloat(in), quillix::fuzz::ConsumeNastyFloat(in),
         quillix::fuzz::ConsumeNastyFloat(in)};
  }

  std::vector<float> lengths;
  const ResamplePlan plan = PlanResample(points, numOutputPoints, lengths);
  Check(plan.count <= std::size_t(std::numeric_limits<std::int32_t>::max()),
        "count beyond a host array");
  Check(
      points.size() < 2 ? plan.count == 0 && lengths.empty() : lengths.size() == points.size() - 1,
      "segment table of the wrong size");
  // Outputs of millions of points are valid plans; writing them only costs time here. Denormal
  // coordinates cost some processors a microcode assist per operation (a hundred times the
  // usual cost), so the bound keeps the slowest case, every pass over denormals, near a second.
  if (plan.count > (1u << 12)) return 0;
  std::vector<Vec3f> out(plan.count + 1);
  const Vec3f guard{1.5f, 2.5f, 3.5f};
  out.back() = guard;
  ResampleLine(points, plan, lengths, strength, iterations,
               std::span<Vec3f>(out.data(), plan.count));
  Check(out.back().x == guard.x && out.back().y == guard.y && out.back().z == guard.z,
        "wrote past the plan's count");

  std::vector<Vec3f> smooth = points;
  SmoothLine(strength, iterations, smooth);
  return 0;
}
