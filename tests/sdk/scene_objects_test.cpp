// The SDK's scene classes over scenes read from JSON: hierarchy and search, kinematics through
// three levels, keys, primitive parameters, mesh queries and curve sampling.
#include <gtest/gtest.h>

#include <cmath>

#include <xsi_application.h>
#include <xsi_geometryaccessor.h>
#include <xsi_kinematics.h>
#include <xsi_math.h>
#include <xsi_model.h>
#include <xsi_nurbscurvelist.h>
#include <xsi_polygonmesh.h>
#include <xsi_primitive.h>
#include <xsi_property.h>
#include <xsi_selection.h>
#include <xsi_utils.h>
#include <xsi_x3dobject.h>
#include <xsihost/scene.h>
#include <xsihost/scene_file.h>

namespace {

using namespace XSI;
using namespace XSI::MATH;

void loadScene(const std::string& json) {
  std::string error;
  auto scene = xsihost::ParseSceneText(json, ".", "test.json", error);
  ASSERT_NE(scene, nullptr) << error;
  xsihost::SetActiveScene(scene);
}

X3DObject object(const wchar_t* fullName) {
  CRef ref;
  ref.Set(fullName);
  return X3DObject(ref);
}

void expectNear(const CVector3& a, const CVector3& b, double eps = 1e-12) {
  EXPECT_NEAR(a.GetX(), b.GetX(), eps);
  EXPECT_NEAR(a.GetY(), b.GetY(), eps);
  EXPECT_NEAR(a.GetZ(), b.GetZ(), eps);
}

// A unit cube mesh of side 2 around the origin, plus a hierarchy and a few implicit objects.
const char* const kScene = R"({
  "frame": 5,
  "objects": [
    { "name": "rig", "type": "#model" },
    { "name": "top", "type": "null", "parent": "rig",
      "transform": { "scaling": [2, 2, 2], "translation": [0, 5, 0] } },
    { "name": "middle", "type": "null", "parent": "top",
      "transform": { "rotation": [0, 0, 90], "translation": [1, 0, 0] } },
    { "name": "leaf", "type": "polymsh", "parent": "middle",
      "transform": { "translation": [0, 0, 3] },
      "mesh": { "points": [[-1,-1,-1],[1,-1,-1],[1,1,-1],[-1,1,-1],[-1,-1,1],[1,-1,1],[1,1,1],[-1,1,1]],
                "polygons": [[0,3,2,1],[4,5,6,7],[0,1,5,4],[1,2,6,5],[2,3,7,6],[3,0,4,7]],
                "attributes": { "Flag": { "type": "bool", "values": [true,false,false,false,false,false,false,true] },
                                "Weight": { "type": "float", "context": "polygon", "values": [1,2,3,4,5,6] } } } },
    { "name": "other", "type": "null", "parent": "rig", "visible": false },
    { "name": "ball", "type": "sphere", "parameters": { "radius": 2 },
      "keys": { "parameters": { "radius": [[1, 2], [11, 4]] },
                "translation": [[1, [0, 0, 0]], [11, [10, 0, 0]]],
                "visible": [[1, true], [8, false]] } },
    { "name": "ring", "type": "crvlist",
      "transform": { "scaling": [3, 3, 3], "translation": [0, 0, 7] },
      "curves": [ { "degree": 1, "points": [[0,0,0],[1,0,0]] },
                  { "degree": 2,
                    "points": [[1,0,0,1],[1,1,0,0.7071067811865476],[0,1,0,1],[-1,1,0,0.7071067811865476],
                               [-1,0,0,1],[-1,-1,0,0.7071067811865476],[0,-1,0,1],[1,-1,0,0.7071067811865476],[1,0,0,1]],
                    "knots": [0,0,0,1,1,2,2,3,3,4,4,4], "closed": true } ] }
  ]
})";

class SceneObjects : public ::testing::Test {
 protected:
  void SetUp() override { loadScene(kScene); }
  void TearDown() override { xsihost::SetActiveScene(nullptr); }
};

TEST_F(SceneObjects, GlobalTransformComposesThroughThreeLevels) {
  const X3DObject leaf = object(L"rig.leaf");
  ASSERT_TRUE(leaf.IsValid());
  const CTransformation global = leaf.GetKinematics().GetGlobal().GetTransform();
  // leaf point (1,0,0) → (1,0,3) → turned 90° about Z: (0,1,3), moved (1,1,3) → scaled (2,2,6),
  // moved (2,7,6).
  expectNear(MapObjectPositionToWorldSpace(global, CVector3(1, 0, 0)), CVector3(2, 7, 6));
  expectNear(MapWorldPositionToObjectSpace(global, CVector3(2, 7, 6)), CVector3(1, 0, 0));
  expectNear(global.GetScaling(), CVector3(2, 2, 2));
  expectNear(leaf.GetKinematics().GetLocal().GetTransform().GetTranslation(), CVector3(0, 0, 3));
}

