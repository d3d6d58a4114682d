// Double-precision scene maths: vectors, matrices, rotations, transformations.
#include <xsi_math.h>
#include <xsi_matrix3.h>
#include <xsi_matrix4.h>
#include <xsi_rotation.h>
#include <xsi_transformation.h>
#include <xsi_vector3.h>

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

double& CVector3::operator[](short index) { return index == 0 ? x_ : index == 1 ? y_ : z_; }

double CVector3::GetLengthSquared() const { return x_ * x_ + y_ * y_ + z_ * z_; }

double CVector3::GetLength() const { return std::sqrt(GetLengthSquared()); }

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

CVector3& CVector3::Add(const CVector3& a, const CVector3& b) {
  return Set(a.x_ + b.x_, a.y_ + b.y_, a.z_ + b.z_);
}
CVector3& CVector3::AddInPlace(const CVector3& v) { return Add(*this, v); }
CVector3& CVector3::Sub(const CVector3& a, const CVector3& b) {
  return Set(a.x_ - b.x_, a.y_ - b.y_, a.z_ - b.z_);
}
CVector3& CVector3::SubInPlace(const CVector3& v) { return Sub(*this, v); }
CVector3& CVector3::Scale(double s, const CVector3& v) { return Set(s * v.x_, s * v.y_, s * v.z_); }
CVector3& CVector3::ScaleInPlace(double s) { return Scale(s, *this); }
CVector3& CVector3::Negate(const CVector3& v) { return Set(-v.x_, -v.y_, -v.z_); }
CVector3& CVector3::NegateInPlace() { return Negate(*this); }

CVector3& CVector3::LinearlyInterpolate(const CVector3& a, const CVector3& b, double t) {
  return Set(a.x_ + t * (b.x_ - a.x_), a.y_ + t * (b.y_ - a.y_), a.z_ + t * (b.z_ - a.z_));
}

CVector3& CVector3::MulByTransformation(const CVector3& v, const CTransformation& t) {
  return MulByMatrix4(v, t.GetMatrix4());
}
CVector3& CVector3::MulByTransformationInPlace(const CTransformation& t) {
  return MulByTransformation(*this, t);
}

CVector3& CVector3::MulByMatrix3(const CVector3& v, const CMatrix3& m) {
  const double x = v.x_, y = v.y_, z = v.z_;
  return Set(x * m.GetValue(0, 0) + y * m.GetValue(1, 0) + z * m.GetValue(2, 0),
             x * m.GetValue(0, 1) + y * m.GetValue(1, 1) + z * m.GetValue(2, 1),
             x * m.GetValue(0, 2) + y * m.GetValue(1, 2) + z * m.GetValue(2, 2));
}

CVector3& CVector3::MulByMatrix4(const CVector3& v, const CMatrix4& m) {
  const double x = v.x_, y = v.y_, z = v.z_;
  return Set(x * m.GetValue(0, 0) + y * m.GetValue(1, 0) + z * m.GetValue(2, 0) + m.GetValue(3, 0),
             x * m.GetValue(0, 1) + y * m.GetValue(1, 1) + z * m.GetValue(2, 1) + m.GetValue(3, 1),
             x * m.GetValue(0, 2) + y * m.GetValue(1, 2) + z * m.GetValue(2, 2) + m.GetValue(3, 2));
}

CVector3& CVector3::MulByRotation(const CVector3& v, const CRotation& r) {
  return MulByMatrix3(v, r.GetMatrix());
}
CVector3& CVector3::MulByRotationInPlace(const CRotation& r) { return MulByRotation(*this, r); }

bool CVector3::EpsilonEquals(const CVector3& v, double epsilon) const {
  return std::fabs(x_ - v.x_) <= epsilon && std::fabs(y_ - v.y_) <= epsilon &&
         std::fabs(z_ - v.z_) <= epsilon;
}

bool CVector3::Equals(const CVector3& v) const { return x_ == v.x_ && y_ == v.y_ && z_ == v.z_; }

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

// Whether every cell of `a` lies within `epsilon` of the cell of `b`; false for a NaN.
template <int N>
bool CellsWithin(const double (&a)[N][N], const double (&b)[N][N], double epsilon) {
  for (int i = 0; i < N; ++i)
    for (int j = 0; j < N; ++j)
      if (!(std::fabs(a[i][j] - b[i][j]) <= epsilon)) return false;
  return true;
}

}  // namespace

// ---- CMatrix3 -----------------------------------------------------------------------------

CMatrix3::CMatrix3() { SetIdentity(); }

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

void CMatrix3::Get(double& m00, double& m01, double& m02, double& m10, double& m11, double& m12,
                   double& m20, double& m21, double& m22) const {
  m00 = v_[0][0], m01 = v_[0][1], m02 = v_[0][2];
  m10 = v_[1][0], m11 = v_[1][1], m12 = v_[1][2];
  m20 = v_[2][0], m21 = v_[2][1], m22 = v_[2][2];
}

