// Text renderings of booleans, integers and floats, and of arrays of them, as the to-string
// nodes write them. Every function appends to the caller-owned wide string `out` (its last
// parameter) and leaves what it held before untouched, so that a caller can join several
// renderings into one text without intermediate copies. None keeps state; all may be called
// from several threads at once.
//
// Numbers are printed printf-style in the C locale. Exponent forms always carry at least three
// exponent digits ("1e+020"), whatever the C library's own habit, so that the same value gives
// the same text on every platform. Infinities print as "inf" and "-inf", every NaN as "nan"
// (sign and payload dropped).
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace quillix {

// Per-element settings of the precision-controlled rendering.
struct NumberTextOptions {
  std::int32_t precision = 0;     // significant digits; 0 or less means plain "%g"; capped at 24
  bool treatAsInteger = false;    // round to an integer and print it with leading zeros
  std::int32_t leadingZeros = 0;  // field width in integer mode; clamped to [0, 16]
};

// Rounds a float to a 32-bit integer, halves away from zero, in double precision (2.5 gives 3,
// -2.5 gives -3, 0.49999997 gives 0). A rounded value outside the 32-bit range, infinities
// and NaN give -2147483648, the value the x86-64 truncating conversion produces; this is kept
// rather than clamped so that results match on every platform.
std::int32_t RoundHalfAwayToInt32(float value);

// Appends one value rendered under `options`: in integer mode the rounded value printed with
// "%0*d" (a negative number's sign counts in the width: 2.5 at width 4 gives "0003", -2.5
// gives "-003"); otherwise "%.*g" for a positive precision (3.14159 at 3 gives "3.14"), "%g"
// for the rest.
void AppendNumberText(float value, const NumberTextOptions& options, std::wstring& out);

// Appends an array of entries: "0" for no entry, the entry alone for one, and "<e0,e1,...>"
// (no blanks) for two or more. A boolean is "1" or "0", an integer decimal ("%d"), a float
// widened to double in "%g" form (six significant digits, exponent form for very large or
// small magnitudes). A single value is rendered by passing it as a one-entry span.
void AppendBoolListText(std::span<const bool> values, std::wstring& out);
void AppendIntListText(std::span<const std::int32_t> values, std::wstring& out);
void AppendFloatListText(std::span<const float> values, std::wstring& out);

// Appends an array rendered entry by entry under `options`: "0" for no entry, otherwise
// bracketed even for a single entry ("<e0>"), unlike the list renderings above.
void AppendNumberArrayText(std::span<const float> values, const NumberTextOptions& options,
                           std::wstring& out);

}  // namespace quillix
