// Views between the host's per-element vector and matrix arrays and the curve cores' value
// types. Included by the curve bindings only (it needs the SDK).
#pragma once

#include <cstring>
#include <span>
#include <type_traits>

#include <xsi_dataarray2D.h>
#include <xsi_mathf.h>

#include "kernel/math_types.h"

namespace quillix::curve {

static_assert(sizeof(XSI::MATH::CVector3f) == sizeof(Vec3f) &&
              alignof(XSI::MATH::CVector3f) == alignof(Vec3f) &&
              std::is_standard_layout_v<XSI::MATH::CVector3f>);
static_assert(sizeof(XSI::MATH::CMatrix4f) == sizeof(Mat4f));

// Element `element`'s input vectors as points: the host's three-float vectors share Vec3f's
// layout, so the cores read them in place.
inline std::span<const Vec3f> pointsAt(const XSI::CDataArray2D<XSI::MATH::CVector3f>& array,
                                       XSI::ULONG element) {
  const auto entries = array[element];
  if (entries.GetCount() == 0) return {};
  return {reinterpret_cast<const Vec3f*>(entries.GetData()), entries.GetCount()};
}

// An output element's entries (after Resize) as points the cores write in place.
inline std::span<Vec3f> mutablePoints(XSI::CDataArray2D<XSI::MATH::CVector3f>::Accessor& entries) {
  if (entries.GetCount() == 0) return {};
  return {reinterpret_cast<Vec3f*>(entries.GetData()), entries.GetCount()};
}

// Sizes element `element`'s output to `values` and copies them in.
template <class HostT, class CoreT>
void writeArray(XSI::CDataArray2D<HostT>& out, XSI::ULONG element, std::span<const CoreT> values) {
  static_assert(sizeof(HostT) == sizeof(CoreT));
  auto entries = out.Resize(element, static_cast<XSI::ULONG>(values.size()));
  if (entries.GetCount() != 0) {
    std::memcpy(static_cast<void*>(entries.GetData()), values.data(),
                entries.GetCount() * sizeof(CoreT));
  }
}

}  // namespace quillix::curve
