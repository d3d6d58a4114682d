#include "core/spatial/object_spheres.h"

#include <cassert>
#include <cmath>

#include "core/math/vec3_ops.h"

namespace quillix {
namespace {

// Longest row of spheres a bone may produce. Far beyond any real bone (a bone 10^6 units
// long), it keeps a corrupt length from asking for an unbounded allocation.
constexpr double kMaxBoneSpheres = 3.0e6;

double MeanAbsoluteScaling(const ObjectTransform& transform) {
  const Vec3d s = transform.Scaling();
  return (std::fabs(s.x) + std::fabs(s.y) + std::fabs(s.z)) * 0.3333333333333333;
}

double SizeFactor(const SceneObjectInfo& object) {
  if (object.type == L"cube") return object.length * 0.5;
  if (object.type == L"sphere") return object.radius;
  if (object.type == L"root" || object.type == L"eff") return object.size * 0.8;
  return 1.0;
}

}  // namespace

std::size_t SphereCount(const SceneObjectInfo& object) {
  if (!object.valid) return 0;
  if (object.type != L"bone") return 1;
  const double count = std::round(std::fabs(object.length) * 3.0);  // halves away from zero
  // Written so that NaN also falls to the minimum of two.
  if (!(count >= 2.0)) return 2;
  return static_cast<std::size_t>(count < kMaxBoneSpheres ? count : kMaxBoneSpheres);
}

std::size_t ObjectToSpheres(const SceneObjectInfo& object, const ObjectTransform& transform,
                            double scale, double boneScale, std::vector<Sphere>* out) {
  const double s = std::fabs(scale);
  const double b = std::fabs(boneScale);
  const std::size_t count = SphereCount(object);
  if (count == 0 || out == nullptr) return count;
  if (out->size() < count) out->resize(count);

  const double m = MeanAbsoluteScaling(transform);
  const Vec3d start = transform.Position();
  if (object.type != L"bone") {
    (*out)[0] = {start.x, start.y, start.z, m * s * SizeFactor(object)};
    return count;
  }
  const Vec3d tip = transform.MapToWorld({object.length, 0.0, 0.0});
  const Vec3d delta = Subtract(tip, start);
  const double size = std::fabs(object.size);
  const double last = static_cast<double>(count - 1);
  for (std::size_t i = 0; i < count; ++i) {
    const double f = static_cast<double>(i) / last;
    // 0.333, not one third: the taper runs from 0.333 to 0.208 of the bone's size.
    (*out)[i] = {start.x + f * delta.x, start.y + f * delta.y, start.z + f * delta.z,
                 (0.333 - f * 0.125) * size * m * b};
  }
  return count;
}

std::vector<Sphere> SpheresOfObjects(std::span<const SceneObjectInfo> objects,
                                     std::span<const ObjectTransform* const> transforms,
                                     double scale, double boneScale) {
  assert(objects.size() == transforms.size());
  std::size_t total = 0;
  for (const SceneObjectInfo& object : objects) total += SphereCount(object);
  std::vector<Sphere> spheres;
  spheres.reserve(total);
  std::vector<Sphere> work;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const std::size_t count = ObjectToSpheres(objects[i], *transforms[i], scale, boneScale, &work);
    spheres.insert(spheres.end(), work.begin(), work.begin() + static_cast<std::ptrdiff_t>(count));
  }
  return spheres;
}

}  // namespace quillix
