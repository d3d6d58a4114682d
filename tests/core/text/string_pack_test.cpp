#include "core/text/string_pack.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace quillix {
namespace {

std::vector<std::int32_t> Pack(bool active, std::size_t characterCount, std::string_view text) {
  std::vector<std::int32_t> out(PackedStringLength(active, characterCount));
  PackString(active, characterCount, text, out);
  return out;
}

std::vector<std::int32_t> Frame(std::vector<std::int32_t> data) {
  std::vector<std::int32_t> out{-1412571974, 12513024, -237305856, -127000127,
                                static_cast<std::int32_t>(data.size())};
  out.insert(out.end(), data.begin(), data.end());
  out.push_back(-1);
  return out;
}

TEST(PackString, WritesTheSignatureCountDataAndEndMark) {
  EXPECT_EQ(Pack(true, 3, "abc"), Frame({0x00636261}));
  EXPECT_EQ(Pack(true, 4, "abcd"), Frame({0x64636261, 0}));
  EXPECT_EQ(Pack(true, 0, ""), Frame({0}));
  EXPECT_EQ(Pack(true, 9, "abcdefghi"), Frame({0x64636261, 0x68676665, 0x00000069}));
}

TEST(PackString, InactiveWritesAnEmptyFrame) {
  EXPECT_EQ(Pack(false, 3, "abc"), Frame({}));
  EXPECT_EQ(PackedStringLength(false, 100), 6u);
}

TEST(PackString, BytesAboveSevenBitsKeepTheirPatternAndPositions) {
  // 0xE9 and 0xFF in the top byte make the word negative.
  EXPECT_EQ(Pack(true, 4, "\xE9z!\xFF"), Frame({static_cast<std::int32_t>(0xFF217AE9u), 0}));
}

TEST(PackString, PacksExactlyTheCharacterCountOfBytes) {
  // A narrow conversion that yields more bytes than characters (multi-byte) or fewer cannot
  // move the frame: the length comes from the character count.
  EXPECT_EQ(Pack(true, 2, "\xC3\xA9x"), Frame({0x0000A9C3}));
  EXPECT_EQ(Pack(true, 5, "ab"), Frame({0x00006261, 0}));
}

}  // namespace
}  // namespace quillix
