// Classification of 32-bit floats as NaN, positive infinity or negative infinity.
//
// NaN is a bit test on the representation, so it holds for every NaN, quiet or signalling.
// The infinity tests are comparisons against the largest finite float, some of them unordered
// on purpose (true when an operand is NaN); see each test. The code relies on IEEE comparison
// semantics and must not be built with fast-math.
#pragma once

#include <cstdint>
#include <span>

namespace quillix {

// Which test a classification applies. Finite values, the largest finite float and denormals
// included, fail all four.
enum class FloatTest {
  // The exponent bits are all ones and the fraction bits are not all zero.
  NaN,
  // Beyond the largest finite float in either direction (the negative comparison unordered)
  // and not <= 0 (unordered again): positive infinity, and every NaN as well. The boolean
  // classification node reports that double answer and existing graphs test for it.
  PositiveInfinityOrNaN,
  // Positive infinity only; false for NaN.
  PositiveInfinity,
  // Beyond the largest finite float and < 0 in an ordered comparison: negative infinity only,
  // false for NaN.
  NegativeInfinity,
};

// Whether `value` passes `test`.
bool ClassifyFloat(float value, FloatTest test);

// Element-wise classification: out[i] = 1 when values[i] passes `test`, 0 otherwise. `out` is
// caller-allocated with exactly values.size() entries (asserted); empty in, nothing written.
void ClassifyFloats(std::span<const float> values, FloatTest test, std::span<std::int32_t> out);

}  // namespace quillix
