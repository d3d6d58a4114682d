// Quillix_cdbte, Quillix_iotb and Quillix_iotmb through the offline host: the four
// structure paths, constants, defaults, the mode warning, batches and threads.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/plugin_fixture.h"
#include "tests/core/spatial/box_fixtures.h"

namespace quillix::test {
namespace {

using XSI::MATH::CMatrix4f;
using Matrices = std::vector<CMatrix4f>;
using quillix::testing::Translation;

constexpr ULONG kMode = 1000, kA = 1010, kB = 1020, kResult = 2010;

CMatrix4f host(const Mat4f& m) {
  CMatrix4f h;
  std::memcpy(h.Get(), m.m, sizeof(m.m));
  return h;
}

CMatrix4f scaled(float s, Vec3f at) {
  return host(quillix::testing::ScaleTranslate({s, s, s}, at));
}

// A unit box at `at` moving by `velocity` over the step, with a subdivision count.
CMatrix4f moving(Vec3f at, Vec3f velocity, float subdivisions = 0.0f) {
  CMatrix4f m = host(Translation(at));
  m.SetValue(0, 3, velocity.x);
  m.SetValue(1, 3, velocity.y);
  m.SetValue(2, 3, velocity.z);
  m.SetValue(3, 3, subdivisions);
  return m;
}

EvaluationRequest pairRequest(PortValues a, PortValues b, ULONG elements) {
  EvaluationRequest r;
  r.elements = elements;
  r.setInput(kA, std::move(a));
  r.setInput(kB, std::move(b));
  return r;
}

template <class T>
std::vector<T> singles(const OutputResult& out) {
  std::vector<T> v;
  for (ULONG i = 0; i < out.values.count; ++i) v.push_back(out.values.single<T>(i));
  return v;
}

TEST(SpatialPairNodes, EllipsoidGapOverEveryStructureCombination) {
  const CMatrix4f unit = scaled(1, {0, 0, 0});
  // Single × single, B constant: gaps 3 (5 apart) and 0 (radius 2 and 1 at 2.5).
  auto out = evaluate(
      L"Quillix_cdbte",
      pairRequest(PortValues::singles(Matrices{scaled(1, {5, 0, 0}), scaled(2, {2.5f, 0, 0})}),
                  PortValues::singles(Matrices{unit}).asConstant(), 2),
      kResult);
  EXPECT_EQ(singles<float>(out), (std::vector<float>{3.0f, 0.0f}));
  // Array × array (5 and 3 entries) gives 3 values; array × single one per entry.
  const Matrices five{scaled(1, {5, 0, 0}), scaled(1, {0, 6, 0}), unit, unit, unit};
  out = evaluate(L"Quillix_cdbte",
                 pairRequest(PortValues::arraysOf(std::vector<Matrices>{five}),
                             PortValues::arraysOf(std::vector<Matrices>{{unit, unit, unit}}), 1),
                 kResult);
  EXPECT_EQ(out.values.arrayAt<float>(0), (std::vector<float>{3.0f, 4.0f, 0.0f}));
  out = evaluate(
      L"Quillix_cdbte",
      pairRequest(PortValues::singles(Matrices{scaled(3, {0, 0, 0})}),
                  PortValues::arraysOf(std::vector<Matrices>{{scaled(1, {10, 0, 0}), unit}}), 1),
      kResult);
  EXPECT_EQ(out.values.arrayAt<float>(0), (std::vector<float>{6.0f, 0.0f}));
  // Inputs left at their all-zero defaults: centres coincide.
  EvaluationRequest defaults;
  EXPECT_EQ(singles<float>(evaluate(L"Quillix_cdbte", defaults, kResult)),
            (std::vector<float>{0.0f}));
  EXPECT_TRUE(takeLog().empty());
}

TEST(SpatialPairNodes, EllipsoidGapWarnsOfAnUnknownModeAndStillComputes) {
  auto r = pairRequest(PortValues::singles(Matrices{scaled(1, {0, 0, 0})}),
                       PortValues::singles(Matrices{scaled(1, {5, 0, 0})}), 1);
  r.setInput(kMode, PortValues::singles<XSI::LONG>({3}));
  takeLog();
  EXPECT_EQ(singles<float>(evaluate(L"Quillix_cdbte", r, kResult)), (std::vector<float>{3.0f}));
  const auto log = takeLog();
  ASSERT_EQ(log.size(), 1u);
  EXPECT_EQ(log[0].severity, 4);
  EXPECT_EQ(log[0].text, L"Quillix_cdbte: illegal method!");
}

TEST(SpatialPairNodes, BoxIntersectionAnswersOneOrZeroPerMode) {
  const CMatrix4f unit = host(Translation({0, 0, 0}));
  const Matrices others{host(Translation({2, 0, 0})), host(Translation({2.001f, 0, 0})),
                        host(quillix::testing::RotationZ(45.0, {1.75f, 1.75f, 0}))};
  for (XSI::LONG mode : {-1, 0, 1}) {
    auto r = pairRequest(PortValues::singles(Matrices{unit}).asConstant(),
                         PortValues::singles(others), 3);
    r.setInput(kMode, PortValues::singles<XSI::LONG>({mode}));
    const std::vector<XSI::LONG> expected{1, 0, mode < 0 ? 1 : 0};
    EXPECT_EQ(singles<XSI::LONG>(evaluate(L"Quillix_iotb", r, kResult)), expected) << mode;
  }
  // Arrays of 5 and 3 boxes give 3 answers; the default mode is 0.
  const Matrices five{unit, others[0], others[1], others[2], unit};
  const auto out =
      evaluate(L"Quillix_iotb",
               pairRequest(PortValues::arraysOf(std::vector<Matrices>{five}),
                           PortValues::arraysOf(std::vector<Matrices>{{unit, unit, unit}}), 1),
               kResult);
  EXPECT_EQ(out.values.arrayAt<XSI::LONG>(0), (std::vector<XSI::LONG>{1, 1, 0}));
}

TEST(SpatialPairNodes, MovingBoxesGiveContactTimes) {
  const CMatrix4f resting = host(Translation({0, 0, 0}));
  const Matrices movers{moving({5, 0, 0}, {-10, 0, 0}), moving({5, 0, 0}, {10, 0, 0}),
                        moving({5, 0, 0}, {-2, 0, 0}), resting};
  const auto out = evaluate(L"Quillix_iotmb",
                            pairRequest(PortValues::singles(Matrices{resting}),
                                        PortValues::arraysOf(std::vector<Matrices>{movers}), 1),
                            kResult);
  EXPECT_EQ(out.values.arrayAt<float>(0), (std::vector<float>{0.5f, -1.0f, 2.5f, 0.0f}));
  // Head-on along one line: missed directly, found at the first overlapping sub-step when the
  // two counts (2 and 3) round to depth 3.
  const auto headOn = [](float countA, float countB) {
    return evaluate(
        L"Quillix_iotmb",
        pairRequest(PortValues::singles(Matrices{moving({-5, 0, 0}, {10, 0, 0}, countA)}),
                    PortValues::singles(Matrices{moving({5, 0, 0}, {-10, 0, 0}, countB)}), 1),
        kResult);
  };
  EXPECT_EQ(singles<float>(headOn(0, 0)), (std::vector<float>{-1.0f}));
  EXPECT_EQ(singles<float>(headOn(2, 3)), (std::vector<float>{0.5f}));
}

TEST(SpatialPairNodes, WriteOnlyTheBatchAndNothingForUnknownPortsOrFailedQueries) {
  for (const wchar_t* node : {L"Quillix_cdbte", L"Quillix_iotb", L"Quillix_iotmb"}) {
    auto r = pairRequest(PortValues::singles(Matrices(4, host(Translation({0, 0, 0})))),
                         PortValues::singles(Matrices(4, host(Translation({1, 0, 0})))), 4);
    r.batch = std::vector<ULONG>{0, 2};
    auto out = evaluate(node, r, kResult);
    EXPECT_TRUE(out.values.wasWritten(0) && out.values.wasWritten(2));
    EXPECT_FALSE(out.values.wasWritten(1) || out.values.wasWritten(3));
    r.batch.reset();
    EXPECT_EQ(evaluate(node, r, 2020).values.count, 0u);
    for (ULONG failing : {kA, kB}) {
      r.failingPortInfo = {failing};
      out = evaluate(node, r, kResult);
      EXPECT_EQ(out.status, 0u);
      for (ULONG i = 0; i < 4; ++i) EXPECT_FALSE(out.values.wasWritten(i));
    }
  }
}

TEST(SpatialPairNodes, ManyThreadsGiveTheSingleThreadedResults) {
  const ULONG n = 3000;
  quillix::testing::RandomBoxes boxes(17);
  Matrices a(n), b(n);
  for (ULONG i = 0; i < n; ++i) {
    Mat4f ma = boxes.Next();
    Mat4f mb = boxes.Next();
    for (int r = 0; r < 3; ++r) {
      ma.m[r][3] = static_cast<float>(boxes.Uniform(-4, 4));
      mb.m[r][3] = static_cast<float>(boxes.Uniform(-4, 4));
    }
    ma.m[3][3] = static_cast<float>(i % 3);
    a[i] = host(ma);
    b[i] = host(mb);
  }
  for (const wchar_t* node : {L"Quillix_cdbte", L"Quillix_iotb", L"Quillix_iotmb"}) {
    auto r = pairRequest(PortValues::singles(a), PortValues::singles(b), n);
    r.batchSize = 50;
    r.threads = 1;
    const auto single = evaluate(node, r, kResult);
    r.threads = 4;
    const auto threaded = evaluate(node, r, kResult);
    EXPECT_EQ(single.values.flat, threaded.values.flat);
  }
}

}  // namespace
}  // namespace quillix::test
