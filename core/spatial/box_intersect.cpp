#include "core/spatial/box_intersect.h"

#include <cassert>

#include "core/math/mat4_ops.h"

namespace quillix {
namespace {

// Eight points by coordinate, so that the per-point loops below run four lanes at a time.
struct PointSet {
  float x[8];
  float y[8];
  float z[8];
};

bool BoundsSeparate(const PreparedBox& a, const PreparedBox& b) {
  return a.lower.x > b.upper.x || a.lower.y > b.upper.y || a.lower.z > b.upper.z ||
         b.lower.x > a.upper.x || b.lower.y > a.upper.y || b.lower.z > a.upper.z;
}

// The other box's world corners in the unit-cube space of the box whose inverse is given.
// The inverse's fourth column is (0, 0, 0, 1) only up to rounding, so the full homogeneous
// map is used.
PointSet ToLocal(const Mat4f& inverse, const std::array<Vec3f, 8>& corners) {
  PointSet local;
  for (int i = 0; i < 8; ++i) {
    const Vec3f p = TransformPointProjective(corners[i], inverse);
    local.x[i] = p.x;
    local.y[i] = p.y;
    local.z[i] = p.z;
  }
  return local;
}

// Whether one face plane of the unit cube has all eight points strictly beyond it. A point
// on the plane (or NaN) is not beyond it.
bool FacePlaneSeparates(const PointSet& local) {
  for (const float* c : {local.x, local.y, local.z}) {
    // Bitwise accumulation keeps the loop free of branches.
    int allBelow = 1;
    int allAbove = 1;
    for (int i = 0; i < 8; ++i) {
      allBelow &= c[i] < -1.0f;
      allAbove &= c[i] > 1.0f;
    }
    if (allBelow | allAbove) return true;
  }
  return false;
}

// Whether one of the twelve planes through the cube's edges, at 45° to the two faces that
// meet there, has all eight points strictly beyond it. Each point counts only for the first
// plane of its coordinate pair that it lies beyond, in the order u + v, v - u, u - v,
// -u - v; a point beyond two planes (off a corner) thus counts once, which can only make
// the test reject less.
bool EdgePlaneSeparates(const PointSet& local) {
  const float* const pairs[3][2] = {{local.x, local.y}, {local.x, local.z}, {local.y, local.z}};
  for (const auto& pair : pairs) {
    int all[4] = {1, 1, 1, 1};
    for (int i = 0; i < 8; ++i) {
      const float u = pair[0][i];
      const float v = pair[1][i];
      const int first = u + v > 2.0f;
      const int second = !first & (v - u > 2.0f);
      const int third = !first & !second & (u - v > 2.0f);
      const int fourth = !first & !second & !third & (-u - v > 2.0f);
      all[0] &= first;
      all[1] &= second;
      all[2] &= third;
      all[3] &= fourth;
    }
    if (all[0] | all[1] | all[2] | all[3]) return true;
  }
  return false;
}

// The inverse of `box`'s matrix, from the prepared box or computed now into `scratch`;
// null when the matrix is singular.
const Mat4f* InverseOf(const PreparedBox& box, Mat4f& scratch) {
  switch (box.inverseState) {
    case PreparedBox::Inverse::Valid:
      return &box.inverse;
    case PreparedBox::Inverse::Singular:
      return nullptr;
    case PreparedBox::Inverse::NotComputed:
      break;
  }
  scratch = box.matrix;
  return Invert4x4(scratch) ? &scratch : nullptr;
}

}  // namespace

PreparedBox PrepareBox(const EllipsoidRecord& box, bool withInverse) {
  // The record's fourth column is (0, 0, 0, 1), so the affine map gives the corners exactly
  // as the homogeneous one would (w is exactly 1), without its divisions.
  assert(box.matrix.m[0][3] == 0.0f && box.matrix.m[1][3] == 0.0f && box.matrix.m[2][3] == 0.0f &&
         box.matrix.m[3][3] == 1.0f);
  PreparedBox prepared;
  prepared.matrix = box.matrix;
  for (int i = 0; i < 8; ++i) {
    const Vec3f unitCorner{(i & 1) ? 1.0f : -1.0f, (i & 2) ? 1.0f : -1.0f, (i & 4) ? 1.0f : -1.0f};
    prepared.corners[i] = TransformPoint(unitCorner, box.matrix);
  }
  // Minimum and maximum from corner 0 on; a NaN corner after the first never replaces a
  // bound.
  Vec3f& lower = prepared.lower;
  Vec3f& upper = prepared.upper;
  lower = upper = prepared.corners[0];
  for (int i = 1; i < 8; ++i) {
    const Vec3f& c = prepared.corners[i];
    lower = {c.x < lower.x ? c.x : lower.x, c.y < lower.y ? c.y : lower.y,
             c.z < lower.z ? c.z : lower.z};
    upper = {c.x > upper.x ? c.x : upper.x, c.y > upper.y ? c.y : upper.y,
             c.z > upper.z ? c.z : upper.z};
  }
  if (withInverse) {
    prepared.inverse = box.matrix;
    prepared.inverseState =
        Invert4x4(prepared.inverse) ? PreparedBox::Inverse::Valid : PreparedBox::Inverse::Singular;
  }
  return prepared;
}

bool BoxesIntersect(const PreparedBox& a, const PreparedBox& b, std::int32_t mode) {
  if (BoundsSeparate(a, b)) return false;
  if (mode < 0) return true;
  // Every test below can only prove separation, so their order does not change the answer;
  // the cheaper face planes of both boxes run before any edge plane.
  Mat4f scratchA;
  Mat4f scratchB;
  const Mat4f* inverseA = InverseOf(a, scratchA);
  PointSet inA;
  if (inverseA) {
    inA = ToLocal(*inverseA, b.corners);
    if (FacePlaneSeparates(inA)) return false;
  }
  const Mat4f* inverseB = InverseOf(b, scratchB);
  PointSet inB;
  if (inverseB) {
    inB = ToLocal(*inverseB, a.corners);
    if (FacePlaneSeparates(inB)) return false;
  }
  if (mode > 0) {
    if (inverseA && EdgePlaneSeparates(inA)) return false;
    if (inverseB && EdgePlaneSeparates(inB)) return false;
  }
  return true;
}

bool BoxesIntersect(const EllipsoidRecord& a, const EllipsoidRecord& b, std::int32_t mode) {
  return BoxesIntersect(PrepareBox(a, false), PrepareBox(b, false), mode);
}

bool BoxesIntersect(const Mat4f& a, const Mat4f& b, std::int32_t mode) {
  return BoxesIntersect(EllipsoidFromMatrix(a), EllipsoidFromMatrix(b), mode);
}

}  // namespace quillix
