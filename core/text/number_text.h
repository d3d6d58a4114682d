// Text renderings of booleans, integers and floats, and of arrays of them, as the to-string
// nodes write them. All functions append to a caller-owned wide string, so that a node can
// join several renderings into one result without intermediate copies.
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

// Appends "1" for true, "0" for false.
void appendBoolText(bool value, std::wstring& out);

// Appends the value in decimal ("%d").
void appendIntText(std::int32_t value, std::wstring& out);

// Appends the value widened to double in "%g" form: six significant digits, exponent form for
// very large or small magnitudes.
void appendFloatText(float value, std::wstring& out);

// Per-element settings of the precision-controlled rendering.
struct NumberTextOptions {
  std::int32_t precision = 0;     // significant digits; 0 or less means plain "%g"; capped at 24
  bool treatAsInteger = false;    // round to an integer and print it with leading zeros
  std::int32_t leadingZeros = 0;  // field width in integer mode; clamped to [0, 16]
};

// Rounds a float to a 32-bit integer, halves away from zero, in double precision. A rounded
// value outside the 32-bit range, and NaN, gives -2147483648, the value the x86-64 truncating
// conversion produces; this is kept rather than clamped so that results match on every
// platform.
std::int32_t roundHalfAwayToInt32(float value);

// Appends one value rendered under `options`: in integer mode the rounded value printed with
// "%0*d" (a negative number's sign counts in the width); otherwise "%.*g" for a positive
// precision, "%g" for the rest.
void appendNumberText(float value, const NumberTextOptions& options, std::wstring& out);

// Appends an array of entries: "0" for no entry, the entry alone for one, and "<e0,e1,...>"
// (no blanks) for two or more.
void appendBoolListText(std::span<const bool> values, std::wstring& out);
void appendIntListText(std::span<const std::int32_t> values, std::wstring& out);
void appendFloatListText(std::span<const float> values, std::wstring& out);

// Appends an array rendered entry by entry under `options`: "0" for no entry, otherwise
// bracketed even for a single entry ("<e0>"), unlike the list renderings above.
void appendNumberArrayText(std::span<const float> values, const NumberTextOptions& options,
                           std::wstring& out);

}  // namespace quillix
