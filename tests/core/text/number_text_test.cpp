#include "core/text/number_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace quillix {
namespace {

std::wstring floatText(float value) {
  std::wstring out;
  appendFloatText(value, out);
  return out;
}

std::wstring numberText(float value, NumberTextOptions options) {
  std::wstring out;
  appendNumberText(value, options, out);
  return out;
}

NumberTextOptions asInteger(std::int32_t width) { return {0, true, width}; }
NumberTextOptions withPrecision(std::int32_t precision) { return {precision, false, 0}; }

TEST(ListText, EmptyIsZeroSingleIsBareMoreAreBracketed) {
  std::wstring out;
  appendBoolListText({}, out);
  EXPECT_EQ(out, L"0");

  const bool bools[] = {true, false, true};
  out.clear();
  appendBoolListText(bools, out);
  EXPECT_EQ(out, L"<1,0,1>");
  out.clear();
  appendBoolListText(std::span<const bool>(bools, 1), out);
  EXPECT_EQ(out, L"1");

  const std::int32_t ints[] = {3, -12};
  out = L"x";  // appends rather than replaces
  appendIntListText(ints, out);
  EXPECT_EQ(out, L"x<3,-12>");

  const float floats[] = {0.5f, -2.0f, 1e20f};
  out.clear();
  appendFloatListText(std::span<const float>(floats, 1), out);
  EXPECT_EQ(out, L"0.5");
  out.clear();
  appendFloatListText(floats, out);
  EXPECT_EQ(out, L"<0.5,-2,1e+020>");
}

TEST(FloatText, GeneralFormWithThreeExponentDigits) {
  EXPECT_EQ(floatText(3.14159f), L"3.14159");
  EXPECT_EQ(floatText(0.0f), L"0");
  EXPECT_EQ(floatText(100000.0f), L"100000");
  EXPECT_EQ(floatText(1e20f), L"1e+020");
  EXPECT_EQ(floatText(1e6f), L"1e+006");
  EXPECT_EQ(floatText(-1.5e-7f), L"-1.5e-007");
  EXPECT_EQ(floatText(3.4028235e38f), L"3.40282e+038");
  EXPECT_EQ(floatText(1.4e-45f), L"1.4013e-045");
}

TEST(FloatText, NonFiniteValuesHaveOneSpellingEverywhere) {
  EXPECT_EQ(floatText(std::numeric_limits<float>::infinity()), L"inf");
  EXPECT_EQ(floatText(-std::numeric_limits<float>::infinity()), L"-inf");
  EXPECT_EQ(floatText(std::numeric_limits<float>::quiet_NaN()), L"nan");
  EXPECT_EQ(floatText(std::bit_cast<float>(0xFFC00001u)), L"nan");
}

TEST(RoundHalfAwayToInt32, RoundsHalvesAwayFromZeroInDoublePrecision) {
  EXPECT_EQ(roundHalfAwayToInt32(2.5f), 3);
  EXPECT_EQ(roundHalfAwayToInt32(-2.5f), -3);
  EXPECT_EQ(roundHalfAwayToInt32(0.5f), 1);
  EXPECT_EQ(roundHalfAwayToInt32(-0.5f), -1);
  EXPECT_EQ(roundHalfAwayToInt32(0.0f), 0);
  // In single precision 0.49999997f + 0.5f would round up to 1.
  EXPECT_EQ(roundHalfAwayToInt32(0.49999997f), 0);
  EXPECT_EQ(roundHalfAwayToInt32(2147483520.0f), 2147483520);
  EXPECT_EQ(roundHalfAwayToInt32(-2147483648.0f), INT32_MIN);
}

TEST(RoundHalfAwayToInt32, OutOfRangeAndNaNGiveTheMinimum) {
  EXPECT_EQ(roundHalfAwayToInt32(2147483648.0f), INT32_MIN);
  EXPECT_EQ(roundHalfAwayToInt32(-2147483904.0f), INT32_MIN);
  EXPECT_EQ(roundHalfAwayToInt32(1e30f), INT32_MIN);
  EXPECT_EQ(roundHalfAwayToInt32(std::numeric_limits<float>::infinity()), INT32_MIN);
  EXPECT_EQ(roundHalfAwayToInt32(std::numeric_limits<float>::quiet_NaN()), INT32_MIN);
}

TEST(NumberText, IntegerModePadsWithZerosToTheClampedWidth) {
  EXPECT_EQ(numberText(2.5f, asInteger(4)), L"0003");
  EXPECT_EQ(numberText(-2.5f, asInteger(4)), L"-003");
  EXPECT_EQ(numberText(12345.0f, asInteger(2)), L"12345");
  EXPECT_EQ(numberText(7.0f, asInteger(-5)), L"7");
  EXPECT_EQ(numberText(7.0f, asInteger(16)), L"0000000000000007");
  EXPECT_EQ(numberText(7.0f, asInteger(40)), L"0000000000000007");
}

TEST(NumberText, PrecisionModeClampsThePrecision) {
  EXPECT_EQ(numberText(3.14159f, withPrecision(3)), L"3.14");
  EXPECT_EQ(numberText(3.14159f, withPrecision(0)), L"3.14159");
  EXPECT_EQ(numberText(3.14159f, withPrecision(-3)), L"3.14159");
  EXPECT_EQ(numberText(0.1f, withPrecision(24)), L"0.100000001490116119384766");
  EXPECT_EQ(numberText(0.1f, withPrecision(25)), numberText(0.1f, withPrecision(24)));
  EXPECT_EQ(numberText(1e20f, withPrecision(2)), L"1e+020");
}

TEST(NumberArrayText, BracketsEvenASingleEntry) {
  const float values[] = {2.5f, -2.5f};
  std::wstring out;
  appendNumberArrayText(std::span<const float>(values, 0), asInteger(4), out);
  EXPECT_EQ(out, L"0");
  out.clear();
  appendNumberArrayText(std::span<const float>(values, 1), asInteger(4), out);
  EXPECT_EQ(out, L"<0003>");
  out.clear();
  appendNumberArrayText(values, asInteger(4), out);
  EXPECT_EQ(out, L"<0003,-003>");
}

}  // namespace
}  // namespace quillix
