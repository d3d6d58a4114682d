// Fuzzed polygon meshes for the path-search targets.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "fuzz/fuzz_common.h"
#include "kernel/geometry.h"

namespace quillix::fuzz {

// Fills `geo` with 0 to `maxVertices` vertices at troublesome positions (ConsumeNastyFloat)
// and 0 to `maxPolygons` inline polygons of 0 to 5 corners, each corner inside the vertices
// (repeated corners included). Returns the status of QRVGeometry::Set.
inline QRVStatus ConsumeRandomMesh(FuzzedDataProvider& in, QRVGeometry& geo,
                                   std::int32_t maxVertices, std::int32_t maxPolygons) {
  const std::int32_t vertexCount = in.ConsumeIntegralInRange<std::int32_t>(0, maxVertices);
  std::vector<Vec3f> positions(std::size_t(std::max(vertexCount, 1)));
  for (auto& p : positions)
    p = {ConsumeNastyFloat(in), ConsumeNastyFloat(in), ConsumeNastyFloat(in)};
  const std::int32_t polygonCount = in.ConsumeIntegralInRange<std::int32_t>(0, maxPolygons);
  std::vector<std::int32_t> description;
  for (std::int32_t p = 0; p < polygonCount; ++p) {
    const std::int32_t corners = in.ConsumeIntegralInRange<std::int32_t>(0, 5);
    description.push_back(corners);
    for (std::int32_t k = 0; k < corners; ++k)
      description.push_back(
          in.ConsumeIntegralInRange<std::int32_t>(0, std::max(vertexCount, 1) - 1));
  }
  return geo.Set(positions.data(), vertexCount, kEncodingFloat, description.data(), nullptr,
                 polygonCount, kDescriptionInline);
}

}  // namespace quillix::fuzz
