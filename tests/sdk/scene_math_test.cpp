// Double-precision scene maths: rotation orders, decomposition, composition and mapping.
#include <gtest/gtest.h>

#include <xsi_math.h>
#include <xsi_transformation.h>

namespace {

using namespace XSI;
using namespace XSI::MATH;

void expectNear(const CVector3& a, const CVector3& b, double eps = 1e-12) {
  EXPECT_NEAR(a.GetX(), b.GetX(), eps);
  EXPECT_NEAR(a.GetY(), b.GetY(), eps);
  EXPECT_NEAR(a.GetZ(), b.GetZ(), eps);
}

template <class Matrix>
void expectCellsNear(const Matrix& a, const Matrix& b, short size, double eps) {
  for (short i = 0; i < size; ++i)
    for (short j = 0; j < size; ++j) EXPECT_NEAR(a.GetValue(i, j), b.GetValue(i, j), eps);
}

// `v` turned by `r` as a row vector.
CVector3 rotated(const CVector3& v, const CRotation& r) {
  CTransformation t;
  t.SetRotation(r);
  return CVector3().MulByTransformation(v, t);
}

TEST(Rotation, AxisRotationsTurnRowVectorsCounterClockwise) {
  expectNear(rotated(CVector3(1, 0, 0), CRotation(0, 0, PI / 2)), CVector3(0, 1, 0));
  expectNear(rotated(CVector3(0, 1, 0), CRotation(PI / 2, 0, 0)), CVector3(0, 0, 1));
  expectNear(rotated(CVector3(0, 0, 1), CRotation(0, PI / 2, 0)), CVector3(1, 0, 0));
}

TEST(Rotation, OrderNamesTheAxisAppliedFirst) {
  // X then Z: (0,1,0) → (0,0,1) by X, then Z leaves it. Z then X: (0,1,0) → (−1,0,0) by Z,
  // then X leaves it.
  expectNear(rotated(CVector3(0, 1, 0), CRotation(PI / 2, 0, PI / 2, siXYZ)), CVector3(0, 0, 1));
  expectNear(rotated(CVector3(0, 1, 0), CRotation(PI / 2, 0, PI / 2, siZYX)), CVector3(-1, 0, 0));
}

TEST(Rotation, XYZAnglesRoundTripThroughATransformation) {
  // Every angle within (−π/2, π/2), so that the middle one is the principal solution.
  CTransformation t;
  t.SetRotation(CRotation(0.3, -1.1, 1.2));
  expectNear(t.GetRotationXYZAngles(), CVector3(0.3, -1.1, 1.2), 1e-12);
}

TEST(Transformation, ScalingRotationTranslationApplyInThatOrder) {
  CTransformation t;
  t.SetScaling(CVector3(2, 3, 4));
  t.SetRotation(CRotation(0, 0, PI / 2));
  t.SetTranslationFromValues(10, 20, 30);
  // (1,1,1) scaled → (2,3,4), turned 90° about Z → (−3,2,4), moved → (7,22,34).
  expectNear(MapObjectPositionToWorldSpace(t, CVector3(1, 1, 1)), CVector3(7, 22, 34));
  expectNear(MapWorldPositionToObjectSpace(t, CVector3(7, 22, 34)), CVector3(1, 1, 1));
  CTransformation directions = t;  // a direction ignores the translation
  directions.SetTranslationFromValues(0, 0, 0);
  expectNear(MapObjectPositionToWorldSpace(directions, CVector3(1, 0, 0)), CVector3(0, 2, 0));
  expectNear(t.GetScaling(), CVector3(2, 3, 4));
  expectNear(t.GetTranslation(), CVector3(10, 20, 30));
  expectCellsNear(t.GetRotationMatrix3(), CRotation(0, 0, PI / 2).GetMatrix(), 3, 1e-15);
  EXPECT_DOUBLE_EQ(t.GetPosY(), 20.0);
  EXPECT_DOUBLE_EQ(t.GetSclZ(), 4.0);
}

TEST(Transformation, SetMatrix4DecomposesAMirroredMatrix) {
  CMatrix4 m(-2, 0, 0, 0, 0, 0, 3, 0, 0, -5, 0, 0, 1, 2, 3, 1);
  CTransformation t;
  t.SetMatrix4(m);
  expectNear(t.GetScaling(), CVector3(-2, 3, 5));
  const CMatrix3 r = t.GetRotationMatrix3();
  EXPECT_NEAR(r.GetDeterminant(), 1.0, 1e-15);
  // The read-back parts give the matrix again: each axis row is its scaling times the rotation's.
  const CVector3 scaling = t.GetScaling();
  for (short i = 0; i < 3; ++i)
    for (short j = 0; j < 3; ++j)
      EXPECT_NEAR(scaling[i] * r.GetValue(i, j), m.GetValue(i, j), 1e-15) << i << "," << j;
  expectNear(t.GetTranslation(), CVector3(1, 2, 3), 0.0);
}

TEST(Transformation, ZeroScalingKeepsAnOrthonormalRotationAndMapsWorldPointsToTheOrigin) {
  CTransformation t;
  t.SetScaling(CVector3(0, 1, 1));
  EXPECT_NEAR(t.GetRotationMatrix3().GetDeterminant(), 1.0, 1e-15);
  expectNear(MapWorldPositionToObjectSpace(t, CVector3(1, 2, 3)), CVector3(0, 0, 0));
}

TEST(Transformation, ThreeLevelCompositionIsLocalTimesParentGlobal) {
  // grandparent: scale 2, parent: turn 90° about Z and move by (1,0,0), child: move (0,0,3).
  CTransformation grand, parent, child;
  grand.SetScaling(CVector3(2, 2, 2));
  grand.SetTranslationFromValues(0, 5, 0);
  parent.SetRotation(CRotation(0, 0, PI / 2));
  parent.SetTranslationFromValues(1, 0, 0);
  child.SetTranslationFromValues(0, 0, 3);
  CTransformation parentGlobal = parent;
  parentGlobal.MulInPlace(grand);
  CTransformation childGlobal = child;
  childGlobal.MulInPlace(parentGlobal);
  // The child's point (1,0,0): child → (1,0,3); parent → (0,1,3)+(1,0,0) = (1,1,3);
  // grandparent → (2,2,6)+(0,5,0) = (2,7,6).
  expectNear(MapObjectPositionToWorldSpace(childGlobal, CVector3(1, 0, 0)), CVector3(2, 7, 6));
  expectNear(childGlobal.GetScaling(), CVector3(2, 2, 2));
  expectNear(childGlobal.GetTranslation(), CVector3(2, 5, 6));
}

TEST(Matrix4, InverseOfAGeneralAffineMatrix) {
  const CMatrix4 m(1, 2, 0, 0, -1, 3, 1, 0, 2, 0, 4, 0, 5, -6, 7, 1);
  CMatrix4 inverse;
  ASSERT_TRUE(inverse.Invert(m));
  CMatrix4 product = m;
  product.MulInPlace(inverse);
  expectCellsNear(product, CMatrix4(), 4, 1e-14);
  const CMatrix4 singular(1, 2, 3, 0, 2, 4, 6, 0, 0, 0, 1, 0, 0, 0, 0, 1);
  CMatrix4 target = singular;
  EXPECT_FALSE(target.Invert(singular));
  EXPECT_DOUBLE_EQ(target.GetValue(1, 2), 6.0);  // unchanged after a failed inversion
}

TEST(Vector3, AngleNormalizeAndTransform) {
  EXPECT_NEAR(CVector3(1, 0, 0).GetAngle(CVector3(1, 1, 0)), PI / 4, 1e-15);
  EXPECT_NEAR(CVector3(1, 0, 0).GetAngle(CVector3(-1, 1e-9, 0)), PI - 1e-9, 1e-15);
  EXPECT_EQ(CVector3().GetAngle(CVector3(1, 0, 0)), 0.0);
  CVector3 zero;
  EXPECT_FALSE(zero.NormalizeInPlace().Succeeded());
  CVector3 v(3, 0, 4);
  EXPECT_TRUE(v.NormalizeInPlace().Succeeded());
  expectNear(v, CVector3(0.6, 0, 0.8), 1e-16);
  CTransformation t;
  t.SetTranslationFromValues(1, 1, 1);
  expectNear(v.MulByTransformation(CVector3(1, 2, 3), t), CVector3(2, 3, 4));
  CVector3Array array;
  EXPECT_EQ(array.Resize(-1), CStatus(CStatus::InvalidArgument));
  array.Resize(2);
  array.Add(CVector3(1, 2, 3));
  EXPECT_EQ(array.GetCount(), 3);
  expectNear(array[2], CVector3(1, 2, 3), 0.0);
}

}  // namespace
