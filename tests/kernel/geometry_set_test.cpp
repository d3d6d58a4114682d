// QRVGeometry::Set: encodings, checks and their status codes, memory accounting.
#include <gtest/gtest.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <vector>

#include "core/math/half_float.h"
#include "kernel/geometry.h"
#include "kernel/status_codes.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

using testing::PlainMesh;
using testing::QuadGrid;
using testing::SetPlainMesh;

void ExpectEmpty(const QRVGeometry& geo) {
  EXPECT_EQ(geo.Positions(), nullptr);
  EXPECT_EQ(geo.PolygonSizes(), nullptr);
  EXPECT_EQ(geo.PolygonVertexIndices(), nullptr);
  EXPECT_EQ(geo.VertexCount(), 0);
  EXPECT_EQ(geo.PolygonCount(), 0);
  EXPECT_EQ(geo.Channel(0).values, nullptr);
  EXPECT_EQ(geo.Motion(), nullptr);
}

TEST(GeometrySet, ZeroVerticesKeepsOneDummyPositionAndNoDerivedData) {
  QRVGeometry geo;
  EXPECT_EQ(geo.Set(nullptr, 0, kEncodingFloat, nullptr, nullptr, 5, kDescriptionInline),
            kStatusOk);
  EXPECT_EQ(geo.VertexCount(), 0);
  ASSERT_NE(geo.Positions(), nullptr);
  EXPECT_EQ(QRVMemoryContext::BlockSize(geo.Positions()) >= sizeof(Vec3f), true);
  EXPECT_EQ(geo.PolygonCount(), 0);
  EXPECT_EQ(geo.NeighbourLists(), nullptr);
  EXPECT_EQ(geo.ComponentNumbers(), nullptr);
  EXPECT_EQ(geo.ReferencedVertexCount(), 0);
}

TEST(GeometrySet, DescriptionEncodingsAgree) {
  const std::vector<float> positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 2, 0, 0};
  const std::vector<std::int32_t> indices = {0, 1, 2, 3, 1, 4, 2};
  const std::vector<std::uint8_t> byteSizes = {4, 3};
  const std::vector<std::int32_t> intSizes = {4, 3};
  const std::vector<std::int32_t> inlineDescription = {4, 0, 1, 2, 3, 3, 1, 4, 2};
  QRVGeometry a, b, c;
  ASSERT_EQ(a.Set(positions.data(), 5, 0, byteSizes.data(), indices.data(), 2, 16), kStatusOk);
  ASSERT_EQ(b.Set(positions.data(), 5, 14, intSizes.data(), indices.data(), 2, 18), kStatusOk);
  ASSERT_EQ(c.Set(positions.data(), 5, 0, inlineDescription.data(), nullptr, 2, 17), kStatusOk);
  for (QRVGeometry* g : {&a, &b, &c}) {
    ASSERT_EQ(g->PolygonCount(), 2);
    ASSERT_EQ(g->NodeCount(), 7);
    EXPECT_EQ(g->PolygonSizes()[0], 4);
    EXPECT_EQ(g->PolygonSizes()[1], 3);
    EXPECT_EQ(std::vector<std::int32_t>(g->PolygonVertexIndices(), g->PolygonVertexIndices() + 7),
              indices);
  }
  const std::vector<std::int32_t> triangles = {0, 1, 2, 1, 4, 2};
  QRVGeometry t;
  ASSERT_EQ(t.Set(positions.data(), 5, 0, triangles.data(), nullptr, 2, 19), kStatusOk);
  EXPECT_EQ(t.NodeCount(), 6);
  EXPECT_EQ(t.VertexCount(), 4);  // vertex 3 is named by no triangle and is removed
}

