// Views between the host's data arrays and the cores' value types: the host's three-float
// vectors share Vec3f's layout and its 4×4 matrices Mat4f's, so the cores read and write them
// in place.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

#include <xsi_dataarray2D.h>
#include <xsi_mathf.h>

#include "core/math/math_types.h"

namespace quillix::plugin {

static_assert(sizeof(XSI::MATH::CVector3f) == sizeof(Vec3f) &&
              alignof(XSI::MATH::CVector3f) == alignof(Vec3f) &&
              std::is_standard_layout_v<XSI::MATH::CVector3f>);
static_assert(sizeof(XSI::MATH::CMatrix4f) == sizeof(Mat4f));
static_assert(sizeof(XSI::LONG) == sizeof(std::int32_t));

// Element `element`'s entries of a host array, viewed as the core type `Core` of the same
// size (CVector3f as Vec3f, LONG as int32_t, ...). Empty when the element has none.
template <class Core, class Host>
std::span<const Core> ElementSpan(const XSI::CDataArray2D<Host>& array, XSI::ULONG element) {
  static_assert(sizeof(Core) == sizeof(Host));
  const auto entries = array[element];
  if (entries.GetCount() == 0) return {};
  return {reinterpret_cast<const Core*>(entries.GetData()), entries.GetCount()};
}

// Element `element`'s input vectors as points.
inline std::span<const Vec3f> PointsAt(const XSI::CDataArray2D<XSI::MATH::CVector3f>& array,
                                       XSI::ULONG element) {
  return ElementSpan<Vec3f>(array, element);
}

// The first sub-array of a singleton array port (a mesh's positions, its description); empty
// when the port holds none.
template <class Core, class Host>
std::span<const Core> FirstSubArray(const XSI::CDataArray2D<Host>& array) {
  if (array.GetCount() == 0) return {};
  return ElementSpan<Core>(array, 0);
}

// An output element's entries (after Resize) as points the cores write in place.
inline std::span<Vec3f> MutablePoints(XSI::CDataArray2D<XSI::MATH::CVector3f>::Accessor& entries) {
  if (entries.GetCount() == 0) return {};
  return {reinterpret_cast<Vec3f*>(entries.GetData()), entries.GetCount()};
}

// Sizes element `element`'s output to `values` and copies them in.
template <class Host, class Core>
void WriteArray(XSI::CDataArray2D<Host>& out, XSI::ULONG element, std::span<const Core> values) {
  static_assert(sizeof(Host) == sizeof(Core));
  auto entries = out.Resize(element, static_cast<XSI::ULONG>(values.size()));
  if (entries.GetCount() != 0) {
    std::memcpy(static_cast<void*>(entries.GetData()), values.data(),
                entries.GetCount() * sizeof(Core));
  }
}

// The host's row-vector 4×4 matrix as the cores' Mat4f (same layout, same convention).
inline Mat4f ToMat4f(const XSI::MATH::CMatrix4f& matrix) {
  Mat4f m;
  std::memcpy(m.m, matrix.Get(), sizeof(m.m));
  return m;
}

}  // namespace quillix::plugin
