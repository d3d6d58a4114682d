// Quillix_slins, Quillix_rlins, Quillix_dsals and Quillix_dsals2 through the offline host:
// port tables, per-element inputs, constants, batches, defaults and threads.
#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include "core/math/math_types.h"
#include "support/plugin_fixture.h"
#include "tests/nodes/utility/node_values.h"

namespace quillix::test {
namespace {

using XSI::MATH::CVector3f;
using Points = std::vector<CVector3f>;
constexpr ULONG kNone = 0xFFFFFFFFu;

PortValues pointArrays(const std::vector<Points>& arrays) {
  return PortValues::arraysOf<CVector3f>(arrays);
}

struct PortRow {
  ULONG id;
  ULONG type;
  ULONG structure;
  const wchar_t* script;
  const wchar_t* display;
  XSI::CValue defaultValue;
};

void expectTable(const wchar_t* node, ULONG threading, const std::vector<PortRow>& inputs,
                 const PortRow& output) {
  SCOPED_TRACE(testing::Message() << std::string(node, node + std::wcslen(node)));
  const auto* definition = nodeDefinition(node);
  ASSERT_NE(definition, nullptr);
  EXPECT_EQ(definition->threadingModel, threading);
  ASSERT_EQ(definition->groups.size(), 1u);
  EXPECT_EQ(definition->groups[0].name, L"Inputs");
  EXPECT_EQ(definition->groups[0].maxInstances, 1u);
  ASSERT_EQ(definition->inputs.size(), inputs.size());
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const auto& actual = definition->inputs[i];
    SCOPED_TRACE(inputs[i].id);
    EXPECT_EQ(actual.id, inputs[i].id);
    EXPECT_EQ(actual.groupID, 10u);
    EXPECT_EQ(actual.dataTypes, inputs[i].type);
    EXPECT_EQ(actual.structures, inputs[i].structure);
    EXPECT_EQ(actual.contexts, 63u);
    EXPECT_EQ(actual.scriptName, inputs[i].script);
    EXPECT_EQ(actual.displayName, inputs[i].display);
    EXPECT_TRUE(actual.defaultValue == inputs[i].defaultValue);
    EXPECT_EQ(actual.typeLink, kNone);
    EXPECT_EQ(actual.structureLink, 4001u);
    EXPECT_EQ(actual.contextLink, 4002u);
  }
  ASSERT_EQ(definition->outputs.size(), 1u);
  const auto& out = definition->outputs[0];
  EXPECT_EQ(out.id, output.id);
  EXPECT_EQ(out.dataTypes, output.type);
  EXPECT_EQ(out.structures, 2u);
  EXPECT_EQ(out.contexts, 63u);
  EXPECT_EQ(out.scriptName, output.script);
  EXPECT_EQ(out.displayName, output.display);
  EXPECT_EQ(out.structureLink, kNone);
  EXPECT_EQ(out.contextLink, 4002u);
}

TEST(CurveNodes, RegisterTheirPortTables) {
  const XSI::CValue zeroVector(XSI::MATH::CVector3f(0, 0, 0));
  expectTable(
      L"Quillix_slins", 2,
      {{1010, 16, 2, L"controlPoints", L"In Array of Control Points", zeroVector},
       {1020, 4, 1, L"epsilon", L"Epsilon", XSI::CValue(1.0)},
       {1030, 1, 1, L"closed", L"Treat Spline as closed", XSI::CValue(false)},
       {1040, 1, 1, L"minThree", L"Result must have at least three Points", XSI::CValue(false)}},
      {2010, 16, 2, L"result", L"Result", {}});
  expectTable(L"Quillix_rlins", 2,
              {{1010, 16, 2, L"pntControlPoints", L"In Array of Control Points", zeroVector},
               {1020, 4, 1, L"pntBasicNumOutputPoints", L"(Basic) Number of Output Points",
                XSI::CValue(20.0)},
               {1030, 4, 1, L"pntBasicLaplacianSmoothStrength",
                L"(Basic) Laplacian Smooth Strength", XSI::CValue(0.7f)},
               {1040, 2, 1, L"pntBasicLaplacianSmoothIterations",
                L"(Basic) Laplacian Smooth Iterations", XSI::CValue(XSI::LONG(3))}},
              {2010, 16, 2, L"basicResult", L"(Basic) Result", {}});
  std::vector<PortRow> spheres{
      {1010, 16, 2, L"controlPositions", L"In Array of Control Point Positions", zeroVector},
      {1020, 16, 2, L"controlUpVectors", L"In Array of Control Point Up Vectors", zeroVector},
      {1025, 2, 2, L"controlIntervalIndices", L"In Array of Control Interval Indices (Optional)",
       XSI::CValue(XSI::LONG(-1))},
      {1030, 4, 2, L"sphereRadiuses", L"In Array of Sphere Radiuses", XSI::CValue(1.0f)},
      {1040, 4, 1, L"cornerThreshold", L"Corner Threshold", XSI::CValue(1.0f)},
      {1050, 4, 1, L"cornerScale", L"Corner Scale", XSI::CValue(1.0f)},
      {1060, 2, 1, L"closed", L"Treat Spline as closed", XSI::CValue(XSI::LONG(0))},
      {1070, 2, 1, L"alignment", L"Alignment", XSI::CValue(XSI::LONG(1))},
      {1080, 2, 1, L"distribution", L"Distribution", XSI::CValue(XSI::LONG(0))},
      {1090, 2, 1, L"randomSeed", L"Random Seed", XSI::CValue(XSI::LONG(0))}};
  const PortRow maxSpheres{
      1200, 2, 1, L"maxNumSpheres", L"Max Num Spheres", XSI::CValue(XSI::LONG(16777216))};
  const PortRow result{2010, 256, 2, L"result", L"Encoded 4x4 Matrix", {}};
  std::vector<PortRow> first = spheres;
  first.push_back({1100, 2, 1, L"interpolate", L"Interpolate", XSI::CValue(XSI::LONG(3))});
  first.push_back(maxSpheres);
  expectTable(L"Quillix_dsals", 2, first, result);
  std::vector<PortRow> second = spheres;
  for (auto [id, name] :
       {std::pair{1100u, L"interpTypePositions"}, std::pair{1104u, L"interpTypeTangents"},
        std::pair{1108u, L"interpTypeUpVectors"}}) {
    second.push_back({id, 2, 1, name, name, XSI::CValue(XSI::LONG(20))});
  }
  second.push_back(maxSpheres);
  expectTable(L"Quillix_dsals2", 2, second, result);
  EXPECT_EQ(xsihost::failedAssertions(), 0u);
}

std::vector<Vec3f> pointsOf(const OutputResult& out, ULONG element) {
  std::vector<Vec3f> points;
  for (const CVector3f& v : out.values.arrayAt<CVector3f>(element))
    points.push_back({v.GetX(), v.GetY(), v.GetZ()});
  return points;
}

void expectPoints(const std::vector<Vec3f>& actual, const std::vector<Vec3f>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_FLOAT_EQ(actual[i].x, expected[i].x) << i;
    EXPECT_FLOAT_EQ(actual[i].y, expected[i].y) << i;
    EXPECT_FLOAT_EQ(actual[i].z, expected[i].z) << i;
  }
}

