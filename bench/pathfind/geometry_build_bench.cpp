// Set plus neighbour lists plus components on a 10^6-vertex grid and a 10^6-vertex sphere,
// against building a half-edge PolyMesh's connectivity from the same arrays (when OpenMesh is
// installed). `page_faults` counts the first touches of fresh pages per build.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/resource.h>

#include <vector>

#include "bench/pathfind/bench_meshes.h"
#include "kernel/geometry.h"

#ifdef QUILLIX_BENCH_OPENMESH
#include <OpenMesh/Core/Mesh/PolyMesh_ArrayKernelT.hh>
#endif

namespace quillix::bench {
namespace {

const PlainMesh& Grid() {
  static const PlainMesh grid = testing::QuadGrid(999, 999);
  return grid;
}
const PlainMesh& Sphere() {
  static const PlainMesh sphere = GeodesicSphere(316);  // 998,562 vertices
  return sphere;
}

double MeshArrayBytes(const PlainMesh& m) {
  return double(m.positions.size() * sizeof(Vec3f) + m.sizes.size() +
                m.indices.size() * sizeof(std::int32_t));
}

std::size_t HeapBytes() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

long MinorFaults() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_minflt;
}

void SetNeighboursComponents(benchmark::State& state, const PlainMesh& m) {
  double peakRatio = 0.0;
  long faults = 0;
  for (auto _ : state) {
    const long before = MinorFaults();
    QRVMemoryContext memory;
    QRVGeometry geo(&memory);
    geo.Set(m.positions.data(), std::int32_t(m.positions.size()), kEncodingFloat, m.sizes.data(),
            m.indices.data(), std::int32_t(m.sizes.size()), kDescriptionByteSizes);
    benchmark::DoNotOptimize(geo.NeighbourLists());
    benchmark::DoNotOptimize(geo.ComponentNumbers());
    faults += MinorFaults() - before;
    peakRatio = double(memory.PeakBytes()) / MeshArrayBytes(m);
    state.counters["held_MB"] = double(memory.BytesInUse()) / 1e6;
  }
  state.counters["peak_MB"] = peakRatio * MeshArrayBytes(m) / 1e6;
  state.counters["peak_over_mesh_arrays"] = peakRatio;
  state.counters["page_faults"] = double(faults) / double(state.iterations());
}
void BM_Grid1000_SetNeighboursComponents(benchmark::State& s) {
  SetNeighboursComponents(s, Grid());
}
void BM_Sphere1M_SetNeighboursComponents(benchmark::State& s) {
  SetNeighboursComponents(s, Sphere());
}
BENCHMARK(BM_Grid1000_SetNeighboursComponents)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sphere1M_SetNeighboursComponents)->Unit(benchmark::kMillisecond);

#ifdef QUILLIX_BENCH_OPENMESH
void OpenMeshBuild(benchmark::State& state, const PlainMesh& m) {
  using Mesh = OpenMesh::PolyMesh_ArrayKernelT<>;
  double held = 0.0;
  long faults = 0;
  for (auto _ : state) {
    const long beforeFaults = MinorFaults();
    const std::size_t before = HeapBytes();
    Mesh mesh;
    mesh.reserve(m.positions.size(), m.indices.size() / 2, m.sizes.size());
    std::vector<Mesh::VertexHandle> handles;
    handles.reserve(m.positions.size());
    for (const Vec3f& p : m.positions)
      handles.push_back(mesh.add_vertex(Mesh::Point(p.x, p.y, p.z)));
    std::vector<Mesh::VertexHandle> corners;
    std::size_t node = 0;
    for (std::uint8_t size : m.sizes) {
      corners.assign(size, Mesh::VertexHandle());
      for (std::uint8_t k = 0; k < size; ++k)
        corners[k] = handles[std::size_t(m.indices[node + k])];
      mesh.add_face(corners);
      node += size;
    }
    held = double(HeapBytes() - before);
    faults += MinorFaults() - beforeFaults;
    benchmark::DoNotOptimize(mesh.n_faces());
  }
  state.counters["held_MB"] = held / 1e6;
  state.counters["held_over_mesh_arrays"] = held / MeshArrayBytes(m);
  state.counters["page_faults"] = double(faults) / double(state.iterations());
}
void BM_Grid1000_OpenMeshPolyMeshBuild(benchmark::State& s) { OpenMeshBuild(s, Grid()); }
void BM_Sphere1M_OpenMeshPolyMeshBuild(benchmark::State& s) { OpenMeshBuild(s, Sphere()); }
BENCHMARK(BM_Grid1000_OpenMeshPolyMeshBuild)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Sphere1M_OpenMeshPolyMeshBuild)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
}  // namespace quillix::bench
