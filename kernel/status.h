// Status codes of the geometry kernel and their messages.
#pragma once

#include <cstdint>

namespace quillix {

// Outcome of every kernel operation: 0 is success, any other value names one failure.
// The code space is shared with sibling libraries, so codes are never renumbered.
using QRVStatus = std::uint32_t;

inline constexpr QRVStatus kStatusOk = 0;
inline constexpr QRVStatus kStatusInvalidState = 5;        // "class is in an invalid state."
inline constexpr QRVStatus kStatusIllegalParameter = 6;    // "illegal parameter value."
inline constexpr QRVStatus kStatusIllegalCombination = 7;  // "illegal combination of parameters."
inline constexpr QRVStatus kStatusNoMemory = 9;            // also: refused by the memory limit

// Longest message (code 85) is 134 characters; with a prefix and the code text a caller
// reserves at least this many bytes.
inline constexpr std::size_t kStatusMessageBufferSize = 256;

// Writes the message of `code` into `buffer` and returns `buffer`.
//  - buffer: caller-owned, at least kStatusMessageBufferSize bytes plus the prefix length;
//    null returns null and writes nothing.
//  - withCode: puts "error <code>: " in front, the code printed as a signed 32-bit number
//    (so 4294967295 prints as -1).
//  - prefix: optional zero-terminated text placed first; may be null.
// Codes 180 and above (unsigned) give "unknown error.". Never allocates; thread-safe as
// long as each call has its own buffer.
char* StatusMessage(QRVStatus code, char* buffer, bool withCode, const char* prefix = nullptr);

// The bare message of `code`, without prefix or code text; never null.
const char* StatusText(QRVStatus code);

}  // namespace quillix
