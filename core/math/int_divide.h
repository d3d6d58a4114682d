// Integer division with quotient and remainder that never faults.
#pragma once

#include <cstdint>

namespace quillix {

struct QuotientRemainder {
  std::int32_t quotient = 0;
  std::int32_t remainder = 0;
};

// Divides `value` by `divisor`, truncating toward zero; the remainder has the sign of
// `value` (or is 0). A zero divisor yields 0 and 0. The one overflowing pair,
// -2147483648 / -1, yields quotient -2147483648 and remainder 0 (the quotient wraps as
// two's-complement negation would), instead of faulting.
QuotientRemainder divideInt(std::int32_t value, std::int32_t divisor);

}  // namespace quillix
