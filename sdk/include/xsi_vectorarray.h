// The growable arrays of the double-precision scene vectors (CVector3Array, CVector4Array).
#pragma once

#include <vector>

#include <xsi_decl.h>
#include <xsi_status.h>

namespace XSI {
namespace MATH {

template <class V>
class CVectorArrayOf {
 public:
  CVectorArrayOf() = default;

  LONG GetCount() const { return static_cast<LONG>(items_.size()); }
  /// Grows or shrinks to `count` entries; new entries are zero vectors. A negative count is
  /// refused with CStatus::InvalidArgument.
  CStatus Resize(LONG count) {
    if (count < 0) return CStatus::InvalidArgument;
    items_.resize(static_cast<size_t>(count));
    return CStatus::OK;
  }
  /// Appends one vector and returns its index.
  LONG Add(const V& v) {
    items_.push_back(v);
    return GetCount() - 1;
  }
  CStatus Clear() {
    items_.clear();
    return CStatus::OK;
  }
  const V& operator[](LONG index) const { return items_[static_cast<size_t>(index)]; }
  V& operator[](LONG index) { return items_[static_cast<size_t>(index)]; }

 private:
  std::vector<V> items_;
};

}  // namespace MATH
}  // namespace XSI
