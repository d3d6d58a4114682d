// Per-vertex and per-polygon flags, polygon counts and measures of QRVGeometry.
#include <gtest/gtest.h>

#include <vector>

#include "kernel/geometry.h"
#include "kernel/status_codes.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

using testing::PlainMesh;
using testing::QuadGrid;
using testing::SetPlainMesh;

TEST(GeometryFlags, BorderNonManifoldAndPolygonFlags) {
  // Three triangles on the edge (0, 1): a non-manifold edge; every vertex is a border vertex.
  PlainMesh mesh;
  mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}};
  mesh.sizes = {3, 3, 3};
  mesh.indices = {0, 1, 2, 1, 0, 3, 0, 1, 4};
  QRVGeometry geo;
  ASSERT_EQ(SetPlainMesh(geo, mesh), kStatusOk);
  const std::uint32_t* flags = geo.VertexFlags();
  EXPECT_TRUE(flags[0] & kVertexFlagNonManifold);
  EXPECT_FALSE(flags[2] & kVertexFlagNonManifold);
  for (int v = 0; v < 5; ++v) EXPECT_TRUE(flags[v] & kVertexFlagBorder) << v;
  EXPECT_EQ(geo.PolygonFlags()[0], kPolygonFlagAllBorder);

  // A 3 × 3 grid: the centre vertex is interior, the centre quad is not all-border.
  const PlainMesh grid = QuadGrid(3, 3);
  ASSERT_EQ(SetPlainMesh(geo, grid), kStatusOk);
  EXPECT_FALSE(geo.VertexFlags()[5] & kVertexFlagBorder);
  EXPECT_TRUE(geo.VertexFlags()[1] & kVertexFlagBorder);
  EXPECT_EQ(geo.PolygonFlags()[4], 0);
  EXPECT_EQ(geo.PolygonFlags()[0], 0);  // corner quad has the interior vertex 5
  EXPECT_EQ(geo.QuadCount(), 9);
  EXPECT_EQ(geo.FanTriangleCount(), 18);
  float total = 0.0f;
  for (int p = 0; p < geo.PolygonCount(); ++p) total += geo.PolygonMeasures()[p];
  EXPECT_FLOAT_EQ(total, 9.0f);
}

}  // namespace
}  // namespace quillix
