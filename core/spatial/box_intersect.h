// Conservative intersection test of two oriented boxes.
//
// A box is the image of the cube [-1, 1]³ under the matrix of an EllipsoidRecord (rotation,
// non-uniform scale and shear allowed). The test is a cascade of cheap separation proofs;
// it answers false only when one of them proves the boxes apart, so boxes that truly
// intersect (touching included) always give true, while some separated pairs give true as
// well.
#pragma once

#include <array>
#include <cstdint>

#include "core/math/math_types.h"
#include "core/spatial/ellipsoid.h"

namespace quillix {

// What the test derives from one box: its world corners and bounds and, when asked for up
// front, the inverse of its matrix. A box met in many pairs is prepared once.
struct PreparedBox {
  Mat4f matrix;                  // the record's affine matrix
  std::array<Vec3f, 8> corners;  // corner i has x, y, z from bits 0, 1, 2 of i (0 → -1, 1 → +1)
  Vec3f lower;                   // component-wise minimum of the corners
  Vec3f upper;                   // component-wise maximum of the corners
  enum class Inverse : std::uint8_t { NotComputed, Valid, Singular };
  Inverse inverseState = Inverse::NotComputed;
  Mat4f inverse;  // meaningful only when inverseState is Valid
};

// Prepares `box`. With `withInverse` the matrix is inverted now; without, each pair test
// that reaches the local tests inverts it again (cheaper for a box that is used once).
PreparedBox PrepareBox(const EllipsoidRecord& box, bool withInverse);

// Whether the boxes may intersect, by `mode`:
//  - negative: world bounding boxes only;
//  - 0: bounds, then the 6 face planes of each box in that box's own space;
//  - positive: as 0, plus the 12 edge-diagonal planes of each box.
// Bounds that merely touch, and points lying exactly on a plane, do not separate. A box whose
// matrix is singular (determinant exactly 0) skips its own local tests. The answer does not
// depend on whether either box was prepared with its inverse.
bool BoxesIntersect(const PreparedBox& a, const PreparedBox& b, std::int32_t mode);

// The same for two records, each prepared without its inverse.
bool BoxesIntersect(const EllipsoidRecord& a, const EllipsoidRecord& b, std::int32_t mode);

// The same for the boxes of two matrices (each the image of [-1, 1]³ under its matrix, the
// fourth column ignored, see EllipsoidFromMatrix).
bool BoxesIntersect(const Mat4f& a, const Mat4f& b, std::int32_t mode);

}  // namespace quillix