TEST(GeometrySet, CorruptDescriptionsGive92AndLeaveTheContainerEmpty) {
  const PlainMesh grid = QuadGrid(2, 2);
  const std::int32_t nv = std::int32_t(grid.positions.size());
  QRVGeometry geo;
  const std::vector<std::int32_t> inlineTooBig = {256};
  EXPECT_EQ(geo.Set(grid.positions.data(), nv, 0, inlineTooBig.data(), nullptr, 1, 17),
            kStatusCorruptDescription);
  ExpectEmpty(geo);
  const std::vector<std::int32_t> sizesTooBig = {256};
  const std::vector<std::int32_t> sizesNegative = {-1};
  std::vector<std::int32_t> many(300, 0);
  EXPECT_EQ(geo.Set(grid.positions.data(), nv, 0, sizesTooBig.data(), many.data(), 1, 18),
            kStatusCorruptDescription);
  EXPECT_EQ(geo.Set(grid.positions.data(), nv, 0, sizesNegative.data(), many.data(), 1, 18),
            kStatusCorruptDescription);
  PlainMesh broken = grid;
  broken.indices[5] = nv;  // one past the last vertex
  EXPECT_EQ(SetPlainMesh(geo, broken), kStatusCorruptDescription);
  ExpectEmpty(geo);
  broken.indices[5] = -1;
  EXPECT_EQ(SetPlainMesh(geo, broken), kStatusCorruptDescription);
  EXPECT_EQ(geo.Memory().BytesInUse(), 0);
}

TEST(GeometrySet, ArgumentChecks) {
  const PlainMesh grid = QuadGrid(1, 1);
  QRVGeometry geo;
  EXPECT_EQ(geo.Set(nullptr, 4, 0, grid.sizes.data(), grid.indices.data(), 1, 16),
            kStatusIllegalParameter);
  EXPECT_EQ(geo.Set(grid.positions.data(), -4, 0, grid.sizes.data(), grid.indices.data(), 1, 16),
            kStatusIllegalParameter);
  EXPECT_EQ(geo.Set(grid.positions.data(), 4, 0, nullptr, grid.indices.data(), 1, 16),
            kStatusIllegalParameter);
  EXPECT_EQ(geo.Set(grid.positions.data(), 4, 0, grid.sizes.data(), nullptr, 1, 16),
            kStatusIllegalParameter);
  EXPECT_EQ(geo.Set(grid.positions.data(), 4, 0, grid.sizes.data(), nullptr, 1, 18),
            kStatusIllegalParameter);
  EXPECT_EQ(geo.Set(grid.positions.data(), 4, 2, grid.sizes.data(), grid.indices.data(), 1, 16),
            kStatusUnknownDataType);
  EXPECT_EQ(geo.Set(grid.positions.data(), 4, 0, grid.sizes.data(), grid.indices.data(), 1, 20),
            kStatusUnknownDataType);
  ExpectEmpty(geo);
  // A negative polygon count means no polygons: every vertex is then unreferenced.
  EXPECT_EQ(geo.Set(grid.positions.data(), 4, 0, nullptr, nullptr, -3, 16), kStatusOk);
  EXPECT_EQ(geo.PolygonCount(), 0);
  EXPECT_EQ(geo.VertexCount(), 0);
}

