// Byte and bit access on 32-bit integers.
#pragma once

#include <cstdint>

namespace quillix {

// Byte number `byteIndex` (0 to 3; anything else is a programming error, asserted) of
// `value`, byte 0 being the least significant. Always in 0 to 255, also for negative values
// (-1 gives 255 for every byte, -2 gives 254, 255, 255, 255).
std::int32_t ByteOfInt(std::int32_t value, int byteIndex);

// 1 if bit number `bit` of `value` is set, 0 otherwise; bit 0 is the least significant. Only
// the low five bits of `bit` count, so every bit number is valid and wraps modulo 32: bit 32
// tests bit 0, bit -1 tests bit 31.
std::int32_t TestBit(std::int32_t value, std::int32_t bit);

}  // namespace quillix
