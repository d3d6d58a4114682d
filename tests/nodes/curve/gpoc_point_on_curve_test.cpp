// Quillix_gpoc through the offline host over a scene with a scaled, moved curve object.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include <xsihost/scene.h>
#include <xsihost/scene_file.h>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

using XSI::MATH::CVector3f;
constexpr ULONG kName = 1010, kMode = 1020, kU = 1030, kSubC = 1040;
constexpr ULONG kPosition = 2010, kTangent = 2020, kNormal = 2030, kBinormal = 2040;

// Two degree-1 curves: an L of length 20 (parameter range [0, 2]) and a segment up y.
constexpr const char* kScene = R"({ "objects": [
  { "name": "rail", "type": "crvlist",
    "transform": { "scaling": [2, 2, 2], "translation": [1, 2, 3] },
    "curves": [ { "degree": 1, "points": [[0, 0, 0], [10, 0, 0], [10, 10, 0]] },
                { "degree": 1, "points": [[0, 0, 0], [0, 4, 0]] } ] },
  { "name": "marker", "type": "null" }
] })";

class GpocNode : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    auto scene = xsihost::ParseSceneText(kScene, ".", "gpoc test scene", error);
    ASSERT_TRUE(scene) << error;
    xsihost::SetActiveScene(scene);
  }
  void TearDown() override { xsihost::SetActiveScene(std::make_shared<xsihost::Scene>()); }
};

EvaluationRequest request(const std::wstring& name, XSI::LONG mode, XSI::LONG subCurve,
                          PortValues u, ULONG elements) {
  EvaluationRequest r;
  r.elements = elements;
  r.SetInput(kName, PortValues::Strings1D({name}));
  r.SetInput(kMode, PortValues::Singles<XSI::LONG>({mode}));
  r.SetInput(kSubC, PortValues::Singles<XSI::LONG>({subCurve}));
  r.SetInput(kU, std::move(u));
  return r;
}

CVector3f single(const EvaluationRequest& r, ULONG port, ULONG element = 0) {
  const OutputResult out = Evaluate(L"Quillix_gpoc", r, port);
  EXPECT_TRUE(out.values.WasWritten(element));
  return out.values.Single<CVector3f>(element);
}

void expectNear(const CVector3f& v, float x, float y, float z, float tolerance = 1e-5f) {
  EXPECT_NEAR(v.GetX(), x, tolerance);
  EXPECT_NEAR(v.GetY(), y, tolerance);
  EXPECT_NEAR(v.GetZ(), z, tolerance);
}

TEST(GpocRegistration, SingleThreadedWithSingletonInputsAndLinkedOutputs) {
  const auto* definition = NodeDefinition(L"Quillix_gpoc");
  ASSERT_NE(definition, nullptr);
  EXPECT_EQ(definition->threadingModel, 1u);
  struct Row {
    ULONG id, type, structure, context, structureLink;
    const wchar_t* name;
    XSI::CValue value;
  };
  const ULONG none = 0xFFFFFFFFu;
  const Row inputs[] = {{kName, 0x20000, 1, 1, none, L"Name", XSI::CValue(L"")},
                        {kMode, 2, 1, 1, none, L"Mode", XSI::CValue(XSI::LONG(2))},
                        {kU, 4, 3, 63, 4001, L"U", XSI::CValue(0.0f)},
                        {kSubC, 2, 1, 1, none, L"SubC", XSI::CValue(XSI::LONG(0))}};
  ASSERT_EQ(definition->inputs.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) {
    const auto& port = definition->inputs[i];
    EXPECT_EQ(port.id, inputs[i].id);
    EXPECT_EQ(port.dataTypes, inputs[i].type);
    EXPECT_EQ(port.structures, inputs[i].structure);
    EXPECT_EQ(port.contexts, inputs[i].context);
    EXPECT_EQ(port.scriptName, inputs[i].name);
    EXPECT_EQ(port.displayName, inputs[i].name);
    EXPECT_TRUE(port.defaultValue == inputs[i].value);
    EXPECT_EQ(port.structureLink, inputs[i].structureLink);
    EXPECT_EQ(port.contextLink, inputs[i].structureLink == none ? none : 4002u);
  }
  const wchar_t* outputs[] = {L"Position", L"Tangent", L"Normal", L"BiNormal"};
  ASSERT_EQ(definition->outputs.size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) {
    const auto& port = definition->outputs[i];
    EXPECT_EQ(port.id, 2010u + 10u * i);
    EXPECT_EQ(port.dataTypes, 16u);
    EXPECT_EQ(port.structures, 3u);
    EXPECT_EQ(port.scriptName, outputs[i]);
    EXPECT_EQ(port.displayName, outputs[i]);
    EXPECT_EQ(port.structureLink, 4001u);
    EXPECT_EQ(port.contextLink, 4002u);
  }
}

