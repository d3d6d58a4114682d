#include "nodes/utility/int_bits.h"

#include <algorithm>
#include <cassert>

namespace quillix {

std::int32_t byteOfInt(std::int32_t value, int byteIndex) {
  assert(byteIndex >= 0 && byteIndex < 4);
  // Shifting the unsigned pattern keeps the sign bit from smearing into the byte.
  return static_cast<std::int32_t>((static_cast<std::uint32_t>(value) >> (8 * byteIndex)) & 0xFFu);
}

std::int32_t testBit(std::int32_t value, std::int32_t bit) {
  const std::uint32_t position = static_cast<std::uint32_t>(bit) & 31u;
  return static_cast<std::int32_t>((static_cast<std::uint32_t>(value) >> position) & 1u);
}

void testBits(std::span<const std::int32_t> values, std::span<const std::int32_t> bits,
              std::span<std::int32_t> out) {
  const std::size_t count = std::min(values.size(), bits.size());
  assert(out.size() >= count);
  for (std::size_t i = 0; i < count; ++i) out[i] = testBit(values[i], bits[i]);
}

}  // namespace quillix
