// Double-precision 4-vector of the scene maths (control points with weights, spheres), and its
// array.
#pragma once

#include <xsi_decl.h>
#include <xsi_status.h>
#include <xsi_vectorarray.h>

namespace XSI {
namespace MATH {

class CVector4 {
 public:
  CVector4() = default;
  CVector4(double x, double y, double z, double w) : x_(x), y_(y), z_(z), w_(w) {}

  double GetX() const { return x_; }
  double GetY() const { return y_; }
  double GetZ() const { return z_; }
  double GetW() const { return w_; }

 private:
  double x_ = 0.0;
  double y_ = 0.0;
  double z_ = 0.0;
  double w_ = 0.0;
};

/// A growable array of CVector4.
using CVector4Array = CVectorArrayOf<CVector4>;

}  // namespace MATH
}  // namespace XSI
