#include "core/text/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace quillix {
namespace {

constexpr int kMaxPrecision = 24;
constexpr int kMaxIntegerWidth = 16;
// Enough for "%.24g" of any double, a sign and a padded exponent.
constexpr std::size_t kBufferSize = 64;

// Appends narrow printf output to the wide result, padding the exponent to three digits.
// The C library prints at least two exponent digits; the node's text has always carried three.
void AppendPrinted(const char* text, std::wstring& out) {
  const char* exponent = std::strpbrk(text, "eE");
  const char* end = text + std::strlen(text);
  if (exponent == nullptr) {
    out.append(text, end);
    return;
  }
  const char* digits = exponent + 1;
  if (*digits == '+' || *digits == '-') ++digits;
  out.append(text, digits);
  for (std::ptrdiff_t count = end - digits; count < 3; ++count) out.push_back(L'0');
  out.append(digits, end);
}

// "%.*g" of the value. std::to_chars prints exactly what printf prints in the C locale, and
// unlike printf it cannot pick up a decimal comma from a locale the host process has set.
// Non-finite values are spelled out here rather than by the C library, whose spellings
// differ between platforms (and carry a NaN's sign on some).
void AppendGeneral(double value, int precision, std::wstring& out) {
  if (std::isnan(value)) {
    out += L"nan";
    return;
  }
  if (std::isinf(value)) {
    out += value < 0 ? L"-inf" : L"inf";
    return;
  }
  char buffer[kBufferSize];
  const std::to_chars_result printed = std::to_chars(buffer, buffer + sizeof buffer - 1, value,
                                                     std::chars_format::general, precision);
  *printed.ptr = '\0';
  AppendPrinted(buffer, out);
}

template <typename T, typename Format>
void AppendList(std::span<const T> values, bool bracketSingle, Format format, std::wstring& out) {
  if (values.empty()) {
    out += L"0";
    return;
  }
  if (values.size() == 1 && !bracketSingle) {
    format(values[0], out);
    return;
  }
  out += L"<";
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) out += L",";
    format(values[i], out);
  }
  out += L">";
}

void AppendBoolText(bool value, std::wstring& out) { out += value ? L"1" : L"0"; }

void AppendIntText(std::int32_t value, std::wstring& out) {
  char buffer[kBufferSize];
  const int length = std::snprintf(buffer, sizeof buffer, "%d", static_cast<int>(value));
  out.append(buffer, buffer + length);
}

void AppendFloatText(float value, std::wstring& out) { AppendGeneral(value, 6, out); }

}  // namespace

std::int32_t RoundHalfAwayToInt32(float value) {
  double widened = value;
  widened += widened > 0 ? 0.5 : -0.5;
  // Truncation toward zero keeps exactly the open interval (-2^31 - 1, 2^31) in range.
  if (!(widened > -2147483649.0 && widened < 2147483648.0)) return INT32_MIN;
  return static_cast<std::int32_t>(widened);
}

void AppendNumberText(float value, const NumberTextOptions& options, std::wstring& out) {
  if (options.treatAsInteger) {
    int width = options.leadingZeros;
    if (width < 0) width = 0;
    if (width > kMaxIntegerWidth) width = kMaxIntegerWidth;
    char buffer[kBufferSize];
    std::snprintf(buffer, sizeof buffer, "%0*d", width,
                  static_cast<int>(RoundHalfAwayToInt32(value)));
    AppendPrinted(buffer, out);
    return;
  }
  int precision = options.precision > 0 ? options.precision : 6;
  if (precision > kMaxPrecision) precision = kMaxPrecision;
  AppendGeneral(value, precision, out);
}

void AppendBoolListText(std::span<const bool> values, std::wstring& out) {
  AppendList(values, false, AppendBoolText, out);
}

void AppendIntListText(std::span<const std::int32_t> values, std::wstring& out) {
  AppendList(values, false, AppendIntText, out);
}

void AppendFloatListText(std::span<const float> values, std::wstring& out) {
  AppendList(values, false, AppendFloatText, out);
}

void AppendNumberArrayText(std::span<const float> values, const NumberTextOptions& options,
                           std::wstring& out) {
  AppendList(
      values, true,
      [&options](float value, std::wstring& text) { AppendNumberText(value, options, text); }, out);
}

}  // namespace quillix
