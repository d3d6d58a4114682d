// Points generated on a mesh surface (QRVGeometry::GeneratePositionsFromSurface).
#pragma once

#include <cstdint>
#include <vector>

#include "core/math/math_types.h"
#include "kernel/status.h"

namespace quillix {

// What GeneratePositionsFromSurface places, chosen by its `mode`.
enum QRVSurfaceMode : std::int32_t {
  // Vertex positions: every vertex when lod >= 1, otherwise every round(1 / lod)-th vertex in
  // index order; none for lod <= 0.
  kSurfaceVertices = 0,
  // round(lod × vertex count) points scattered uniformly by area over the polygons (fan
  // triangles), independent of one another.
  kSurfaceRandom = 1,
  // About round(lod × vertex count) points spread by area but kept apart: no two closer than a
  // spacing d with (sqrt(3) / 2) d² = 0.6 × area / (lod × vertex count), so the spacing
  // shrinks as 1 / sqrt(lod). Candidates are scattered as in mode 1 (eight per wanted point),
  // put in an octree and thinned greedily in their scatter order.
  kSurfaceBlueNoise = 2,
};

// Largest number of points (or blue-noise candidates) one call makes; more gives status 6.
inline constexpr std::int64_t kSurfaceMaxPoints = std::int64_t(1) << 24;

class QRVGeometry;

// Appends points on the surface of `geometry` to `positions` (object space, in the order
// made): `mode` is a QRVSurfaceMode, `lod` scales how many, `seed` fixes the random sequence,
// so the same inputs always give the same points. Computes the geometry's polygon size counts
// if absent; scratch arrays come from its memory context.
// Status: 6 for an unknown mode or more than kSurfaceMaxPoints points, 9 on memory refusal;
// an empty geometry, lod <= 0 or NaN, or a zero-area mesh gives no points and status 0.
QRVStatus GenerateSurfacePositions(QRVGeometry& geometry, std::int32_t mode, float lod,
                                   std::uint64_t seed, std::vector<Vec3f>& positions);

}  // namespace quillix
