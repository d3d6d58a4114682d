#include "core/math/float_class.h"

#include <bit>
#include <cassert>

namespace quillix {
namespace {

constexpr std::uint32_t kExponentMask = 0x7F800000u;
constexpr std::uint32_t kFractionMask = 0x007FFFFFu;
constexpr float kLargestFinite = 3.4028234663852886e+38f;

bool IsNaNBits(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  return (bits & kExponentMask) == kExponentMask && (bits & kFractionMask) != 0;
}

// Beyond the finite range; the second comparison is unordered, so NaN passes the gate.
bool OutOfRange(float value) { return value > kLargestFinite || !(value >= -kLargestFinite); }

}  // namespace

bool ClassifyFloat(float value, FloatTest test) {
  switch (test) {
    case FloatTest::NaN:
      return IsNaNBits(value);
    case FloatTest::PositiveInfinityOrNaN:
      return OutOfRange(value) && !(value <= 0.0f);
    case FloatTest::PositiveInfinity:
      return OutOfRange(value) && value > 0.0f;
    case FloatTest::NegativeInfinity:
      return OutOfRange(value) && value < 0.0f;
  }
  return false;
}

void ClassifyFloats(std::span<const float> values, FloatTest test, std::span<std::int32_t> out) {
  assert(out.size() == values.size());
  for (std::size_t i = 0; i < values.size(); ++i) out[i] = ClassifyFloat(values[i], test) ? 1 : 0;
}

}  // namespace quillix
