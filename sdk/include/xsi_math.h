// Free functions of the scene maths: angle conversions and mapping between an object's space
// and world space.
#pragma once

#include <xsi_transformation.h>
#include <xsi_vector3.h>

namespace XSI {
namespace MATH {

inline constexpr double PI = 3.14159265358979323846;

inline constexpr double DegreesToRadians(double degrees) { return degrees * (PI / 180.0); }
inline constexpr double RadiansToDegrees(double radians) { return radians * (180.0 / PI); }

/// The point `position`, given in the space of an object whose global transform is
/// `objectTransform`, in world space: position × S × R × T.
CVector3 MapObjectPositionToWorldSpace(const CTransformation& objectTransform,
                                       const CVector3& position);
/// The inverse mapping: a world-space point in the object's space. A singular transform (zero
/// scaling) maps every point to the origin.
CVector3 MapWorldPositionToObjectSpace(const CTransformation& objectTransform,
                                       const CVector3& position);

}  // namespace MATH
}  // namespace XSI
