#include "core/recent/recent_scene.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstring>

namespace quillix {
namespace {

bool IsTrimSpace(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\v' || c == '\f' || c == '\r';
}

}  // namespace

std::optional<std::size_t> SkipLeadingSpace(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!IsTrimSpace(text[i])) return i;
  }
  return std::nullopt;
}

std::optional<std::size_t> FindLastNonSpace(std::string_view text) {
  for (std::size_t i = text.size(); i > 0; --i) {
    if (!IsTrimSpace(text[i - 1])) return i - 1;
  }
  return std::nullopt;
}

int ExtractBetween(const char* text, const char* openTag, const char* closeTag, char* out,
                   std::ptrdiff_t outSize, bool trimLeading, bool trimTrailing) {
  if (text == nullptr || openTag == nullptr || closeTag == nullptr || out == nullptr ||
      outSize < 0 || openTag[0] == '\0' || closeTag[0] == '\0') {
    return kExtractBadArguments;
  }
  if (outSize > 0) out[0] = '\0';

  const char* open = std::strstr(text, openTag);
  if (open == nullptr) return kExtractTagNotFound;
  const char* contentBegin = open + std::strlen(openTag);
  const char* close = std::strstr(contentBegin, closeTag);
  if (close == nullptr) return kExtractTagNotFound;

  std::string_view content(contentBegin, static_cast<std::size_t>(close - contentBegin));
  if (trimLeading) {
    const std::optional<std::size_t> first = SkipLeadingSpace(content);
    if (!first) return kExtractOk;
    content.remove_prefix(*first);
  }
  if (trimTrailing) {
    const std::optional<std::size_t> last = FindLastNonSpace(content);
    if (!last) return kExtractOk;
    content = content.substr(0, *last + 1);
  }
  if (static_cast<std::ptrdiff_t>(content.size()) + 1 > outSize) return kExtractTooLong;
  std::memcpy(out, content.data(), content.size());
  out[content.size()] = '\0';
  return kExtractOk;
}

int FindMostRecentScene(const char* listText, std::string& scenePath) {
  scenePath.clear();
  if (listText == nullptr) return kExtractBadArguments;
  const char* marker = std::strstr(listText, kRecentScenesMarker);
  if (marker == nullptr) return kExtractTagNotFound;
  char path[kScenePathCapacity];
  const int code = ExtractBetween(marker, kRecentFileOpenTag, kRecentFileCloseTag, path,
                                  kScenePathCapacity, false, false);
  if (code == kExtractOk) scenePath = path;
  return code;
}

std::int64_t FileSize(const char* path) {
  if (path == nullptr) return -1;
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) return -1;
  // A directory opens for reading on Linux and seeks to a meaningless end; only regular
  // files have a size worth reading.
  struct stat status {};
  std::int64_t size = -1;
  if (fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode) &&
      std::fseek(file, 0, SEEK_END) == 0) {
    size = std::ftell(file);
  }
  std::fclose(file);
  return size;
}

std::size_t ReadWholeFile(const char* path, std::span<char> out) {
  if (path == nullptr) return 0;
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) return 0;
  const std::size_t count = std::fread(out.data(), 1, out.size(), file);
  std::fclose(file);
  return count;
}

}  // namespace quillix
