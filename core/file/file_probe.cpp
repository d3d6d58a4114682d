#include "core/file/file_probe.h"

#include <sys/stat.h>

#include <cstdio>

namespace quillix {

bool CanOpenForReading(const std::string& path) {
  if (path.empty()) return false;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  // POSIX lets a directory be opened for reading (the reads then fail); the answer must not
  // depend on the platform, so a directory counts as not found.
  struct stat info {};
  const bool isDirectory = ::fstat(::fileno(file), &info) == 0 && S_ISDIR(info.st_mode);
  std::fclose(file);
  return !isDirectory;
}

}  // namespace quillix
