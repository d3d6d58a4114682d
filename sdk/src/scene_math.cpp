// Double-precision scene maths: vectors, matrices, rotations, transformations.
#include <xsi_math.h>
#include <xsi_matrix3.h>
#include <xsi_matrix4.h>
#include <xsi_rotation.h>
#include <xsi_transformation.h>
#include <xsi_vector3.h>

#include <algorithm>
#include <cmath>

namespace XSI {
namespace MATH {

// ---- CVector3 -----------------------------------------------------------------------------

void CVector3::Get(double& x, double& y, double& z) const {
  x = x_;
  y = y_;
  z = z_;
}

CVector3& CVector3::Set(double x, double y, double z) {
  x_ = x;
  y_ = y;
  z_ = z;
  return *this;
}

double CVector3::operator[](short index) const { return index == 0 ? x_ : index == 1 ? y_ : z_; }

double CVector3::GetLength() const { return std::sqrt(x_ * x_ + y_ * y_ + z_ * z_); }

CStatus CVector3::NormalizeInPlace() {
  const double length = GetLength();
  if (!(length > 0.0) || !std::isfinite(length)) return CStatus::Fail;
  x_ /= length;
  y_ /= length;
  z_ /= length;
  return CStatus::OK;
}

double CVector3::Dot(const CVector3& v) const { return x_ * v.x_ + y_ * v.y_ + z_ * v.z_; }

CVector3& CVector3::Cross(const CVector3& a, const CVector3& b) {
  return Set(a.y_ * b.z_ - a.z_ * b.y_, a.z_ * b.x_ - a.x_ * b.z_, a.x_ * b.y_ - a.y_ * b.x_);
}

double CVector3::GetAngle(const CVector3& v) const {
  // atan2 of |a × b| and a · b stays accurate for nearly parallel vectors, where acos of the
  // normalised dot product loses half its digits.
  CVector3 cross;
  cross.Cross(*this, v);
  const double sine = cross.GetLength();
  const double cosine = Dot(v);
  if (sine == 0.0 && cosine == 0.0) return 0.0;
  return std::atan2(sine, cosine);
}

CVector3& CVector3::AddInPlace(const CVector3& v) { return Set(x_ + v.x_, y_ + v.y_, z_ + v.z_); }
CVector3& CVector3::Sub(const CVector3& a, const CVector3& b) {
  return Set(a.x_ - b.x_, a.y_ - b.y_, a.z_ - b.z_);
}
CVector3& CVector3::ScaleInPlace(double s) { return Set(s * x_, s * y_, s * z_); }
CVector3& CVector3::NegateInPlace() { return Set(-x_, -y_, -z_); }

CVector3& CVector3::LinearlyInterpolate(const CVector3& a, const CVector3& b, double t) {
  return Set(a.x_ + t * (b.x_ - a.x_), a.y_ + t * (b.y_ - a.y_), a.z_ + t * (b.z_ - a.z_));
}

CVector3& CVector3::MulByTransformation(const CVector3& v, const CTransformation& t) {
  return MulByMatrix4(v, t.GetMatrix4());
}
CVector3& CVector3::MulByMatrix4(const CVector3& v, const CMatrix4& m) {
  const double x = v.x_, y = v.y_, z = v.z_;
  return Set(x * m.GetValue(0, 0) + y * m.GetValue(1, 0) + z * m.GetValue(2, 0) + m.GetValue(3, 0),
             x * m.GetValue(0, 1) + y * m.GetValue(1, 1) + z * m.GetValue(2, 1) + m.GetValue(3, 1),
             x * m.GetValue(0, 2) + y * m.GetValue(1, 2) + z * m.GetValue(2, 2) + m.GetValue(3, 2));
}

// ---- the cells of CMatrix3 and CMatrix4 ---------------------------------------------------

namespace {

// out = a × b over N×N cells, each sum taken left to right; `out` may be `a` or `b`.
template <int N>
void MultiplyCells(const double (&a)[N][N], const double (&b)[N][N], double (&out)[N][N]) {
  double r[N][N];
  for (int i = 0; i < N; ++i) {
    for (int j = 0; j < N; ++j) {
      double sum = a[i][0] * b[0][j];
      for (int k = 1; k < N; ++k) sum += a[i][k] * b[k][j];
      r[i][j] = sum;
    }
  }
  for (int i = 0; i < N; ++i)
    for (int j = 0; j < N; ++j) out[i][j] = r[i][j];
}

}  // namespace

// ---- CMatrix3 -----------------------------------------------------------------------------

CMatrix3::CMatrix3() { Set(1, 0, 0, 0, 1, 0, 0, 0, 1); }

CMatrix3::CMatrix3(double m00, double m01, double m02, double m10, double m11, double m12,
                   double m20, double m21, double m22) {
  Set(m00, m01, m02, m10, m11, m12, m20, m21, m22);
}

CMatrix3& CMatrix3::Set(double m00, double m01, double m02, double m10, double m11, double m12,
                        double m20, double m21, double m22) {
  v_[0][0] = m00, v_[0][1] = m01, v_[0][2] = m02;
  v_[1][0] = m10, v_[1][1] = m11, v_[1][2] = m12;
  v_[2][0] = m20, v_[2][1] = m21, v_[2][2] = m22;
  return *this;
}

CMatrix3& CMatrix3::MulInPlace(const CMatrix3& m) {
  MultiplyCells(v_, m.v_, v_);
  return *this;
}

double CMatrix3::GetDeterminant() const {
  return v_[0][0] * (v_[1][1] * v_[2][2] - v_[1][2] * v_[2][1]) -
         v_[0][1] * (v_[1][0] * v_[2][2] - v_[1][2] * v_[2][0]) +
         v_[0][2] * (v_[1][0] * v_[2][1] - v_[1][1] * v_[2][0]);
}

// ---- CMatrix4 -----------------------------------------------------------------------------

CMatrix4::CMatrix4() { SetIdentity(); }

CMatrix4::CMatrix4(double m00, double m01, double m02, double m03, double m10, double m11,
                   double m12, double m13, double m20, double m21, double m22, double m23,
                   double m30, double m31, double m32, double m33) {
  Set(m00, m01, m02, m03, m10, m11, m12, m13, m20, m21, m22, m23, m30, m31, m32, m33);
}

CMatrix4& CMatrix4::Set(double m00, double m01, double m02, double m03, double m10, double m11,
                        double m12, double m13, double m20, double m21, double m22, double m23,
                        double m30, double m31, double m32, double m33) {
  const double values[16] = {m00, m01, m02, m03, m10, m11, m12, m13,
                             m20, m21, m22, m23, m30, m31, m32, m33};
  for (int k = 0; k < 16; ++k) v_[k / 4][k % 4] = values[k];
  return *this;
}

CMatrix4& CMatrix4::SetIdentity() {
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) v_[i][j] = i == j ? 1.0 : 0.0;
  return *this;
}

CMatrix4& CMatrix4::MulInPlace(const CMatrix4& m) {
  MultiplyCells(v_, m.v_, v_);
  return *this;
}

bool CMatrix4::Invert(const CMatrix4& m) {
  // Gauss-Jordan elimination with partial pivoting on [m | I].
  double a[4][8];
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      a[i][j] = m.v_[i][j];
      a[i][j + 4] = i == j ? 1.0 : 0.0;
    }
  }
  for (int col = 0; col < 4; ++col) {
    int pivot = col;
    for (int r = col + 1; r < 4; ++r)
      if (std::fabs(a[r][col]) > std::fabs(a[pivot][col])) pivot = r;
    if (a[pivot][col] == 0.0 || !std::isfinite(a[pivot][col])) return false;
    if (pivot != col)
      for (int j = 0; j < 8; ++j) std::swap(a[pivot][j], a[col][j]);
    const double inv = 1.0 / a[col][col];
    for (int j = 0; j < 8; ++j) a[col][j] *= inv;
    for (int r = 0; r < 4; ++r) {
      if (r == col || a[r][col] == 0.0) continue;
      const double f = a[r][col];
      for (int j = 0; j < 8; ++j) a[r][j] -= f * a[col][j];
    }
  }
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) v_[i][j] = a[i][j + 4];
  return true;
}

