#include "core/text/string_pack.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace quillix {
namespace {

std::vector<std::int32_t> pack(bool active, std::size_t characterCount, std::string_view text) {
  std::vector<std::int32_t> out(packedStringLength(active, characterCount));
  packString(active, characterCount, text, out);
  return out;
}

std::vector<std::int32_t> frame(std::vector<std::int32_t> data) {
  std::vector<std::int32_t> out{-1412571974, 12513024, -237305856, -127000127,
                                static_cast<std::int32_t>(data.size())};
  out.insert(out.end(), data.begin(), data.end());
  out.push_back(-1);
  return out;
}

TEST(PackString, WritesTheSignatureCountDataAndEndMark) {
  EXPECT_EQ(pack(true, 3, "abc"), frame({0x00636261}));
  EXPECT_EQ(pack(true, 4, "abcd"), frame({0x64636261, 0}));
  EXPECT_EQ(pack(true, 0, ""), frame({0}));
  EXPECT_EQ(pack(true, 9, "abcdefghi"), frame({0x64636261, 0x68676665, 0x00000069}));
}

TEST(PackString, InactiveWritesAnEmptyFrame) {
  EXPECT_EQ(pack(false, 3, "abc"), frame({}));
  EXPECT_EQ(packedStringLength(false, 100), 6u);
}

TEST(PackString, BytesAboveSevenBitsKeepTheirPatternAndPositions) {
  // 0xE9 and 0xFF in the top byte make the word negative.
  EXPECT_EQ(pack(true, 4, "\xE9z!\xFF"), frame({static_cast<std::int32_t>(0xFF217AE9u), 0}));
}

TEST(PackString, PacksExactlyTheCharacterCountOfBytes) {
  // A narrow conversion that yields more bytes than characters (multi-byte) or fewer cannot
  // move the frame: the length comes from the character count.
  EXPECT_EQ(pack(true, 2, "\xC3\xA9x"), frame({0x0000A9C3}));
  EXPECT_EQ(pack(true, 5, "ab"), frame({0x00006261, 0}));
}

}  // namespace
}  // namespace quillix
