// The registered definitions of the spatial nodes: threading model, group and every port
// field, in order, exactly as graphs and scripts address them.
#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <tuple>
#include <vector>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

constexpr ULONG kNone = 0xFFFFFFFFu;

// ID, script and display names, types, structures, contexts, and the three links.
using Fields =
    std::tuple<ULONG, std::wstring, std::wstring, ULONG, ULONG, ULONG, ULONG, ULONG, ULONG>;

Fields FieldsOf(const xsihost::PortRecord& p) {
  return {p.id,       p.scriptName, p.displayName,   p.dataTypes,  p.structures,
          p.contexts, p.typeLink,   p.structureLink, p.contextLink};
}

struct Node {
  const wchar_t* name;
  ULONG threadingModel;
  std::vector<Fields> inputs;
  std::vector<XSI::CValue> defaults;
  std::vector<Fields> outputs;
};

XSI::CValue ZeroMatrix() {
  XSI::MATH::CMatrix4f zero;
  for (short r = 0; r < 4; ++r)
    for (short c = 0; c < 4; ++c) zero.SetValue(r, c, 0.0f);
  return XSI::CValue(zero);
}

Node MatrixPair(const wchar_t* name, const wchar_t* a, const wchar_t* b, XSI::LONG mode,
                ULONG resultType, const wchar_t* result) {
  return {name,
          2,
          {{1000, L"mode", L"Mode", 2, 1, 1, kNone, kNone, kNone},
           {1010, L"tmA", a, 256, 3, 63, kNone, 4001, 4002},
           {1020, L"tmB", b, 256, 3, 63, kNone, 4001, 4002}},
          {XSI::CValue(mode), ZeroMatrix(), ZeroMatrix()},
          {{2010, L"result", result, resultType, 3, 63, kNone, 4001, 4002}}};
}

std::vector<Node> ExpectedNodes() {
  return {
      MatrixPair(L"Quillix_cdbte", L"Transformation of Ellipsoid A",
                 L"Transformation of Ellipsoid B", 0, 4, L"Closest Distance between Surfaces"),
      MatrixPair(L"Quillix_iotb", L"Transformation of Box A", L"Transformation of Box B", 0, 2,
                 L"A and B intersect"),
      MatrixPair(L"Quillix_iotmb", L"Transformation of Box A", L"Transformation of Box B", 1, 4,
                 L"Intersection occurs in"),
      {L"Quillix_otos",
       1,
       {{1010, L"Names", L"In Names", 131072, 2, 1, kNone, kNone, kNone},
        {1020, L"GlobalTransform", L"In Global Transform", 256, 2, 1, kNone, kNone, kNone},
        {1030, L"Scale", L"Scale", 4, 1, 1, kNone, kNone, kNone},
        {1040, L"ScaleBone", L"Scale Bone", 4, 1, 1, kNone, kNone, kNone}},
       {XSI::CValue(XSI::CString(L"")), ZeroMatrix(), XSI::CValue(1.0f), XSI::CValue(1.0f)},
       {{2010, L"Spheres", L"Array of Spheres", 32, 2, 1, kNone, kNone, kNone}}},
  };
}

TEST(SpatialRegistration, EveryNodeRegistersExactlyItsPortTable) {
  for (const Node& node : ExpectedNodes()) {
    SCOPED_TRACE(std::string(node.name, node.name + std::wcslen(node.name)));
    const auto* definition = NodeDefinition(node.name);
    ASSERT_NE(definition, nullptr);
    EXPECT_TRUE(definition->registered);
    EXPECT_EQ(definition->threadingModel, node.threadingModel);
    ASSERT_EQ(definition->groups.size(), 1u);
    EXPECT_EQ(definition->groups[0].id, 10u);
    EXPECT_EQ(definition->groups[0].name, L"Inputs");
    EXPECT_EQ(definition->groups[0].minInstances, 1u);
    EXPECT_EQ(definition->groups[0].maxInstances, 1u);
    ASSERT_EQ(definition->inputs.size(), node.inputs.size());
    for (std::size_t i = 0; i < node.inputs.size(); ++i) {
      EXPECT_EQ(FieldsOf(definition->inputs[i]), node.inputs[i]);
      EXPECT_EQ(definition->inputs[i].groupID, 10u);
      EXPECT_EQ(definition->inputs[i].defaultValue.GetType(), node.defaults[i].GetType());
      EXPECT_TRUE(definition->inputs[i].defaultValue == node.defaults[i]) << i;
    }
    ASSERT_EQ(definition->outputs.size(), node.outputs.size());
    for (std::size_t i = 0; i < node.outputs.size(); ++i) {
      EXPECT_EQ(FieldsOf(definition->outputs[i]), node.outputs[i]);
    }
  }
  EXPECT_EQ(xsihost::FailedAssertions(), 0u);
}

TEST(SpatialRegistration, NodesAreRegisteredInCatalogueOrder) {
  std::vector<std::wstring> registered;
  for (const auto& node : Plugin().Record().nodes) {
    for (const Node& expected : ExpectedNodes()) {
      if (node->name == expected.name) registered.push_back(node->name);
    }
  }
  EXPECT_EQ(registered, (std::vector<std::wstring>{L"Quillix_cdbte", L"Quillix_iotb",
                                                   L"Quillix_iotmb", L"Quillix_otos"}));
}

}  // namespace
}  // namespace quillix::test
