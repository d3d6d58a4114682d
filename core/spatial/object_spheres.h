// Bounding spheres of scene objects, for use as cheap collision proxies.
//
// The scene itself stays with the caller: an object reaches this core as its type string
// and the primitive parameters it may need, and its placement as a transformation.
// Computation is in double precision.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "core/math/math_types.h"

namespace quillix {

// One sphere: centre and radius.
struct Sphere {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  double radius = 0.0;
};

// What the spheres of one object depend on. Parameters the object's primitive lacks are 0.
struct SceneObjectInfo {
  bool valid = false;
  std::wstring type;    // "bone", "cube", "sphere", "root", "eff" or anything else
  double length = 0.0;  // primitive parameter "length"
  double radius = 0.0;  // primitive parameter "radius"
  double size = 0.0;    // primitive parameter "size"
};

// An object's global placement, as the caller's scene knows it: its scaling and position,
// and the mapping of an object-space point to world space.
class ObjectTransform {
 public:
  virtual ~ObjectTransform() = default;
  virtual Vec3d Scaling() const = 0;
  virtual Vec3d Position() const = 0;
  virtual Vec3d MapToWorld(Vec3d objectPoint) const = 0;
};

// Number of spheres that `object` yields: 0 when it is not valid, for a bone three per unit
// of |length| rounded half away from zero and at least 2, otherwise 1.
std::size_t SphereCount(const SceneObjectInfo& object);

// Spheres of `object` placed by `transform`, scaled by |scale| (bones: |boneScale|).
// Returns SphereCount(object). When `out` is given it is grown to that count if shorter
// (never shrunk) and its first count entries are written.
//  - Bone: a row of spheres from the bone's root (the transform's position) to its tip (the
//    object-space point (length, 0, 0) mapped to world), radii tapering from 0.333 to 0.208
//    times |size| × mean scaling × |boneScale|.
//  - Anything else: one sphere at the position, radius mean scaling × |scale| × a size that
//    follows the type ("cube": length/2, "sphere": radius, "root"/"eff": 0.8 size, else 1).
std::size_t ObjectToSpheres(const SceneObjectInfo& object, const ObjectTransform& transform,
                            double scale, double boneScale, std::vector<Sphere>* out);

// Spheres of a list of objects with their placements (parallel spans; an object that is not
// valid contributes nothing), in list order. The result is sized exactly: the objects are
// counted first, then filled.
std::vector<Sphere> SpheresOfObjects(std::span<const SceneObjectInfo> objects,
                                     std::span<const ObjectTransform* const> transforms,
                                     double scale, double boneScale);

}  // namespace quillix
