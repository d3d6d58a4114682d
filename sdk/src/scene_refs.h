// Helpers of the SDK's scene classes: what a CRef points at on the host side.
#pragma once

#include <memory>

#include <xsi_ref.h>
#include <xsihost/object.h>

namespace XSI::scene_detail {

/// The host object behind `ref` as a `T`, or null when it is something else.
template <class T>
std::shared_ptr<T> as(const CRef& ref) {
  return std::dynamic_pointer_cast<T>(ref.GetObjectHandle());
}

/// `ref` when `ok`, else an empty reference: a view class binds only to what it can serve.
inline CRef bindIf(const CRef& ref, bool ok) { return ok ? ref : CRef(); }

}  // namespace XSI::scene_detail
