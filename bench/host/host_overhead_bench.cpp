// What the offline host costs around a node, measured against the work itself in the same run.
//
// Quillix_divi on 10^6 elements through xsihost::Host (one port, then both) against the raw
// loop over the core's DivideInt that the node runs per port; CPU time of the one evaluation
// thread. Quillix_fpom on 1,000 path elements through the host on 1 and 2 threads with the
// host's own batch size. On a shared machine the wall clock of a threaded run says more about
// the other load than about the split, so the fpom runs also report `critical_cpu_ms`: the CPU
// time of the busiest thread of the evaluation (from /proc/self/task/*/schedstat, sampled every
// millisecond), which is the wall time the evaluation would take with a core per thread.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <xsi_vector3f.h>
#include <xsihost/host.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "core/math/int_divide.h"
#include "tests/kernel/test_meshes.h"

namespace quillix::bench {
namespace {

using XSI::LONG;
using XSI::ULONG;

xsihost::Host& SharedHost() {
  static std::unique_ptr<xsihost::Host> host = [] {
    std::string error;
    auto h = xsihost::Host::Load(QUILLIX_PLUGIN_PATH, error);
    if (!h) std::abort();
    return h;
  }();
  return *host;
}

// Divi: values over the whole range, divisors small and of both signs, a few of them 0.
constexpr ULONG kDiviElements = 1000000;
constexpr ULONG kValuePort = 1010, kDivideByPort = 1020, kResultPort = 2010, kRemainderPort = 2020;

struct DiviData {
  std::vector<LONG> values, divisors;
  DiviData() : values(kDiviElements), divisors(kDiviElements) {
    std::mt19937 random(11);
    std::uniform_int_distribution<LONG> value(-2000000000, 2000000000), divisor(-1000, 1000);
    for (ULONG i = 0; i < kDiviElements; ++i) {
      values[i] = value(random);
      divisors[i] = divisor(random);
    }
  }
};
const DiviData& Divi() {
  static const DiviData data;
  return data;
}

std::vector<ULONG> DiviPorts(int both) {
  return both ? std::vector<ULONG>{kResultPort, kRemainderPort} : std::vector<ULONG>{kResultPort};
}

// Arg 0: the quotient only; 1: quotient and remainder (the node divides once per port).
void BM_Divi1M_RawLoop(benchmark::State& state) {
  const DiviData& data = Divi();
  const std::size_t ports = DiviPorts(int(state.range(0))).size();
  std::vector<std::vector<std::int32_t>> out(ports, std::vector<std::int32_t>(kDiviElements));
  for (auto _ : state) {
    for (std::size_t p = 0; p < ports; ++p) {
      std::int32_t* o = out[p].data();
      for (ULONG i = 0; i < kDiviElements; ++i) {
        const QuotientRemainder r = DivideInt(data.values[i], data.divisors[i]);
        o[i] = p == 0 ? r.quotient : r.remainder;
      }
      benchmark::DoNotOptimize(o);
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(std::int64_t(state.iterations()) * kDiviElements * ports);
}
BENCHMARK(BM_Divi1M_RawLoop)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// The same request evaluated again and again on one instance, as a graph re-evaluates a node
// whose inputs were set once; the outcome lends its buffers to the next evaluation.
void BM_Divi1M_Host(benchmark::State& state) {
  const DiviData& data = Divi();
  xsihost::Host& host = SharedHost();
  xsihost::NodeInstance* instance = host.Instance("divi", L"Quillix_divi");
  xsihost::EvaluationRequest request;
  request.elements = kDiviElements;
  request.SetInput(kValuePort, xsihost::PortValues::Singles(data.values));
  request.SetInput(kDivideByPort, xsihost::PortValues::Singles(data.divisors));
  const std::vector<ULONG> ports = DiviPorts(int(state.range(0)));
  xsihost::EvaluationOutcome outcome;
  host.Evaluate(*instance, request, ports, outcome);
  for (auto _ : state) {
    host.Evaluate(*instance, request, ports, outcome);
    benchmark::DoNotOptimize(outcome.outputs.data());
  }
  state.SetItemsProcessed(std::int64_t(state.iterations()) * kDiviElements * ports.size());
}
BENCHMARK(BM_Divi1M_Host)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Fpom: 1,000 paths between random vertices of a 64 × 64-quad jittered grid (4,225 vertices).
constexpr ULONG kPositionsPort = 1020, kDescriptionPort = 1030, kInitPort = 1040, kPathsPort = 2020;
constexpr int kPaths = 1000;

xsihost::EvaluationRequest FpomRequest() {
  const testing::PlainMesh mesh = testing::QuadGrid(64, 64, 0.3f, 5);
  std::vector<XSI::MATH::CVector3f> points;
  for (const Vec3f& p : mesh.positions) points.emplace_back(p.x, p.y, p.z);
  std::vector<LONG> description;
  std::size_t node = 0;
  for (std::uint8_t size : mesh.sizes) {
    for (std::uint8_t c = 0; c < size; ++c) description.push_back(mesh.indices[node++]);
    description.push_back(-2);
  }
  std::mt19937 random(77);
  std::uniform_int_distribution<LONG> pick(0, LONG(points.size()) - 1);
  std::vector<std::vector<LONG>> init;
  for (int k = 0; k < kPaths; ++k) init.push_back({pick(random), pick(random)});
  xsihost::EvaluationRequest request;
  request.elements = kPaths;
  request.SetInput(kPositionsPort,
                   xsihost::PortValues::ArraysOf<XSI::MATH::CVector3f>({points}).AsConstant());
  request.SetInput(kDescriptionPort,
                   xsihost::PortValues::ArraysOf<LONG>({description}).AsConstant());
  request.SetInput(kInitPort, xsihost::PortValues::ArraysOf<LONG>(init));
  return request;
}

// Nanoseconds each thread of the process has run so far, by thread ID.
std::map<std::string, double> ThreadRunTimes() {
  std::map<std::string, double> times;
  std::error_code error;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", error)) {
    std::ifstream stat(task.path() / "schedstat");
    double ns = 0;
    if (stat >> ns) times[task.path().filename().string()] = ns;
  }
  return times;
}

// Runs `work` and returns the largest CPU time (ms) one thread spent in it, threads started by
// `work` included: a sampler keeps the last run time it saw of every thread.
template <class Work>
double BusiestThreadMs(Work work) {
  const std::map<std::string, double> before = ThreadRunTimes();
  std::map<std::string, double> last = before;
  std::atomic<bool> done{false};
  std::string samplerID;
  std::thread sampler([&] {
    samplerID = std::to_string(gettid());
    while (!done) {
      for (const auto& [id, ns] : ThreadRunTimes()) last[id] = ns;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  work();
  done = true;
  sampler.join();
  for (const auto& [id, ns] : ThreadRunTimes()) last[id] = ns;
  last.erase(samplerID);
  double busiest = 0;
  for (const auto& [id, ns] : last) {
    const auto start = before.find(id);
    busiest = std::max(busiest, ns - (start != before.end() ? start->second : 0.0));
  }
  return busiest * 1e-6;
}

// Arg: evaluation threads. The time moves on every evaluation (the node skips a repeated
// frame); the mesh, unchanged, is built once.
void BM_Fpom1000Paths_Host(benchmark::State& state) {
  xsihost::Host& host = SharedHost();
  xsihost::NodeInstance* instance =
      host.Instance("fpom" + std::to_string(state.range(0)), L"Quillix_fpom");
  xsihost::EvaluationRequest request = FpomRequest();
  request.threads = unsigned(state.range(0));
  xsihost::EvaluationOutcome outcome;
  host.Evaluate(*instance, request, {kPathsPort}, outcome);
  double critical = 0;
  for (auto _ : state) {
    request.time += 1.0;
    critical += BusiestThreadMs([&] { host.Evaluate(*instance, request, {kPathsPort}, outcome); });
    benchmark::DoNotOptimize(outcome.outputs.data());
  }
  state.SetItemsProcessed(std::int64_t(state.iterations()) * kPaths);
  state.counters["critical_cpu_ms"] = critical / double(state.iterations());
}
BENCHMARK(BM_Fpom1000Paths_Host)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace quillix::bench