void CMatrix4::GetMatrix3(CMatrix3& out) const {
  out.Set(v_[0][0], v_[0][1], v_[0][2], v_[1][0], v_[1][1], v_[1][2], v_[2][0], v_[2][1], v_[2][2]);
}

// ---- CRotation ----------------------------------------------------------------------------

namespace {

CMatrix3 axisRotation(int axis, double angle) {
  const double c = std::cos(angle), s = std::sin(angle);
  switch (axis) {
    case 0:
      return CMatrix3(1, 0, 0, 0, c, s, 0, -s, c);
    case 1:
      return CMatrix3(c, 0, -s, 0, 1, 0, s, 0, c);
    default:
      return CMatrix3(c, s, 0, -s, c, 0, 0, 0, 1);
  }
}

// The axes of each order, first applied first.
constexpr int kOrderAxes[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};

}  // namespace

CRotation::CRotation(double x, double y, double z, siRotationOrder order) {
  const double angles[3] = {x, y, z};
  const int o = (order >= siXYZ && order <= siZYX) ? order : siXYZ;
  for (int k = 0; k < 3; ++k) {
    const int axis = kOrderAxes[o][k];
    matrix_.MulInPlace(axisRotation(axis, angles[axis]));
  }
}

// ---- CTransformation ----------------------------------------------------------------------

