// Single-precision value types of ICE data: vectors, quaternion, matrices, colour, rotation,
// shape. Each is a plain standard-layout block of floats, so arrays of them are contiguous.
#pragma once

#include <xsi_decl.h>

namespace XSI {
namespace MATH {

class CVector2f {
 public:
  CVector2f() = default;
  CVector2f(float x, float y) : m_x(x), m_y(y) {}
  float GetX() const { return m_x; }
  float GetY() const { return m_y; }
  void PutX(float v) { m_x = v; }
  void PutY(float v) { m_y = v; }
  void Set(float x, float y) { m_x = x; m_y = y; }
  bool operator==(const CVector2f& o) const { return m_x == o.m_x && m_y == o.m_y; }

 private:
  float m_x = 0.0f, m_y = 0.0f;
};

class CVector3f {
 public:
  CVector3f() = default;
  CVector3f(float x, float y, float z) : m_x(x), m_y(y), m_z(z) {}
  float GetX() const { return m_x; }
  float GetY() const { return m_y; }
  float GetZ() const { return m_z; }
  void PutX(float v) { m_x = v; }
  void PutY(float v) { m_y = v; }
  void PutZ(float v) { m_z = v; }
  void Set(float x, float y, float z) { m_x = x; m_y = y; m_z = z; }
  void Get(float& x, float& y, float& z) const { x = m_x; y = m_y; z = m_z; }
  bool operator==(const CVector3f& o) const { return m_x == o.m_x && m_y == o.m_y && m_z == o.m_z; }

 private:
  float m_x = 0.0f, m_y = 0.0f, m_z = 0.0f;
};

class CVector4f {
 public:
  CVector4f() = default;
  CVector4f(float x, float y, float z, float w) : m_x(x), m_y(y), m_z(z), m_w(w) {}
  float GetX() const { return m_x; }
  float GetY() const { return m_y; }
  float GetZ() const { return m_z; }
  float GetW() const { return m_w; }
  void Set(float x, float y, float z, float w) { m_x = x; m_y = y; m_z = z; m_w = w; }
  bool operator==(const CVector4f& o) const {
    return m_x == o.m_x && m_y == o.m_y && m_z == o.m_z && m_w == o.m_w;
  }

 private:
  float m_x = 0.0f, m_y = 0.0f, m_z = 0.0f, m_w = 0.0f;
};

// Quaternion stored as (w, x, y, z).
class CQuaternionf {
 public:
  CQuaternionf() = default;
  CQuaternionf(float w, float x, float y, float z) : m_w(w), m_x(x), m_y(y), m_z(z) {}
  float GetW() const { return m_w; }
  float GetX() const { return m_x; }
  float GetY() const { return m_y; }
  float GetZ() const { return m_z; }
  void Set(float w, float x, float y, float z) { m_w = w; m_x = x; m_y = y; m_z = z; }
  bool operator==(const CQuaternionf& o) const {
    return m_w == o.m_w && m_x == o.m_x && m_y == o.m_y && m_z == o.m_z;
  }

 private:
  float m_w = 1.0f, m_x = 0.0f, m_y = 0.0f, m_z = 0.0f;
};

// 3×3 matrix, row-major.
class CMatrix3f {
 public:
  CMatrix3f() { SetIdentity(); }
  float GetValue(short row, short column) const { return m_m[row][column]; }
  void SetValue(short row, short column, float value) { m_m[row][column] = value; }
  void SetIdentity() {
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) m_m[r][c] = r == c ? 1.0f : 0.0f;
  }
  const float* Get() const { return &m_m[0][0]; }
  bool operator==(const CMatrix3f& o) const {
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c)
        if (m_m[r][c] != o.m_m[r][c]) return false;
    return true;
  }

 private:
  float m_m[3][3];
};

// 4×4 matrix, row-major, row-vector convention: a point is the row (x, y, z, 1) times the
// matrix; row 3 holds the translation.
class CMatrix4f {
 public:
  CMatrix4f() { SetIdentity(); }
  CMatrix4f(float m00, float m01, float m02, float m03, float m10, float m11, float m12,
            float m13, float m20, float m21, float m22, float m23, float m30, float m31,
            float m32, float m33)
      : m_m{{m00, m01, m02, m03}, {m10, m11, m12, m13}, {m20, m21, m22, m23}, {m30, m31, m32, m33}} {}
  float GetValue(short row, short column) const { return m_m[row][column]; }
  void SetValue(short row, short column, float value) { m_m[row][column] = value; }
  void SetIdentity() {
    for (int r = 0; r < 4; ++r)
      for (int c = 0; c < 4; ++c) m_m[r][c] = r == c ? 1.0f : 0.0f;
  }
  const float* Get() const { return &m_m[0][0]; }
  float* Get() { return &m_m[0][0]; }
  bool operator==(const CMatrix4f& o) const {
    for (int r = 0; r < 4; ++r)
      for (int c = 0; c < 4; ++c)
        if (m_m[r][c] != o.m_m[r][c]) return false;
    return true;
  }

 private:
  float m_m[4][4];
};

class CColor4f {
 public:
  CColor4f() = default;
  CColor4f(float r, float g, float b, float a) : m_r(r), m_g(g), m_b(b), m_a(a) {}
  float GetR() const { return m_r; }
  float GetG() const { return m_g; }
  float GetB() const { return m_b; }
  float GetA() const { return m_a; }
  void Set(float r, float g, float b, float a) { m_r = r; m_g = g; m_b = b; m_a = a; }
  bool operator==(const CColor4f& o) const {
    return m_r == o.m_r && m_g == o.m_g && m_b == o.m_b && m_a == o.m_a;
  }

 private:
  float m_r = 0.0f, m_g = 0.0f, m_b = 0.0f, m_a = 0.0f;
};

// Rotation, held as a quaternion (w, x, y, z).
class CRotationf {
 public:
  CRotationf() = default;
  explicit CRotationf(const CQuaternionf& q) : m_q(q) {}
  const CQuaternionf& GetQuaternion() const { return m_q; }
  void SetFromQuaternion(const CQuaternionf& q) { m_q = q; }
  bool operator==(const CRotationf& o) const { return m_q == o.m_q; }

 private:
  CQuaternionf m_q;
};

}  // namespace MATH

enum siICEShapeType {
  siICEShapePoint = 0,
  siICEShapeSegment = 1,
  siICEShapeDisc = 2,
  siICEShapeRectangle = 3,
  siICEShapeSphere = 4,
  siICEShapeBox = 5,
  siICEShapeCylinder = 6,
  siICEShapeCapsule = 7,
  siICEShapeCone = 8,
  siICEShapeBlob = 9,
  siICEShapeReference = 128,
};

// Particle shape: a type and up to three size parameters.
class CShape {
 public:
  CShape() = default;
  CShape(siICEShapeType type, float p0 = 0.0f, float p1 = 0.0f, float p2 = 0.0f)
      : m_type(type), m_params{p0, p1, p2} {}
  siICEShapeType GetType() const { return static_cast<siICEShapeType>(m_type); }
  float GetParameter(ULONG index) const { return index < 3 ? m_params[index] : 0.0f; }
  bool operator==(const CShape& o) const {
    return m_type == o.m_type && m_params[0] == o.m_params[0] && m_params[1] == o.m_params[1] &&
           m_params[2] == o.m_params[2];
  }

 private:
  std::int32_t m_type = siICEShapePoint;
  float m_params[3] = {0.0f, 0.0f, 0.0f};
};

}  // namespace XSI
