// Long runs of FindVertexPath on one mesh through one reused VertexPathWork. The search
// resets only the records it wrote, so a record left dirty by an earlier search (a failed
// one, one that stopped at its end vertex with open vertices left, one refused memory half
// way, one with other blocked vertices) would change a later result. Every search is
// repeated on fresh state and must give the same status and path; where a path exists it
// must also be the one of the literal list scan. Meshes are fuzzed quad grids (long routes,
// ties, coincident vertices, holes) or fuzzed polygon soups.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/mesh/vertex_path.h"
#include "fuzz/fuzz_common.h"
#include "fuzz/fuzz_mesh.h"
#include "kernel/geometry.h"
#include "kernel/status_codes.h"
#include "tests/core/mesh/literal_search.h"

using namespace quillix;
using quillix::fuzz::Check;

namespace {

// A grid of 2 to 12 × 2 to 12 vertices joined by quads, some of them left out (holes and
// islands); the positions are the grid's, clustered into coincident groups, lifted by fuzzed
// heights, or partly replaced by troublesome floats.
QRVStatus ConsumeGridMesh(FuzzedDataProvider& in, QRVGeometry& geo) {
  const std::int32_t w = in.ConsumeIntegralInRange<std::int32_t>(2, 12);
  const std::int32_t h = in.ConsumeIntegralInRange<std::int32_t>(2, 12);
  const int shape = in.ConsumeIntegralInRange<int>(0, 3);
  std::vector<Vec3f> positions;
  for (std::int32_t j = 0; j < h; ++j) {
    for (std::int32_t i = 0; i < w; ++i) {
      Vec3f p = {float(i), float(j), 0.0f};
      if (shape == 1) p = {float(i / 3), float(j / 2), 0.0f};
      if (shape == 2) p.z = float(in.ConsumeIntegralInRange<int>(0, 3)) * 0.5f;
      if (shape == 3 && in.ConsumeIntegralInRange<int>(0, 7) == 0)
        p = {quillix::fuzz::ConsumeNastyFloat(in), p.y, quillix::fuzz::ConsumeNastyFloat(in)};
      positions.push_back(p);
    }
  }
  const int dropOneIn = in.ConsumeIntegralInRange<int>(0, 8);  // 0: keep every quad
  std::vector<std::int32_t> description;
  std::int32_t polygonCount = 0;
  for (std::int32_t j = 0; j + 1 < h; ++j) {
    for (std::int32_t i = 0; i + 1 < w; ++i) {
      if (dropOneIn != 0 && in.ConsumeIntegralInRange<int>(1, dropOneIn) == 1) continue;
      const std::int32_t a = j * w + i;
      description.insert(description.end(), {4, a, a + 1, a + 1 + w, a + w});
      ++polygonCount;
    }
  }
  return geo.Set(positions.data(), w * h, kEncodingFloat, description.data(), nullptr, polygonCount,
                 kDescriptionInline);
}

// Changes the blocked set between searches: keep it, flip a few vertices, free every vertex,
// or block about one vertex in `share`.
void ConsumeFlags(FuzzedDataProvider& in, std::vector<std::uint8_t>& flags) {
  const std::int32_t n = std::int32_t(flags.size());
  switch (in.ConsumeIntegralInRange<int>(0, 3)) {
    case 0:
      break;
    case 1:
      for (int k = in.ConsumeIntegralInRange<int>(1, 4); k > 0; --k) {
        auto& f = flags[std::size_t(in.ConsumeIntegralInRange<std::int32_t>(0, n - 1))];
        f = f == 0 ? in.ConsumeIntegralInRange<std::uint8_t>(1, 255) : 0;
      }
      break;
    case 2:
      std::fill(flags.begin(), flags.end(), 1);
      break;
    default: {
      const int share = in.ConsumeIntegralInRange<int>(2, 8);
      for (auto& f : flags) f = in.ConsumeIntegralInRange<int>(1, share) == 1 ? 0 : 1;
    }
  }
}

struct Result {
  bool found;
  QRVStatus status;
  std::vector<std::int32_t> path;
};

Result Search(const QRVGeometry& geo, std::int32_t start, std::int32_t end, std::int32_t maximum,
              bool callerArray, std::int32_t algorithm, const std::uint8_t* flags,
              QRVMemoryContext& memory, VertexPathWork* work) {
  // The caller's array holds the most vertices accepted: below 1 means the vertex count.
  const std::int32_t room = maximum < 1 ? geo.VertexCount() : maximum;
  std::vector<std::int32_t> own(callerArray ? std::size_t(std::max(room, 1)) : 0, -7);
  std::int32_t* path = callerArray ? own.data() : nullptr;
  std::int32_t length = maximum;
  Result r{false, 12345, {}};
  r.found = FindVertexPath(geo, start, end, path, length, algorithm, flags, r.status, memory, work);
  Check(r.found == (r.status == kStatusOk), "the return value disagrees with the status");
  Check(r.found || (length == 0 && (callerArray || path == nullptr)),
        "a failed search reports a path or hands over an array");
  if (r.found) r.path.assign(path, path + length);
  if (r.found && !callerArray) memory.Release(path);
  return r;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider in(bytes, size);
  QRVMemoryContext geometryMemory, reusedMemory;
  {
    QRVGeometry geo(&geometryMemory);
    const QRVStatus built = in.ConsumeBool() ? ConsumeGridMesh(in, geo)
                                             : quillix::fuzz::ConsumeRandomMesh(in, geo, 96, 96);
    if (built != kStatusOk || geo.NeighbourLists() == nullptr) return 0;
    if (in.ConsumeBool()) (void)geo.ComponentNumbers();
    if (in.ConsumeBool()) (void)geo.NeighbourSteps();
    const std::int32_t v = geo.VertexCount();
    std::vector<std::uint8_t> flags(std::size_t(std::max(v, 1)), 1);

    VertexPathWork reused(&reusedMemory);
    const int searches = in.ConsumeIntegralInRange<int>(1, 48);
    for (int s = 0; s < searches && in.remaining_bytes() > 0; ++s) {
      ConsumeFlags(in, flags);
      const std::uint8_t* f = in.ConsumeIntegralInRange<int>(0, 5) != 0 ? flags.data() : nullptr;
      // A limit now and then makes the reused buffers fail to grow part way.
      if (in.ConsumeIntegralInRange<int>(0, 15) == 0)
        reusedMemory.SetLimit(in.ConsumeBool(),
                              in.ConsumeIntegralInRange<std::int64_t>(0, 24 * v + 64));
      const auto vertex = [&] {
        return in.ConsumeIntegralInRange<int>(0, 31) == 0
                   ? in.ConsumeIntegralInRange<std::int32_t>(-1, v)
                   : in.ConsumeIntegralInRange<std::int32_t>(0, std::max(v, 1) - 1);
      };
      const std::int32_t start = vertex(), end = vertex();
      const std::int32_t maximum = quillix::fuzz::SmallOrAnyCount(in, v + 2);
      const std::int32_t limit = maximum < 1 ? v : maximum;
      // One side writes into the caller's array, the other has it allocated (when it fits).
      const bool fits = limit <= 4096;
      const bool callerArray = in.ConsumeBool() && fits;
      const std::int32_t algorithm =
          in.ConsumeIntegralInRange<int>(0, 15) == 0 ? in.ConsumeIntegral<std::int32_t>() : 0;

      const Result again =
          Search(geo, start, end, maximum, callerArray, algorithm, f, reusedMemory, &reused);
      QRVMemoryContext freshMemory;
      VertexPathWork freshWork(&freshMemory);
      const Result fresh = Search(geo, start, end, maximum, fits && !callerArray, algorithm, f,
                                  freshMemory, in.ConsumeBool() ? &freshWork : nullptr);
      // Only the reused side runs under a limit: a refusal there is no disagreement.
      if (again.status == kStatusNoMemory) continue;
      Check(again.status == fresh.status, "a reused search's status differs from a fresh one");
      Check(again.path == fresh.path, "a reused search's path differs from a fresh one");
      if (again.status == kStatusOk || again.status == kStatusPathNotFound ||
          again.status == kStatusTooManyPoints) {
        const std::vector<std::int32_t> literal = testing::LiteralSearch(geo, start, end, f);
        if (again.status == kStatusOk)
          Check(again.path == literal, "path differs from the list scan");
        if (again.status == kStatusPathNotFound)
          Check(literal.empty(), "the list scan found a path");
        if (again.status == kStatusTooManyPoints)
          Check(std::int32_t(literal.size()) > limit, "the list scan's path fits the maximum");
      }
    }
  }
  Check(reusedMemory.BytesInUse() == 0, "the reused work kept memory");
  Check(geometryMemory.BytesInUse() == 0, "the geometry kept memory");
  return 0;
}
