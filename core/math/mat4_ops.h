// 4×4 matrix helpers of the spatial nodes, single precision, row-vector convention.
#pragma once

#include "core/math/math_types.h"

namespace quillix {

// Inverts `m` in place as its adjugate divided by its determinant (cofactor expansion).
// Returns false and leaves `m` untouched when the determinant is exactly 0.0; any other
// determinant, however small, is divided by. A NaN determinant is not 0.0, so a matrix
// holding NaN comes back filled with NaN and the call returns true.
bool Invert4x4(Mat4f& m);

// The point `p` as the row (x, y, z, 1) times `m`, each of the first three components
// divided by the fourth (homogeneous) one.
Vec3f TransformPoint(Vec3f p, const Mat4f& m);

}  // namespace quillix
