// QRVGeometry clean-up (invalid, degenerate and unreferenced elements) and release by mask.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "kernel/geometry.h"
#include "kernel/status_codes.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

using testing::PlainMesh;
using testing::QuadGrid;
using testing::SetPlainMesh;

TEST(GeometryCleanUp, InvalidPolygonsAndUnreferencedVerticesGoInOrder) {
  // Vertices 0..6; polygon 1 repeats a vertex, polygon 3 has two corners; vertex 2 and 6 are
  // named only by those.
  PlainMesh mesh;
  for (int i = 0; i < 7; ++i) mesh.positions.push_back({float(i), float(i * i), 1.0f});
  mesh.sizes = {3, 4, 3, 2};
  mesh.indices = {0, 1, 3, 2, 4, 2, 5, 3, 4, 5, 6, 1};
  std::vector<Vec3f> perNode(12), perVertex(7);
  for (int i = 0; i < 12; ++i) perNode[i] = {float(i), 0, 0};
  for (int i = 0; i < 7; ++i) perVertex[i] = {float(10 * i), 0, 0};
  QRVChannelInput nodeChannel;
  nodeChannel.perNode = {perNode.data(), nullptr, 12, 0, kEncodingFloat};
  QRVGeometry geo;
  ASSERT_EQ(SetPlainMesh(geo, mesh, nodeChannel), kStatusOk);
  ASSERT_EQ(geo.PolygonCount(), 2);
  ASSERT_EQ(geo.VertexCount(), 5);  // 2 and 6 are gone; 0 1 3 4 5 become 0 1 2 3 4
  EXPECT_EQ(std::vector<std::int32_t>(geo.PolygonVertexIndices(), geo.PolygonVertexIndices() + 6),
            (std::vector<std::int32_t>{0, 1, 2, 2, 3, 4}));
  EXPECT_EQ(geo.Positions()[2].y, 9.0f);
  EXPECT_EQ(geo.Positions()[4].y, 25.0f);
  EXPECT_EQ(geo.Channel(0).values[3].x, 7.0f);  // nodes 0-2 and 7-9 survive
  EXPECT_EQ(geo.Channel(0).valueCount, 6);

  QRVChannelInput vertexChannel;
  vertexChannel.perVertex = {perVertex.data(), 7, kEncodingFloat};
  ASSERT_EQ(SetPlainMesh(geo, mesh, vertexChannel), kStatusOk);
  EXPECT_EQ(geo.Channel(0).valueCount, 5);
  EXPECT_EQ(geo.Channel(0).values[4].x, 50.0f);
}

TEST(GeometryCleanUp, DegeneratePolygonsGoOnlyWhenSwitchedOn) {
  // Polygon 0 normal, polygon 1 collinear (area 0), polygon 2 with a NaN corner, polygon 3
  // with an infinite corner (measure infinite or NaN, see below).
  PlainMesh mesh;
  mesh.positions = {{0, 0, 0}, {1, 0, 0},   {0, 1, 0}, {2, 0, 0},
                    {3, 0, 0}, {NAN, 0, 0}, {5, 5, 0}, {6, 5, 0}};
  mesh.sizes = {3, 3, 3};
  mesh.indices = {0, 1, 2, 1, 3, 4, 0, 5, 2};
  QRVGeometry geo;
  ASSERT_EQ(SetPlainMesh(geo, mesh), kStatusOk);
  EXPECT_EQ(geo.PolygonCount(), 3);
  const float* measures = geo.PolygonMeasures();
  EXPECT_FLOAT_EQ(measures[0], 0.5f);
  EXPECT_EQ(measures[1], 0.0f);
  EXPECT_TRUE(std::isnan(measures[2]));
  ASSERT_EQ(geo.CleanUp(true, true, true), kStatusOk);
  EXPECT_EQ(geo.PolygonCount(), 1);
  EXPECT_EQ(geo.VertexCount(), 3);

  // An infinitely large polygon is kept.
  PlainMesh huge;
  huge.positions = {{0, 0, 0}, {3e38f, 0, 0}, {0, 3e38f, 0}};
  huge.sizes = {3};
  huge.indices = {0, 1, 2};
  ASSERT_EQ(SetPlainMesh(geo, huge), kStatusOk);
  EXPECT_TRUE(std::isfinite(geo.PolygonMeasures()[0]) == false &&
              !std::isnan(geo.PolygonMeasures()[0]));
  ASSERT_EQ(geo.CleanUp(true, true, true), kStatusOk);
  EXPECT_EQ(geo.PolygonCount(), 1);
}

TEST(GeometryReset, MaskReleasesOnlyItsItemsAndAccessorsRecompute) {
  const PlainMesh grid = QuadGrid(4, 4);
  QRVGeometry geo;
  ASSERT_EQ(SetPlainMesh(geo, grid), kStatusOk);
  ASSERT_NE(geo.ComponentNumbers(), nullptr);  // needs the neighbours as well
  ASSERT_NE(geo.PolygonMeasures(), nullptr);
  const std::uint32_t held = kDerivedNeighbours | kDerivedComponents | kDerivedPolygonMeasures;
  EXPECT_EQ(geo.ValidMask() & held, held);
  geo.Reset(kDerivedComponents);
  EXPECT_EQ(geo.ValidMask() & held, held & ~std::uint32_t(kDerivedComponents));
  EXPECT_EQ(static_cast<const QRVGeometry&>(geo).ComponentNumbers(), nullptr);
  EXPECT_NE(geo.ComponentNumbers(), nullptr);
  geo.Clear();
  EXPECT_EQ(geo.ValidMask(), 0u);
  EXPECT_EQ(geo.ComponentNumbers(), nullptr);
  EXPECT_EQ(geo.Memory().BytesInUse(), 0);
}

}  // namespace
}  // namespace quillix
