// Positions generated on a mesh surface: vertex picks, area-weighted scatter, blue noise.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "kernel/geometry.h"
#include "kernel/surface_positions.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

void SetMesh(QRVGeometry& geo, const testing::PlainMesh& mesh) {
  ASSERT_EQ(testing::SetPlainMesh(geo, mesh), kStatusOk);
}

bool Same(const std::vector<Vec3f>& a, const std::vector<Vec3f>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].x != b[i].x || a[i].y != b[i].y || a[i].z != b[i].z) return false;
  }
  return true;
}

TEST(SurfacePositions, VertexModeTakesEveryVertexOrAStrideByLod) {
  QRVGeometry geo;
  SetMesh(geo, testing::QuadGrid(3, 3));  // 16 vertices
  std::vector<Vec3f> out;
  ASSERT_EQ(geo.GeneratePositionsFromSurface(kSurfaceVertices, 1.0f, 0, out), kStatusOk);
  EXPECT_EQ(out.size(), 16u);
  out.clear();
  ASSERT_EQ(geo.GeneratePositionsFromSurface(kSurfaceVertices, 0.25f, 0, out), kStatusOk);
  ASSERT_EQ(out.size(), 4u);
  EXPECT_EQ(out[1].x, 0.0f);
  EXPECT_EQ(out[1].y, 1.0f);  // vertex 4
  out.clear();
  EXPECT_EQ(geo.GeneratePositionsFromSurface(kSurfaceVertices, 0.0f, 0, out), kStatusOk);
  EXPECT_EQ(geo.GeneratePositionsFromSurface(kSurfaceRandom, NAN, 0, out), kStatusOk);
  EXPECT_TRUE(out.empty());
  EXPECT_EQ(geo.GeneratePositionsFromSurface(3, 1.0f, 0, out), kStatusIllegalParameter);
  EXPECT_EQ(geo.GeneratePositionsFromSurface(kSurfaceRandom, 1e9f, 0, out),
            kStatusIllegalParameter);
}

TEST(SurfacePositions, RandomModeFollowsAreaAndRepeatsForTheSameSeed) {
  // Two quads side by side: [0,1] × [0,1] and [1,4] × [0,1], areas 1 and 3.
  testing::PlainMesh mesh;
  mesh.positions = {{0, 0, 0}, {1, 0, 0}, {4, 0, 0}, {0, 1, 0}, {1, 1, 0}, {4, 1, 0}};
  mesh.sizes = {4, 4};
  mesh.indices = {0, 1, 4, 3, 1, 2, 5, 4};
  QRVGeometry geo;
  SetMesh(geo, mesh);
  std::vector<Vec3f> a, b, c;
  ASSERT_EQ(geo.GeneratePositionsFromSurface(kSurfaceRandom, 1000.0f, 7, a), kStatusOk);
  ASSERT_EQ(a.size(), 6000u);
  int left = 0;
  for (const Vec3f& p : a) {
    ASSERT_TRUE(p.x >= 0.0f && p.x <= 4.0f && p.y >= 0.0f && p.y <= 1.0f && p.z == 0.0f);
    left += p.x < 1.0f;
  }
  EXPECT_NEAR(double(left) / 6000.0, 0.25, 0.03);
  geo.GeneratePositionsFromSurface(kSurfaceRandom, 1000.0f, 7, b);
  geo.GeneratePositionsFromSurface(kSurfaceRandom, 1000.0f, 8, c);
  EXPECT_TRUE(Same(a, b));
  EXPECT_FALSE(Same(a, c));
}

TEST(SurfacePositions, BlueNoiseKeepsItsSpacingAndTightensWithLod) {
  QRVGeometry geo;
  SetMesh(geo, testing::QuadGrid(20, 20));  // area 400, 441 vertices
  std::vector<Vec3f> coarse, fine, again;
  ASSERT_EQ(geo.GeneratePositionsFromSurface(kSurfaceBlueNoise, 0.5f, 3, coarse), kStatusOk);
  ASSERT_EQ(geo.GeneratePositionsFromSurface(kSurfaceBlueNoise, 2.0f, 3, fine), kStatusOk);
  geo.GeneratePositionsFromSurface(kSurfaceBlueNoise, 0.5f, 3, again);
  EXPECT_TRUE(Same(coarse, again));
  const auto spacing = [](double lod) {
    return std::sqrt(0.6 * 400.0 / std::round(lod * 441) * 2.0 / std::sqrt(3.0));
  };
  for (const auto& [points, lod] : {std::pair{&coarse, 0.5}, std::pair{&fine, 2.0}}) {
    const double wanted = std::round(lod * 441);
    EXPECT_GT(double(points->size()), 0.5 * wanted);
    EXPECT_LT(double(points->size()), 1.5 * wanted);
    double closest = INFINITY;
    for (std::size_t i = 0; i < points->size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        const double dx = (*points)[i].x - (*points)[j].x, dy = (*points)[i].y - (*points)[j].y;
        closest = std::min(closest, std::sqrt(dx * dx + dy * dy));
      }
    }
    EXPECT_GT(closest, spacing(lod) * 0.999);
  }
  EXPECT_GT(fine.size(), 3 * coarse.size());
}

}  // namespace
}  // namespace quillix