TEST(SlinsNode, EachElementUsesItsOwnLineToleranceAndFlags) {
  EvaluationRequest r;
  r.elements = 4;
  r.setInput(1010, pointArrays({{{0, 0, 0}, {1, 0.1f, 0}, {2, 0, 0}, {3, 0, 0}},
                                {{0, 0, 0}, {1, 0.1f, 0}, {2, 0, 0}, {3, 0, 0}},
                                {},
                                {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 0.5f, 0}}}));
  r.setInput(1020, PortValues::singles<float>({1.0f, 0.01f, 1.0f, 0.5f}));
  r.setInput(1030, boolSingles({false, false, false, true}));
  r.setInput(1040, boolSingles({true, false, true, false}));
  const OutputResult out = evaluate(L"Quillix_slins", r, 2010);
  expectPoints(pointsOf(out, 0), {{0, 0, 0}, {1.5f, 0, 0}, {3, 0, 0}});
  expectPoints(pointsOf(out, 1), {{0, 0, 0}, {1, 0.1f, 0}, {2, 0, 0}, {3, 0, 0}});
  expectPoints(pointsOf(out, 2), {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
  expectPoints(pointsOf(out, 3), {{0, 0.25f, 0}, {4, 0, 0}, {4, 4, 0}});
}

TEST(SlinsNode, ConstantInputsBatchesAndUnknownPorts) {
  const Points line{{0, 0, 0}, {1, 0.2f, 0}, {2, 0, 0}, {3, 2, 0}};
  EvaluationRequest r;
  r.elements = 3;
  r.setInput(1010, pointArrays({line}).asConstant());
  r.setInput(1020, PortValues::singles<float>({0.5f}).asConstant());
  r.batch = std::vector<ULONG>{0, 2};
  OutputResult out = evaluate(L"Quillix_slins", r, 2010);
  EXPECT_TRUE(out.values.wasWritten(0));
  EXPECT_FALSE(out.values.wasWritten(1));
  expectPoints(pointsOf(out, 2), {{0, 0, 0}, {2, 0, 0}, {3, 2, 0}});
  out = evaluate(L"Quillix_slins", r, 2020);
  EXPECT_EQ(out.status, 0u);
  EXPECT_FALSE(out.values.wasWritten(0));
}

TEST(RlinsNode, ResamplesByCountOrDensityPerElement) {
  EvaluationRequest r;
  r.elements = 3;
  r.setInput(1010,
             pointArrays({{{0, 0, 0}, {4, 0, 0}}, {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}}, {{5, 5, 5}}}));
  r.setInput(1020, PortValues::singles<float>({5.0f, -2.0f, 5.0f}));
  r.setInput(1030, PortValues::singles<float>({0.0f}).asConstant());
  const OutputResult out = evaluate(L"Quillix_rlins", r, 2010);
  expectPoints(pointsOf(out, 0), {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}});
  expectPoints(pointsOf(out, 1),
               {{0, 0, 0}, {0.5f, 0, 0}, {1, 0, 0}, {1.5f, 0, 0}, {2, 0, 0}, {2, 0.5f, 0}});
  EXPECT_TRUE(out.values.wasWritten(2));
  EXPECT_TRUE(pointsOf(out, 2).empty());
}

