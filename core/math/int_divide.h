// Integer division with quotient and remainder that never faults.
#pragma once

#include <cstdint>

namespace quillix {

// Quotient and remainder of one division; value = quotient × divisor + remainder whenever the
// divisor is not zero.
struct QuotientRemainder {
  std::int32_t quotient = 0;
  std::int32_t remainder = 0;
};

// Divides `value` by `divisor`, truncating toward zero; the remainder has the sign of
// `value` (or is 0): 7 / 2 gives 3 and 1, -7 / 2 gives -3 and -1, 7 / -2 gives -3 and 1.
// A zero divisor yields 0 and 0 for every value. The one overflowing pair,
// -2147483648 / -1, yields quotient -2147483648 and remainder 0 (the quotient wraps as
// two's-complement negation would) instead of faulting.
QuotientRemainder DivideInt(std::int32_t value, std::int32_t divisor);

}  // namespace quillix
