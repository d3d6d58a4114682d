// Quillix_gpos through the offline host over a small scene: modes, placement, failures.
// (Kept beside the path-finding tests, with the kernel's surface generation it drives.)
#include <gtest/gtest.h>

#include <xsi_matrix4f.h>
#include <xsi_vector3f.h>
#include <xsihost/scene.h>
#include <xsihost/scene_file.h>

#include <memory>
#include <string>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

constexpr ULONG kNames = 1010, kTransforms = 1020, kLod = 1030, kMode = 1040, kPositions = 2010;
using xsihost::LogLine;

constexpr const char* kScene = R"({ "objects": [
  { "name": "plane", "type": "polymsh",
    "mesh": { "points": [[0, 0, 0], [2, 0, 0], [2, 2, 0], [0, 2, 0], [1, 1, 0]],
              "polygons": [[0, 1, 4], [1, 2, 4], [2, 3, 4], [3, 0, 4]] } },
  { "name": "marker", "type": "null" } ] })";

XSI::MATH::CMatrix4f Translation(float x, float y, float z) {
  XSI::MATH::CMatrix4f m;
  m.SetIdentity();
  m.SetValue(3, 0, x);
  m.SetValue(3, 1, y);
  m.SetValue(3, 2, z);
  return m;
}

class GposNode : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    auto scene = xsihost::ParseSceneText(kScene, ".", "gpos test scene", error);
    ASSERT_TRUE(scene) << error;
    xsihost::SetActiveScene(scene);
    TakeLog();
  }
  void TearDown() override { xsihost::SetActiveScene(std::make_shared<xsihost::Scene>()); }

  std::vector<XSI::MATH::CVector3f> run(const std::vector<std::wstring>& names,
                                        const std::vector<XSI::MATH::CMatrix4f>& transforms,
                                        float lod, XSI::LONG mode) {
    EvaluationRequest r;
    r.SetInput(kNames, PortValues::Strings2D({names}));
    r.SetInput(kTransforms, PortValues::ArraysOf<XSI::MATH::CMatrix4f>({transforms}));
    r.SetInput(kLod, PortValues::Singles<float>({lod}));
    r.SetInput(kMode, PortValues::Singles<XSI::LONG>({mode}));
    return Evaluate(L"Quillix_gpos", r, kPositions).values.ArrayAt<XSI::MATH::CVector3f>(0);
  }
};

TEST_F(GposNode, VertexModePlacesTheMeshVerticesByTheTransform) {
  const auto points = run({L"plane"}, {Translation(10, 0, 5)}, 1.0f, 0);
  ASSERT_EQ(points.size(), 5u);
  EXPECT_EQ(points[2].GetX(), 12.0f);
  EXPECT_EQ(points[2].GetY(), 2.0f);
  EXPECT_EQ(points[2].GetZ(), 5.0f);
  EXPECT_TRUE(TakeLog().empty());
}

TEST_F(GposNode, RandomAndBlueNoiseStayOnTheSurfaceAndRepeat) {
  for (XSI::LONG mode : {1, 2}) {
    const auto a = run({L"plane"}, {Translation(0, 0, 0)}, 40.0f, mode);
    const auto b = run({L"plane"}, {Translation(0, 0, 0)}, 40.0f, mode);
    ASSERT_FALSE(a.empty());
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
      EXPECT_EQ(a[i].GetX(), b[i].GetX());
      EXPECT_TRUE(a[i].GetX() >= 0.0f && a[i].GetX() <= 2.0f && a[i].GetZ() == 0.0f);
    }
    if (mode == 1) {
      EXPECT_EQ(a.size(), 200u);  // 40 × 5 vertices
    }
  }
}

TEST_F(GposNode, MissingAmbiguousAndNonMeshObjectsAreLoggedAndSkipped) {
  // (Scene files hold unique names, so the case of a name shared by several objects, which is
  // refused with its own line, cannot be set up here.)
  const auto points =
      run({L"nothing", L"marker", L"plane"},
          {Translation(0, 0, 0), Translation(0, 0, 0), Translation(0, 0, 0)}, 1.0f, 0);
  EXPECT_EQ(points.size(), 5u);
  const std::vector<LogLine> log = TakeLog();
  ASSERT_EQ(log.size(), 2u);
  EXPECT_EQ(log[0], (LogLine{2,
                             L"Quillix: failed to get input geometry: error 176: FindChild2() "
                             L"failed (unable to find object)."}));
  EXPECT_EQ(
      log[1],
      (LogLine{2,
               L"Quillix: failed to get input geometry: error 170: failed to get the geometry."}));
  // Names and transforms must pair up; an unknown mode fails the generation.
  EXPECT_TRUE(run({L"plane"}, {}, 1.0f, 0).empty());
  EXPECT_TRUE(run({L"plane"}, {Translation(0, 0, 0)}, 1.0f, 7).empty());
  EXPECT_EQ(
      TakeLog(),
      (std::vector<LogLine>{{2, L"Quillix: QRVGeometry::GeneratePositionsFromSurface() failed."}}));
}

}  // namespace
}  // namespace quillix::test
