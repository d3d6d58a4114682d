// Single-precision value types of ICE data: vectors, quaternion, matrices, colour, rotation,
// shape. Each is a plain standard-layout block of floats, so arrays of them are contiguous.
#pragma once

#include <xsi_decl.h>

namespace XSI {
namespace MATH {

class CVector2f {
 public:
  CVector2f() = default;
  CVector2f(float x, float y) : x_(x), y_(y) {}
  float GetX() const { return x_; }
  float GetY() const { return y_; }
  bool operator==(const CVector2f&) const = default;

 private:
  float x_ = 0.0f, y_ = 0.0f;
};

class CVector3f {
 public:
  CVector3f() = default;
  CVector3f(float x, float y, float z) : x_(x), y_(y), z_(z) {}
  float GetX() const { return x_; }
  float GetY() const { return y_; }
  float GetZ() const { return z_; }
  bool operator==(const CVector3f&) const = default;

 private:
  float x_ = 0.0f, y_ = 0.0f, z_ = 0.0f;
};

class CVector4f {
 public:
  CVector4f() = default;
  CVector4f(float x, float y, float z, float w) : x_(x), y_(y), z_(z), w_(w) {}
  float GetX() const { return x_; }
  float GetY() const { return y_; }
  float GetZ() const { return z_; }
  float GetW() const { return w_; }
  bool operator==(const CVector4f&) const = default;

 private:
  float x_ = 0.0f, y_ = 0.0f, z_ = 0.0f, w_ = 0.0f;
};

// Quaternion stored as (w, x, y, z).
class CQuaternionf {
 public:
  CQuaternionf() = default;
  CQuaternionf(float w, float x, float y, float z) : w_(w), x_(x), y_(y), z_(z) {}
  float GetW() const { return w_; }
  float GetX() const { return x_; }
  float GetY() const { return y_; }
  float GetZ() const { return z_; }
  bool operator==(const CQuaternionf&) const = default;

 private:
  float w_ = 1.0f, x_ = 0.0f, y_ = 0.0f, z_ = 0.0f;
};

// 3×3 matrix, row-major.
class CMatrix3f {
 public:
  CMatrix3f() { SetIdentity(); }
  float GetValue(short row, short column) const { return cells_[row][column]; }
  void SetValue(short row, short column, float value) { cells_[row][column] = value; }
  void SetIdentity() {
    for (int r = 0; r < 3; ++r)
      for (int c = 0; c < 3; ++c) cells_[r][c] = r == c ? 1.0f : 0.0f;
  }
  bool operator==(const CMatrix3f&) const = default;

 private:
  float cells_[3][3];
};

// 4×4 matrix, row-major, row-vector convention: a point is the row (x, y, z, 1) times the
// matrix; row 3 holds the translation.
class CMatrix4f {
 public:
  CMatrix4f() { SetIdentity(); }
  CMatrix4f(float m00, float m01, float m02, float m03, float m10, float m11, float m12, float m13,
            float m20, float m21, float m22, float m23, float m30, float m31, float m32, float m33)
      : cells_{{m00, m01, m02, m03},
               {m10, m11, m12, m13},
               {m20, m21, m22, m23},
               {m30, m31, m32, m33}} {}
  float GetValue(short row, short column) const { return cells_[row][column]; }
  void SetValue(short row, short column, float value) { cells_[row][column] = value; }
  void SetIdentity() {
    for (int r = 0; r < 4; ++r)
      for (int c = 0; c < 4; ++c) cells_[r][c] = r == c ? 1.0f : 0.0f;
  }
  const float* Get() const { return &cells_[0][0]; }
  float* Get() { return &cells_[0][0]; }
  bool operator==(const CMatrix4f&) const = default;

 private:
  float cells_[4][4];
};

class CColor4f {
 public:
  CColor4f() = default;
  CColor4f(float r, float g, float b, float a) : r_(r), g_(g), b_(b), a_(a) {}
  bool operator==(const CColor4f&) const = default;

 private:
  float r_ = 0.0f, g_ = 0.0f, b_ = 0.0f, a_ = 0.0f;
};

// Rotation, held as a quaternion (w, x, y, z).
class CRotationf {
 public:
  CRotationf() = default;
  explicit CRotationf(const CQuaternionf& q) : q_(q) {}
  bool operator==(const CRotationf&) const = default;

 private:
  CQuaternionf q_;
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
      : type_(type), params_{p0, p1, p2} {}
  siICEShapeType GetType() const { return static_cast<siICEShapeType>(type_); }
  bool operator==(const CShape&) const = default;

 private:
  std::int32_t type_ = siICEShapePoint;
  float params_[3] = {0.0f, 0.0f, 0.0f};
};

}  // namespace XSI
