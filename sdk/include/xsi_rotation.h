// Rotation of the scene maths, held as an orthonormal 3×3 matrix in the row-vector convention.
//
// Euler angles are in radians here (scene files speak degrees; the reader converts). The order
// names the axis applied first: siXYZ rotates about X, then Y, then Z, that is
// R = Rx × Ry × Rz for row vectors.
#pragma once

#include <xsi_decl.h>
#include <xsi_matrix3.h>
#include <xsi_vector3.h>

namespace XSI {

enum siRotationOrder { siXYZ = 0, siXZY = 1, siYXZ = 2, siYZX = 3, siZXY = 4, siZYX = 5 };

namespace MATH {

class CRotation {
 public:
  CRotation() = default;
  /// From Euler angles in radians applied in `order`.
  CRotation(double x, double y, double z, siRotationOrder order = siXYZ);

  CRotation& SetIdentity();
  CRotation& SetFromXYZAnglesValues(double x, double y, double z, siRotationOrder order = siXYZ);
  /// Euler angles (radians) that rebuild this rotation in `order`.
  CVector3 GetXYZAngles(siRotationOrder order = siXYZ) const;
  /// Rotation by `angle` radians about `axis` (right-handed); a zero axis gives the identity.
  CRotation& SetFromAxisAngle(const CVector3& axis, double angle);
  /// Takes an orthonormal matrix as it is (no re-orthogonalisation).
  CRotation& SetFromMatrix(const CMatrix3& m);
  CMatrix3 GetMatrix() const { return matrix_; }
  /// this = a then b.
  CRotation& Mul(const CRotation& a, const CRotation& b);
  CRotation& MulInPlace(const CRotation& r);
  CRotation& InvertInPlace();
  bool EpsilonEquals(const CRotation& r, double epsilon) const;

 private:
  CMatrix3 matrix_;
};

}  // namespace MATH
}  // namespace XSI