TEST_F(SceneObjects, NamesParentsAndModels) {
  const X3DObject leaf = object(L"rig.leaf");
  EXPECT_EQ(leaf.GetName(), CString(L"leaf"));
  EXPECT_EQ(leaf.GetFullName(), CString(L"rig.leaf"));
  EXPECT_EQ(leaf.GetType(), CString(L"polymsh"));
  EXPECT_EQ(X3DObject(leaf.GetParent()).GetName(), CString(L"middle"));
  EXPECT_FALSE(object(L"leaf").IsValid());  // inside a model, the full name carries it
  const Model root = Application().GetActiveSceneRoot();
  EXPECT_EQ(root.GetName(), CString(L"Scene_Root"));
  EXPECT_TRUE(object(L"ball").GetParent() == root.GetRef());
  EXPECT_NE(leaf.GetObjectID(), object(L"ball").GetObjectID());
  CRef missing;
  EXPECT_EQ(missing.Set(L"nobody"), CStatus(CStatus::Fail));
  EXPECT_FALSE(missing.IsValid());
}

TEST_F(SceneObjects, FindChildSearchesDepthFirstAndOnlyBelowWhenRecursive) {
  const Model root = Application().GetActiveSceneRoot();
  EXPECT_EQ(root.FindChild2(L"leaf").GetFullName(), CString(L"rig.leaf"));
  EXPECT_FALSE(root.FindChild2(L"leaf", L"", CStringArray(), false).IsValid());
  EXPECT_TRUE(root.FindChild2(L"rig", L"", CStringArray(), false).IsValid());
  EXPECT_FALSE(root.FindChild2(L"leaf", L"null").IsValid());

  const CRefArray nulls = root.FindChildren2(L"", L"null");
  ASSERT_EQ(nulls.GetCount(), 3);
  EXPECT_EQ(nulls[0].GetAsText(), CString(L"rig.top"));
  EXPECT_EQ(nulls[1].GetAsText(), CString(L"rig.middle"));
  EXPECT_EQ(nulls[2].GetAsText(), CString(L"rig.other"));

  CStringArray meshes;
  meshes.Add(siMeshFamily);
  EXPECT_EQ(root.FindChildren2(L"", L"", meshes).GetCount(), 1);
  EXPECT_EQ(object(L"rig.top").FindChildren2().GetCount(), 2);  // middle and leaf, not itself
}

TEST_F(SceneObjects, KeysInterpolateLinearlyAndTheDefaultTimeIsTheSceneFrame) {
  const X3DObject ball = object(L"ball");
  const Primitive primitive = ball.GetActivePrimitive();
  ASSERT_TRUE(primitive.IsValid());
  EXPECT_DOUBLE_EQ(static_cast<double>(primitive.GetParameterValue(L"radius", 6.0)), 3.0);
  EXPECT_DOUBLE_EQ(static_cast<double>(primitive.GetParameterValue(L"radius", -50.0)), 2.0);
  EXPECT_DOUBLE_EQ(static_cast<double>(primitive.GetParameterValue(L"radius", 99.0)), 4.0);
  // Frame 5 is the scene's: radius 2.8, x = 4.
  EXPECT_NEAR(static_cast<double>(primitive.GetParameterValue(CString(L"radius"))), 2.8, 1e-12);
  EXPECT_NEAR(ball.GetKinematics().GetGlobal().GetTransform().GetPosX(), 4.0, 1e-12);
  EXPECT_NEAR(ball.GetKinematics().GetGlobal().GetTransform(DBL_MAX).GetPosX(), 4.0, 1e-12);
  EXPECT_TRUE(primitive.GetParameterValue(L"length", 1.0).IsEmpty());

  const Property visibility = ball.GetPropertyFromName(L"Visibility");
  ASSERT_TRUE(visibility.IsValid());
  EXPECT_TRUE(static_cast<bool>(visibility.GetParameterValue(L"viewvis", 7.9)));
  EXPECT_FALSE(static_cast<bool>(visibility.GetParameterValue(L"viewvis", 8.0)));
  EXPECT_FALSE(static_cast<bool>(
      object(L"rig.other").GetPropertyFromName(L"Visibility").GetParameterValue(L"viewvis", 1.0)));
  EXPECT_FALSE(ball.GetPropertyFromName(L"Display").IsValid());
}

