// The vertex graph of QRVGeometry: neighbour lists, edges and connected components.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "kernel/geometry.h"
#include "kernel/status_codes.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

using testing::Fan;
using testing::PlainMesh;
using testing::QuadGrid;
using testing::SetPlainMesh;

std::vector<std::int32_t> NeighboursOf(QRVGeometry& geo, std::int32_t v) {
  const std::int32_t* offsets = geo.NeighbourOffsets();
  return {geo.NeighbourLists() + offsets[v], geo.NeighbourLists() + offsets[v + 1]};
}

TEST(GeometryNeighbours, GridNeighboursAreTheEdgeNeighboursInAscendingOrder) {
  const PlainMesh grid = QuadGrid(3, 2);  // 4 × 3 vertices
  QRVGeometry geo;
  ASSERT_EQ(SetPlainMesh(geo, grid), kStatusOk);
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
  ASSERT_EQ(SetPlainMesh(geo, fan), kStatusOk);
  const std::vector<std::int32_t> pole = NeighboursOf(geo, 0);
  ASSERT_EQ(pole.size(), 300u);
  for (int k = 0; k < 300; ++k) EXPECT_EQ(pole[k], k + 1);
  EXPECT_EQ(geo.NeighbourCounts()[0], 255);  // the byte count saturates
  EXPECT_EQ(geo.NeighbourCounts()[1], 3);
  EXPECT_TRUE(geo.VertexFlags()[0] & kVertexFlagPole);
  EXPECT_FALSE(geo.VertexFlags()[1] & kVertexFlagPole);

  // Numbered backwards, the pole is the higher end of every spoke.
  PlainMesh reversed = fan;
  const auto last = std::int32_t(fan.positions.size()) - 1;
  std::reverse(reversed.positions.begin(), reversed.positions.end());
  for (std::int32_t& v : reversed.indices) v = last - v;
  ASSERT_EQ(SetPlainMesh(geo, reversed), kStatusOk);
  const std::vector<std::int32_t> back = NeighboursOf(geo, last);
  ASSERT_EQ(back.size(), 300u);
  for (int k = 0; k < 300; ++k) EXPECT_EQ(back[k], k);
  EXPECT_EQ(NeighboursOf(geo, last - 1), (std::vector<std::int32_t>{0, last - 2, last}));
  EXPECT_TRUE(geo.VertexFlags()[last] & kVertexFlagPole);
  EXPECT_FALSE(geo.VertexFlags()[last - 1] & kVertexFlagPole);
}

TEST(GeometryEdges, EveryNeighbourSlotNamesTheEdgeJoiningItsTwoVertices) {
  const PlainMesh mesh = QuadGrid(5, 4, 0.2f);
  QRVGeometry geo;
  ASSERT_EQ(SetPlainMesh(geo, mesh), kStatusOk);
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
  ASSERT_EQ(SetPlainMesh(geo, mesh), kStatusOk);  // vertex 7 unreferenced, removed
  ASSERT_EQ(geo.VertexCount(), 7);
  const std::int32_t* c = geo.ComponentNumbers();
  EXPECT_EQ(std::vector<std::int32_t>(c, c + 7), (std::vector<std::int32_t>{0, 1, 0, 1, 0, 1, 0}));
  EXPECT_EQ(*std::max_element(c, c + 7), 1);  // two components

  // One long strip: a single component of 1,000,002 vertices, one long chain for a
  // depth-first fill.
  const PlainMesh strip = QuadGrid(500000, 1);
  ASSERT_EQ(SetPlainMesh(geo, strip), kStatusOk);
  const std::int32_t* numbers = geo.ComponentNumbers();
  ASSERT_NE(numbers, nullptr);
  EXPECT_EQ(*std::max_element(numbers, numbers + geo.VertexCount()), 0);
  EXPECT_EQ(numbers[geo.VertexCount() - 1], 0);
}

// Random triangles over scattered vertices make many islands joined in every order, which is
// what the in-place set joining must get right; the reference is a plain breadth-first fill.
TEST(GeometryComponents, RandomIslandsNumberAsAFillFromEachLowestVertex) {
  std::mt19937 random(9);
  PlainMesh mesh;
  const std::int32_t n = 3000;
  for (std::int32_t v = 0; v < n; ++v) mesh.positions.push_back({float(v), float(v % 7), 0});
  std::uniform_int_distribution<std::int32_t> pick(0, n - 1);
  for (int t = 0; t < 1100; ++t) {
    const std::int32_t a = pick(random), b = pick(random), c = pick(random);
    if (a == b || b == c || a == c) continue;
    mesh.sizes.push_back(3);
    mesh.indices.insert(mesh.indices.end(), {a, b, c});
  }
  QRVGeometry geo;
  ASSERT_EQ(SetPlainMesh(geo, mesh), kStatusOk);
  const std::int32_t count = geo.VertexCount();
  const std::int32_t* numbers = geo.ComponentNumbers();
  ASSERT_NE(numbers, nullptr);
  std::vector<std::int32_t> expected(std::size_t(count), -1), queue;
  std::int32_t next = 0;
  for (std::int32_t seed = 0; seed < count; ++seed) {
    if (expected[seed] != -1) continue;
    expected[seed] = next;
    queue = {seed};
    for (std::size_t k = 0; k < queue.size(); ++k) {
      for (std::int32_t w : NeighboursOf(geo, queue[k])) {
        if (expected[w] == -1) expected[w] = next, queue.push_back(w);
      }
    }
    ++next;
  }
  EXPECT_GT(next, 20);
  EXPECT_EQ(std::vector<std::int32_t>(numbers, numbers + count), expected);

  // The neighbour steps repeat the lists with the search's step length beside each neighbour.
  const NeighbourStep* steps = geo.NeighbourSteps();
  ASSERT_NE(steps, nullptr);
  const Vec3f* p = geo.Positions();
  for (std::int32_t v = 0; v < count; ++v) {
    for (std::int32_t i = geo.NeighbourOffsets()[v]; i < geo.NeighbourOffsets()[v + 1]; ++i) {
      const std::int32_t w = geo.NeighbourLists()[i];
      const float dx = p[v].x - p[w].x, dy = p[v].y - p[w].y, dz = p[v].z - p[w].z;
      ASSERT_EQ(steps[i].vertex, w);
      ASSERT_EQ(steps[i].length, std::sqrt(dy * dy + dx * dx + dz * dz));
    }
  }
}

}  // namespace
}  // namespace quillix
