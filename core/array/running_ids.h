// Consecutive numbering of per-point arrays: every entry of every point gets its own ID, in
// point order, from one running counter.
#pragma once

#include <cstdint>
#include <span>

namespace quillix {

// Number of IDs a point asks for: its size, or 0 for a negative size.
std::uint32_t IdCountForSize(std::int32_t size);

// Writes firstId, firstId + 1, ... into `out` (caller-allocated, any length) and returns the
// ID that follows the last one written, i.e. the next point's first ID. An empty `out` returns
// `firstId` unchanged. The counter wraps from 2147483647 to -2147483648 like a two's-complement
// register instead of overflowing; a graph would need 2^31 entries to get there.
std::int32_t WriteRunningIds(std::int32_t firstId, std::span<std::int32_t> out);

}  // namespace quillix