namespace {

struct Decomposition {
  CVector3 scaling;
  CMatrix3 rotation;
};

CVector3 row(const CMatrix4& m, short r) {
  return CVector3(m.GetValue(r, 0), m.GetValue(r, 1), m.GetValue(r, 2));
}

// Splits the upper 3×3 block into scaling and rotation. Axis rows of zero length get a unit
// direction completing a right-handed frame, so the rotation is always orthonormal.
Decomposition decompose(const CMatrix4& m) {
  CVector3 axes[3] = {row(m, 0), row(m, 1), row(m, 2)};
  double lengths[3];
  for (int i = 0; i < 3; ++i) lengths[i] = axes[i].GetLength();
  CMatrix3 upper;
  m.GetMatrix3(upper);
  const bool mirrored = upper.GetDeterminant() < 0.0;
  if (mirrored) {
    lengths[0] = -lengths[0];
    axes[0].NegateInPlace();
  }
  CVector3 unit[3];
  bool valid[3];
  for (int i = 0; i < 3; ++i) {
    unit[i] = axes[i];
    valid[i] = unit[i].NormalizeInPlace().Succeeded();
  }
  // Complete missing axes: from the two others by a cross product, or from a fixed choice.
  const int validCount = int(valid[0]) + int(valid[1]) + int(valid[2]);
  if (validCount < 3) {
    if (validCount == 0) {
      unit[0].Set(1, 0, 0), unit[1].Set(0, 1, 0), unit[2].Set(0, 0, 1);
    } else {
      if (validCount == 1) {
        const int k = valid[0] ? 0 : (valid[1] ? 1 : 2);
        const int next = (k + 1) % 3;
        // Any direction perpendicular to the valid axis.
        CVector3 helper = std::fabs(unit[k].GetX()) < 0.9 ? CVector3(1, 0, 0) : CVector3(0, 1, 0);
        unit[next].Cross(helper, unit[k]);
        unit[next].NormalizeInPlace();
        valid[next] = true;
      }
      for (int i = 0; i < 3; ++i) {
        if (!valid[i]) unit[i].Cross(unit[(i + 1) % 3], unit[(i + 2) % 3]);
      }
    }
  }
  Decomposition d;
  d.scaling.Set(lengths[0], lengths[1], lengths[2]);
  d.rotation.Set(unit[0].GetX(), unit[0].GetY(), unit[0].GetZ(), unit[1].GetX(), unit[1].GetY(),
                 unit[1].GetZ(), unit[2].GetX(), unit[2].GetY(), unit[2].GetZ());
  return d;
}

// Euler angles (radians, order XYZ) of a rotation matrix R = Rx × Ry × Rz: the element linking
// the X and Z axes is −sin(y); the other two angles follow from the two 2×2 corners.
CVector3 xyzAngles(const CMatrix3& m) {
  const double sinY = std::clamp(-m.GetValue(0, 2), -1.0, 1.0);
  const double y = std::asin(sinY);
  if (std::fabs(sinY) < 1.0 - 1e-12)
    return CVector3(std::atan2(m.GetValue(1, 2), m.GetValue(2, 2)), y,
                    std::atan2(m.GetValue(0, 1), m.GetValue(0, 0)));
  // Gimbal lock: only a combination of the X and Z angles is determined; put it all on X.
  return CVector3(std::atan2(-m.GetValue(2, 1), m.GetValue(1, 1)), y, 0.0);
}

}  // namespace

