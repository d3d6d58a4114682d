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

  CTransformation& SetScaling(const CVector3& s);
  CVector3 GetScaling() const;
  double GetSclX() const { return GetScaling().GetX(); }
  double GetSclY() const { return GetScaling().GetY(); }
  double GetSclZ() const { return GetScaling().GetZ(); }

  CTransformation& SetRotation(const CRotation& r);
  /// Euler angles (radians, order XYZ) of the rotation.
  CVector3 GetRotationXYZAngles() const;
  /// The pure rotation part as an orthonormal matrix (scaling removed).
  CMatrix3 GetRotationMatrix3() const;

  CTransformation& SetTranslation(const CVector3& t);
  CTransformation& SetTranslationFromValues(double x, double y, double z);
  CVector3 GetTranslation() const;
  double GetPosX() const { return matrix_.GetValue(3, 0); }
  double GetPosY() const { return matrix_.GetValue(3, 1); }
  double GetPosZ() const { return matrix_.GetValue(3, 2); }

  /// this = this then t (row vectors: point × this × t). A child's global transform is its
  /// local one, then its parent's global one.
  CTransformation& MulInPlace(const CTransformation& t);

 private:
  void Compose(const CVector3& s, const CMatrix3& r, const CVector3& t);
  CMatrix4 matrix_;
};

}  // namespace MATH
}  // namespace XSI