CMatrix3& CMatrix3::SetIdentity() { return Set(1, 0, 0, 0, 1, 0, 0, 0, 1); }

CMatrix3& CMatrix3::Mul(const CMatrix3& a, const CMatrix3& b) {
  MultiplyCells(a.v_, b.v_, v_);
  return *this;
}

CMatrix3& CMatrix3::MulInPlace(const CMatrix3& m) { return Mul(*this, m); }

CMatrix3& CMatrix3::Transpose(const CMatrix3& m) {
  const CMatrix3 copy = m;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) v_[i][j] = copy.v_[j][i];
  return *this;
}

CMatrix3& CMatrix3::TransposeInPlace() { return Transpose(*this); }

double CMatrix3::GetDeterminant() const {
  return v_[0][0] * (v_[1][1] * v_[2][2] - v_[1][2] * v_[2][1]) -
         v_[0][1] * (v_[1][0] * v_[2][2] - v_[1][2] * v_[2][0]) +
         v_[0][2] * (v_[1][0] * v_[2][1] - v_[1][1] * v_[2][0]);
}

bool CMatrix3::Invert(const CMatrix3& m) {
  const double det = m.GetDeterminant();
  if (det == 0.0 || !std::isfinite(det)) return false;
  const auto& v = m.v_;
  const double inv = 1.0 / det;
  Set((v[1][1] * v[2][2] - v[1][2] * v[2][1]) * inv, (v[0][2] * v[2][1] - v[0][1] * v[2][2]) * inv,
      (v[0][1] * v[1][2] - v[0][2] * v[1][1]) * inv, (v[1][2] * v[2][0] - v[1][0] * v[2][2]) * inv,
      (v[0][0] * v[2][2] - v[0][2] * v[2][0]) * inv, (v[0][2] * v[1][0] - v[0][0] * v[1][2]) * inv,
      (v[1][0] * v[2][1] - v[1][1] * v[2][0]) * inv, (v[0][1] * v[2][0] - v[0][0] * v[2][1]) * inv,
      (v[0][0] * v[1][1] - v[0][1] * v[1][0]) * inv);
  return true;
}

bool CMatrix3::InvertInPlace() {
  const CMatrix3 copy = *this;
  return Invert(copy);
}

bool CMatrix3::EpsilonEquals(const CMatrix3& m, double epsilon) const {
  return CellsWithin(v_, m.v_, epsilon);
}

bool CMatrix3::Equals(const CMatrix3& m) const { return EpsilonEquals(m, 0.0); }

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

CMatrix4& CMatrix4::Mul(const CMatrix4& a, const CMatrix4& b) {
  MultiplyCells(a.v_, b.v_, v_);
  return *this;
}

CMatrix4& CMatrix4::MulInPlace(const CMatrix4& m) { return Mul(*this, m); }

CMatrix4& CMatrix4::Transpose(const CMatrix4& m) {
  const CMatrix4 copy = m;
  for (int i = 0; i < 4; ++i)
    for (int j = 0; j < 4; ++j) v_[i][j] = copy.v_[j][i];
  return *this;
}

CMatrix4& CMatrix4::TransposeInPlace() { return Transpose(*this); }

double CMatrix4::GetDeterminant() const {
  // Laplace expansion along the first row over 3×3 minors.
  double det = 0.0;
  for (int c = 0; c < 4; ++c) {
    double minor[3][3];
    for (int i = 1; i < 4; ++i) {
      int k = 0;
      for (int j = 0; j < 4; ++j) {
        if (j != c) minor[i - 1][k++] = v_[i][j];
      }
    }
    const CMatrix3 m3(minor[0][0], minor[0][1], minor[0][2], minor[1][0], minor[1][1], minor[1][2],
                      minor[2][0], minor[2][1], minor[2][2]);
    det += ((c % 2) ? -1.0 : 1.0) * v_[0][c] * m3.GetDeterminant();
  }
  return det;
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

bool CMatrix4::InvertInPlace() {
  const CMatrix4 copy = *this;
  return Invert(copy);
}

void CMatrix4::GetMatrix3(CMatrix3& out) const {
  out.Set(v_[0][0], v_[0][1], v_[0][2], v_[1][0], v_[1][1], v_[1][2], v_[2][0], v_[2][1], v_[2][2]);
}

bool CMatrix4::EpsilonEquals(const CMatrix4& m, double epsilon) const {
  return CellsWithin(v_, m.v_, epsilon);
}

bool CMatrix4::Equals(const CMatrix4& m) const { return EpsilonEquals(m, 0.0); }

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
  SetFromXYZAnglesValues(x, y, z, order);
}

CRotation& CRotation::SetIdentity() {
  matrix_.SetIdentity();
  return *this;
}

CRotation& CRotation::SetFromXYZAnglesValues(double x, double y, double z, siRotationOrder order) {
  const double angles[3] = {x, y, z};
  const int o = (order >= siXYZ && order <= siZYX) ? order : siXYZ;
  matrix_.SetIdentity();
  for (int k = 0; k < 3; ++k) {
    const int axis = kOrderAxes[o][k];
    matrix_.MulInPlace(axisRotation(axis, angles[axis]));
  }
  return *this;
}