TEST(GeometrySet, PositionEncodings) {
  // Floats bit for bit, NaN payload included.
  const std::vector<float> floats = {std::bit_cast<float>(0x7FC01234u), -0.0f, 1e-40f};
  const std::vector<std::uint8_t> sizes = {3};
  const std::vector<std::int32_t> one = {0, 0, 0};
  std::vector<float> tri = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  std::memcpy(tri.data(), floats.data(), sizeof(float) * 3);
  const std::vector<std::int32_t> corners = {0, 1, 2};
  QRVGeometry geo;
  ASSERT_EQ(geo.Set(tri.data(), 3, kEncodingFloat, sizes.data(), corners.data(), 1, 16), kStatusOk);
  EXPECT_EQ(std::memcmp(geo.Positions(), tri.data(), sizeof(float) * 9), 0);

  // Halves through the table: 1, -2, 0.5, smallest subnormal, +inf, 65504, -0, NaN, 2^-14.
  const std::vector<std::uint16_t> halves = {0x3C00, 0xC000, 0x3800, 0x0001, 0x7C00,
                                             0x7BFF, 0x8000, 0x7E00, 0x0400};
  for (std::int32_t encoding : {1, 7}) {
    ASSERT_EQ(geo.Set(halves.data(), 3, encoding, sizes.data(), corners.data(), 1, 16), kStatusOk);
    const float* p = &geo.Positions()[0].x;
    EXPECT_EQ(p[0], 1.0f);
    EXPECT_EQ(p[1], -2.0f);
    EXPECT_EQ(p[2], 0.5f);
    EXPECT_EQ(p[3], std::ldexp(1.0f, -24));
    EXPECT_EQ(p[4], INFINITY);
    EXPECT_EQ(p[5], 65504.0f);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(p[6]), 0x80000000u);
    EXPECT_TRUE(std::isnan(p[7]));
    EXPECT_EQ(p[8], std::ldexp(1.0f, -14));
  }
  // The table matches the direct conversion everywhere.
  const float* table = HalfToFloatTable();
  for (std::uint32_t h = 0; h < 65536; h += 37) {
    EXPECT_EQ(std::bit_cast<std::uint32_t>(table[h]),
              std::bit_cast<std::uint32_t>(HalfBitsToFloat(std::uint16_t(h))));
  }

  const std::vector<double> doubles = {0.1, -1e300, 1.0 / 3.0, 0, 0, 0, 1, 1, 1};
  ASSERT_EQ(geo.Set(doubles.data(), 3, kEncodingDouble, sizes.data(), corners.data(), 1, 16),
            kStatusOk);
  EXPECT_EQ(geo.Positions()[0].x, float(0.1));
  EXPECT_EQ(geo.Positions()[0].y, -INFINITY);
  EXPECT_EQ(geo.Positions()[0].z, float(1.0 / 3.0));
}

TEST(GeometrySet, VectorChannelsPerNodePerVertexAndMotion) {
  const PlainMesh grid = QuadGrid(2, 1);  // 6 vertices, 2 quads, 8 nodes
  std::vector<Vec3f> perNode(8), perVertex(6), motion(6);
  for (int i = 0; i < 8; ++i) perNode[i] = {float(i), 0, 0};
  for (int i = 0; i < 6; ++i) perVertex[i] = {0, float(i), 0}, motion[i] = {0, 0, float(i)};
  QRVGeometry geo;

  QRVChannelInput nodeChannel;
  nodeChannel.perNode = {perNode.data(), nullptr, 8, 0, kEncodingFloat};
  ASSERT_EQ(SetPlainMesh(geo, grid, nodeChannel, {motion.data(), 6, kEncodingFloat}), kStatusOk);
  EXPECT_TRUE(geo.Channel(0).perNode);
  EXPECT_EQ(geo.Channel(0).valueCount, 8);
  EXPECT_EQ(geo.Channel(0).values[7].x, 7.0f);
  EXPECT_EQ(geo.Motion()[5].z, 5.0f);

  // Shared values stored once through an index array.
  const std::vector<Vec3f> shared = {{1, 1, 1}, {2, 2, 2}};
  const std::vector<std::int32_t> which = {0, 1, 1, 0, 1, 0, 0, 1};
  nodeChannel.perNode = {shared.data(), which.data(), 8, 2, kEncodingFloat};
  ASSERT_EQ(SetPlainMesh(geo, grid, nodeChannel), kStatusOk);
  EXPECT_EQ(geo.Channel(0).valueCount, 2);
  EXPECT_EQ(geo.Channel(0).indices[6], 0);

  // One element short per node: 80; per vertex: 79; motion: 79. Each empties the container.
  nodeChannel.perNode = {perNode.data(), nullptr, 7, 0, kEncodingFloat};
  EXPECT_EQ(SetPlainMesh(geo, grid, nodeChannel), kStatusNodeCountMismatch);
  ExpectEmpty(geo);
  QRVChannelInput vertexChannel;
  vertexChannel.perVertex = {perVertex.data(), 5, kEncodingFloat};
  EXPECT_EQ(SetPlainMesh(geo, grid, vertexChannel), kStatusCountMismatch);
  EXPECT_EQ(SetPlainMesh(geo, grid, {}, {motion.data(), 5, kEncodingFloat}), kStatusCountMismatch);
  ExpectEmpty(geo);
  // A per-node form with data and a count wins over the per-vertex form.
  vertexChannel.perNode = {perNode.data(), nullptr, 8, 0, kEncodingFloat};
  vertexChannel.perVertex = {perVertex.data(), 6, kEncodingFloat};
  ASSERT_EQ(SetPlainMesh(geo, grid, vertexChannel), kStatusOk);
  EXPECT_TRUE(geo.Channel(0).perNode);
  // Index outside the shared data: 6.
  const std::vector<std::int32_t> outOfRange = {0, 1, 2, 0, 1, 0, 0, 1};
  nodeChannel.perNode = {shared.data(), outOfRange.data(), 8, 2, kEncodingFloat};
  EXPECT_EQ(SetPlainMesh(geo, grid, nodeChannel), kStatusIllegalParameter);
}