TEST(RlinsNode, DefaultsGiveTwentySmoothedPoints) {
  EvaluationRequest r;
  r.elements = 1;
  r.setInput(1010, pointArrays({{{0, 0, 0}, {5, 5, 0}, {10, 0, 0}}}));
  const auto points = pointsOf(evaluate(L"Quillix_rlins", r, 2010), 0);
  ASSERT_EQ(points.size(), 20u);
  expectPoints({points.front(), points.back()}, {{0, 0, 0}, {10, 0, 0}});
  EXPECT_LT(points[10].y, 5.0f);  // the corner is smoothed
}

std::vector<std::vector<float>> spheresOf(const OutputResult& out, ULONG element) {
  std::vector<std::vector<float>> records;
  for (const XSI::MATH::CMatrix4f& m : out.values.arrayAt<XSI::MATH::CMatrix4f>(element))
    records.emplace_back(m.Get(), m.Get() + 16);
  return records;
}

EvaluationRequest sphereRequest(ULONG elements, std::vector<Points> positions) {
  EvaluationRequest r;
  r.elements = elements;
  r.setInput(1010, pointArrays(positions));
  r.setInput(1040, PortValues::singles<float>({0.0f}).asConstant());
  return r;
}

TEST(DsalsNodes, PackUnitSpheresAlongAStraightSpline) {
  EvaluationRequest r = sphereRequest(1, {{{0, 0, 0}, {10, 0, 0}}});
  for (const wchar_t* node : {L"Quillix_dsals", L"Quillix_dsals2"}) {
    const auto spheres = spheresOf(evaluate(node, r, 2010), 0);
    ASSERT_EQ(spheres.size(), 5u);
    for (std::size_t i = 0; i < 5; ++i) {
      const std::vector<float> expected{1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 0, 1.0f + 2 * i, 0, 0, 0};
      for (int k = 0; k < 16; ++k) EXPECT_FLOAT_EQ(spheres[i][k], expected[k]) << i << "," << k;
    }
  }
}

