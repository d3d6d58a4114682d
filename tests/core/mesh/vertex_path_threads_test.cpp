// Many searches at once on one geometry sharing one memory context, as the node's evaluation
// batches do: the same paths as one after another, and the context back at its start.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "core/mesh/path_chain.h"
#include "kernel/geometry.h"
#include "tests/kernel/test_meshes.h"

namespace quillix {
namespace {

TEST(VertexPathThreads, ConcurrentSearchesOnOneGeometryMatchSequentialOnes) {
  const testing::PlainMesh mesh = testing::QuadGrid(40, 40, 0.3f, 21);
  std::vector<std::int32_t> description;
  for (std::size_t p = 0; p < mesh.sizes.size(); ++p) {
    for (int k = 0; k < 4; ++k) description.push_back(mesh.indices[p * 4 + k]);
    description.push_back(-1);
  }
  QRVMemoryContext memory;
  QRVGeometry geo(&memory);
  ASSERT_EQ(BuildPathGeometry(mesh.positions, description, geo), kStatusOk);
  const QRVGeometry& shared = geo;
  const std::int64_t built = memory.BytesInUse();

  constexpr int kThreads = 4, kPerThread = 40;
  const auto initOf = [](int t, int k) {
    return std::vector<std::int32_t>{(t * 97 + k * 31) % 1681, (t * 13 + k * 211 + 5) % 1681};
  };
  std::vector<std::vector<std::vector<std::int32_t>>> parallel(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      PathScratch scratch(memory);
      for (int k = 0; k < kPerThread; ++k) {
        std::vector<std::int32_t> path;
        ChainPath(shared, initOf(t, k), 0, nullptr, scratch, path);
        parallel[t].push_back(path);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();

  {
    PathScratch scratch(memory);
    for (int t = 0; t < kThreads; ++t) {
      for (int k = 0; k < kPerThread; ++k) {
        std::vector<std::int32_t> path;
        ChainPath(shared, initOf(t, k), 0, nullptr, scratch, path);
        EXPECT_EQ(parallel[t][k], path);
      }
    }
  }
  EXPECT_EQ(memory.BytesInUse(), built);
}

}  // namespace
}  // namespace quillix
