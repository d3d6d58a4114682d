// Double-precision 4-vector of the scene maths (control points with weights, spheres), and its
// array.
#pragma once

#include <vector>

#include <xsi_decl.h>
#include <xsi_status.h>

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
  void PutX(double v) { x_ = v; }
  void PutY(double v) { y_ = v; }
  void PutZ(double v) { z_ = v; }
  void PutW(double v) { w_ = v; }
  void Get(double& x, double& y, double& z, double& w) const {
    x = x_;
    y = y_;
    z = z_;
    w = w_;
  }
  CVector4& Set(double x, double y, double z, double w) {
    x_ = x;
    y_ = y;
    z_ = z;
    w_ = w;
    return *this;
  }
  bool operator==(const CVector4& v) const {
    return x_ == v.x_ && y_ == v.y_ && z_ == v.z_ && w_ == v.w_;
  }
  bool operator!=(const CVector4& v) const { return !(*this == v); }

 private:
  double x_ = 0.0;
  double y_ = 0.0;
  double z_ = 0.0;
  double w_ = 0.0;
};

/// A growable array of CVector4.
class CVector4Array {
 public:
  CVector4Array() = default;
  explicit CVector4Array(LONG count) { Resize(count); }

  LONG GetCount() const { return static_cast<LONG>(items_.size()); }
  /// Grows or shrinks to `count` entries; new entries are zero. A negative count is refused
  /// with CStatus::InvalidArgument.
  CStatus Resize(LONG count) {
    if (count < 0) return CStatus::InvalidArgument;
    items_.resize(static_cast<size_t>(count));
    return CStatus::OK;
  }
  LONG Add(const CVector4& v) {
    items_.push_back(v);
    return GetCount() - 1;
  }
  CStatus Clear() {
    items_.clear();
    return CStatus::OK;
  }
  const CVector4& operator[](LONG index) const { return items_[static_cast<size_t>(index)]; }
  CVector4& operator[](LONG index) { return items_[static_cast<size_t>(index)]; }
  const CVector4* GetArray() const { return items_.empty() ? nullptr : items_.data(); }

 private:
  std::vector<CVector4> items_;
};

}  // namespace MATH
}  // namespace XSI