TEST(DsalsNodes, FlagsOfTheFirstEqualTypesOfTheSecond) {
  EvaluationRequest r = sphereRequest(
      2, {{{0, 0, 0}, {3, 1, 0}, {6, 0, 2}, {9, 4, 1}}, {{0, 0, 0}, {0, 5, 0}, {5, 5, 0}}});
  r.setInput(1020, pointArrays({{{0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}}, {{0, 0, 1}}}));
  r.setInput(1030, PortValues::arraysOf<float>({{0.3f, 0.5f}}).asConstant());
  r.setInput(1040, PortValues::singles<float>({0.5f}).asConstant());
  r.setInput(1090, PortValues::singles<XSI::LONG>({3, 4}));
  for (XSI::LONG flags : {0, 1, 2, 3}) {
    EvaluationRequest first = r;
    first.setInput(1100, PortValues::singles<XSI::LONG>({flags}).asConstant());
    EvaluationRequest second = r;
    second.setInput(1100, PortValues::singles<XSI::LONG>({20}).asConstant());
    second.setInput(1104, PortValues::singles<XSI::LONG>({(flags & 1) ? 20 : 0}).asConstant());
    second.setInput(1108, PortValues::singles<XSI::LONG>({(flags & 2) ? 20 : 0}).asConstant());
    const OutputResult a = evaluate(L"Quillix_dsals", first, 2010);
    const OutputResult b = evaluate(L"Quillix_dsals2", second, 2010);
    for (ULONG e = 0; e < 2; ++e) {
      EXPECT_FALSE(spheresOf(a, e).empty());
      EXPECT_EQ(spheresOf(a, e), spheresOf(b, e)) << "flags " << flags << " element " << e;
    }
  }
}

TEST(DsalsNodes, IntervalsAndBatchWideEmptiness) {
  Points eight;
  for (int i = 0; i < 8; ++i) eight.push_back({float(i), 0, 0});
  EvaluationRequest r = sphereRequest(1, {eight});
  r.setInput(1025, PortValues::arraysOf<XSI::LONG>({{2, 5}}));
  r.setInput(1030, PortValues::arraysOf<float>({{0.5f}}));
  const auto spheres = spheresOf(evaluate(L"Quillix_dsals", r, 2010), 0);
  ASSERT_EQ(spheres.size(), 4u);  // two per interval: points 0-2 and 3-5
  EXPECT_FLOAT_EQ(spheres[0][12], 0.5f);
  EXPECT_FLOAT_EQ(spheres[2][12], 3.5f);
  EXPECT_FLOAT_EQ(spheres[3][12], 4.5f);

  // No up vector anywhere in the batch: nothing for anyone.
  r.setInput(1020, pointArrays({{}}));
  const OutputResult empty = evaluate(L"Quillix_dsals", r, 2010);
  EXPECT_TRUE(empty.values.wasWritten(0));
  EXPECT_TRUE(spheresOf(empty, 0).empty());
}

TEST(CurveNodes, SeveralThreadsGiveTheSameResultsAsOne) {
  std::vector<Points> splines;
  for (int e = 0; e < 64; ++e) {
    Points spline;
    for (int i = 0; i < 30; ++i)
      spline.push_back({float(i), float((i * 7 + e) % 5), float((i * 3 + e) % 4)});
    splines.push_back(spline);
  }
  EvaluationRequest r = sphereRequest(64, splines);
  r.setInput(1030, PortValues::arraysOf<float>({{0.2f, 0.4f, 0.3f}}).asConstant());
  r.setInput(1040, PortValues::singles<float>({0.8f}).asConstant());
  r.setInput(1080, PortValues::singles<XSI::LONG>({1}).asConstant());
  const OutputResult single = evaluate(L"Quillix_dsals2", r, 2010);
  r.threads = 4;
  r.batchSize = 5;
  const OutputResult threaded = evaluate(L"Quillix_dsals2", r, 2010);
  for (ULONG e = 0; e < 64; ++e) {
    ASSERT_FALSE(spheresOf(single, e).empty());
    EXPECT_EQ(spheresOf(single, e), spheresOf(threaded, e)) << e;
  }

  // Tolerance 0.6 for the simplifier, 17 output points for the resampler.
  for (auto [node, value] :
       {std::pair{L"Quillix_slins", 0.6f}, std::pair{L"Quillix_rlins", 17.0f}}) {
    EvaluationRequest lines;
    lines.elements = 64;
    lines.setInput(1010, pointArrays(splines));
    lines.setInput(1020, PortValues::singles<float>({value}).asConstant());
    const OutputResult one = evaluate(node, lines, 2010);
    lines.threads = 4;
    lines.batchSize = 3;
    const OutputResult four = evaluate(node, lines, 2010);
    for (ULONG e = 0; e < 64; ++e) {
      ASSERT_FALSE(pointsOf(one, e).empty());
      EXPECT_EQ(one.values.arrays[e], four.values.arrays[e]) << e;
    }
  }
}

}  // namespace
}  // namespace quillix::test
