// The line simplifier on fuzzed polylines and tolerances: NaN, infinities, huge and tiny
// values, removal marks already in the input, closed and open lines. The result is a view of
// the input or of the work buffer, keeps the first point, and never grows; the AVX2 distance
// scan marks exactly the points the plain loop marks.
//
// A line has only the points its bytes describe, at most kMaxPoints. Padding short inputs with
// zeros made thousand-point runs of equal points out of a few bytes; with a tolerance whose
// square underflows to 0 every split of such a run falls next to the start of its part, which
// costs time quadratic in the run without reaching anything a shorter run does not.
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/curve/line_simplify.h"
#include "fuzz/fuzz_common.h"

using namespace quillix;
using quillix::fuzz::Check;

namespace {
// Enough for several eight-point blocks of the vector scan with a tail, and a pending stack
// several parts deep.
constexpr std::size_t kMaxPoints = 256;

bool SameBits(const Vec3f& a, const Vec3f& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider in(bytes, size);
  const float epsilon = quillix::fuzz::ConsumeNastyFloat(in);
  const bool closed = in.ConsumeBool(), minThree = in.ConsumeBool(), inPlace = in.ConsumeBool();
  std::vector<Vec3f> points;
  points.reserve(kMaxPoints);
  while (points.size() < kMaxPoints && in.remaining_bytes() > 0) {
    points.push_back({quillix::fuzz::ConsumeNastyFloat(in), quillix::fuzz::ConsumeNastyFloat(in),
                      quillix::fuzz::ConsumeNastyFloat(in)});
  }

  if (inPlace) {
    // The in-place form, marking and compaction over the caller's buffer, once with each scan.
    std::vector<Vec3f> line = points, plainLine = points;
    const std::size_t count = SimplifyLine(epsilon, line, ScanKernel::kFastest);
    Check(count <= points.size(), "in-place count beyond the input");
    Check(SimplifyLine(epsilon, plainLine, ScanKernel::kScalar) == count,
          "the vector scan kept another number of points than the plain loop");
    for (std::size_t i = 0; i < count; ++i)
      Check(SameBits(line[i], plainLine[i]),
            "the vector scan kept other points than the plain loop");
    return 0;
  }

  std::vector<Vec3f> work(SimplifyWorkSize(points.size()));
  const std::span<const Vec3f> out = SimplifyPolyline(points, epsilon, closed, minThree, work);
  const bool ofInput = out.data() == points.data();
  const bool ofWork = out.data() == work.data();
  Check(ofInput || ofWork || out.empty(),
        "result is a view of neither the input nor the work buffer");
  Check(out.size() <= std::max<std::size_t>(points.size(), minThree ? 3 : 0), "the line grew");
  if (ofWork) Check(out.size() <= work.size(), "result runs past the work buffer");
  if (minThree) Check(out.size() >= 3, "fewer than three points with the at-least-three option");
  if (!points.empty() && out.size() >= 3 && points.size() >= 3 && !closed)
    Check(SameBits(out.front(), points.front()) || IsRemovalMark(points.front().x),
          "the first point moved");
  return 0;
}
