// Double-precision 3×3 matrix of the scene maths, row-major, row-vector convention: a direction
// is the row (x, y, z) times the matrix, so rows hold the images of the X, Y and Z axes.
#pragma once

#include <xsi_decl.h>

namespace XSI {
namespace MATH {

class CMatrix3 {
 public:
  /// The identity matrix.
  CMatrix3();
  CMatrix3(double m00, double m01, double m02, double m10, double m11, double m12, double m20,
           double m21, double m22);

  CMatrix3& Set(double m00, double m01, double m02, double m10, double m11, double m12, double m20,
                double m21, double m22);
  void Get(double& m00, double& m01, double& m02, double& m10, double& m11, double& m12,
           double& m20, double& m21, double& m22) const;
  double GetValue(short row, short col) const { return v_[row][col]; }
  void SetValue(short row, short col, double value) { v_[row][col] = value; }
  double Get(short row, short col) const { return v_[row][col]; }
  CMatrix3& SetIdentity();

  /// this = a × b.
  CMatrix3& Mul(const CMatrix3& a, const CMatrix3& b);
  /// this = this × m.
  CMatrix3& MulInPlace(const CMatrix3& m);
  CMatrix3& Transpose(const CMatrix3& m);
  CMatrix3& TransposeInPlace();
  /// Inverts `m` into this; returns false and leaves this unchanged when `m` is singular.
  bool Invert(const CMatrix3& m);
  bool InvertInPlace();
  double GetDeterminant() const;

  bool EpsilonEquals(const CMatrix3& m, double epsilon) const;
  bool Equals(const CMatrix3& m) const;
  bool operator==(const CMatrix3& m) const { return Equals(m); }
  bool operator!=(const CMatrix3& m) const { return !Equals(m); }

 private:
  double v_[3][3];
};

}  // namespace MATH
}  // namespace XSI
