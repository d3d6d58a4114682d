// Rotation of the scene maths, held as an orthonormal 3×3 matrix in the row-vector convention.
//
// Euler angles are in radians here (scene files speak degrees; the reader converts). The order
// names the axis applied first: siXYZ rotates about X, then Y, then Z, that is
// R = Rx × Ry × Rz for row vectors.
#pragma once

#include <xsi_decl.h>
#include <xsi_matrix3.h>

namespace XSI {

enum siRotationOrder { siXYZ = 0, siXZY = 1, siYXZ = 2, siYZX = 3, siZXY = 4, siZYX = 5 };

namespace MATH {

class CRotation {
 public:
  CRotation() = default;
  /// From Euler angles in radians applied in `order`.
  CRotation(double x, double y, double z, siRotationOrder order = siXYZ);

  CMatrix3 GetMatrix() const { return matrix_; }

 private:
  CMatrix3 matrix_;
};

}  // namespace MATH
}  // namespace XSI
