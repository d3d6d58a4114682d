#include "core/text/number_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace quillix {
namespace {

std::wstring FloatText(float value) {
  std::wstring out;
  AppendFloatListText({&value, 1}, out);
  return out;
}

std::wstring NumberText(float value, NumberTextOptions options) {
  std::wstring out;
  AppendNumberText(value, options, out);
  return out;
}

NumberTextOptions AsInteger(std::int32_t width) { return {0, true, width}; }
NumberTextOptions WithPrecision(std::int32_t precision) { return {precision, false, 0}; }

TEST(ListText, EmptyIsZeroSingleIsBareMoreAreBracketed) {
  std::wstring out;
  AppendBoolListText({}, out);
  EXPECT_EQ(out, L"0");

  const bool bools[] = {true, false, true};
  out.clear();
  AppendBoolListText(bools, out);
  EXPECT_EQ(out, L"<1,0,1>");
  out.clear();
  AppendBoolListText(std::span<const bool>(bools, 1), out);
  EXPECT_EQ(out, L"1");

  const std::int32_t ints[] = {3, -12};
  out = L"x";  // appends rather than replaces
  AppendIntListText(ints, out);
  EXPECT_EQ(out, L"x<3,-12>");

  const float floats[] = {0.5f, -2.0f, 1e20f};
  out.clear();
  AppendFloatListText(std::span<const float>(floats, 1), out);
  EXPECT_EQ(out, L"0.5");
  out.clear();
  AppendFloatListText(floats, out);
  EXPECT_EQ(out, L"<0.5,-2,1e+020>");
}

TEST(FloatText, GeneralFormWithThreeExponentDigits) {
  EXPECT_EQ(FloatText(3.14159f), L"3.14159");
  EXPECT_EQ(FloatText(0.0f), L"0");
  EXPECT_EQ(FloatText(100000.0f), L"100000");
  EXPECT_EQ(FloatText(1e20f), L"1e+020");
  EXPECT_EQ(FloatText(1e6f), L"1e+006");
  EXPECT_EQ(FloatText(-1.5e-7f), L"-1.5e-007");
  EXPECT_EQ(FloatText(3.4028235e38f), L"3.40282e+038");
  EXPECT_EQ(FloatText(1.4e-45f), L"1.4013e-045");
}

TEST(FloatText, NonFiniteValuesHaveOneSpellingEverywhere) {
  EXPECT_EQ(FloatText(std::numeric_limits<float>::infinity()), L"inf");
  EXPECT_EQ(FloatText(-std::numeric_limits<float>::infinity()), L"-inf");
  EXPECT_EQ(FloatText(std::numeric_limits<float>::quiet_NaN()), L"nan");
  EXPECT_EQ(FloatText(std::bit_cast<float>(0xFFC00001u)), L"nan");
}

TEST(RoundHalfAwayToInt32, RoundsHalvesAwayFromZeroInDoublePrecision) {
  EXPECT_EQ(RoundHalfAwayToInt32(2.5f), 3);
  EXPECT_EQ(RoundHalfAwayToInt32(-2.5f), -3);
  EXPECT_EQ(RoundHalfAwayToInt32(0.5f), 1);
  EXPECT_EQ(RoundHalfAwayToInt32(-0.5f), -1);
  EXPECT_EQ(RoundHalfAwayToInt32(0.0f), 0);
  // In single precision 0.49999997f + 0.5f would round up to 1.
  EXPECT_EQ(RoundHalfAwayToInt32(0.49999997f), 0);
  EXPECT_EQ(RoundHalfAwayToInt32(2147483520.0f), 2147483520);
  EXPECT_EQ(RoundHalfAwayToInt32(-2147483648.0f), INT32_MIN);
}

TEST(RoundHalfAwayToInt32, OutOfRangeAndNaNGiveTheMinimum) {
  EXPECT_EQ(RoundHalfAwayToInt32(2147483648.0f), INT32_MIN);
  EXPECT_EQ(RoundHalfAwayToInt32(-2147483904.0f), INT32_MIN);
  EXPECT_EQ(RoundHalfAwayToInt32(1e30f), INT32_MIN);
  EXPECT_EQ(RoundHalfAwayToInt32(std::numeric_limits<float>::infinity()), INT32_MIN);
  EXPECT_EQ(RoundHalfAwayToInt32(std::numeric_limits<float>::quiet_NaN()), INT32_MIN);
}

TEST(NumberText, IntegerModePadsWithZerosToTheClampedWidth) {
  EXPECT_EQ(NumberText(2.5f, AsInteger(4)), L"0003");
  EXPECT_EQ(NumberText(-2.5f, AsInteger(4)), L"-003");
  EXPECT_EQ(NumberText(12345.0f, AsInteger(2)), L"12345");
  EXPECT_EQ(NumberText(7.0f, AsInteger(-5)), L"7");
  EXPECT_EQ(NumberText(7.0f, AsInteger(16)), L"0000000000000007");
  EXPECT_EQ(NumberText(7.0f, AsInteger(40)), L"0000000000000007");
}

TEST(NumberText, PrecisionModeClampsThePrecision) {
  EXPECT_EQ(NumberText(3.14159f, WithPrecision(3)), L"3.14");
  EXPECT_EQ(NumberText(3.14159f, WithPrecision(0)), L"3.14159");
  EXPECT_EQ(NumberText(3.14159f, WithPrecision(-3)), L"3.14159");
  EXPECT_EQ(NumberText(0.1f, WithPrecision(24)), L"0.100000001490116119384766");
  EXPECT_EQ(NumberText(0.1f, WithPrecision(25)), NumberText(0.1f, WithPrecision(24)));
  EXPECT_EQ(NumberText(1e20f, WithPrecision(2)), L"1e+020");
}

TEST(NumberArrayText, BracketsEvenASingleEntry) {
  const float values[] = {2.5f, -2.5f};
  std::wstring out;
  AppendNumberArrayText(std::span<const float>(values, 0), AsInteger(4), out);
  EXPECT_EQ(out, L"0");
  out.clear();
  AppendNumberArrayText(std::span<const float>(values, 1), AsInteger(4), out);
  EXPECT_EQ(out, L"<0003>");
  out.clear();
  AppendNumberArrayText(values, AsInteger(4), out);
  EXPECT_EQ(out, L"<0003,-003>");
}

}  // namespace
}  // namespace quillix
