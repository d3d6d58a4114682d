#include "core/text/string_join.h"

namespace quillix {

std::wstring JoinStrings(std::span<const std::wstring_view> entries, std::wstring_view delimiter) {
  std::wstring joined;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].empty()) continue;
    joined += entries[i];
    if (i + 1 < entries.size()) joined += delimiter;
  }
  return joined;
}

}  // namespace quillix
