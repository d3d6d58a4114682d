#include "core/math/float_class.h"

#include <bit>
#include <cassert>

namespace quillix {
namespace {

constexpr std::uint32_t kExponentMask = 0x7F800000u;
constexpr std::uint32_t kFractionMask = 0x007FFFFFu;
constexpr float kLargestFinite = 3.4028234663852886e+38f;

// Beyond the finite range; the second comparison is unordered, so NaN passes the gate.
bool outOfRange(float value) { return value > kLargestFinite || !(value >= -kLargestFinite); }

}  // namespace

bool isNaNBits(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  return (bits & kExponentMask) == kExponentMask && (bits & kFractionMask) != 0;
}

bool isPositiveInfinityOrNaN(float value) { return outOfRange(value) && !(value <= 0.0f); }

bool isPositiveInfinity(float value) { return outOfRange(value) && value > 0.0f; }

bool isNegativeInfinity(float value) { return outOfRange(value) && value < 0.0f; }

bool classifyFloat(float value, FloatTest test) {
  switch (test) {
    case FloatTest::NaN:
      return isNaNBits(value);
    case FloatTest::PositiveInfinityOrNaN:
      return isPositiveInfinityOrNaN(value);
    case FloatTest::PositiveInfinity:
      return isPositiveInfinity(value);
    case FloatTest::NegativeInfinity:
      return isNegativeInfinity(value);
  }
  return false;
}

void classifyFloats(std::span<const float> values, FloatTest test, std::span<std::int32_t> out) {
  assert(out.size() == values.size());
  for (std::size_t i = 0; i < values.size(); ++i) out[i] = classifyFloat(values[i], test) ? 1 : 0;
}

}  // namespace quillix
