// FindVertexPath: argument checks, failures, buffers, and equality with the literal
// list-scan search on many pairs.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "core/mesh/vertex_path.h"
#include "kernel/geometry.h"
#include "kernel/status_codes.h"
#include "tests/core/mesh/literal_search.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

using testing::LiteralSearch;
using testing::PlainMesh;
using testing::QuadGrid;

void Build(QRVGeometry& geo, const PlainMesh& mesh, bool components = true) {
  ASSERT_EQ(geo.Set(mesh.positions.data(), std::int32_t(mesh.positions.size()), kEncodingFloat,
                    mesh.sizes.data(), mesh.indices.data(), std::int32_t(mesh.sizes.size()),
                    kDescriptionByteSizes),
            kStatusOk);
  ASSERT_NE(geo.NeighbourLists(), nullptr);
  if (components) {
    ASSERT_NE(geo.ComponentNumbers(), nullptr);
  }
}

std::vector<std::int32_t> HeapSearch(const QRVGeometry& geo, std::int32_t start, std::int32_t end,
                                     const std::uint8_t* flags, QRVStatus* statusOut = nullptr) {
  QRVMemoryContext memory;
  std::int32_t* path = nullptr;
  std::int32_t length = 0;
  QRVStatus status = 1234;
  const bool ok = FindVertexPath(geo, start, end, path, length, 0, flags, status, memory);
  EXPECT_EQ(ok, status == kStatusOk);
  if (statusOut != nullptr) *statusOut = status;
  std::vector<std::int32_t> result(path, path + length);
  memory.Release(path);
  EXPECT_EQ(memory.BytesInUse(), 0);
  return result;
}

// Meshes with many equally short routes (plain grids, coincident vertices) and irregular ones.
TEST(VertexPath, HeapSearchEqualsTheLiteralListScanOnRandomPairs) {
  struct Case {
    PlainMesh mesh;
    bool blockSome;
  };
  std::vector<Case> cases;
  cases.push_back({QuadGrid(30, 20), false});
  cases.push_back({QuadGrid(30, 20), true});
  cases.push_back({QuadGrid(25, 25, 0.3f, 3), false});
  cases.push_back({QuadGrid(25, 25, 0.3f, 4), true});
  PlainMesh coarse = QuadGrid(12, 12);
  for (Vec3f& p : coarse.positions) p = {std::floor(p.x / 3.0f), std::floor(p.y / 4.0f), 0.0f};
  cases.push_back({coarse, false});  // clusters of coincident vertices: zero-length steps
  PlainMesh bumpy = QuadGrid(20, 20);
  for (Vec3f& p : bumpy.positions) p.z = float(int(p.x * 7 + p.y * 3) % 5) * 0.5f;
  cases.push_back({bumpy, true});

  std::mt19937 random(42);
  int compared = 0;
  for (const Case& c : cases) {
    QRVGeometry geo;
    Build(geo, c.mesh, false);
    const std::int32_t n = geo.VertexCount();
    std::vector<std::uint8_t> flags(n, 1);
    if (c.blockSome) {
      for (std::int32_t v = 0; v < n; ++v) flags[v] = (random() % 5) != 0;
    }
    std::uniform_int_distribution<std::int32_t> pick(0, n - 1);
    for (int k = 0; k < 120; ++k) {
      const std::int32_t a = pick(random), b = pick(random);
      if (a == b) continue;
      const std::uint8_t* f = c.blockSome ? flags.data() : nullptr;
      ASSERT_EQ(HeapSearch(geo, a, b, f), LiteralSearch(geo, a, b, f)) << a << " -> " << b;
      ++compared;
    }
  }
  EXPECT_GT(compared, 600);
}

