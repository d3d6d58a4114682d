#include "core/math/half_float.h"

#include <bit>

namespace quillix {

float HalfBitsToFloat(std::uint16_t bits) {
  const std::uint32_t sign = static_cast<std::uint32_t>(bits & 0x8000u) << 16;
  std::uint32_t exponent = (bits >> 10) & 0x1Fu;
  std::uint32_t mantissa = bits & 0x3FFu;
  std::uint32_t out;
  if (exponent == 0x1Fu) {
    out = sign | 0x7F800000u | (mantissa << 13);  // infinity or NaN, payload kept
  } else if (exponent != 0) {
    out = sign | ((exponent + 112u) << 23) | (mantissa << 13);
  } else if (mantissa == 0) {
    out = sign;  // signed zero
  } else {
    // Subnormal half: normalise into the float's wider exponent range.
    exponent = 113u;
    while ((mantissa & 0x400u) == 0) {
      mantissa <<= 1;
      --exponent;
    }
    out = sign | (exponent << 23) | ((mantissa & 0x3FFu) << 13);
  }
  return std::bit_cast<float>(out);
}

namespace {
struct HalfTable {
  float values[65536];
  HalfTable() {
    for (std::uint32_t i = 0; i < 65536u; ++i)
      values[i] = HalfBitsToFloat(static_cast<std::uint16_t>(i));
  }
};
}  // namespace

const float* HalfToFloatTable() {
  static const HalfTable table;
  return table.values;
}

}  // namespace quillix