TEST_F(SceneObjects, MeshBoundingVolumesUnderATransform) {
  const Geometry geometry = object(L"rig.leaf").GetActivePrimitive().GetGeometry();
  ASSERT_TRUE(geometry.IsValid());
  double cx, cy, cz, ex, ey, ez, r;
  ASSERT_EQ(geometry.GetBoundingBox(cx, cy, cz, ex, ey, ez), CStatus(CStatus::OK));
  EXPECT_EQ(cx, 0.0);
  EXPECT_EQ(ey, 2.0);
  EXPECT_EQ(ez, 2.0);
  ASSERT_EQ(geometry.GetBoundingSphere(cx, cy, cz, r), CStatus(CStatus::OK));
  EXPECT_NEAR(r, std::sqrt(3.0), 1e-15);

  CTransformation t;
  t.SetScaling(CVector3(1, 2, 3));
  t.SetRotation(CRotation(0, 0, PI / 2));  // swaps the X and Y extents
  t.SetTranslationFromValues(10, 0, 0);
  ASSERT_EQ(geometry.GetBoundingBox(cx, cy, cz, ex, ey, ez, t), CStatus(CStatus::OK));
  EXPECT_NEAR(cx, 10.0, 1e-12);
  EXPECT_NEAR(ex, 4.0, 1e-12);
  EXPECT_NEAR(ey, 2.0, 1e-12);
  EXPECT_NEAR(ez, 6.0, 1e-12);
  ASSERT_EQ(geometry.GetBoundingSphere(cx, cy, cz, r, siVolumeCenterMethodCOG, t),
            CStatus(CStatus::OK));
  EXPECT_NEAR(cx, 10.0, 1e-12);
  EXPECT_NEAR(r, std::sqrt(1.0 + 4.0 + 9.0), 1e-12);
  EXPECT_FALSE(object(L"ball").GetActivePrimitive().GetGeometry().IsValid());
}

TEST_F(SceneObjects, MeshPointsTrianglesNormalsAndAccessor) {
  const PolygonMesh mesh(object(L"rig.leaf").GetActivePrimitive().GetGeometry().GetRef());
  ASSERT_TRUE(mesh.IsValid());
  EXPECT_EQ(mesh.GetPoints().GetCount(), 8);
  const CTriangleRefArray triangles = mesh.GetTriangles();
  ASSERT_EQ(triangles.GetCount(), 12);
  const CVector3Array corners = triangles.GetPositionArray();
  const CVector3Array normals = triangles.GetPolygonNodeNormalArray();
  ASSERT_EQ(normals.GetCount(), 36);
  // Faces meet at 90°, beyond the 60° limit: every corner normal is its face's own normal,
  // pointing outwards (the dot product with any corner of the triangle is 1).
  for (LONG i = 0; i < 36; ++i) {
    EXPECT_NEAR(normals[i].GetLength(), 1.0, 1e-15);
    EXPECT_NEAR(normals[i].Dot(corners[i]), 1.0, 1e-15);
  }
  CVector3Array points;
  CLongArray polygonData;
  ASSERT_EQ(mesh.Get(points, polygonData), CStatus(CStatus::OK));
  ASSERT_EQ(polygonData.GetCount(), 30);
  EXPECT_EQ(polygonData[0], 4);
  EXPECT_EQ(polygonData[2], 3);

  const CGeometryAccessor accessor = mesh.GetGeometryAccessor();
  CDoubleArray positions;
  CLongArray counts, indices, triangleIndices;
  accessor.GetVertexPositions(positions);
  accessor.GetPolygonVerticesCount(counts);
  accessor.GetVertexIndices(indices);
  accessor.GetTriangleVertexIndices(triangleIndices);
  EXPECT_EQ(positions.GetCount(), 24);
  EXPECT_EQ(positions[3], 1.0);
  EXPECT_EQ(counts.GetCount(), 6);
  EXPECT_EQ(indices.GetCount(), 24);
  ASSERT_EQ(triangleIndices.GetCount(), 36);
  // Polygon [0,3,2,1] fans into (0,3,2) and (0,2,1).
  const LONG firstTwo[6] = {0, 3, 2, 0, 2, 1};
  for (LONG i = 0; i < 6; ++i) EXPECT_EQ(triangleIndices[i], firstTwo[i]) << i;
}

TEST_F(SceneObjects, IceAttributesByNameAndType) {
  const Geometry geometry = object(L"rig.leaf").GetActivePrimitive().GetGeometry();
  const ICEAttribute flag = geometry.GetICEAttributeFromName(L"Flag");
  ASSERT_TRUE(flag.IsDefined());
  EXPECT_EQ(flag.GetDataType(), siICENodeDataBool);
  EXPECT_EQ(flag.GetContextType(), siICENodeContextComponent0D);
  CICEAttributeDataArrayBool flags;
  ASSERT_EQ(flag.GetDataArray(flags), CStatus(CStatus::OK));
  ASSERT_EQ(flags.GetCount(), 8u);
  EXPECT_TRUE(flags[0]);
  EXPECT_FALSE(flags[1]);
  EXPECT_TRUE(flags[7]);
  CICEAttributeDataArrayFloat wrongType;
  EXPECT_EQ(flag.GetDataArray(wrongType), CStatus(CStatus::InvalidArgument));
  CICEAttributeDataArrayFloat weights;
  const ICEAttribute weight = geometry.GetICEAttributeFromName(L"Weight");
  ASSERT_EQ(weight.GetDataArray(weights), CStatus(CStatus::OK));
  EXPECT_EQ(weight.GetContextType(), siICENodeContextComponent2D);
  EXPECT_EQ(weights[5], 6.0f);
  EXPECT_FALSE(geometry.GetICEAttributeFromName(L"Missing").IsDefined());
}

