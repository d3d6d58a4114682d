#include "core/text/string_pack.h"

#include <cassert>

namespace quillix {
namespace {

std::size_t DataWordCount(bool active, std::size_t characterCount) {
  return active ? characterCount / 4 + 1 : 0;
}

}  // namespace

std::size_t PackedStringLength(bool active, std::size_t characterCount) {
  return DataWordCount(active, characterCount) + 6;
}

void PackString(bool active, std::size_t characterCount, std::string_view narrowText,
                std::span<std::int32_t> out) {
  const std::size_t words = DataWordCount(active, characterCount);
  assert(out.size() == words + 6);
  for (std::size_t i = 0; i < kPackedStringSignature.size(); ++i)
    out[i] = kPackedStringSignature[i];
  out[4] = static_cast<std::int32_t>(words);
  for (std::size_t w = 0; w < words; ++w) {
    // Assembled by shifts, not copied, so that the byte order is the same on every machine.
    std::uint32_t word = 0;
    for (std::size_t b = 0; b < 4; ++b) {
      const std::size_t index = w * 4 + b;
      if (index < characterCount && index < narrowText.size()) {
        word |= std::uint32_t{static_cast<unsigned char>(narrowText[index])} << (8 * b);
      }
    }
    out[5 + w] = static_cast<std::int32_t>(word);
  }
  out[5 + words] = kPackedStringEndMark;
}

}  // namespace quillix
