#include "core/math/int_bits.h"

#include <cassert>

namespace quillix {

std::int32_t ByteOfInt(std::int32_t value, int byteIndex) {
  assert(byteIndex >= 0 && byteIndex < 4);
  // Shifting the unsigned pattern keeps the sign bit from smearing into the byte.
  return static_cast<std::int32_t>((static_cast<std::uint32_t>(value) >> (8 * byteIndex)) & 0xFFu);
}

std::int32_t TestBit(std::int32_t value, std::int32_t bit) {
  const std::uint32_t position = static_cast<std::uint32_t>(bit) & 31u;
  return static_cast<std::int32_t>((static_cast<std::uint32_t>(value) >> position) & 1u);
}

}  // namespace quillix
