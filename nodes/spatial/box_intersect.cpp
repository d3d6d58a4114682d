#include "nodes/spatial/box_intersect.h"

#include "nodes/spatial/affine.h"

namespace quillix {
namespace {

using Points = std::array<Vec3f, 8>;

bool BoundsSeparate(const PreparedBox& a, const PreparedBox& b) {
  return a.lower.x > b.upper.x || a.lower.y > b.upper.y || a.lower.z > b.upper.z ||
         b.lower.x > a.upper.x || b.lower.y > a.upper.y || b.lower.z > a.upper.z;
}

// Whether one face plane of the unit cube has all eight points strictly beyond it.
bool FacePlaneSeparates(const Points& local) {
  const auto coordinate = [&](int point, int axis) {
    const Vec3f& p = local[point];
    return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
  };
  for (int axis = 0; axis < 3; ++axis) {
    int below = 0;
    int above = 0;
    for (int i = 0; i < 8; ++i) {
      const float c = coordinate(i, axis);
      if (c < -1.0f) {
        ++below;
      } else if (c > 1.0f) {
        ++above;
      }
    }
    if (below == 8 || above == 8) return true;
  }
  return false;
}

// Whether one of the twelve planes through the cube's edges, at 45° to the two faces that
// meet there, has all eight points strictly beyond it. Each point is counted for the first
// plane of its coordinate pair that it lies beyond, in a fixed order; a point beyond two
// planes (near a corner) thus counts for one only, which keeps the answer conservative.
bool EdgePlaneSeparates(const Points& local) {
  static constexpr int kPairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};
  for (const auto& pair : kPairs) {
    int counts[4] = {0, 0, 0, 0};
    for (const Vec3f& p : local) {
      const float c[3] = {p.x, p.y, p.z};
      const float u = c[pair[0]];
      const float v = c[pair[1]];
      if (u + v > 2.0f) {
        ++counts[0];
      } else if (v - u > 2.0f) {
        ++counts[1];
      } else if (u - v > 2.0f) {
        ++counts[2];
      } else if (-u - v > 2.0f) {
        ++counts[3];
      }
    }
    for (int count : counts) {
      if (count == 8) return true;
    }
  }
  return false;
}

// Runs the local tests of `box` against the world corners of the other box. Returns true
// when they prove separation; a singular box proves nothing.
bool LocalTestsSeparate(const PreparedBox& box, const Points& otherCorners, bool edgePlanes) {
  Mat4f inverse;
  if (box.inverseState == PreparedBox::Inverse::Valid) {
    inverse = box.inverse;
  } else if (box.inverseState == PreparedBox::Inverse::Singular) {
    return false;
  } else {
    inverse = box.matrix;
    if (!Invert4x4(inverse)) return false;
  }
  Points local;
  for (int i = 0; i < 8; ++i) local[i] = TransformPoint(otherCorners[i], inverse);
  return FacePlaneSeparates(local) || (edgePlanes && EdgePlaneSeparates(local));
}

}  // namespace

PreparedBox PrepareBox(const EllipsoidRecord& box, bool withInverse) {
  PreparedBox prepared;
  prepared.matrix = box.matrix;
  for (int i = 0; i < 8; ++i) {
    const Vec3f unit{(i & 1) ? 1.0f : -1.0f, (i & 2) ? 1.0f : -1.0f, (i & 4) ? 1.0f : -1.0f};
    prepared.corners[i] = TransformPoint(unit, box.matrix);
  }
  prepared.lower = prepared.corners[0];
  prepared.upper = prepared.corners[0];
  for (int i = 1; i < 8; ++i) {
    const Vec3f& c = prepared.corners[i];
    if (c.x < prepared.lower.x) prepared.lower.x = c.x;
    if (c.y < prepared.lower.y) prepared.lower.y = c.y;
    if (c.z < prepared.lower.z) prepared.lower.z = c.z;
    if (c.x > prepared.upper.x) prepared.upper.x = c.x;
    if (c.y > prepared.upper.y) prepared.upper.y = c.y;
    if (c.z > prepared.upper.z) prepared.upper.z = c.z;
  }
  if (withInverse) {
    prepared.inverse = box.matrix;
    prepared.inverseState = Invert4x4(prepared.inverse) ? PreparedBox::Inverse::Valid
                                                        : PreparedBox::Inverse::Singular;
  }
  return prepared;
}

bool BoxesIntersect(const PreparedBox& a, const PreparedBox& b, std::int32_t mode) {
  if (BoundsSeparate(a, b)) return false;
  if (mode < 0) return true;
  const bool edgePlanes = mode > 0;
  if (LocalTestsSeparate(a, b.corners, edgePlanes)) return false;
  return !LocalTestsSeparate(b, a.corners, edgePlanes);
}

bool BoxesIntersect(const EllipsoidRecord& a, const EllipsoidRecord& b, std::int32_t mode) {
  return BoxesIntersect(PrepareBox(a, false), PrepareBox(b, false), mode);
}

}  // namespace quillix
