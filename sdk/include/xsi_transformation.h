// Transformation of the scene maths: scaling, then rotation, then translation, applied to row
// vectors (point × S × R × T).
//
// The transformation keeps its full affine 4×4 matrix, so composing transforms (a child's
// global under a non-uniformly scaled, rotated parent) and mapping points stay exact. Scaling
// and rotation are read back by decomposing that matrix: the scaling is the length of each
// axis row, negated on X when the axes are mirrored, and the rotation the normalised rows. A
// sheared matrix reads back as its nearest scaling and rotation, but still maps points exactly.
#pragma once

#include <xsi_decl.h>
#include <xsi_matrix3.h>
#include <xsi_matrix4.h>
#include <xsi_rotation.h>
#include <xsi_vector3.h>

namespace XSI {
namespace MATH {

class CTransformation {
 public:
  /// The identity transformation.
  CTransformation() = default;

  CTransformation& SetIdentity();
  /// Takes the matrix as it is (rows 0 to 2 axes, row 3 translation; column 3 is ignored).
  CTransformation& SetMatrix4(const CMatrix4& m);
  CMatrix4 GetMatrix4() const { return matrix_; }
  void GetMatrix4(CMatrix4& out) const { out = matrix_; }

  CTransformation& SetScaling(const CVector3& s);
  CTransformation& SetScalingFromValues(double x, double y, double z);
  CVector3 GetScaling() const;
  void GetScaling(CVector3& out) const { out = GetScaling(); }
  double GetSclX() const { return GetScaling().GetX(); }
  double GetSclY() const { return GetScaling().GetY(); }
  double GetSclZ() const { return GetScaling().GetZ(); }

  CTransformation& SetRotation(const CRotation& r);
  CTransformation& SetRotationFromXYZAnglesValues(double x, double y, double z,
                                                  siRotationOrder order = siXYZ);
  CRotation GetRotation() const;
  void GetRotation(CRotation& out) const { out = GetRotation(); }
  /// Euler angles (radians, order XYZ) of the rotation.
  CVector3 GetRotationXYZAngles() const;
  void GetRotationXYZAngles(CVector3& out) const { out = GetRotationXYZAngles(); }
  /// The pure rotation part as an orthonormal matrix (scaling removed).
  CMatrix3 GetRotationMatrix3() const;
  void GetRotationMatrix3(CMatrix3& out) const { out = GetRotationMatrix3(); }

  CTransformation& SetTranslation(const CVector3& t);
  CTransformation& SetTranslationFromValues(double x, double y, double z);
  CVector3 GetTranslation() const;
  void GetTranslation(CVector3& out) const { out = GetTranslation(); }
  double GetPosX() const { return matrix_.GetValue(3, 0); }
  double GetPosY() const { return matrix_.GetValue(3, 1); }
  double GetPosZ() const { return matrix_.GetValue(3, 2); }

  /// this = a then b (row vectors: point × a × b). A child's global transform is
  /// Mul(local, parentGlobal).
  CTransformation& Mul(const CTransformation& a, const CTransformation& b);
  /// this = this then t.
  CTransformation& MulInPlace(const CTransformation& t);
  /// Inverse; returns false and leaves this unchanged when the transform is singular.
  bool InvertInPlace();
  bool Invert(const CTransformation& t);

  bool EpsilonEquals(const CTransformation& t, double epsilon) const;

 private:
  void Compose(const CVector3& s, const CMatrix3& r, const CVector3& t);
  CMatrix4 matrix_;
};

}  // namespace MATH
}  // namespace XSI
