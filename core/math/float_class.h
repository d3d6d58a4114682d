// Classification of 32-bit floats as NaN, positive infinity or negative infinity.
//
// NaN is a bit test on the representation, so it holds for every NaN, quiet or signalling.
// The infinity tests are comparisons against the largest finite float, some of them unordered
// on purpose (true when an operand is NaN); see each function. The code relies on IEEE
// comparison semantics and must not be built with fast-math.
#pragma once

#include <cstdint>
#include <span>

namespace quillix {

// True when the exponent bits are all ones and the fraction bits are not all zero.
bool isNaNBits(float value);

// Positive-infinity test that lets NaN through: the value lies beyond the largest finite float
// in either direction (the negative test unordered), and is not <= 0 (unordered again). A NaN
// therefore answers true here as well as on isNaNBits; the single-value node reports that
// double answer and existing graphs test for it.
bool isPositiveInfinityOrNaN(float value);

// Positive infinity only: false for NaN.
bool isPositiveInfinity(float value);

// Negative infinity: beyond the largest finite float and < 0 in an ordered comparison, so NaN
// answers false.
bool isNegativeInfinity(float value);

// Which test a classification output applies.
enum class FloatTest { NaN, PositiveInfinityOrNaN, PositiveInfinity, NegativeInfinity };

bool classifyFloat(float value, FloatTest test);

// Element-wise classification: out[i] = 1 or 0 as classifyFloat(values[i], test).
// `out` is caller-allocated with exactly values.size() entries.
void classifyFloats(std::span<const float> values, FloatTest test, std::span<std::int32_t> out);

}  // namespace quillix
