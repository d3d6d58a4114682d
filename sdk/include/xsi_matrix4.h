// Double-precision 4×4 matrix of the scene maths, row-major, row-vector convention: a point is
// the row (x, y, z, 1) times the matrix; rows 0 to 2 hold the scaled axes, row 3 the
// translation.
#pragma once

#include <xsi_decl.h>

namespace XSI {
namespace MATH {

class CMatrix3;

class CMatrix4 {
 public:
  /// The identity matrix.
  CMatrix4();
  CMatrix4(double m00, double m01, double m02, double m03, double m10, double m11, double m12,
           double m13, double m20, double m21, double m22, double m23, double m30, double m31,
           double m32, double m33);

  CMatrix4& Set(double m00, double m01, double m02, double m03, double m10, double m11, double m12,
                double m13, double m20, double m21, double m22, double m23, double m30, double m31,
                double m32, double m33);
  double GetValue(short row, short col) const { return v_[row][col]; }
  void SetValue(short row, short col, double value) { v_[row][col] = value; }
  CMatrix4& SetIdentity();

  /// this = this × m (apply this, then m).
  CMatrix4& MulInPlace(const CMatrix4& m);
  /// Inverts `m` into this; returns false and leaves this unchanged when `m` is singular.
  bool Invert(const CMatrix4& m);
  /// Upper-left 3×3 block.
  void GetMatrix3(CMatrix3& out) const;

 private:
  double v_[4][4];
};

}  // namespace MATH
}  // namespace XSI
