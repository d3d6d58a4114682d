#include "core/spatial/moving_box.h"

#include <cmath>
#include <limits>

#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

// The record of `box` moved so that its centre is `centre`; axes and scale are kept.
EllipsoidRecord MovedTo(const EllipsoidRecord& box, Vec3f centre) {
  EllipsoidRecord moved = box;
  moved.centre = centre;
  moved.matrix.m[3][0] = centre.x;
  moved.matrix.m[3][1] = centre.y;
  moved.matrix.m[3][2] = centre.z;
  return moved;
}

// Contact time when only `mover` moves: it is placed where its centre passes nearest the
// resting box's centre, and that one position is tested.
float OneMovingBox(const EllipsoidRecord& mover, Vec3f velocity, float speed,
                   const EllipsoidRecord& resting, std::int32_t mode, bool moverIsA) {
  const Vec3f direction = Divide(velocity, speed);
  const float along = Dot(Subtract(resting.centre, mover.centre), direction);
  if (along < 0.0f) return -1.0f;
  const EllipsoidRecord moved = MovedTo(mover, Advance(mover.centre, along, direction));
  const bool touch =
      moverIsA ? BoxesIntersect(moved, resting, mode) : BoxesIntersect(resting, moved, mode);
  return touch ? along / speed : -1.0f;
}

// Contact time after the start test has failed, without subdivision.
float ContactAfterStart(const EllipsoidRecord& a, Vec3f velocityA, const EllipsoidRecord& b,
                        Vec3f velocityB, std::int32_t mode) {
  const float speedA = Length(velocityA);
  const float speedB = Length(velocityB);
  // A NaN speed is not 0.0 and so counts as moving.
  const bool aMoves = !(speedA == 0.0f);
  const bool bMoves = !(speedB == 0.0f);
  if (!aMoves && !bMoves) return -1.0f;
  if (!bMoves) return OneMovingBox(a, velocityA, speedA, b, mode, true);
  if (!aMoves) return OneMovingBox(b, velocityB, speedB, a, mode, false);

  const LineParameters closest = ClosestLineParameters(a.centre, velocityA, b.centre, velocityB);
  if (closest.t1 < 0.0f && closest.t2 < 0.0f) return -1.0f;
  // The larger distance along the paths picks the candidate time, not the larger time.
  const float time = closest.t1 >= closest.t2 ? closest.t1 / speedA : closest.t2 / speedB;
  const bool touch = BoxesIntersect(MovedTo(a, Advance(a.centre, time, velocityA)),
                                    MovedTo(b, Advance(b.centre, time, velocityB)), mode);
  return touch ? time : -1.0f;
}

float ContactDirect(const EllipsoidRecord& a, Vec3f velocityA, const EllipsoidRecord& b,
                    Vec3f velocityB, std::int32_t mode) {
  if (BoxesIntersect(a, b, mode)) return 0.0f;
  return ContactAfterStart(a, velocityA, b, velocityB, mode);
}

// Both boxes moving with depth ≥ 1: the direct method restarted on each sub-step, so that
// contact already present at a sub-step's start is reported at that start.
float ContactSubdivided(const EllipsoidRecord& a, Vec3f velocityA, const EllipsoidRecord& b,
                        Vec3f velocityB, std::int32_t mode, std::int32_t depth) {
  const float step = 1.0f / static_cast<float>(static_cast<std::int64_t>(depth) + 1);
  const Vec3f subVelocityA = Scale(velocityA, step);
  const Vec3f subVelocityB = Scale(velocityB, step);
  for (std::int64_t k = 0; k <= depth; ++k) {
    const float start = static_cast<float>(k) * step;
    const float r =
        ContactDirect(MovedTo(a, Advance(a.centre, start, velocityA)), subVelocityA,
                      MovedTo(b, Advance(b.centre, start, velocityB)), subVelocityB, mode);
    if (r >= 0.0f) return (static_cast<float>(k) + r) * step;
  }
  return -1.0f;
}

// Contact time once the start test has failed, by depth.
float ContactAfterFailedStart(const EllipsoidRecord& a, Vec3f velocityA, const EllipsoidRecord& b,
                              Vec3f velocityB, std::int32_t mode, std::int32_t depth) {
  const bool bothMove = !(Length(velocityA) == 0.0f) && !(Length(velocityB) == 0.0f);
  if (depth >= 1 && bothMove) return ContactSubdivided(a, velocityA, b, velocityB, mode, depth);
  return ContactAfterStart(a, velocityA, b, velocityB, mode);
}

}  // namespace

MovingBox MovingBoxFromMatrix(const Mat4f& packed) {
  return {EllipsoidFromMatrix(packed),
          {packed.m[0][3], packed.m[1][3], packed.m[2][3]},
          packed.m[3][3]};
}

std::int32_t SubdivisionDepth(float subdivisionsA, float subdivisionsB) {
  const float sum = subdivisionsA + subdivisionsB;
  const double half = static_cast<double>(sum) / 2.0;
  const double rounded = half > 0.0 ? half + 0.5 : half - 0.5;
  if (std::isnan(rounded)) return 0;
  if (rounded >= 2147483648.0) return std::numeric_limits<std::int32_t>::max();
  if (rounded <= -2147483649.0) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(rounded);  // truncates towards zero
}

LineParameters ClosestLineParameters(Vec3f p1, Vec3f d1, Vec3f p2, Vec3f d2) {
  const float length1 = Length(d1);
  const float length2 = Length(d2);
  // A direction too short to normalise has no line to follow; it is treated like parallel.
  if (length1 < 1e-15f || length2 < 1e-15f) return {};
  d1 = Divide(d1, length1);
  d2 = Divide(d2, length2);
  const Vec3f normal = Cross(d1, d2);
  const float normalSquared = Dot(normal, normal);
  if (normalSquared < 1e-12f) return {};
  const Vec3f w = Subtract(p2, p1);
  return {Dot(Cross(w, d2), normal) / normalSquared, Dot(Cross(w, d1), normal) / normalSquared};
}

float BoxesContactTime(const EllipsoidRecord& a, Vec3f velocityA, const EllipsoidRecord& b,
                       Vec3f velocityB, std::int32_t mode, std::int32_t depth) {
  if (BoxesIntersect(a, b, mode)) return 0.0f;
  return ContactAfterFailedStart(a, velocityA, b, velocityB, mode, depth);
}

PreparedMovingBox PrepareMovingBox(const MovingBox& moving, bool withInverse) {
  return {moving, PrepareBox(moving.box, withInverse)};
}

float BoxesContactTime(const PreparedMovingBox& a, const PreparedMovingBox& b, std::int32_t mode) {
  if (BoxesIntersect(a.start, b.start, mode)) return 0.0f;
  const MovingBox& ma = a.moving;
  const MovingBox& mb = b.moving;
  return ContactAfterFailedStart(ma.box, ma.velocity, mb.box, mb.velocity, mode,
                                 SubdivisionDepth(ma.subdivisions, mb.subdivisions));
}

float BoxesContactTime(const Mat4f& packedA, const Mat4f& packedB, std::int32_t mode) {
  return BoxesContactTime(PrepareMovingBox(MovingBoxFromMatrix(packedA), false),
                          PrepareMovingBox(MovingBoxFromMatrix(packedB), false), mode);
}

}  // namespace quillix
