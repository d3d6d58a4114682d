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
  CVector4(double x, double y, double z, double w) : m_x(x), m_y(y), m_z(z), m_w(w) {}

  double GetX() const { return m_x; }
  double GetY() const { return m_y; }
  double GetZ() const { return m_z; }
  double GetW() const { return m_w; }
  void PutX(double v) { m_x = v; }
  void PutY(double v) { m_y = v; }
  void PutZ(double v) { m_z = v; }
  void PutW(double v) { m_w = v; }
  void Get(double& x, double& y, double& z, double& w) const {
    x = m_x;
    y = m_y;
    z = m_z;
    w = m_w;
  }
  CVector4& Set(double x, double y, double z, double w) {
    m_x = x;
    m_y = y;
    m_z = z;
    m_w = w;
    return *this;
  }
  bool operator==(const CVector4& v) const {
    return m_x == v.m_x && m_y == v.m_y && m_z == v.m_z && m_w == v.m_w;
  }
  bool operator!=(const CVector4& v) const { return !(*this == v); }

 private:
  double m_x = 0.0;
  double m_y = 0.0;
  double m_z = 0.0;
  double m_w = 0.0;
};

/// A growable array of CVector4.
class CVector4Array {
 public:
  CVector4Array() = default;
  explicit CVector4Array(LONG count) { Resize(count); }

  LONG GetCount() const { return static_cast<LONG>(m_items.size()); }
  /// Grows or shrinks to `count` entries; new entries are zero. A negative count is refused
  /// with CStatus::InvalidArgument.
  CStatus Resize(LONG count) {
    if (count < 0) return CStatus::InvalidArgument;
    m_items.resize(static_cast<size_t>(count));
    return CStatus::OK;
  }
  LONG Add(const CVector4& v) {
    m_items.push_back(v);
    return GetCount() - 1;
  }
  CStatus Clear() {
    m_items.clear();
    return CStatus::OK;
  }
  const CVector4& operator[](LONG index) const { return m_items[static_cast<size_t>(index)]; }
  CVector4& operator[](LONG index) { return m_items[static_cast<size_t>(index)]; }
  const CVector4* GetArray() const { return m_items.empty() ? nullptr : m_items.data(); }

 private:
  std::vector<CVector4> m_items;
};

}  // namespace MATH
}  // namespace XSI
