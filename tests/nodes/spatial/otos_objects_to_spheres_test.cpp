// Quillix_otos through the offline host over a small scene: radii by type, bone rows,
// parameters read at the evaluation time, unknown names and mismatched inputs.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include <xsihost/scene.h>
#include <xsihost/scene_file.h>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

using XSI::MATH::CMatrix4f;
using XSI::MATH::CVector4f;

constexpr ULONG kNames = 1010, kTransforms = 1020, kScale = 1030, kBoneScale = 1040;
constexpr ULONG kSpheres = 2010;

constexpr const char* kScene = R"({ "objects": [
  { "name": "ball", "type": "sphere", "parameters": { "radius": 2 },
    "keys": { "parameters": { "radius": [[1, 2], [11, 3]] } } },
  { "name": "crate", "type": "cube", "parameters": { "length": 4 } },
  { "name": "marker", "type": "null" },
  { "name": "hip", "type": "root", "parameters": { "size": 0.5 } },
  { "name": "thigh", "type": "bone", "parent": "hip", "parameters": { "length": 2, "size": 0.5 } },
  { "name": "toe", "type": "bone", "parent": "thigh", "parameters": { "length": 0.4, "size": 1 } }
] })";

class OtosNode : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    auto scene = xsihost::ParseSceneText(kScene, ".", "otos test scene", error);
    ASSERT_TRUE(scene) << error;
    xsihost::SetActiveScene(scene);
  }
  void TearDown() override { xsihost::SetActiveScene(std::make_shared<xsihost::Scene>()); }
};

CMatrix4f Placed(float sx, float sy, float sz, float x, float y, float z) {
  return CMatrix4f(sx, 0, 0, 0, 0, sy, 0, 0, 0, 0, sz, 0, x, y, z, 1);
}

std::vector<CVector4f> Spheres(const std::vector<std::wstring>& names,
                               const std::vector<CMatrix4f>& matrices, float scale = 1.0f,
                               float boneScale = 1.0f, double time = 1.0) {
  EvaluationRequest r;
  r.elements = 1;
  r.time = time;
  r.SetInput(kNames, PortValues::Strings2D({names}));
  r.SetInput(kTransforms, PortValues::ArraysOf(std::vector<std::vector<CMatrix4f>>{matrices}));
  r.SetInput(kScale, PortValues::Singles<float>({scale}));
  r.SetInput(kBoneScale, PortValues::Singles<float>({boneScale}));
  const OutputResult out = Evaluate(L"Quillix_otos", r, kSpheres);
  EXPECT_TRUE(out.values.WasWritten(0));
  return out.values.ArrayAt<CVector4f>(0);
}

TEST_F(OtosNode, OneSpherePerObjectSizedByTypeParameterAndScaling) {
  const auto out = Spheres({L"ball", L"crate", L"marker", L"hip"},
                           {Placed(1, 1, 1, 4, 5, 6), Placed(1, 2, 3, 0, 0, 0),
                            Placed(1, 2, 3, 0, 0, 0), Placed(1, 1, 1, 0, 0, 0)},
                           -1.5f);
  ASSERT_EQ(out.size(), 4u);
  EXPECT_EQ(out[0].GetX(), 4.0f);
  EXPECT_EQ(out[0].GetZ(), 6.0f);
  EXPECT_FLOAT_EQ(out[0].GetW(), 3.0f);         // radius 2 × |Scale| 1.5
  EXPECT_FLOAT_EQ(out[1].GetW(), 6.0f);         // mean scaling 2 × length/2 × 1.5
  EXPECT_FLOAT_EQ(out[2].GetW(), 3.0f);         // a null: mean scaling × 1.5
  EXPECT_FLOAT_EQ(out[3].GetW(), 0.4f * 1.5f);  // a root: 0.8 size
}

TEST_F(OtosNode, BonesGiveTaperingRowsFromRootToTip) {
  const auto out = Spheres({L"thigh", L"toe"}, {Placed(1, 1, 1, 1, 0, 0), Placed(2, 2, 2, 0, 0, 0)},
                           1.0f, -2.0f);
  ASSERT_EQ(out.size(), 8u);  // length 2: six spheres; length 0.4: raised to two
  for (int i = 0; i < 6; ++i) {
    EXPECT_FLOAT_EQ(out[i].GetX(), 1.0f + 0.4f * i);
    EXPECT_FLOAT_EQ(out[i].GetW(), static_cast<float>((0.333 - 0.025 * i) * 0.5 * 2));
  }
  EXPECT_FLOAT_EQ(out[6].GetW(), 0.333f * 2 * 2);  // size 1 × mean scaling 2 × |ScaleBone| 2
  EXPECT_FLOAT_EQ(out[7].GetX(), 0.8f);            // tip: length 0.4 scaled by 2
  EXPECT_FLOAT_EQ(out[7].GetW(), 0.208f * 2 * 2);
}

TEST_F(OtosNode, ReadsParametersAtTheEvaluationTime) {
  EXPECT_FLOAT_EQ(Spheres({L"ball"}, {Placed(1, 1, 1, 0, 0, 0)}, 1, 1, 11.0)[0].GetW(), 3.0f);
}

TEST_F(OtosNode, SkipsUnknownNamesAndEmptiesOnMismatchedInputs) {
  const auto known =
      Spheres({L"nowhere", L"ball"}, {Placed(1, 1, 1, 0, 0, 0), Placed(1, 1, 1, 7, 0, 0)});
  ASSERT_EQ(known.size(), 1u);
  EXPECT_EQ(known[0].GetX(), 7.0f);  // matrix 1 goes with name 1
  EXPECT_TRUE(
      Spheres({L"ball", L"crate", L"marker"}, {Placed(1, 1, 1, 0, 0, 0), Placed(1, 1, 1, 0, 0, 0)})
          .empty());
  EXPECT_TRUE(Spheres({}, {}).empty());
  EXPECT_TRUE(TakeLog().empty());
}

}  // namespace
}  // namespace quillix::test
