// Building a path geometry from a host description and chaining searches through it.
#include <gtest/gtest.h>

#include <vector>

#include "core/mesh/path_chain.h"
#include "kernel/status_codes.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

TEST(BuildPathGeometry, CountsPolygonsByTheirClosingNegativeValue) {
  const testing::PlainMesh grid = testing::QuadGrid(2, 1);
  // Two quads, then two dangling indices that no negative value closes.
  const std::vector<std::int32_t> description = {0, 1, 4, 3, -1, 1, 2, 5, 4, -7, 3, 4};
  QRVGeometry geo;
  ASSERT_EQ(BuildPathGeometry(grid.positions, description, geo), kStatusOk);
  EXPECT_EQ(geo.PolygonCount(), 2);
  EXPECT_EQ(geo.NodeCount(), 8);
  EXPECT_NE(static_cast<const QRVGeometry&>(geo).NeighbourLists(), nullptr);
  EXPECT_NE(static_cast<const QRVGeometry&>(geo).ComponentNumbers(), nullptr);
}

TEST(BuildPathGeometry, EightBitCornerCountRejects255AndWrapsLarger) {
  std::vector<Vec3f> points(300);
  for (int i = 0; i < 300; ++i) points[i] = {float(i), float(i % 7), 0.0f};
  std::vector<std::int32_t> description;
  for (int v = 0; v < 255; ++v) description.push_back(v);
  description.push_back(-1);
  QRVGeometry geo;
  EXPECT_EQ(BuildPathGeometry(points, description, geo), kStatusPolygonTooLarge);
  EXPECT_EQ(geo.Positions(), nullptr);

  // 258 corners count as 2: the polygon reads its first two indices and is dropped as
  // invalid; the triangle after it reads the wrong indices, as the counter dictates.
  description.clear();
  for (int v = 0; v < 258; ++v) description.push_back(v);
  description.push_back(-1);
  description.insert(description.end(), {0, 1, 2, -1});
  ASSERT_EQ(BuildPathGeometry(points, description, geo), kStatusOk);
  EXPECT_EQ(geo.PolygonCount(), 1);
  EXPECT_EQ(geo.VertexCount(), 3);
  EXPECT_EQ(geo.Positions()[0].x, 2.0f);  // vertices 2, 3, 4 survive, renumbered 0, 1, 2
}

TEST(ChainPath, ChainsSegmentsAndEmptiesOnAnyFailure) {
  const testing::PlainMesh grid = testing::QuadGrid(2, 2);
  QRVMemoryContext memory;
  QRVGeometry geo(&memory);
  std::vector<std::int32_t> description;
  for (std::size_t p = 0; p < grid.sizes.size(); ++p) {
    for (int k = 0; k < 4; ++k) description.push_back(grid.indices[p * 4 + k]);
    description.push_back(-1);
  }
  ASSERT_EQ(BuildPathGeometry(grid.positions, description, geo), kStatusOk);
  std::vector<std::int32_t> out = {99};
  {
    PathScratch scratch(memory);
    const std::vector<std::int32_t> init = {4, 8, 2};
    EXPECT_TRUE(ChainPath(geo, init, 0, nullptr, scratch, out));
    EXPECT_EQ(out, (std::vector<std::int32_t>{4, 5, 8, 5, 2}));
    const std::vector<std::int32_t> bad = {0, 8, 9};
    EXPECT_FALSE(ChainPath(geo, bad, 0, nullptr, scratch, out));
    EXPECT_TRUE(out.empty());
    const std::vector<std::int32_t> one = {4};
    EXPECT_FALSE(ChainPath(geo, one, 0, nullptr, scratch, out));
  }
  geo.Clear();
  EXPECT_EQ(memory.BytesInUse(), 0);
}

}  // namespace
}  // namespace quillix
