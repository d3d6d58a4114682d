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

TEST(Rotation, AxisRotationsTurnRowVectorsCounterClockwise) {
  CVector3 v(1, 0, 0);
  v.MulByRotationInPlace(CRotation(0, 0, PI / 2));
  expectNear(v, CVector3(0, 1, 0));
  v.Set(0, 1, 0).MulByRotationInPlace(CRotation(PI / 2, 0, 0));
  expectNear(v, CVector3(0, 0, 1));
  v.Set(0, 0, 1).MulByRotationInPlace(CRotation(0, PI / 2, 0));
  expectNear(v, CVector3(1, 0, 0));
}

TEST(Rotation, OrderNamesTheAxisAppliedFirst) {
  // X then Z: (0,1,0) → (0,0,1) by X, then Z leaves it. Z then X: (0,1,0) → (−1,0,0) by Z,
  // then X leaves it.
  CVector3 v(0, 1, 0);
  v.MulByRotationInPlace(CRotation(PI / 2, 0, PI / 2, siXYZ));
  expectNear(v, CVector3(0, 0, 1));
  v.Set(0, 1, 0).MulByRotationInPlace(CRotation(PI / 2, 0, PI / 2, siZYX));
  expectNear(v, CVector3(-1, 0, 0));
}

TEST(Rotation, EulerAnglesRoundTripInEveryOrder) {
  for (int order = siXYZ; order <= siZYX; ++order) {
    const auto o = static_cast<siRotationOrder>(order);
    // Every angle within (−π/2, π/2), so that the middle one is the principal solution.
    const CRotation r(0.3, -1.1, 1.2, o);
    const CVector3 angles = r.GetXYZAngles(o);
    EXPECT_TRUE(CRotation(angles.GetX(), angles.GetY(), angles.GetZ(), o).EpsilonEquals(r, 1e-12))
        << "order " << order;
    expectNear(angles, CVector3(0.3, -1.1, 1.2), 1e-12);
  }
}

TEST(Rotation, AxisAngleAgreesWithEulerAngles) {
  CRotation a;
  a.SetFromAxisAngle(CVector3(0, 0, 3), 0.7);
  EXPECT_TRUE(a.EpsilonEquals(CRotation(0, 0, 0.7), 1e-15));
}

TEST(Transformation, ScalingRotationTranslationApplyInThatOrder) {
  CTransformation t;
  t.SetScalingFromValues(2, 3, 4);
  t.SetRotationFromXYZAnglesValues(0, 0, PI / 2);
  t.SetTranslationFromValues(10, 20, 30);
  // (1,1,1) scaled → (2,3,4), turned 90° about Z → (−3,2,4), moved → (7,22,34).
  expectNear(MapObjectPositionToWorldSpace(t, CVector3(1, 1, 1)), CVector3(7, 22, 34));
  expectNear(MapWorldPositionToObjectSpace(t, CVector3(7, 22, 34)), CVector3(1, 1, 1));
  expectNear(MapObjectOrientationToWorldSpace(t, CVector3(1, 0, 0)), CVector3(0, 2, 0));
  expectNear(t.GetScaling(), CVector3(2, 3, 4));
  expectNear(t.GetTranslation(), CVector3(10, 20, 30));
  EXPECT_TRUE(t.GetRotationMatrix3().EpsilonEquals(CRotation(0, 0, PI / 2).GetMatrix(), 1e-15));
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
  // Rebuilding from the read-back parts gives the matrix again.
  CTransformation rebuilt;
  rebuilt.SetScaling(t.GetScaling());
  rebuilt.SetRotation(t.GetRotation());
  rebuilt.SetTranslation(t.GetTranslation());
  EXPECT_TRUE(rebuilt.GetMatrix4().EpsilonEquals(m, 1e-15));
}

TEST(Transformation, ZeroScalingKeepsAnOrthonormalRotationAndCannotBeInverted) {
  CTransformation t;
  t.SetScalingFromValues(0, 1, 1);
  EXPECT_NEAR(t.GetRotationMatrix3().GetDeterminant(), 1.0, 1e-15);
  CTransformation copy = t;
  EXPECT_FALSE(copy.InvertInPlace());
  expectNear(MapWorldPositionToObjectSpace(t, CVector3(1, 2, 3)), CVector3(0, 0, 0));
}

TEST(Transformation, ThreeLevelCompositionIsLocalTimesParentGlobal) {
  // grandparent: scale 2, parent: turn 90° about Z and move by (1,0,0), child: move (0,0,3).
  CTransformation grand, parent, child;
  grand.SetScalingFromValues(2, 2, 2);
  grand.SetTranslationFromValues(0, 5, 0);
  parent.SetRotationFromXYZAnglesValues(0, 0, PI / 2);
  parent.SetTranslationFromValues(1, 0, 0);
  child.SetTranslationFromValues(0, 0, 3);
  CTransformation parentGlobal, childGlobal;
  parentGlobal.Mul(parent, grand);
  childGlobal.Mul(child, parentGlobal);
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
  CMatrix4 product;
  product.Mul(m, inverse);
  EXPECT_TRUE(product.EpsilonEquals(CMatrix4(), 1e-14));
  EXPECT_NEAR(m.GetDeterminant(), 1 * (12 - 0) - 2 * (-4 - 2) + 0, 1e-12);
  CMatrix4 singular(1, 2, 3, 0, 2, 4, 6, 0, 0, 0, 1, 0, 0, 0, 0, 1);
  EXPECT_FALSE(singular.InvertInPlace());
  EXPECT_DOUBLE_EQ(singular.GetValue(1, 2), 6.0);  // unchanged after a failed inversion
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
  v.Set(1, 2, 3).MulByTransformationInPlace(t);
  expectNear(v, CVector3(2, 3, 4));
  CVector3Array array;
  EXPECT_EQ(array.Resize(-1), CStatus(CStatus::InvalidArgument));
  array.Resize(2);
  array.Add(CVector3(1, 2, 3));
  EXPECT_EQ(array.GetCount(), 3);
  EXPECT_EQ(array[2], CVector3(1, 2, 3));
}

}  // namespace
