// Integer division with quotient and remainder that never faults.
#pragma once

#include <cstdint>
#include <span>

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

// Which of the two results an evaluation asks for.
enum class DivisionPart { Quotient, Remainder };

// Element-wise division of two arrays: out[i] = part of divideInt(values[i], divisors[i]) for
// i below min(#values, #divisors). `out` is caller-allocated with at least that many entries.
void divideArrays(std::span<const std::int32_t> values, std::span<const std::int32_t> divisors,
                  DivisionPart part, std::span<std::int32_t> out);

}  // namespace quillix
