// The path-finding node's walk over the host's polygonal description (vertex indices, each
// polygon closed by a negative value), then chained searches over the built mesh as the node
// runs them per element. Descriptions are fuzzed freely: any indices, missing or repeated
// closers, trailing indices, polygons of 255 corners and more, and a memory limit.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "core/mesh/path_chain.h"
#include "fuzz/fuzz_common.h"
#include "kernel/geometry.h"

using namespace quillix;
using quillix::fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  FuzzedDataProvider in(bytes, size);
  QRVMemoryContext memory;
  if (in.ConsumeIntegralInRange<int>(0, 7) == 0)
    memory.SetLimit(true, in.ConsumeIntegralInRange<std::int64_t>(0, 1 << 14));
  {
    QRVGeometry geo(&memory);
    std::vector<Vec3f> positions(in.ConsumeIntegralInRange<std::size_t>(0, 48));
    for (auto& p : positions) {
      p = {quillix::fuzz::ConsumeNastyFloat(in), quillix::fuzz::ConsumeNastyFloat(in),
           quillix::fuzz::ConsumeNastyFloat(in)};
    }
    std::vector<std::int32_t> description;
    const std::size_t length = in.ConsumeIntegralInRange<std::size_t>(0, 700);
    const std::int32_t v = std::int32_t(positions.size());
    for (std::size_t i = 0; i < length && in.remaining_bytes() > 0; ++i) {
      switch (in.ConsumeIntegralInRange<int>(0, 9)) {
        case 0:
          description.push_back(-1);
          break;
        case 1:
          description.push_back(in.ConsumeIntegral<std::int32_t>());
          break;
        case 2: {  // a run of corners: a large polygon
          const int run = in.ConsumeIntegralInRange<int>(250, 260);
          for (int k = 0; k < run; ++k) description.push_back(k % std::max(v, 1));
          break;
        }
        default:
          description.push_back(in.ConsumeIntegralInRange<int>(0, 3) == 0
                                    ? -1
                                    : in.ConsumeIntegralInRange<std::int32_t>(0, v));
          break;
      }
    }
    const QRVStatus status = BuildPathGeometry(positions, description, geo);
    if (status != 0) {
      Check(geo.Positions() == nullptr, "a failed build left a geometry behind");
    } else {
      Check(geo.NeighbourLists() != nullptr && geo.ComponentNumbers() != nullptr,
            "a built mesh lacks its lists");
      PathScratch scratch(memory);
      std::vector<std::int32_t> init(in.ConsumeIntegralInRange<std::size_t>(0, 6));
      for (auto& i : init) i = in.ConsumeIntegralInRange<std::int32_t>(-1, geo.VertexCount());
      std::vector<std::int32_t> out;
      const QRVGeometry& shared = geo;  // the searches only read it, as the node's threads do
      if (ChainPath(shared, init, 0, nullptr, scratch, out)) {
        Check(!out.empty() && out.front() == init.front() && out.back() == init.back(),
              "chained path misses its ends");
      } else {
        Check(out.empty(), "a failed chain left a partial path");
      }
    }
  }
  Check(memory.BytesInUse() == 0, "the build kept memory");
  return 0;
}
