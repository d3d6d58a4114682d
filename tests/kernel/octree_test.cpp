// Octree radius queries against brute force.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

#include "kernel/geometry.h"
#include "kernel/octree.h"

namespace quillix {
namespace {

using Ids = std::set<std::int32_t>;

Ids BruteForceWithin(const std::vector<Vec3f>& points, const Vec3f& query, float radius) {
  Ids within;
  for (std::int32_t i = 0; i < std::int32_t(points.size()); ++i) {
    const float dx = points[i].x - query.x, dy = points[i].y - query.y, dz = points[i].z - query.z;
    if (dx * dx + dy * dy + dz * dz <= radius * radius) within.insert(i);
  }
  return within;
}

Ids TreeWithin(const QRVOctree& tree, const Vec3f& query, float radius) {
  Ids found;
  tree.ForEachWithin(query, radius, [&](std::int32_t id) { found.insert(id); });
  return found;
}

TEST(Octree, RadiusQueriesMatchBruteForce) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> coordinate(-10.0f, 10.0f);
  std::vector<Vec3f> points(20000);
  for (Vec3f& p : points) p = {coordinate(random), coordinate(random), coordinate(random) * 0.1f};
  for (int i = 0; i < 50; ++i) points[100 + i] = points[99];  // a stack of equal points
  points[5] = {NAN, 0, 0};
  QRVMemoryContext memory;
  QRVOctree tree(memory);
  ASSERT_EQ(tree.Build(points.data(), std::int32_t(points.size())), kStatusOk);
  EXPECT_EQ(TreeWithin(tree, {}, 1000.0f).size(), 19999u);  // every finite point
  for (int q = 0; q < 300; ++q) {
    const Vec3f query{coordinate(random), coordinate(random), coordinate(random) * 0.1f};
    EXPECT_EQ(TreeWithin(tree, query, 0.5f), BruteForceWithin(points, query, 0.5f));
  }
  // Equal points stay one leaf rather than splitting forever; a query on the stack finds all
  // 51 of them.
  EXPECT_EQ(TreeWithin(tree, points[99], 0.0f).size(), 51u);
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
  // Every point is held exactly once.
  std::vector<std::uint8_t> seen(points.size(), 0);
  tree.ForEachWithin({50, 50, 50}, 1000.0f, [&](std::int32_t id) { seen[id] += 1; });
  for (std::uint8_t s : seen) ASSERT_EQ(s, 1);
  for (int q = 0; q < 20; ++q) {
    const Vec3f query{coordinate(random), coordinate(random), coordinate(random)};
    EXPECT_EQ(TreeWithin(tree, query, 3.0f), BruteForceWithin(points, query, 3.0f));
  }
}

TEST(Octree, GeometryBuildsItOnRequestAndReleasesItByMask) {
  std::vector<Vec3f> positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
  const std::vector<std::int32_t> triangle = {0, 1, 2};
  QRVGeometry geo;
  ASSERT_EQ(geo.Set(positions.data(), 3, 0, triangle.data(), nullptr, 1, 19), kStatusOk);
  const QRVOctree* tree = geo.Octree();
  ASSERT_NE(tree, nullptr);
  std::vector<std::int32_t> near;
  tree->ForEachWithin({0.9f, 0.1f, 0}, 0.2f, [&](std::int32_t id) { near.push_back(id); });
  EXPECT_EQ(near, std::vector<std::int32_t>{1});
  geo.Reset(kDerivedOctree);
  EXPECT_EQ(static_cast<const QRVGeometry&>(geo).Octree(), nullptr);
}

}  // namespace
}  // namespace quillix
