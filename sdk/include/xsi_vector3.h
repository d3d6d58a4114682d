// Double-precision 3-vector of the scene maths, and its array.
//
// Points and directions are rows: a point is transformed as the row (x, y, z, 1) times a 4×4
// matrix, a direction as the row (x, y, z) times the upper-left 3×3 block.
#pragma once

#include <xsi_decl.h>
#include <xsi_status.h>
#include <xsi_vectorarray.h>

namespace XSI {
namespace MATH {

class CMatrix4;
class CTransformation;

class CVector3 {
 public:
  CVector3() = default;
  CVector3(double x, double y, double z) : x_(x), y_(y), z_(z) {}

  double GetX() const { return x_; }
  double GetY() const { return y_; }
  double GetZ() const { return z_; }
  /// Reads the three components at once.
  void Get(double& x, double& y, double& z) const;
  CVector3& Set(double x, double y, double z);
  /// Component by index 0, 1 or 2; any other index reads z.
  double operator[](short index) const;

  double GetLength() const;
  /// Scales the vector to unit length; a zero (or non-finite) vector is left as it is and the
  /// call reports CStatus::Fail.
  CStatus NormalizeInPlace();

  double Dot(const CVector3& v) const;
  CVector3& Cross(const CVector3& a, const CVector3& b);
  /// Angle between this vector and `v` in radians, in [0, π]; 0 when either is zero.
  double GetAngle(const CVector3& v) const;

  CVector3& AddInPlace(const CVector3& v);
  /// this = a − b.
  CVector3& Sub(const CVector3& a, const CVector3& b);
  CVector3& ScaleInPlace(double s);
  CVector3& NegateInPlace();
  /// Linear interpolation: this = a + t (b − a).
  CVector3& LinearlyInterpolate(const CVector3& a, const CVector3& b, double t);

  /// Treats the vector as a point: this = v × T (scaling, rotation, then translation).
  CVector3& MulByTransformation(const CVector3& v, const CTransformation& t);
  /// Treats the vector as the point (x, y, z, 1) times a 4×4 matrix; the w of the result is
  /// dropped (the matrices of this system are affine).
  CVector3& MulByMatrix4(const CVector3& v, const CMatrix4& m);

 private:
  double x_ = 0.0;
  double y_ = 0.0;
  double z_ = 0.0;
};

/// A growable array of CVector3.
using CVector3Array = CVectorArrayOf<CVector3>;

}  // namespace MATH
}  // namespace XSI
