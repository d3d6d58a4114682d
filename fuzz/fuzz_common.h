// Helpers shared by the fuzz targets: reading sized values out of the fuzzer's bytes, and a
// hard stop for broken invariants that the sanitizers would not see by themselves.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace quillix::fuzz {

// Aborts with a message (libFuzzer reports the abort and saves the input).
[[noreturn]] inline void Fail(const char* what) {
  std::fprintf(stderr, "fuzz invariant broken: %s\n", what);
  std::abort();
}
inline void Check(bool ok, const char* what) {
  if (!ok) Fail(what);
}

// A count that is mostly small, sometimes any 32-bit value (negative and huge ones included),
// so that the edge handling of counts is reached without every input asking for gigabytes.
inline std::int32_t SmallOrAnyCount(FuzzedDataProvider& in, std::int32_t smallMax) {
  switch (in.ConsumeIntegralInRange<int>(0, 7)) {
    case 0:
      return in.ConsumeIntegral<std::int32_t>();
    case 1:
      return in.ConsumeIntegralInRange<std::int32_t>(-3, 0);
    default:
      return in.ConsumeIntegralInRange<std::int32_t>(0, smallMax);
  }
}

// `count` raw values of T from the input; zeros once the input runs out.
template <class T>
std::vector<T> ConsumeValues(FuzzedDataProvider& in, std::size_t count) {
  std::vector<T> values(count);
  for (auto& v : values) {
    if (in.remaining_bytes() == 0) break;
    v = in.ConsumeIntegral<T>();
  }
  return values;
}

// A float that is usually one of the troublesome values (NaN, infinities, zero signs, the
// extremes, denormals, the removal-mark pattern), otherwise any bit pattern or a small number.
inline float ConsumeNastyFloat(FuzzedDataProvider& in) {
  static const std::uint32_t kSpecial[] = {0x7FC00000u, 0xFFC00000u, 0x7F800000u, 0xFF800000u,
                                           0x00000000u, 0x80000000u, 0x7F7FFFFFu, 0xFF7FFFFFu,
                                           0x00000001u, 0x00800000u, 0x7FBFFFFFu, 0x3F800000u};
  std::uint32_t bits;
  switch (in.ConsumeIntegralInRange<int>(0, 3)) {
    case 0:
      bits = in.PickValueInArray(kSpecial);
      break;
    case 1:
      bits = in.ConsumeIntegral<std::uint32_t>();
      break;
    default: {
      const float f = float(in.ConsumeIntegralInRange<int>(-1000, 1000)) * 0.125f;
      return f;
    }
  }
  float f;
  static_assert(sizeof f == sizeof bits);
  __builtin_memcpy(&f, &bits, sizeof f);
  return f;
}

}  // namespace quillix::fuzz
