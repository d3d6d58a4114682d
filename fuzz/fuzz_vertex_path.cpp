// FindVertexPath on fuzzed meshes (positions with NaN, infinities and extremes, random
// triangles and quads), fuzzed vertex flags, ends, maximum lengths, algorithms, work buffers
// and memory limits. A found path must start and end where asked and step only between
// neighbours; a failed search hands nothing over; every byte returns to the memory context.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/mesh/vertex_path.h"
#include "fuzz/fuzz_common.h"
#include "fuzz/fuzz_mesh.h"
#include "kernel/geometry.h"

using namespace quillix;
using quillix::fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider in(bytes, size);
  QRVMemoryContext geometryMemory, searchMemory;
  {
    QRVGeometry geo(&geometryMemory);
    if (quillix::fuzz::ConsumeRandomMesh(in, geo, 64, 48) != 0) return 0;
    // The searches read what the caller computed beforehand; leave some items out on purpose.
    if (in.ConsumeIntegralInRange<int>(0, 7) != 0) (void)geo.NeighbourLists();
    if (in.ConsumeBool()) (void)geo.ComponentNumbers();
    if (in.ConsumeBool()) (void)geo.NeighbourSteps();
    const std::int32_t v = geo.VertexCount();

    std::vector<std::uint8_t> flags(std::size_t(std::max(v, 1)), 1);
    const bool useFlags = in.ConsumeBool();
    if (useFlags)
      for (auto& f : flags)
        f = in.ConsumeIntegralInRange<int>(0, 3) == 0 ? 0 : in.ConsumeIntegral<std::uint8_t>() | 1;

    VertexPathWork work(&searchMemory);
    const bool useBuffers = in.ConsumeBool();
    const int searches = in.ConsumeIntegralInRange<int>(1, 8);
    for (int s = 0; s < searches && in.remaining_bytes() > 0; ++s) {
      if (in.ConsumeIntegralInRange<int>(0, 7) == 0)
        searchMemory.SetLimit(in.ConsumeBool(), in.ConsumeIntegralInRange<std::int64_t>(0, 4096));
      const auto vertex = [&] {
        return in.ConsumeIntegralInRange<int>(0, 15) == 0
                   ? in.ConsumeIntegral<std::int32_t>()
                   : in.ConsumeIntegralInRange<std::int32_t>(-1, v);
      };
      const std::int32_t start = vertex(), end = vertex();
      std::int32_t pathLength = quillix::fuzz::SmallOrAnyCount(in, 70);
      const std::int32_t maximum = pathLength < 1 ? v : pathLength;
      const std::int32_t algorithm =
          in.ConsumeIntegralInRange<int>(0, 7) == 0 ? in.ConsumeIntegral<std::int32_t>() : 0;
      const bool callerArray = in.ConsumeBool() && maximum <= 4096;
      std::vector<std::int32_t> own(callerArray ? std::size_t(std::max(maximum, 1)) : 0, -7);
      std::int32_t* path = callerArray ? own.data() : nullptr;
      QRVStatus status = 12345;
      const bool found = FindVertexPath(geo, start, end, path, pathLength, algorithm,
                                        useFlags ? flags.data() : nullptr, status, searchMemory,
                                        useBuffers ? &work : nullptr);
      Check(found == (status == 0), "the return value disagrees with the status");
      if (!found) {
        Check(pathLength == 0, "a failed search reports a path length");
        Check(callerArray || path == nullptr, "a failed search handed over an array");
        continue;
      }
      Check(pathLength >= 1 && pathLength <= maximum, "path length outside 1..maximum");
      Check(path[0] == start && path[pathLength - 1] == end, "path does not join the ends");
      const std::int32_t* offsets = geo.NeighbourOffsets();
      const std::int32_t* lists = geo.NeighbourLists();
      for (std::int32_t k = 0; k + 1 < pathLength; ++k) {
        const std::int32_t a = path[k], b = path[k + 1];
        Check(a >= 0 && a < v && b >= 0 && b < v, "path vertex outside the mesh");
        Check(std::binary_search(lists + offsets[a], lists + offsets[a + 1], b),
              "path steps between non-neighbours");
      }
      if (!callerArray) searchMemory.Release(path);
    }
  }
  Check(searchMemory.BytesInUse() == 0, "the searches kept memory");
  Check(geometryMemory.BytesInUse() == 0, "the geometry kept memory");
  return 0;
}
