// The primary arrays of a polygon mesh as the kernel's derived-data functions read them.
#pragma once

#include <cstdint>

#include "core/math/math_types.h"

namespace quillix {

// A read-only view of a mesh: vertexCount positions, polygonCount sizes (one byte each) and
// nodeCount polygon vertex indices concatenated in polygon order (their sum of sizes). The
// arrays belong to whoever made the view (a QRVGeometry); every index lies in
// [0, vertexCount).
struct MeshView {
  std::int32_t vertexCount = 0;
  std::int32_t polygonCount = 0;
  std::int32_t nodeCount = 0;
  const Vec3f* positions = nullptr;
  const std::uint8_t* polygonSizes = nullptr;
  const std::int32_t* polygonIndices = nullptr;
};

// Below this many vertices (or points) a parallel loop costs more in thread wake-ups than it
// saves.
inline constexpr std::int32_t kMeshParallelMinimum = 32768;

}  // namespace quillix
