// Octree queries against brute force.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

#include "kernel/geometry.h"
#include "kernel/octree.h"

namespace quillix {
namespace {

TEST(Octree, NearestAndRadiusQueriesMatchBruteForce) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> coordinate(-10.0f, 10.0f);
  std::vector<Vec3f> points(20000);
  for (Vec3f& p : points) p = {coordinate(random), coordinate(random), coordinate(random) * 0.1f};
  for (int i = 0; i < 50; ++i) points[100 + i] = points[99];  // a stack of equal points
  points[5] = {NAN, 0, 0};
  QRVMemoryContext memory;
  QRVOctree tree(memory);
  ASSERT_EQ(tree.Build(points.data(), std::int32_t(points.size())), kStatusOk);
  EXPECT_EQ(tree.PointCount(), 19999);
  for (int q = 0; q < 300; ++q) {
    const Vec3f query{coordinate(random), coordinate(random), coordinate(random) * 0.1f};
    std::int32_t best = -1;
    float bestD = INFINITY;
    std::set<std::int32_t> within;
    for (std::int32_t i = 0; i < std::int32_t(points.size()); ++i) {
      const float dx = points[i].x - query.x, dy = points[i].y - query.y,
                  dz = points[i].z - query.z;
      const float d = dx * dx + dy * dy + dz * dz;
      if (d < bestD) bestD = d, best = i;
      if (d <= 0.5f * 0.5f) within.insert(i);
    }
    float d = -1.0f;
    EXPECT_EQ(tree.Nearest(query, &d), best);
    EXPECT_EQ(d, bestD);
    std::set<std::int32_t> found;
    tree.ForEachWithin(query, 0.5f, [&](std::int32_t id) { found.insert(id); });
    EXPECT_EQ(found, within);
    EXPECT_EQ(tree.AnyWithin(query, 0.5f), !within.empty());
  }
  // Equal points stay one leaf rather than splitting forever; the nearest of a stack is
  // its lowest id.
  EXPECT_EQ(tree.Nearest(points[99]), 99);
  EXPECT_EQ(tree.Clear(), kStatusOk);
  EXPECT_EQ(memory.BytesInUse(), 0);
}

TEST(Octree, ParallelBuildOfALargeCloudAnswersLikeBruteForce) {
  // Above the size where the build's loops go parallel.
  std::mt19937 random(11);
  std::uniform_real_distribution<float> coordinate(0.0f, 100.0f);
  std::vector<Vec3f> points(150000);
  for (Vec3f& p : points) p = {coordinate(random), coordinate(random), coordinate(random)};
  QRVMemoryContext memory;
  QRVOctree tree(memory);
  ASSERT_EQ(tree.Build(points.data(), std::int32_t(points.size())), kStatusOk);
  std::vector<std::uint8_t> seen(points.size(), 0);
  for (std::int32_t i = 0; i < tree.PointCount(); ++i) seen[tree.Order()[i]] += 1;
  for (std::uint8_t s : seen) ASSERT_EQ(s, 1);
  for (int q = 0; q < 20; ++q) {
    const Vec3f query{coordinate(random), coordinate(random), coordinate(random)};
    std::int32_t best = -1;
    float bestD = INFINITY;
    for (std::int32_t i = 0; i < std::int32_t(points.size()); ++i) {
      const float dx = points[i].x - query.x, dy = points[i].y - query.y, dz = points[i].z - query.z;
      const float d = dx * dx + dy * dy + dz * dz;
      if (d < bestD) bestD = d, best = i;
    }
    EXPECT_EQ(tree.Nearest(query), best);
  }
}

TEST(Octree, GeometryBuildsItOnRequestAndReleasesItByMask) {
  std::vector<Vec3f> positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  const std::vector<std::int32_t> triangle = {0, 1, 2};
  QRVGeometry geo;
  ASSERT_EQ(geo.Set(positions.data(), 3, 0, triangle.data(), nullptr, 1, 19), kStatusOk);
  const QRVOctree* tree = geo.Octree();
  ASSERT_NE(tree, nullptr);
  EXPECT_EQ(tree->Nearest({0.9f, 0.1f, 0}), 1);
  geo.Reset(kDerivedOctree);
  EXPECT_EQ(static_cast<const QRVGeometry&>(geo).Octree(), nullptr);
}

}  // namespace
}  // namespace quillix
