// Ellipsoid records and the gap between two ellipsoids along their centre line.
//
// An ellipsoid (and, for the box nodes, a box) is the image of a unit shape centred at the
// origin under a 4×4 row-vector matrix. The record splits that matrix into scale, axes and
// centre and keeps an affine copy of it; all arithmetic is single precision.
#pragma once

#include "core/math/math_types.h"

namespace quillix {

struct EllipsoidRecord {
  Vec3f scale;   // lengths of rows 0, 1, 2 (their first three components)
  Vec3f axisX;   // row 0 divided by its length; all zero when the length is exactly 0
  Vec3f axisY;   // row 1, same rule
  Vec3f axisZ;   // row 2, same rule
  Vec3f centre;  // row 3, first three components
  // Rows 0 to 2 are axis × scale with 0 in the fourth column, row 3 is (centre, 1): the
  // input with any projective terms dropped, shear and non-uniform scale kept.
  Mat4f matrix;
};

// The record of `m` (any 4×4 matrix; its fourth column is dropped, a zero row gives a zero
// axis and scale).
EllipsoidRecord EllipsoidFromMatrix(const Mat4f& m);

// A record together with the inverse of its matrix, computed once so that a record met in
// many pairs (a single input against an array) is inverted only once.
struct PreparedEllipsoid {
  EllipsoidRecord record;
  // The inverse of record.matrix; when that matrix is singular this is the forward matrix
  // itself, which the distance then uses in place of the inverse.
  Mat4f inverse;
};

// Copies `record` and inverts its matrix (unchecked, see PreparedEllipsoid::inverse).
PreparedEllipsoid PrepareEllipsoid(const EllipsoidRecord& record);

// Gap between the surfaces of `a` and `b` measured along the line joining their centres:
// the centre distance minus the half-chord each ellipsoid shows along that line, never
// negative. 0 when the centres coincide or either centre lies inside or on the other
// ellipsoid. This is a fast proximity measure, not the true minimum distance. A NaN gap
// clamps to 0.
float EllipsoidDistance(const PreparedEllipsoid& a, const PreparedEllipsoid& b);

// EllipsoidDistance of the ellipsoids of two matrices (each the image of the unit sphere
// under its matrix; the fourth column is ignored), prepared here.
float EllipsoidDistance(const Mat4f& a, const Mat4f& b);

}  // namespace quillix
