// Reordering of whole arrays: reverse and rotate. Both are pure index mappings, so the entries
// are moved whole and never looked at; the element type is a template parameter and any
// copy-assignable type (numbers, vectors, matrices, strings) works alike.
#pragma once

#include <cassert>
#include <cstdint>
#include <span>

namespace quillix {

// Offset k of a rotation by `shift` places over an array of `length` entries (length > 0):
// entry i of the result is entry (i + k) mod length of the input, so the entry at index j
// moves to index (j + shift) mod length. A positive shift moves entries toward higher indices.
//
// The offset is derived from the negated shift in unsigned 32-bit arithmetic. Negating
// -2147483648 leaves it negative, and the correction step then yields k = 1 for length 3 (a
// move toward lower indices, not the mathematically expected higher ones); that result is kept
// so that graphs relying on it keep their output. `length` must be non-zero (asserted).
std::uint32_t RotationOffset(std::int32_t shift, std::uint32_t length);

// Writes `input` in reverse order into `out`: out[i] = input[n - 1 - i].
// `out` is caller-allocated with exactly input.size() entries and must not overlap `input`.
template <typename T>
void ReverseArray(std::span<const T> input, std::span<T> out) {
  assert(out.size() == input.size());
  const std::size_t n = input.size();
  for (std::size_t i = 0; i < n; ++i) out[i] = input[n - 1 - i];
}

// Writes `input` rotated by `shift` places into `out` (see RotationOffset): shift 1 turns
// [a, b, c, d] into [d, a, b, c], shift -1 into [b, c, d, a]. An empty input gives an empty
// output whatever the shift. `out` is caller-allocated with exactly input.size() entries and
// must not overlap `input`. Arrays are at most 2^32 - 1 entries long (the host's counts are
// 32-bit).
template <typename T>
void ShiftArray(std::span<const T> input, std::int32_t shift, std::span<T> out) {
  assert(out.size() == input.size());
  if (input.empty()) return;
  const auto n = static_cast<std::uint32_t>(input.size());
  const std::uint32_t offset = RotationOffset(shift, n);
  // Unsigned wrap-around on purpose: the index is taken modulo n in 32-bit arithmetic.
  for (std::uint32_t i = 0; i < n; ++i) out[i] = input[(i + offset) % n];
}

}  // namespace quillix