void CTransformation::Compose(const CVector3& s, const CMatrix3& r, const CVector3& t) {
  for (short i = 0; i < 3; ++i) {
    for (short j = 0; j < 3; ++j) matrix_.SetValue(i, j, s[i] * r.GetValue(i, j));
    matrix_.SetValue(i, 3, 0.0);
  }
  matrix_.SetValue(3, 0, t.GetX());
  matrix_.SetValue(3, 1, t.GetY());
  matrix_.SetValue(3, 2, t.GetZ());
  matrix_.SetValue(3, 3, 1.0);
}

CTransformation& CTransformation::SetIdentity() {
  matrix_.SetIdentity();
  return *this;
}

CTransformation& CTransformation::SetMatrix4(const CMatrix4& m) {
  matrix_ = m;
  for (short i = 0; i < 3; ++i) matrix_.SetValue(i, 3, 0.0);
  matrix_.SetValue(3, 3, 1.0);
  return *this;
}

CTransformation& CTransformation::SetScaling(const CVector3& s) {
  const Decomposition d = decompose(matrix_);
  Compose(s, d.rotation, GetTranslation());
  return *this;
}

CVector3 CTransformation::GetScaling() const { return decompose(matrix_).scaling; }

CTransformation& CTransformation::SetRotation(const CRotation& r) {
  const Decomposition d = decompose(matrix_);
  Compose(d.scaling, r.GetMatrix(), GetTranslation());
  return *this;
}

CVector3 CTransformation::GetRotationXYZAngles() const {
  return xyzAngles(decompose(matrix_).rotation);
}

CMatrix3 CTransformation::GetRotationMatrix3() const { return decompose(matrix_).rotation; }

CTransformation& CTransformation::SetTranslation(const CVector3& t) {
  return SetTranslationFromValues(t.GetX(), t.GetY(), t.GetZ());
}

CTransformation& CTransformation::SetTranslationFromValues(double x, double y, double z) {
  matrix_.SetValue(3, 0, x);
  matrix_.SetValue(3, 1, y);
  matrix_.SetValue(3, 2, z);
  return *this;
}

CVector3 CTransformation::GetTranslation() const { return row(matrix_, 3); }

CTransformation& CTransformation::MulInPlace(const CTransformation& t) {
  matrix_.MulInPlace(t.matrix_);
  return *this;
}

// ---- free functions -----------------------------------------------------------------------

CVector3 MapObjectPositionToWorldSpace(const CTransformation& objectTransform,
                                       const CVector3& position) {
  CVector3 out;
  out.MulByMatrix4(position, objectTransform.GetMatrix4());
  return out;
}

CVector3 MapWorldPositionToObjectSpace(const CTransformation& objectTransform,
                                       const CVector3& position) {
  CMatrix4 inverse;
  if (!inverse.Invert(objectTransform.GetMatrix4())) return CVector3();
  CVector3 out;
  out.MulByMatrix4(position, inverse);
  return out;
}

}  // namespace MATH
}  // namespace XSI
