// First contact time of two oriented boxes moving over one time step.
#pragma once

#include <cstdint>

#include "core/math/math_types.h"
#include "core/spatial/box_intersect.h"
#include "core/spatial/ellipsoid.h"

namespace quillix {

// A box moving over one step, unpacked from a 4×4 matrix that carries the box's axes in
// rows 0 to 2, its start centre in row 3, its displacement over the step in the fourth
// column (m[0][3], m[1][3], m[2][3]) and its subdivision count in m[3][3].
struct MovingBox {
  EllipsoidRecord box;  // from the matrix with its fourth column forced to (0, 0, 0, 1)
  Vec3f velocity;
  float subdivisions = 0.0f;
};

// Unpacks `packed` (any 4×4 matrix): velocity and count are read before the record drops
// the fourth column.
MovingBox MovingBoxFromMatrix(const Mat4f& packed);

// Number of sub-steps beyond the first for a pair of boxes: the mean of their two counts
// (summed in single precision, halved in double), rounded half away from zero. Values
// beyond the 32-bit range saturate at its ends; NaN gives 0.
std::int32_t SubdivisionDepth(float subdivisionsA, float subdivisionsB);

struct LineParameters {
  float t1 = 0.0f;
  float t2 = 0.0f;
};

// Distances along the lines p1 + t1·d1 and p2 + t2·d2, measured along the normalised
// directions, to the two mutually closest points. Parallel lines, and a direction shorter
// than 1e-15 that cannot be normalised, give t1 = t2 = 0.
LineParameters ClosestLineParameters(Vec3f p1, Vec3f d1, Vec3f p2, Vec3f d2);

// Fraction of the step at which box `a` moving by `velocityA` first touches box `b` moving
// by `velocityB`, tested with BoxesIntersect(…, mode): 0 when they intersect at the start,
// -1 when no contact is found, otherwise a non-negative time that may exceed 1.
//  - One box moving: the one time at which its centre passes nearest the other's centre.
//  - Both moving, depth < 1: the one time at which the centres' paths pass closest (a
//    heuristic: parallel paths give time 0 and so miss head-on approaches).
//  - Both moving, depth ≥ 1: the step cut into depth + 1 equal sub-steps, each tested in
//    order as above; the first contact found wins.
float BoxesContactTime(const EllipsoidRecord& a, Vec3f velocityA, const EllipsoidRecord& b,
                       Vec3f velocityB, std::int32_t mode, std::int32_t depth);

// A moving box with its start position prepared for the box test, for a box met in many
// pairs (see PrepareBox).
struct PreparedMovingBox {
  MovingBox moving;
  PreparedBox start;
};

// Prepares the start position of `moving`; `withInverse` as for PrepareBox.
PreparedMovingBox PrepareMovingBox(const MovingBox& moving, bool withInverse);

// BoxesContactTime of two prepared packed boxes, with the depth from their two subdivision
// counts (SubdivisionDepth). The answer does not depend on how either box was prepared.
float BoxesContactTime(const PreparedMovingBox& a, const PreparedMovingBox& b, std::int32_t mode);

// BoxesContactTime of two packed matrices (see MovingBoxFromMatrix), prepared here.
float BoxesContactTime(const Mat4f& packedA, const Mat4f& packedB, std::int32_t mode);

}  // namespace quillix