// One work record carried through many searches must give what a fresh search gives: each
// search resets only the records it wrote, including after searches that fail having reached
// a whole island, searches cut short by the maximum length, and a smaller mesh in between.
TEST(VertexPath, ReusedWorkEqualsAFreshSearchAfterEverySearch) {
  PlainMesh mesh = QuadGrid(24, 18, 0.3f, 7);
  const PlainMesh island = QuadGrid(6, 5, 0.2f, 8);
  const std::int32_t first = std::int32_t(mesh.positions.size());
  for (Vec3f p : island.positions) mesh.positions.push_back({p.x + 40.0f, p.y, p.z});
  mesh.sizes.insert(mesh.sizes.end(), island.sizes.begin(), island.sizes.end());
  for (std::int32_t v : island.indices) mesh.indices.push_back(v + first);
  QRVGeometry measured, cached, small;
  Build(measured, mesh, false);  // no components: searches across islands run to exhaustion
  Build(cached, mesh, false);
  ASSERT_NE(cached.NeighbourSteps(), nullptr);
  Build(small, island);
  const std::int32_t n = measured.VertexCount();
  std::mt19937 random(5);
  std::vector<std::uint8_t> blocked(n, 1);
  for (std::int32_t v = 0; v < n; ++v) blocked[v] = (random() % 4) != 0;

  QRVMemoryContext memory;
  VertexPathWork work;
  std::uniform_int_distribution<std::int32_t> pick(0, n - 1);
  std::vector<std::int32_t> path(static_cast<std::size_t>(n));
  int failures = 0;
  for (int k = 0; k < 600; ++k) {
    const bool useSmall = k % 50 == 49;
    const QRVGeometry& geo = useSmall ? small : (k % 2 ? cached : measured);
    const std::int32_t count = geo.VertexCount();
    const std::int32_t a = pick(random) % count, b = pick(random) % count;
    const std::uint8_t* flags = !useSmall && random() % 3 == 0 ? blocked.data() : nullptr;
    const std::int32_t maximum = random() % 6 == 0 ? 8 : 0;
    std::int32_t* into = path.data();
    std::int32_t length = maximum;
    QRVStatus status = 0;
    FindVertexPath(geo, a, b, into, length, 0, flags, status, memory, &work);
    QRVMemoryContext freshMemory;
    std::int32_t* fresh = nullptr;
    std::int32_t freshLength = maximum;
    QRVStatus freshStatus = 0;
    FindVertexPath(geo, a, b, fresh, freshLength, 0, flags, freshStatus, freshMemory);
    ASSERT_EQ(status, freshStatus) << "search " << k << ": " << a << " -> " << b;
    ASSERT_EQ(std::vector<std::int32_t>(into, into + length),
              std::vector<std::int32_t>(fresh, fresh + freshLength))
        << "search " << k << ": " << a << " -> " << b;
    freshMemory.Release(fresh);
    failures += status != kStatusOk;
  }
  EXPECT_GT(failures, 100);
}

TEST(VertexPath, ArgumentChecksInOrderTheLastFailingOneDecides) {
  QRVMemoryContext memory;
  QRVGeometry empty;
  std::int32_t* path = nullptr;
  std::int32_t length = 9;
  QRVStatus status = 0;
  // No positions and no neighbours (19 overwrites 5); start out of range then gives 6.
  EXPECT_FALSE(FindVertexPath(empty, 0, 1, path, length, 0, nullptr, status, memory));
  EXPECT_EQ(status, kStatusIllegalParameter);
  EXPECT_EQ(length, 0);

  QRVGeometry geo;
  const PlainMesh grid = QuadGrid(3, 3);
  ASSERT_EQ(geo.Set(grid.positions.data(), 16, 0, grid.sizes.data(), grid.indices.data(), 9, 16),
            kStatusOk);
  // Positions but no neighbour lists yet: 19.
  EXPECT_FALSE(FindVertexPath(geo, 0, 5, path, length, 0, nullptr, status, memory));
  EXPECT_EQ(status, kStatusNullPointer);
  ASSERT_NE(geo.NeighbourLists(), nullptr);
  EXPECT_FALSE(FindVertexPath(geo, 0, 16, path, length, 0, nullptr, status, memory));
  EXPECT_EQ(status, kStatusIllegalParameter);
  EXPECT_FALSE(FindVertexPath(geo, -1, 3, path, length, 0, nullptr, status, memory));
  EXPECT_EQ(status, kStatusIllegalParameter);
  // Start equal to end: -2, before the algorithm check.
  EXPECT_FALSE(FindVertexPath(geo, 4, 4, path, length, 1, nullptr, status, memory));
  EXPECT_EQ(status, kStatusSameVertex);
  EXPECT_EQ(std::int32_t(status), -2);
  EXPECT_FALSE(FindVertexPath(geo, 4, 5, path, length, 1, nullptr, status, memory));
  EXPECT_EQ(status, kStatusIdOutOfRange);
  EXPECT_EQ(path, nullptr);
  EXPECT_EQ(memory.BytesInUse(), 0);
}

TEST(VertexPath, IslandsAndBlockedEndsGive27) {
  PlainMesh two = QuadGrid(2, 1);
  PlainMesh other = QuadGrid(2, 1);
  for (Vec3f& p : other.positions) p.z = 5.0f;
  two.positions.insert(two.positions.end(), other.positions.begin(), other.positions.end());
  for (std::int32_t i : other.indices) two.indices.push_back(i + 6);
  two.sizes.insert(two.sizes.end(), other.sizes.begin(), other.sizes.end());
  QRVGeometry geo;
  Build(geo, two);
  QRVStatus status = 0;
  EXPECT_TRUE(HeapSearch(geo, 0, 7, nullptr, &status).empty());
  EXPECT_EQ(status, kStatusPathNotFound);

  std::vector<std::uint8_t> flags(12, 1);
  flags[5] = 0;
  EXPECT_TRUE(HeapSearch(geo, 0, 5, flags.data(), &status).empty());
  EXPECT_EQ(status, kStatusPathNotFound);
  EXPECT_TRUE(HeapSearch(geo, 5, 0, flags.data(), &status).empty());
  EXPECT_EQ(status, kStatusPathNotFound);
  // A blocked wall: the only way from 0 to 2 runs through column 1.
  flags[1] = flags[4] = 0;
  flags[5] = 1;
  EXPECT_TRUE(HeapSearch(geo, 0, 2, flags.data(), &status).empty());
  EXPECT_EQ(status, kStatusPathNotFound);
}

