// Quillix_fpom through the offline host: 10^4 elements, each a path between two random
// vertices of a 10^5-vertex mesh, on 1 and 2 evaluation threads. The baseline is the same
// searches made directly on the kernel in one thread, measured in the same run.
#include <benchmark/benchmark.h>

#include <xsi_vector3f.h>
#include <xsihost/evaluation.h>
#include <xsihost/plugin_host.h>
#include <xsihost/session.h>

#include <sys/resource.h>

#include <memory>
#include <random>
#include <vector>

#include "core/mesh/path_chain.h"
#include "kernel/geometry.h"
#include "tests/kernel/test_meshes.h"

namespace quillix::bench {
namespace {

constexpr XSI::ULONG kPositions = 1020, kDescription = 1030, kInit = 1040, kPaths = 2020;
constexpr int kElements = 10000;

struct Workload {
  testing::PlainMesh mesh = testing::QuadGrid(316, 316, 0.3f, 5);  // 100,489 vertices
  std::vector<std::vector<XSI::LONG>> init;
  std::vector<XSI::LONG> description;
  Workload() {
    std::mt19937 random(77);
    std::uniform_int_distribution<XSI::LONG> pick(0, XSI::LONG(mesh.positions.size()) - 1);
    for (int k = 0; k < kElements; ++k) init.push_back({pick(random), pick(random)});
    std::size_t node = 0;
    for (std::uint8_t size : mesh.sizes) {
      for (std::uint8_t c = 0; c < size; ++c) description.push_back(mesh.indices[node++]);
      description.push_back(-2);
    }
  }
};
const Workload& Work() {
  static const Workload work;
  return work;
}

// CPU seconds of every thread of the process: on a shared machine the wall clock of a
// threaded run says more about the other load than about the node.
double ProcessCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

xsihost::LoadedPlugin& Plugin() {
  xsihost::HostLog();
  static std::unique_ptr<xsihost::LoadedPlugin> plugin = [] {
    std::string error;
    auto p = xsihost::LoadedPlugin::Load(QUILLIX_PLUGIN_PATH, error);
    if (!p) std::abort();
    return p;
  }();
  return *plugin;
}

void BM_Fpom10kPaths_OfflineHost(benchmark::State& state) {
  const Workload& work = Work();
  xsihost::NodeInstance instance(Plugin(), *Plugin().Record().FindNode(L"Quillix_fpom"));
  xsihost::EvaluationRequest request;
  request.elements = kElements;
  request.threads = unsigned(state.range(0));
  request.batchSize = 256;
  std::vector<XSI::MATH::CVector3f> points;
  for (const Vec3f& p : work.mesh.positions) points.emplace_back(p.x, p.y, p.z);
  request.SetInput(kPositions,
                   xsihost::PortValues::ArraysOf<XSI::MATH::CVector3f>({points}).AsConstant());
  request.SetInput(kDescription,
                   xsihost::PortValues::ArraysOf<XSI::LONG>({work.description}).AsConstant());
  request.SetInput(kInit, xsihost::PortValues::ArraysOf<XSI::LONG>(work.init));
  instance.Evaluate(request, {});  // builds the mesh once, as the first frame would
  const double cpuBefore = ProcessCpuSeconds();
  for (auto _ : state) {
    request.time += 1.0;
    benchmark::DoNotOptimize(instance.Evaluate(request, {kPaths}));
  }
  const double cpu = (ProcessCpuSeconds() - cpuBefore) / double(state.iterations());
  xsihost::HostLog().Take();
  state.counters["paths/s"] =
      benchmark::Counter(double(kElements), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["process_cpu_s"] = cpu;
}
BENCHMARK(BM_Fpom10kPaths_OfflineHost)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kSecond)
    ->Iterations(1)
    ->UseRealTime();

void BM_Fpom10kPaths_KernelDirect(benchmark::State& state) {
  const Workload& work = Work();
  QRVGeometry geo;
  std::vector<std::int32_t> description(work.description.begin(), work.description.end());
  BuildPathGeometry(work.mesh.positions, description, geo);
  std::vector<std::int32_t> out;
  for (auto _ : state) {
    PathScratch scratch(geo.Memory());
    for (const auto& pair : work.init) {
      const std::int32_t init[2] = {pair[0], pair[1]};
      ChainPath(geo, init, 0, nullptr, scratch, out);
    }
  }
  state.counters["paths/s"] =
      benchmark::Counter(double(kElements), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_Fpom10kPaths_KernelDirect)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

}  // namespace
}  // namespace quillix::bench
