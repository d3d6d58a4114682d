// One quillix.Mesh searched from several Python threads at once, as the binding runs it with
// the GIL released: single searches through the shared scratch pool, OpenMP batches of pairs
// and chained paths, all on one shared SearchableMesh, give the paths of one thread alone.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "python/src/mesh_searches.h"
#include "tests/kernel/test_meshes.h"

namespace quillix::python {
namespace {

using Path = std::vector<std::int32_t>;

// The OpenMP threads of one vertex_paths batch. Debian's libgomp is not built for
// ThreadSanitizer, which then cannot see its barriers and reports every read inside a
// parallel region against the writes after it; under the sanitizer a batch runs on its
// caller's thread, so that what it checks is the sharing between the callers' threads.
#if defined(__SANITIZE_THREAD__)
constexpr int kBatchThreads = 1;
#else
constexpr int kBatchThreads = 2;
#endif

// Every thread's calls, in the order one thread makes them.
struct Calls {
  std::vector<Path> singles, chains;
  std::vector<std::vector<Path>> batches;
  std::vector<std::int32_t> componentCounts;
};

constexpr std::int32_t kVertices = 31 * 31;  // the vertices of a 30 × 30 quad grid

std::int32_t Vertex(int t, int k, int salt) { return (t * 97 + k * 31 + salt * 211) % kVertices; }

Calls RunCalls(const SearchableMesh& mesh, int t, const std::vector<std::uint8_t>& flags) {
  Calls calls;
  for (int k = 0; k < 12; ++k) {
    const std::uint8_t* blocking = k % 3 == 0 ? flags.data() : nullptr;
    // vertex_path: a pooled scratch, the search, the scratch handed back.
    std::unique_ptr<SearchScratch> scratch = mesh.AcquireScratch();
    std::int32_t length = 0;
    mesh.Search(Vertex(t, k, 0), Vertex(t, k, 1), blocking, *scratch, length);
    calls.singles.emplace_back(scratch->path.begin(), scratch->path.begin() + length);
    mesh.ReturnScratch(std::move(scratch));
    // vertex_paths: a batch on OpenMP threads of its own.
    if (k % 4 == 0) {
      std::vector<std::int32_t> ends;
      for (int p = 0; p < 6; ++p) {
        ends.push_back(Vertex(t, k + p, 2));
        ends.push_back(Vertex(t, k + p, 3));
      }
      calls.batches.emplace_back();
      mesh.SearchPairs(ends, blocking, kBatchThreads, calls.batches.back());
    }
    // chain_path.
    calls.chains.emplace_back();
    mesh.Chain(std::vector<std::int32_t>{Vertex(t, k, 4), Vertex(t, k, 5), Vertex(t, k, 6)},
               blocking, calls.chains.back());
    calls.componentCounts.push_back(mesh.ComponentCount());
  }
  return calls;
}

TEST(MeshSearchesThreads, SharedMeshGivesEachThreadTheSinglethreadedPaths) {
  const testing::PlainMesh grid = testing::QuadGrid(30, 30, 0.3f, 5);
  SearchableMesh mesh;
  ASSERT_EQ(mesh.Build(grid.positions, testing::PolygonalDescription(grid)), kStatusOk);
  ASSERT_EQ(mesh.VertexCount(), kVertices);
  std::vector<std::uint8_t> flags(kVertices, 1);
  for (std::int32_t v = 5; v < kVertices; v += 7) flags[v] = 0;

  constexpr int kThreads = 4;
  std::vector<Calls> parallel(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] { parallel[t] = RunCalls(mesh, t, flags); });
  for (std::thread& thread : threads) thread.join();

  int found = 0;
  for (int t = 0; t < kThreads; ++t) {
    const Calls alone = RunCalls(mesh, t, flags);
    EXPECT_EQ(parallel[t].singles, alone.singles);
    EXPECT_EQ(parallel[t].batches, alone.batches);
    EXPECT_EQ(parallel[t].chains, alone.chains);
    EXPECT_EQ(parallel[t].componentCounts, alone.componentCounts);
    for (const Path& path : alone.singles) found += !path.empty();
  }
  EXPECT_GT(found, kThreads * 6);  // most searches find a path: the test compares real work
}

}  // namespace
}  // namespace quillix::python
