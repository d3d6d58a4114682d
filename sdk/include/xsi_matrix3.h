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
  double GetValue(short row, short col) const { return v_[row][col]; }

  /// this = this × m.
  CMatrix3& MulInPlace(const CMatrix3& m);
  double GetDeterminant() const;

 private:
  double v_[3][3];
};

}  // namespace MATH
}  // namespace XSI
