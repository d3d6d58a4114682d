// IEEE 754 half-precision decoding.
#pragma once

#include <cstdint>

namespace quillix {

// The 65536-entry table that maps every raw half-float bit pattern to the single-precision
// float of the same value (NaN payloads and signed zeros preserved). Built once, on first use;
// safe to call from several threads.
const float* HalfToFloatTable();

// Exact conversion of one raw half to float, without the table (used to build it).
float HalfBitsToFloat(std::uint16_t bits);

}  // namespace quillix
