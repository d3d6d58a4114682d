#include "core/file/file_probe.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

namespace quillix {
namespace {

namespace fs = std::filesystem;

class FileProbe : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/quillix_file_probe_XXXXXX";
    ASSERT_NE(::mkdtemp(pattern), nullptr);
    folder_ = pattern;
  }
  void TearDown() override { fs::remove_all(folder_); }

  std::string WriteFile(const char* name) {
    const fs::path path = folder_ / name;
    std::ofstream(path) << "content";
    return path.string();
  }

  fs::path folder_;
};

TEST_F(FileProbe, ReadableFileIsFoundAndMissingOneIsNot) {
  EXPECT_TRUE(CanOpenForReading(WriteFile("present.txt")));
  EXPECT_TRUE(CanOpenForReading(WriteFile("with blank and \xC3\xA9.txt")));
  EXPECT_FALSE(CanOpenForReading((folder_ / "absent.txt").string()));
  EXPECT_FALSE(CanOpenForReading(""));
}

TEST_F(FileProbe, RelativePathResolvesAgainstTheWorkingDirectory) {
  WriteFile("relative.txt");
  const fs::path previous = fs::current_path();
  fs::current_path(folder_);
  EXPECT_TRUE(CanOpenForReading("relative.txt"));
  EXPECT_TRUE(CanOpenForReading("./relative.txt"));
  fs::current_path(previous);
  EXPECT_FALSE(CanOpenForReading("relative.txt"));
}

TEST_F(FileProbe, DirectoryIsNotAFile) {
  EXPECT_FALSE(CanOpenForReading(folder_.string()));
  EXPECT_FALSE(CanOpenForReading(folder_.string() + "/"));
}

TEST_F(FileProbe, SomethingThatRefusesToOpenIsNotFound) {
  const std::string path = (folder_ / "socket").string();
  const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_GE(server, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  ASSERT_EQ(::bind(server, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_TRUE(fs::exists(path));
  EXPECT_FALSE(CanOpenForReading(path));
  ::close(server);
}

TEST_F(FileProbe, UnreadableFileIsNotFound) {
  if (::geteuid() == 0) GTEST_SKIP() << "the super-user may read any file";
  const std::string path = WriteFile("locked.txt");
  fs::permissions(path, fs::perms::none);
  EXPECT_FALSE(CanOpenForReading(path));
}

}  // namespace
}  // namespace quillix
