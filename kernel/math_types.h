// Plain value types shared by the host-neutral cores.
#pragma once

namespace quillix {

// Three single-precision floats, laid out like the host's 3-vector (x, y, z), so that a
// binding can view a host array of vectors as a span of Vec3f.
struct Vec3f {
  float x = 0.0f;
  float y = 0.0f;
  float z = 0.0f;
};

// Three double-precision coordinates, for the cores that work in double (scene measures,
// object spheres).
struct Vec3d {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
};

// 4×4 single-precision matrix in the row-vector convention: a point is the row
// (x, y, z, 1) times the matrix; rows 0 to 2 hold the scaled axes, row 3 the translation.
// Laid out like the host's 4×4 matrix (row-major m[row][column]).
struct Mat4f {
  float m[4][4] = {};
};

}  // namespace quillix
