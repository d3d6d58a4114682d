// QRVGeometry derived data and clean-up: neighbours, components, edges, flags, measures,
// removal of invalid, degenerate and unreferenced elements.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "kernel/geometry.h"
#include "kernel/status_codes.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

using testing::Fan;
using testing::PlainMesh;
using testing::QuadGrid;

QRVStatus SetMesh(QRVGeometry& geo, const PlainMesh& mesh, const QRVChannelInput& channel = {}) {
  return geo.Set(mesh.positions.data(), std::int32_t(mesh.positions.size()), kEncodingFloat,
                 mesh.sizes.data(), mesh.indices.data(), std::int32_t(mesh.sizes.size()),
                 kDescriptionByteSizes, channel);
}

std::vector<std::int32_t> NeighboursOf(QRVGeometry& geo, std::int32_t v) {
  const std::int32_t* offsets = geo.NeighbourOffsets();
  return {geo.NeighbourLists() + offsets[v], geo.NeighbourLists() + offsets[v + 1]};
}

TEST(GeometryNeighbours, GridNeighboursAreTheEdgeNeighboursInAscendingOrder) {
  const PlainMesh grid = QuadGrid(3, 2);  // 4 × 3 vertices
  QRVGeometry geo;
  ASSERT_EQ(SetMesh(geo, grid), kStatusOk);
  EXPECT_EQ(NeighboursOf(geo, 0), (std::vector<std::int32_t>{1, 4}));
  EXPECT_EQ(NeighboursOf(geo, 5), (std::vector<std::int32_t>{1, 4, 6, 9}));
  EXPECT_EQ(NeighboursOf(geo, 11), (std::vector<std::int32_t>{7, 10}));
  EXPECT_EQ(geo.NeighbourCounts()[5], 4);
  // 3 × 3 horizontal + 4 × 2 vertical edges.
  EXPECT_EQ(geo.EdgeCount(), 17);
  EXPECT_EQ(geo.NeighbourOffsets()[geo.VertexCount()], 2 * 17);
}

TEST(GeometryNeighbours, APoleWithMoreThan255NeighboursKeepsAllOfThem) {
  const PlainMesh fan = Fan(300, true);
  QRVGeometry geo;
  ASSERT_EQ(SetMesh(geo, fan), kStatusOk);
  const std::vector<std::int32_t> pole = NeighboursOf(geo, 0);
  ASSERT_EQ(pole.size(), 300u);
  for (int k = 0; k < 300; ++k) EXPECT_EQ(pole[k], k + 1);
  EXPECT_EQ(geo.NeighbourCounts()[0], 255);  // the byte count saturates
  EXPECT_EQ(geo.NeighbourCounts()[1], 3);
  EXPECT_TRUE(geo.VertexFlags()[0] & kVertexFlagPole);
  EXPECT_FALSE(geo.VertexFlags()[1] & kVertexFlagPole);
}

TEST(GeometryEdges, EveryNeighbourSlotNamesTheEdgeJoiningItsTwoVertices) {
  const PlainMesh mesh = QuadGrid(5, 4, 0.2f);
  QRVGeometry geo;
  ASSERT_EQ(SetMesh(geo, mesh), kStatusOk);
  const std::int32_t* edges = geo.Edges();
  const std::int32_t* slots = geo.NeighbourEdges();
  ASSERT_NE(slots, nullptr);
  for (std::int32_t v = 0; v < geo.VertexCount(); ++v) {
    for (std::int32_t i = geo.NeighbourOffsets()[v]; i < geo.NeighbourOffsets()[v + 1]; ++i) {
      const std::int32_t w = geo.NeighbourLists()[i];
      const std::int32_t e = slots[i];
      EXPECT_EQ(edges[2 * e], std::min(v, w));
      EXPECT_EQ(edges[2 * e + 1], std::max(v, w));
    }
    for (std::int32_t e = geo.EdgeStarts()[v]; e < geo.EdgeStarts()[v + 1]; ++e)
      EXPECT_EQ(edges[2 * e], v);
  }
}

TEST(GeometryComponents, NumberedByLowestVertexAndWithoutRecursionOnAMillionVertices) {
  // Two islands interleaved in index order: island A uses even vertices, B odd ones.
  PlainMesh mesh;
  for (int i = 0; i < 8; ++i) mesh.positions.push_back({float(i), float(i % 3), 0});
  mesh.sizes = {3, 3, 3};
  mesh.indices = {1, 3, 5, 0, 2, 4, 4, 6, 2};
  QRVGeometry geo;
  ASSERT_EQ(SetMesh(geo, mesh), kStatusOk);  // vertex 7 unreferenced, removed
  ASSERT_EQ(geo.VertexCount(), 7);
  const std::int32_t* c = geo.ComponentNumbers();
  EXPECT_EQ(std::vector<std::int32_t>(c, c + 7), (std::vector<std::int32_t>{0, 1, 0, 1, 0, 1, 0}));
  EXPECT_EQ(geo.ComponentCount(), 2);

  // One long strip: a single component of 1,000,002 vertices, one long chain for a
  // depth-first fill.
  const PlainMesh strip = QuadGrid(500000, 1);
  ASSERT_EQ(SetMesh(geo, strip), kStatusOk);
  const std::int32_t* numbers = geo.ComponentNumbers();
  ASSERT_NE(numbers, nullptr);
  EXPECT_EQ(geo.ComponentCount(), 1);
  EXPECT_EQ(numbers[geo.VertexCount() - 1], 0);
}

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
  ASSERT_EQ(SetMesh(geo, mesh, nodeChannel), kStatusOk);
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
  ASSERT_EQ(SetMesh(geo, mesh, vertexChannel), kStatusOk);
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
  ASSERT_EQ(SetMesh(geo, mesh), kStatusOk);
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
  ASSERT_EQ(SetMesh(geo, huge), kStatusOk);
  EXPECT_TRUE(std::isfinite(geo.PolygonMeasures()[0]) == false &&
              !std::isnan(geo.PolygonMeasures()[0]));
  ASSERT_EQ(geo.CleanUp(true, true, true), kStatusOk);
  EXPECT_EQ(geo.PolygonCount(), 1);
}

TEST(GeometryFlags, BorderNonManifoldAndPolygonFlags) {
  // Three triangles on the edge (0, 1): a non-manifold edge; every vertex is a border vertex.
  PlainMesh mesh;
  mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}};
  mesh.sizes = {3, 3, 3};
  mesh.indices = {0, 1, 2, 1, 0, 3, 0, 1, 4};
  QRVGeometry geo;
  ASSERT_EQ(SetMesh(geo, mesh), kStatusOk);
  const std::uint32_t* flags = geo.VertexFlags();
  EXPECT_TRUE(flags[0] & kVertexFlagNonManifold);
  EXPECT_FALSE(flags[2] & kVertexFlagNonManifold);
  for (int v = 0; v < 5; ++v) EXPECT_TRUE(flags[v] & kVertexFlagBorder) << v;
  EXPECT_EQ(geo.PolygonFlags()[0], kPolygonFlagAllBorder);

  // A 3 × 3 grid: the centre vertex is interior, the centre quad is not all-border.
  const PlainMesh grid = QuadGrid(3, 3);
  ASSERT_EQ(SetMesh(geo, grid), kStatusOk);
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

TEST(GeometryReset, MaskReleasesOnlyItsItemsAndAccessorsRecompute) {
  const PlainMesh grid = QuadGrid(4, 4);
  QRVGeometry geo;
  ASSERT_EQ(SetMesh(geo, grid), kStatusOk);
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
