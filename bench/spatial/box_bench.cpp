// Box-pair throughput: one box against 10^6 boxes, as a node sees a single input against an
// array. The cascade (modes -1, 0, 1) and the contact time are measured beside an exact
// 15-axis separating-axis test on the same pairs; compare items per second.
//
// Each pair pays what the node pays: the array box is turned into its record and prepared
// per pair, the single box is prepared (and inverted) once.
#include <benchmark/benchmark.h>

#include <map>
#include <vector>

#include "core/spatial/box_intersect.h"
#include "core/spatial/ellipsoid.h"
#include "core/spatial/moving_box.h"
#include "tests/core/spatial/box_fixtures.h"

namespace {

using namespace quillix;

constexpr int kBoxes = 1000000;

// The single box and the array, with centres drawn from [-extent, extent]³ where extent is
// the argument in tenths: 25 packs the boxes so that about a third of the pairs intersect,
// 100 spreads them so that most pairs are rejected by their bounds.
struct Scene {
  Mat4f single;
  std::vector<Mat4f> boxes;
};

const Scene& SceneFor(std::int64_t extentTenths) {
  static std::map<std::int64_t, Scene> scenes;
  Scene& scene = scenes[extentTenths];
  if (scene.boxes.empty()) {
    testing::RandomBoxes random(42, static_cast<float>(extentTenths) / 10.0f);
    scene.single = testing::Rotation(20.0, 30.0, 40.0, 1.0f, {0.2f, -0.1f, 0.3f});
    scene.boxes.reserve(kBoxes);
    for (int i = 0; i < kBoxes; ++i) {
      Mat4f m = random.Next();
      // Velocities for the moving-box runs; the box test ignores this column.
      for (int r = 0; r < 3; ++r) m.m[r][3] = static_cast<float>(random.Uniform(-3.0, 3.0));
      m.m[3][3] = 0.0f;
      scene.boxes.push_back(m);
    }
  }
  return scene;
}

void BoxesIntersectCascade(benchmark::State& state) {
  const Scene& scene = SceneFor(state.range(1));
  const auto mode = static_cast<std::int32_t>(state.range(0));
  const PreparedBox single = PrepareBox(EllipsoidFromMatrix(scene.single), true);
  int hits = 0;
  for (auto _ : state) {
    hits = 0;
    for (const Mat4f& m : scene.boxes) {
      hits += BoxesIntersect(single, PrepareBox(EllipsoidFromMatrix(m), false), mode);
    }
    benchmark::DoNotOptimize(hits);
  }
  state.counters["hit_rate"] = static_cast<double>(hits) / kBoxes;
  state.SetItemsProcessed(state.iterations() * kBoxes);
}

void SeparatingAxisBaseline(benchmark::State& state) {
  const Scene& scene = SceneFor(state.range(0));
  const Mat4f single = EllipsoidFromMatrix(scene.single).matrix;
  int hits = 0;
  for (auto _ : state) {
    hits = 0;
    for (const Mat4f& m : scene.boxes) {
      hits += testing::SeparatingAxisIntersect<float>(single, EllipsoidFromMatrix(m).matrix);
    }
    benchmark::DoNotOptimize(hits);
  }
  state.counters["hit_rate"] = static_cast<double>(hits) / kBoxes;
  state.SetItemsProcessed(state.iterations() * kBoxes);
}

void MovingBoxContactTime(benchmark::State& state) {
  const Scene& scene = SceneFor(state.range(1));
  Mat4f packed = scene.single;
  packed.m[0][3] = 1.0f;
  packed.m[3][3] = static_cast<float>(state.range(0));  // subdivision count
  const PreparedMovingBox single = PrepareMovingBox(MovingBoxFromMatrix(packed), true);
  int contacts = 0;
  for (auto _ : state) {
    contacts = 0;
    for (const Mat4f& m : scene.boxes) {
      contacts +=
          BoxesContactTime(single, PrepareMovingBox(MovingBoxFromMatrix(m), false), 1) >= 0.0f;
    }
    benchmark::DoNotOptimize(contacts);
  }
  state.counters["contact_rate"] = static_cast<double>(contacts) / kBoxes;
  state.SetItemsProcessed(state.iterations() * kBoxes);
}

// Arguments: {extent} for the baseline, {mode, extent} for the cascade and {subdivision
// count, extent} for the contact time (counts 0 and 6 give depths 0 and 3).
BENCHMARK(SeparatingAxisBaseline)->Arg(25)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(BoxesIntersectCascade)
    ->ArgsProduct({{-1, 0, 1}, {25, 100}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(MovingBoxContactTime)->ArgsProduct({{0, 6}, {25, 100}})->Unit(benchmark::kMillisecond);

}  // namespace
