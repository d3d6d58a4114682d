#include "nodes/utility/int_divide.h"

#include <cassert>
#include <limits>

namespace quillix {

QuotientRemainder divideInt(std::int32_t value, std::int32_t divisor) {
  if (divisor == 0) return {0, 0};
  // The only quotient outside the int32 range; the hardware would trap on it.
  if (divisor == -1 && value == std::numeric_limits<std::int32_t>::min()) return {value, 0};
  const std::int32_t quotient = value / divisor;
  return {quotient, value - quotient * divisor};
}

void divideArrays(std::span<const std::int32_t> values, std::span<const std::int32_t> divisors,
                  DivisionPart part, std::span<std::int32_t> out) {
  const std::size_t count = values.size() < divisors.size() ? values.size() : divisors.size();
  assert(out.size() >= count);
  for (std::size_t i = 0; i < count; ++i) {
    const QuotientRemainder r = divideInt(values[i], divisors[i]);
    out[i] = part == DivisionPart::Quotient ? r.quotient : r.remainder;
  }
}

}  // namespace quillix
