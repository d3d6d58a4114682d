#include "core/math/int_divide.h"

#include <limits>

namespace quillix {

QuotientRemainder DivideInt(std::int32_t value, std::int32_t divisor) {
  if (divisor == 0) return {0, 0};
  // The only quotient outside the int32 range; the hardware would trap on it.
  if (divisor == -1 && value == std::numeric_limits<std::int32_t>::min()) return {value, 0};
  const std::int32_t quotient = value / divisor;
  return {quotient, value - quotient * divisor};
}

}  // namespace quillix