TEST(VertexPath, MaximumLengthAndCallerArrays) {
  const PlainMesh strip = QuadGrid(4, 1);  // bottom row 0..4
  QRVGeometry geo;
  Build(geo, strip);
  QRVMemoryContext memory;
  QRVStatus status = 0;
  std::int32_t* path = nullptr;
  std::int32_t length = 4;
  EXPECT_FALSE(FindVertexPath(geo, 0, 4, path, length, 0, nullptr, status, memory));
  EXPECT_EQ(status, kStatusTooManyPoints);
  EXPECT_EQ(length, 0);
  EXPECT_EQ(path, nullptr);
  length = 0;  // below 1: the vertex count
  ASSERT_TRUE(FindVertexPath(geo, 0, 4, path, length, 0, nullptr, status, memory));
  EXPECT_EQ(std::vector<std::int32_t>(path, path + length),
            (std::vector<std::int32_t>{0, 1, 2, 3, 4}));
  EXPECT_GE(QRVMemoryContext::BlockSize(path), 5 * sizeof(std::int32_t));
  memory.Release(path);
  path = nullptr;

  // Written in place into the caller's array, with reusable work buffers that grow only once.
  std::vector<std::int32_t> mine(10, -7);
  std::int32_t* into = mine.data();
  VertexPathWork work;
  length = 10;
  ASSERT_TRUE(FindVertexPath(geo, 9, 5, into, length, 0, nullptr, status, memory, &work));
  EXPECT_EQ(into, mine.data());
  EXPECT_EQ(std::vector<std::int32_t>(mine.begin(), mine.begin() + length),
            (std::vector<std::int32_t>{9, 8, 7, 6, 5}));
  EXPECT_EQ(mine[5], -7);
  void* kept = work.records.data;
  EXPECT_EQ(work.records.capacity, 10 * 8u);
  EXPECT_EQ(work.predecessors.capacity, 10 * sizeof(std::int32_t));
  length = 10;
  ASSERT_TRUE(FindVertexPath(geo, 0, 9, into, length, 0, nullptr, status, memory, &work));
  EXPECT_EQ(work.records.data, kept);
  const std::int64_t withBuffers = memory.BytesInUse();
  EXPECT_GT(withBuffers, 0);
  work.records.Free(), work.predecessors.Free(), work.order.Free();
  EXPECT_EQ(memory.BytesInUse(), 0);

  // A memory limit too small for the work buffers: 9, nothing written.
  memory.SetLimit(true, 16);
  length = 0;
  EXPECT_FALSE(FindVertexPath(geo, 0, 9, path, length, 0, nullptr, status, memory));
  EXPECT_EQ(status, kStatusNoMemory);
  EXPECT_EQ(path, nullptr);
  EXPECT_EQ(memory.BytesInUse(), 0);
}

TEST(VertexPath, TiesGoToTheLowestIndexAndCoincidentVerticesStillChain) {
  // On a plain grid many routes are equally long; the search keeps the first predecessor
  // that reached a vertex, so the route is fixed: lower-index vertices settle first and claim
  // their neighbours, so both directions run along the bottom row and up the right column.
  const PlainMesh grid = QuadGrid(3, 3);
  QRVGeometry geo;
  Build(geo, grid);
  EXPECT_EQ(HeapSearch(geo, 0, 15, nullptr), (std::vector<std::int32_t>{0, 1, 2, 3, 7, 11, 15}));
  EXPECT_EQ(HeapSearch(geo, 15, 0, nullptr), (std::vector<std::int32_t>{15, 11, 7, 3, 2, 1, 0}));

  PlainMesh flat = QuadGrid(4, 4);
  for (Vec3f& p : flat.positions) p = {1.0f, 1.0f, 1.0f};
  QRVGeometry same;
  Build(same, flat);
  const std::vector<std::int32_t> path = HeapSearch(same, 3, 21, nullptr);
  ASSERT_FALSE(path.empty());
  EXPECT_EQ(path, LiteralSearch(same, 3, 21, nullptr));
  for (std::size_t k = 1; k < path.size(); ++k) {
    const std::int32_t* begin = same.NeighbourLists() + same.NeighbourOffsets()[path[k - 1]];
    const std::int32_t* stop = same.NeighbourLists() + same.NeighbourOffsets()[path[k - 1] + 1];
    EXPECT_NE(std::find(begin, stop, path[k]), stop);
  }
}

TEST(VertexPath, CornerToCornerOnAMillionVertexGrid) {
  const PlainMesh grid = QuadGrid(999, 999);
  QRVGeometry geo;
  Build(geo, grid);
  const std::vector<std::int32_t> path = HeapSearch(geo, 0, 999999, nullptr);
  ASSERT_EQ(path.size(), 1999u);
  EXPECT_EQ(path.front(), 0);
  EXPECT_EQ(path.back(), 999999);
}

}  // namespace
}  // namespace quillix
