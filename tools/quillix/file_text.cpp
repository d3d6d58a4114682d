#include "tools/quillix/file_text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace quillix::tool {

namespace {

// Opens `path` for reading (standard input for "-"); -1 and `error` set on failure.
int OpenReadable(const std::string& path, const char* what, std::string& error) {
  const int fd = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = path + ": cannot open the " + what + " file: " + std::strerror(errno);
    return -1;
  }
  struct stat info {};
  if (::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    error = path + ": is a directory";
    if (fd != STDIN_FILENO) ::close(fd);
    return -1;
  }
  return fd;
}

}  // namespace

bool CheckReadableFile(const std::string& path, const char* what, std::string& error) {
  const int fd = OpenReadable(path, what, error);
  if (fd < 0) return false;
  if (fd != STDIN_FILENO) ::close(fd);
  return true;
}

bool ReadFileText(const std::string& path, const char* what, std::string& text,
                  std::string& error) {
  const int fd = OpenReadable(path, what, error);
  if (fd < 0) return false;
  struct stat info {};
  const bool sized = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0;
  // A regular file is read in one call of its size (one spare byte sees the end); anything
  // else (a pipe, a file that grew) follows in blocks until the end.
  text.assign(sized ? static_cast<std::size_t>(info.st_size) + 1 : 0, '\0');
  std::size_t used = 0;
  bool ok = true;
  for (;;) {
    if (used == text.size()) text.resize(used + std::max<std::size_t>(used, 1 << 16));
    const ssize_t got = ::read(fd, text.data() + used, text.size() - used);
    if (got == 0) break;
    if (got < 0) {
      if (errno == EINTR) continue;
      error = path + ": cannot read the " + what + " file: " + std::strerror(errno);
      ok = false;
      break;
    }
    used += static_cast<std::size_t>(got);
  }
  text.resize(used);
  if (fd != STDIN_FILENO) ::close(fd);
  return ok;
}

}  // namespace quillix::tool
