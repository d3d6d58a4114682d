#include "tools/output/file_write.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace quillix {

OutputStatus EnsureDirectory(const std::filesystem::path& directory) {
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (error) {
    return {false, "cannot create directory " + directory.string() + ": " + error.message()};
  }
  if (!std::filesystem::is_directory(directory, error)) {
    return {false, "not a directory: " + directory.string()};
  }
  return {};
}

OutputStatus WriteFileBytes(const std::filesystem::path& file, std::string_view bytes) {
  // stdio rather than streams: errno names the reason, which users need to fix the path.
  std::FILE* stream = std::fopen(file.c_str(), "wb");
  if (stream == nullptr) {
    return {false, "cannot write " + file.string() + ": " + std::strerror(errno)};
  }
  const std::size_t written = std::fwrite(bytes.data(), 1, bytes.size(), stream);
  const int writeErrno = errno;
  const bool closed = std::fclose(stream) == 0;
  if (written != bytes.size() || !closed) {
    const int reason = written != bytes.size() ? writeErrno : errno;
    return {false, "cannot write " + file.string() + ": " + std::strerror(reason)};
  }
  return {};
}

std::string ResultFileName(std::size_t request, std::int32_t port, std::size_t element,
                           std::string_view extension) {
  std::string name = "r" + std::to_string(request) + "_p" + std::to_string(port) + "_e" +
                     std::to_string(element) + ".";
  name += extension;
  return name;
}

}  // namespace quillix
