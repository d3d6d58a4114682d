// FindVertexPath against Boost Graph Library's Dijkstra (stopped at the target, on the same
// graph and the same edge lengths) and against the literal list-scan search. The searches keep
// their work (VertexPathWork, BGL's property maps) from one path to the next, as a node does.
// The list scan allocates its arrays per search as the original did; that is noise next to
// its quadratic scan.
#include <benchmark/benchmark.h>

#include <boost/graph/compressed_sparse_row_graph.hpp>
#include <boost/graph/dijkstra_shortest_paths.hpp>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "bench/pathfind/bench_meshes.h"
#include "core/mesh/vertex_path.h"
#include "kernel/geometry.h"
#include "tests/core/mesh/literal_search.h"

namespace quillix::bench {
namespace {

struct Prepared {
  PlainMesh mesh;
  std::unique_ptr<QRVGeometry> geo = std::make_unique<QRVGeometry>();
};

std::unique_ptr<Prepared> Prepare(PlainMesh mesh) {
  auto prepared = std::make_unique<Prepared>();
  prepared->mesh = std::move(mesh);
  const PlainMesh& m = prepared->mesh;
  prepared->geo->Set(m.positions.data(), std::int32_t(m.positions.size()), kEncodingFloat,
                     m.sizes.data(), m.indices.data(), std::int32_t(m.sizes.size()),
                     kDescriptionByteSizes);
  prepared->geo->ComponentNumbers();
  prepared->geo->NeighbourLists();
  prepared->geo->NeighbourSteps();
  return prepared;
}

Prepared& Grid1000() {
  static auto grid = Prepare(testing::QuadGrid(999, 999));
  return *grid;
}
Prepared& Grid200() {
  static auto grid = Prepare(testing::QuadGrid(199, 199));
  return *grid;
}
Prepared& Blob() {
  static auto blob = Prepare(ScannedBlob(7));  // 163,842 vertices
  return *blob;
}
Prepared& Sphere() {
  static auto sphere = Prepare(GeodesicSphere(316));  // 998,562 vertices
  return *sphere;
}

std::vector<std::pair<std::int32_t, std::int32_t>> RandomPairs(std::int32_t vertexCount,
                                                               int count) {
  std::mt19937 random(2024);
  std::uniform_int_distribution<std::int32_t> pick(0, vertexCount - 1);
  std::vector<std::pair<std::int32_t, std::int32_t>> pairs;
  while (int(pairs.size()) < count) {
    const std::int32_t a = pick(random), b = pick(random);
    if (a != b) pairs.emplace_back(a, b);
  }
  return pairs;
}

// ---- the kernel's search ----

void RunHeap(benchmark::State& state, Prepared& prepared,
             const std::vector<std::pair<std::int32_t, std::int32_t>>& pairs) {
  QRVMemoryContext memory;
  VertexPathWork work;
  std::vector<std::int32_t> path(std::size_t(prepared.geo->VertexCount()));
  std::int64_t vertices = 0;
  for (auto _ : state) {
    for (auto [a, b] : pairs) {
      std::int32_t* out = path.data();
      std::int32_t length = 0;
      QRVStatus status = 0;
      FindVertexPath(*prepared.geo, a, b, out, length, 0, nullptr, status, memory, &work);
      vertices += length;
      benchmark::DoNotOptimize(out);
    }
  }
  state.counters["paths/s"] =
      benchmark::Counter(double(pairs.size()), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["path_vertices"] = double(vertices) / double(state.iterations());
}

// ---- Boost Graph Library baseline: CSR graph with the same float edge lengths ----

using CsrGraph = boost::compressed_sparse_row_graph<boost::directedS, boost::no_property,
                                                    boost::property<boost::edge_weight_t, float>>;
struct FoundTarget {};
struct StopAtTarget : boost::default_dijkstra_visitor {
  std::int32_t target;
  explicit StopAtTarget(std::int32_t t) : target(t) {}
  template <typename Vertex, typename Graph>
  void examine_vertex(Vertex v, const Graph&) {
    if (std::int32_t(v) == target) throw FoundTarget{};
  }
};

std::unique_ptr<CsrGraph> MakeCsr(QRVGeometry& geo) {
  const std::int32_t n = geo.VertexCount();
  const std::int32_t* offsets = geo.NeighbourOffsets();
  const std::int32_t* lists = geo.NeighbourLists();
  const Vec3f* p = geo.Positions();
  std::vector<std::pair<std::int32_t, std::int32_t>> edges;
  std::vector<float> weights;
  edges.reserve(std::size_t(offsets[n]));
  weights.reserve(std::size_t(offsets[n]));
  for (std::int32_t v = 0; v < n; ++v) {
    for (std::int32_t i = offsets[v]; i < offsets[v + 1]; ++i) {
      const std::int32_t w = lists[i];
      const float dx = p[v].x - p[w].x, dy = p[v].y - p[w].y, dz = p[v].z - p[w].z;
      edges.emplace_back(v, w);
      weights.push_back(std::sqrt(dy * dy + dx * dx + dz * dz));
    }
  }
  return std::make_unique<CsrGraph>(boost::edges_are_sorted, edges.begin(), edges.end(),
                                    weights.begin(), std::size_t(n));
}

void RunBoost(benchmark::State& state, Prepared& prepared,
              const std::vector<std::pair<std::int32_t, std::int32_t>>& pairs) {
  const auto graph = MakeCsr(*prepared.geo);
  const std::size_t n = std::size_t(prepared.geo->VertexCount());
  std::vector<float> distance(n);
  std::vector<std::int32_t> predecessor(n);
  std::vector<std::int32_t> path(n);
  for (auto _ : state) {
    for (auto [a, b] : pairs) {
      try {
        boost::dijkstra_shortest_paths(
            *graph, std::size_t(a),
            boost::predecessor_map(
                boost::make_iterator_property_map(predecessor.begin(),
                                                  boost::get(boost::vertex_index, *graph)))
                .distance_map(boost::make_iterator_property_map(
                    distance.begin(), boost::get(boost::vertex_index, *graph)))
                .visitor(StopAtTarget(b)));
      } catch (const FoundTarget&) {
      }
      std::int32_t length = 0;
      for (std::int32_t v = b; v != a; v = predecessor[std::size_t(v)])
        path[std::size_t(length++)] = v;
      benchmark::DoNotOptimize(path.data());
    }
  }
  state.counters["paths/s"] =
      benchmark::Counter(double(pairs.size()), benchmark::Counter::kIsIterationInvariantRate);
}

const std::vector<std::pair<std::int32_t, std::int32_t>>& Corner1000() {
  static const std::vector<std::pair<std::int32_t, std::int32_t>> pairs = {{0, 999999}};
  return pairs;
}
const std::vector<std::pair<std::int32_t, std::int32_t>>& Corner200() {
  static const std::vector<std::pair<std::int32_t, std::int32_t>> pairs = {{0, 200 * 200 - 1}};
  return pairs;
}
const std::vector<std::pair<std::int32_t, std::int32_t>>& BlobPairs() {
  static const auto pairs = RandomPairs(Blob().geo->VertexCount(), 32);
  return pairs;
}
const std::vector<std::pair<std::int32_t, std::int32_t>>& SpherePairs() {
  static const auto pairs = RandomPairs(Sphere().geo->VertexCount(), 8);
  return pairs;
}
const std::vector<std::pair<std::int32_t, std::int32_t>>& Grid1000Pairs() {
  static const auto pairs = RandomPairs(1000 * 1000, 8);
  return pairs;
}
// Five vertices along a row in the middle of the grid: a search that should cost what it
// touches, not what the mesh holds.
const std::vector<std::pair<std::int32_t, std::int32_t>>& Grid1000Short() {
  static const std::vector<std::pair<std::int32_t, std::int32_t>> pairs = {{500500, 500504}};
  return pairs;
}

void BM_Grid1000Corner_FindVertexPath(benchmark::State& s) { RunHeap(s, Grid1000(), Corner1000()); }
void BM_Grid1000Corner_BoostDijkstra(benchmark::State& s) { RunBoost(s, Grid1000(), Corner1000()); }
void BM_ScannedBlob32Pairs_FindVertexPath(benchmark::State& s) { RunHeap(s, Blob(), BlobPairs()); }
void BM_ScannedBlob32Pairs_BoostDijkstra(benchmark::State& s) { RunBoost(s, Blob(), BlobPairs()); }
void BM_Grid1000RandomPairs_FindVertexPath(benchmark::State& s) {
  RunHeap(s, Grid1000(), Grid1000Pairs());
}
void BM_Grid1000RandomPairs_BoostDijkstra(benchmark::State& s) {
  RunBoost(s, Grid1000(), Grid1000Pairs());
}
void BM_Sphere1M8Pairs_FindVertexPath(benchmark::State& s) { RunHeap(s, Sphere(), SpherePairs()); }
void BM_Sphere1M8Pairs_BoostDijkstra(benchmark::State& s) { RunBoost(s, Sphere(), SpherePairs()); }
void BM_Grid1000FiveVertexPath_FindVertexPath(benchmark::State& s) {
  RunHeap(s, Grid1000(), Grid1000Short());
}
void BM_Grid1000FiveVertexPath_BoostDijkstra(benchmark::State& s) {
  RunBoost(s, Grid1000(), Grid1000Short());
}
void BM_Grid200Corner_FindVertexPath(benchmark::State& s) { RunHeap(s, Grid200(), Corner200()); }
void BM_Grid200Corner_LiteralListScan(benchmark::State& s) {
  const QRVGeometry& geo = *Grid200().geo;
  for (auto _ : s)
    benchmark::DoNotOptimize(testing::LiteralSearch(geo, 0, geo.VertexCount() - 1, nullptr));
}

BENCHMARK(BM_Grid1000Corner_FindVertexPath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Grid1000Corner_BoostDijkstra)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScannedBlob32Pairs_FindVertexPath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScannedBlob32Pairs_BoostDijkstra)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Grid1000RandomPairs_FindVertexPath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Grid1000RandomPairs_BoostDijkstra)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sphere1M8Pairs_FindVertexPath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sphere1M8Pairs_BoostDijkstra)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Grid1000FiveVertexPath_FindVertexPath)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Grid1000FiveVertexPath_BoostDijkstra)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Grid200Corner_FindVertexPath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Grid200Corner_LiteralListScan)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace quillix::bench