TEST_F(GpocNode, TheThreeModesReachTheSamePointInWorldSpace) {
  // Local (10, 5, 0): parameter 1.5, normalised 0.75, 75 per cent of the length.
  for (auto [mode, u] :
       {std::pair{0, 1.5f}, std::pair{5, 1.5f}, std::pair{1, 0.75f}, std::pair{2, 0.75f}}) {
    SCOPED_TRACE(mode);
    const EvaluationRequest r = request(L"rail", mode, 0, PortValues::Singles<float>({u}), 1);
    expectNear(single(r, kPosition), 21, 12, 3, 1e-4f);
    expectNear(single(r, kTangent), 0, 1, 0);  // unit length although the object is scaled
  }
}

TEST_F(GpocNode, ZeroIsClampedToTheFirstMillionthAndDirectionsAreUnitLength) {
  const EvaluationRequest r = request(L"rail", 2, 0, PortValues::Singles<float>({0.0f}), 1);
  const CVector3f start = single(r, kPosition);
  EXPECT_GT(start.GetX(), 1.0f);  // 1e-4 per cent of 20 along x, times 2
  EXPECT_NEAR(start.GetX(), 1.0f + 2.0f * 20.0f * 1e-6f, 1e-6f);
  for (ULONG port : {kTangent, kNormal, kBinormal}) {
    const CVector3f v = single(r, port);
    EXPECT_NEAR(std::sqrt(v.GetX() * v.GetX() + v.GetY() * v.GetY() + v.GetZ() * v.GetZ()), 1.0f,
                1e-6f);
  }
}

TEST_F(GpocNode, SubCurveIndexIsClampedToTheCurvesThere) {
  const PortValues half = PortValues::Singles<float>({0.5f});
  expectNear(single(request(L"rail", 2, 9, half, 1), kPosition), 1, 6, 3);
  expectNear(single(request(L"rail", 2, 1, half, 1), kPosition), 1, 6, 3);
  expectNear(single(request(L"rail", 2, -4, half, 1), kPosition), 21, 2, 3);
}

TEST_F(GpocNode, ArraysOfParametersGiveArraysOfTheSameLength) {
  const EvaluationRequest r =
      request(L"rail", 0, 0, PortValues::ArraysOf<float>({{0.5f, 2.0f}, {}}), 2);
  const OutputResult out = Evaluate(L"Quillix_gpoc", r, kPosition);
  const auto first = out.values.ArrayAt<CVector3f>(0);
  ASSERT_EQ(first.size(), 2u);
  expectNear(first[0], 11, 2, 3);
  expectNear(first[1], 21, 22, 3);
  EXPECT_TRUE(out.values.WasWritten(1));
  EXPECT_TRUE(out.values.ArrayAt<CVector3f>(1).empty());
}

TEST_F(GpocNode, UnusableCurvesGiveZeroVectorsOfTheRightCount) {
  for (const std::wstring name : {L"", L"nowhere", L"marker"}) {
    const EvaluationRequest arrays =
        request(name, 2, 0, PortValues::ArraysOf<float>({{0.1f, 0.2f, 0.3f}}), 1);
    const auto values = Evaluate(L"Quillix_gpoc", arrays, kNormal).values.ArrayAt<CVector3f>(0);
    ASSERT_EQ(values.size(), 3u);
    for (const CVector3f& v : values) expectNear(v, 0, 0, 0, 0);
    const EvaluationRequest singles =
        request(name, 2, 0, PortValues::Singles<float>({0.1f, 0.2f}), 2);
    expectNear(single(singles, kPosition, 1), 0, 0, 0, 0);
  }
  const OutputResult unknown = Evaluate(
      L"Quillix_gpoc", request(L"rail", 2, 0, PortValues::Singles<float>({0.5f}), 1), 2050);
  EXPECT_FALSE(unknown.values.WasWritten(0));
}

}  // namespace
}  // namespace quillix::test
