#include "core/array/array_order.h"

namespace quillix {

std::uint32_t RotationOffset(std::int32_t shift, std::uint32_t length) {
  assert(length > 0);
  // k = -shift, negated in unsigned arithmetic so that -2147483648 maps onto itself instead of
  // overflowing.
  std::uint32_t k = 0u - static_cast<std::uint32_t>(shift);
  if (static_cast<std::int32_t>(k) < 0) {
    // Lift a negative k to a positive value congruent to it modulo length: 0 - k is the
    // magnitude of the negative k (2147483648 for the unchanged minimum).
    const std::uint32_t magnitude = 0u - k;
    k += (magnitude / length + 1u) * length;
  }
  return k;
}

}  // namespace quillix