CVector3 CRotation::GetXYZAngles(siRotationOrder order) const {
  // With R = Ra × Rb × Rc (a applied first), the element linking the first and the last axis
  // is ±sin(b); the remaining angles follow from the two 2×2 corners. Derived once for the
  // XYZ order and mapped to the others by permuting axes.
  const int o = (order >= siXYZ && order <= siZYX) ? order : siXYZ;
  const int a = kOrderAxes[o][0], b = kOrderAxes[o][1], c = kOrderAxes[o][2];
  // Sign of the permutation (a, b, c): +1 for cyclic orders.
  const double sign = ((b - a + 3) % 3 == 1) ? 1.0 : -1.0;
  auto m = [&](int i, int j) {
    return matrix_.GetValue(static_cast<short>(i), static_cast<short>(j));
  };
  double angles[3];
  const double sb = -sign * m(a, c);
  const double clamped = sb > 1.0 ? 1.0 : (sb < -1.0 ? -1.0 : sb);
  angles[b] = std::asin(clamped);
  if (std::fabs(clamped) < 1.0 - 1e-12) {
    angles[a] = std::atan2(sign * m(b, c), m(c, c));
    angles[c] = std::atan2(sign * m(a, b), m(a, a));
  } else {
    // Gimbal lock: only a combination of the first and last angles is determined; put it all
    // on the first axis.
    angles[c] = 0.0;
    angles[a] = std::atan2(-sign * m(c, b), m(b, b));
  }
  return CVector3(angles[0], angles[1], angles[2]);
}

CRotation& CRotation::SetFromAxisAngle(const CVector3& axis, double angle) {
  CVector3 n = axis;
  if (!n.NormalizeInPlace().Succeeded()) return SetIdentity();
  const double c = std::cos(angle), s = std::sin(angle), t = 1.0 - c;
  const double x = n.GetX(), y = n.GetY(), z = n.GetZ();
  // Column-vector Rodrigues matrix, transposed for row vectors.
  matrix_.Set(t * x * x + c, t * x * y + s * z, t * x * z - s * y,  //
              t * x * y - s * z, t * y * y + c, t * y * z + s * x,  //
              t * x * z + s * y, t * y * z - s * x, t * z * z + c);
  return *this;
}

CRotation& CRotation::SetFromMatrix(const CMatrix3& m) {
  matrix_ = m;
  return *this;
}

CRotation& CRotation::Mul(const CRotation& a, const CRotation& b) {
  matrix_.Mul(a.matrix_, b.matrix_);
  return *this;
}

CRotation& CRotation::MulInPlace(const CRotation& r) { return Mul(*this, r); }

CRotation& CRotation::InvertInPlace() {
  matrix_.TransposeInPlace();
  return *this;
}

bool CRotation::EpsilonEquals(const CRotation& r, double epsilon) const {
  return matrix_.EpsilonEquals(r.matrix_, epsilon);
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

CTransformation& CTransformation::SetScalingFromValues(double x, double y, double z) {
  return SetScaling(CVector3(x, y, z));
}

CVector3 CTransformation::GetScaling() const { return decompose(matrix_).scaling; }

CTransformation& CTransformation::SetRotation(const CRotation& r) {
  const Decomposition d = decompose(matrix_);
  Compose(d.scaling, r.GetMatrix(), GetTranslation());
  return *this;
}

CTransformation& CTransformation::SetRotationFromXYZAnglesValues(double x, double y, double z,
                                                                 siRotationOrder order) {
  return SetRotation(CRotation(x, y, z, order));
}

CRotation CTransformation::GetRotation() const {
  CRotation r;
  r.SetFromMatrix(decompose(matrix_).rotation);
  return r;
}

CVector3 CTransformation::GetRotationXYZAngles() const { return GetRotation().GetXYZAngles(); }

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

CTransformation& CTransformation::Mul(const CTransformation& a, const CTransformation& b) {
  matrix_.Mul(a.matrix_, b.matrix_);
  return *this;
}

CTransformation& CTransformation::MulInPlace(const CTransformation& t) { return Mul(*this, t); }

bool CTransformation::Invert(const CTransformation& t) {
  CMatrix4 inverse;
  if (!inverse.Invert(t.matrix_)) return false;
  SetMatrix4(inverse);
  return true;
}

bool CTransformation::InvertInPlace() {
  const CTransformation copy = *this;
  return Invert(copy);
}

bool CTransformation::EpsilonEquals(const CTransformation& t, double epsilon) const {
  return matrix_.EpsilonEquals(t.matrix_, epsilon);
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

CVector3 MapObjectOrientationToWorldSpace(const CTransformation& objectTransform,
                                          const CVector3& direction) {
  CMatrix3 upper;
  objectTransform.GetMatrix4().GetMatrix3(upper);
  CVector3 out;
  out.MulByMatrix3(direction, upper);
  return out;
}

}  // namespace MATH
}  // namespace XSI