TEST_F(SceneObjects, RaycastsHitTheNearestFace) {
  Geometry geometry = object(L"rig.leaf").GetActivePrimitive().GetGeometry();
  ASSERT_EQ(
      geometry.SetupPointLocatorQueries(siClosestSurface, CTransformation(), CLongArray(), -1),
      CStatus(CStatus::OK));
  const double origins[6] = {0.25, 0.5, 10, 5, 5, 5};
  const double directions[6] = {0, 0, -1, 1, 0, 0};
  const PointLocatorData hits = geometry.GetRaycastIntersections(2, origins, directions);
  ASSERT_EQ(hits.GetCount(), 2);
  EXPECT_TRUE(hits.IsPtLocatorValid(0));
  EXPECT_FALSE(hits.IsPtLocatorValid(1));
  double positions[6];
  ASSERT_EQ(geometry.EvaluatePositions(hits, 2, nullptr, positions), CStatus(CStatus::OK));
  EXPECT_NEAR(positions[0], 0.25, 1e-12);
  EXPECT_NEAR(positions[1], 0.5, 1e-12);
  EXPECT_NEAR(positions[2], 1.0, 1e-12);
  EXPECT_EQ(positions[3], 0.0);
}

TEST_F(SceneObjects, CurveListSubCurvesSampleTheCircleInEveryMode) {
  const X3DObject ring = object(L"ring");
  const NurbsCurveList list(
      ring.GetActivePrimitive().GetGeometry(1.0, siConstructionModeAnimation).GetRef());
  ASSERT_TRUE(list.IsValid());
  const CNurbsCurveRefArray curves = list.GetCurves();
  ASSERT_EQ(curves.GetCount(), 2);
  const NurbsCurve circle(curves[1]);
  ASSERT_TRUE(circle.IsValid());
  CVector3 p, t, n, b;
  ASSERT_EQ(circle.EvaluatePositionFromPercentage(25.0, p, t, n, b), CStatus(CStatus::OK));
  expectNear(p, CVector3(0, 1, 0), 1e-9);
  ASSERT_EQ(circle.EvaluateNormalizedPosition(0.5, p, t, n, b), CStatus(CStatus::OK));
  expectNear(p, CVector3(-1, 0, 0), 1e-12);
  ASSERT_EQ(circle.EvaluatePosition(1.0, p, t, n, b), CStatus(CStatus::OK));
  expectNear(p, CVector3(0, 1, 0), 1e-12);
  EXPECT_NEAR(t.Dot(p), 0.0, 1e-12);
  // Mapped to world space by the object's global transform, as a curve-sampling node does.
  const CTransformation global = ring.GetKinematics().GetGlobal().GetTransform(1.0);
  expectNear(MapObjectPositionToWorldSpace(global, p), CVector3(0, 3, 7), 1e-12);
  EXPECT_FALSE(NurbsCurve(ring.GetRef()).IsValid());
}

TEST_F(SceneObjects, SelectionAddsOnceAndClears) {
  Selection selection = Application().GetSelection();
  EXPECT_TRUE(selection.IsValid());
  selection.Clear();
  EXPECT_EQ(selection.Add(object(L"ball").GetRef()), CStatus(CStatus::OK));
  selection.Add(object(L"rig.leaf").GetRef());
  selection.Add(object(L"ball").GetRef());
  EXPECT_EQ(selection.Add(CRef()), CStatus(CStatus::InvalidArgument));
  ASSERT_EQ(selection.GetCount(), 2);
  EXPECT_EQ(selection[1].GetAsText(), CString(L"rig.leaf"));
  selection.Clear();
  EXPECT_EQ(Application().GetSelection().GetCount(), 0);
}

TEST(SceneUtilities, BuildPathJoinsWithSingleSeparators) {
  EXPECT_EQ(CUtils::BuildPath(L"/home/u", L"Data", L"Preferences", L"RecentFileMenus.xml"),
            CString(L"/home/u/Data/Preferences/RecentFileMenus.xml"));
  EXPECT_EQ(CUtils::BuildPath(L"/home/u/", L"", L"/Data"), CString(L"/home/u/Data"));
}

}  // namespace