TEST(GeometryMemory, LimitBelowThePositionsGives9AndTrackingReturnsToZero) {
  const PlainMesh grid = QuadGrid(20, 20);
  QRVMemoryContext memory;
  memory.SetLimit(true, std::int64_t(grid.positions.size() * sizeof(Vec3f)) - 1);
  {
    QRVGeometry geo(&memory);
    EXPECT_EQ(SetPlainMesh(geo, grid), kStatusNoMemory);
    ExpectEmpty(geo);
    EXPECT_EQ(memory.BytesInUse(), 0);

    memory.SetLimit(false, 0);
    ASSERT_EQ(SetPlainMesh(geo, grid), kStatusOk);
    const std::int64_t primary = memory.BytesInUse();
    EXPECT_GE(primary, std::int64_t(grid.positions.size() * 12 + grid.sizes.size() +
                                    grid.indices.size() * 4));
    ASSERT_NE(geo.NeighbourLists(), nullptr);
    EXPECT_GT(memory.BytesInUse(), primary);
    EXPECT_GE(memory.PeakBytes(), memory.BytesInUse());
    geo.Reset(kDerivedNeighbours);
    EXPECT_EQ(memory.BytesInUse(), primary);

    // A limit that admits the mesh but not its neighbour lists: the accessor returns null and
    // the item stays invalid.
    memory.SetLimit(true, primary + 64);
    EXPECT_EQ(geo.NeighbourLists(), nullptr);
    EXPECT_EQ(geo.ValidMask() & kDerivedNeighbours, 0u);
    EXPECT_EQ(memory.BytesInUse(), primary);
    memory.SetLimit(false, 0);
  }
  EXPECT_EQ(memory.BytesInUse(), 0);
}

TEST(GeometryMemory, ScratchBlocksCountWholePagesUntilHandedBack) {
  QRVMemoryContext memory;
  const std::int64_t page = std::int64_t(sysconf(_SC_PAGESIZE));
  auto* block = static_cast<std::uint8_t*>(memory.AllocateScratch(3 * page + 1));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(memory.BytesInUse(), 4 * page);
  block[4 * page - 1] = 1;                               // the rounded-up pages are usable
  memory.ReleaseScratch(block, 3 * page + 1, page + 1);  // keeps two pages
  EXPECT_EQ(memory.BytesInUse(), 2 * page);
  block[2 * page - 1] = 1;
  memory.ReleaseScratch(block, page + 1);
  EXPECT_EQ(memory.BytesInUse(), 0);
  EXPECT_EQ(memory.PeakBytes(), 4 * page);
  memory.SetLimit(true, page);
  EXPECT_EQ(memory.AllocateScratch(std::size_t(page) + 1), nullptr);
  EXPECT_EQ(memory.BytesInUse(), 0);
}

}  // namespace
}  // namespace quillix
