// Building inputs and checking registrations and outputs of the curve nodes in the offline host.
#pragma once

#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <utility>
#include <vector>

#include "core/math/math_types.h"
#include "support/plugin_fixture.h"

namespace quillix::test {

using XSI::MATH::CVector3f;
using Points = std::vector<CVector3f>;
inline constexpr ULONG kNoLinkId = 0xFFFFFFFFu;

inline PortValues PointArrays(const std::vector<Points>& arrays) {
  return PortValues::ArraysOf<CVector3f>(arrays);
}

// One registered port as the curve nodes declare it: context any (63); inputs carry the
// structure and context links, outputs the context link only.
struct PortRow {
  ULONG id;
  ULONG type;
  ULONG structure;
  const wchar_t* script;
  const wchar_t* display;
  XSI::CValue defaultValue;
};

inline void ExpectPortTable(const wchar_t* node, ULONG threading,
                            const std::vector<PortRow>& inputs, const PortRow& output) {
  SCOPED_TRACE(testing::Message() << std::string(node, node + std::wcslen(node)));
  const auto* definition = NodeDefinition(node);
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
    EXPECT_EQ(actual.typeLink, kNoLinkId);
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
  EXPECT_EQ(out.structureLink, kNoLinkId);
  EXPECT_EQ(out.contextLink, 4002u);
  EXPECT_EQ(xsihost::FailedAssertions(), 0u);
}

inline std::vector<Vec3f> PointsOf(const OutputResult& out, ULONG element) {
  std::vector<Vec3f> points;
  for (const CVector3f& v : out.values.ArrayAt<CVector3f>(element))
    points.push_back({v.GetX(), v.GetY(), v.GetZ()});
  return points;
}

inline void ExpectPoints(const std::vector<Vec3f>& actual, const std::vector<Vec3f>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_FLOAT_EQ(actual[i].x, expected[i].x) << i;
    EXPECT_FLOAT_EQ(actual[i].y, expected[i].y) << i;
    EXPECT_FLOAT_EQ(actual[i].z, expected[i].z) << i;
  }
}

// 64 wavy 30-point polylines, different per element.
inline std::vector<Points> WavyLines() {
  std::vector<Points> lines;
  for (int e = 0; e < 64; ++e) {
    Points line;
    for (int i = 0; i < 30; ++i)
      line.push_back({float(i), float((i * 7 + e) % 5), float((i * 3 + e) % 4)});
    lines.push_back(line);
  }
  return lines;
}

// A polyline node (port 1010 the points, 1020 its one number) gives the same arrays on four
// threads in small batches as on one thread.
inline void ExpectLinesAlikeOnFourThreads(const wchar_t* node, float value) {
  EvaluationRequest lines;
  lines.elements = 64;
  lines.SetInput(1010, PointArrays(WavyLines()));
  lines.SetInput(1020, PortValues::Singles<float>({value}).AsConstant());
  const OutputResult one = Evaluate(node, lines, 2010);
  lines.threads = 4;
  lines.batchSize = 3;
  const OutputResult four = Evaluate(node, lines, 2010);
  for (ULONG e = 0; e < 64; ++e) {
    ASSERT_FALSE(PointsOf(one, e).empty());
    EXPECT_EQ(one.values.arrays[e], four.values.arrays[e]) << e;
  }
}

// The inputs both sphere nodes register before their interpolation ports.
inline std::vector<PortRow> LeadingSpherePorts() {
  const XSI::CValue zeroVector(CVector3f(0, 0, 0));
  return {{1010, 16, 2, L"controlPositions", L"In Array of Control Point Positions", zeroVector},
          {1020, 16, 2, L"controlUpVectors", L"In Array of Control Point Up Vectors", zeroVector},
          {1025, 2, 2, L"controlIntervalIndices",
           L"In Array of Control Interval Indices (Optional)", XSI::CValue(XSI::LONG(-1))},
          {1030, 4, 2, L"sphereRadiuses", L"In Array of Sphere Radiuses", XSI::CValue(1.0f)},
          {1040, 4, 1, L"cornerThreshold", L"Corner Threshold", XSI::CValue(1.0f)},
          {1050, 4, 1, L"cornerScale", L"Corner Scale", XSI::CValue(1.0f)},
          {1060, 2, 1, L"closed", L"Treat Spline as closed", XSI::CValue(XSI::LONG(0))},
          {1070, 2, 1, L"alignment", L"Alignment", XSI::CValue(XSI::LONG(1))},
          {1080, 2, 1, L"distribution", L"Distribution", XSI::CValue(XSI::LONG(0))},
          {1090, 2, 1, L"randomSeed", L"Random Seed", XSI::CValue(XSI::LONG(0))}};
}
inline const PortRow kMaxSpheresPort{
    1200, 2, 1, L"maxNumSpheres", L"Max Num Spheres", XSI::CValue(XSI::LONG(16777216))};
inline const PortRow kSpheresPort{2010, 256, 2, L"result", L"Encoded 4x4 Matrix", {}};

inline std::vector<std::vector<float>> SpheresOf(const OutputResult& out, ULONG element) {
  std::vector<std::vector<float>> records;
  for (const XSI::MATH::CMatrix4f& m : out.values.ArrayAt<XSI::MATH::CMatrix4f>(element))
    records.emplace_back(m.Get(), m.Get() + 16);
  return records;
}

// Splines one per element, without corners.
inline EvaluationRequest SphereRequest(ULONG elements, std::vector<Points> positions) {
  EvaluationRequest r;
  r.elements = elements;
  r.SetInput(1010, PointArrays(positions));
  r.SetInput(1040, PortValues::Singles<float>({0.0f}).AsConstant());
  return r;
}

// Unit spheres along a straight spline of length 10 with the defaults: five, centred at
// 1, 3, 5, 7, 9, scale 1, identity orientation.
inline void ExpectUnitSpheresAlongAStraightSpline(const wchar_t* node) {
  const EvaluationRequest r = SphereRequest(1, {{{0, 0, 0}, {10, 0, 0}}});
  const auto spheres = SpheresOf(Evaluate(node, r, 2010), 0);
  ASSERT_EQ(spheres.size(), 5u);
  for (std::size_t i = 0; i < 5; ++i) {
    const std::vector<float> expected{1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 0, 1.0f + 2 * i, 0, 0, 0};
    for (int k = 0; k < 16; ++k) EXPECT_FLOAT_EQ(spheres[i][k], expected[k]) << i << "," << k;
  }
}

}  // namespace quillix::test
