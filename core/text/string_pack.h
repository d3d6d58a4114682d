// Packing of a string into an array of 32-bit integers, so that text can travel through
// integer-only attributes.
//
// Frame layout, for a string of L characters and W data words:
//   [0..3]       signature 0xABCDDCBA, 0x00BEEF00, 0xF1DB0000, 0xF86E21C1
//   [4]          W (L / 4 + 1 when packing is active, 0 otherwise)
//   [5..4+W]     the 8-bit characters, four per word, the first in the lowest byte
//   [5+W]        -1, the end mark
// Since W = L / 4 + 1, the last data word always ends in at least one zero byte, so the packed
// text is zero-terminated for a reader that scans bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace quillix {

inline constexpr std::array<std::int32_t, 4> kPackedStringSignature{
    static_cast<std::int32_t>(0xABCDDCBAu), 0x00BEEF00, static_cast<std::int32_t>(0xF1DB0000u),
    static_cast<std::int32_t>(0xF86E21C1u)};
inline constexpr std::int32_t kPackedStringEndMark = -1;

// Number of words of the frame (W + 6) for a string of `characterCount` characters; W is 0
// when `active` is false.
std::size_t PackedStringLength(bool active, std::size_t characterCount);

// Writes the frame into `out`, which the caller allocates with exactly
// PackedStringLength(active, characterCount) words.
//
// `characterCount` is the string's length L in characters and `narrowText` its 8-bit
// conversion (the host's narrow conversion decides what becomes of characters beyond 8 bits).
// Exactly L bytes are packed: bytes of `narrowText` beyond L are dropped and missing ones read
// as zero, so a conversion that changes the length cannot move the frame. With `active` false
// nothing of the text is read and the frame holds W = 0 and no data word.
void PackString(bool active, std::size_t characterCount, std::string_view narrowText,
                std::span<std::int32_t> out);

}  // namespace quillix
