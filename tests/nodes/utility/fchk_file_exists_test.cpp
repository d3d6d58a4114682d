// Quillix_fchk through the offline host.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "nodes/utility/node_values.h"

namespace quillix::test {
namespace {

constexpr ULONG kFilepath = 1010, kFileExists = 2010;

Written<bool> FileExists(const std::wstring& path) {
  return writtenSingles<bool>(Evaluate(
      L"Quillix_fchk", requestOf(1, {{kFilepath, PortValues::Strings1D({path})}}), kFileExists));
}

TEST(FileExistsNode, AnswersWhetherThePathOpensForReading) {
  char pattern[] = "/tmp/quillix_fchk_XXXXXX";
  ASSERT_NE(::mkdtemp(pattern), nullptr);
  const std::filesystem::path folder = pattern;
  std::ofstream(folder / "cache.bin") << "data";
  std::ofstream(folder / "caf\xE9.txt") << "data";  // the host's narrow form of "café.txt"

  EXPECT_EQ(FileExists(folder.wstring() + L"/cache.bin"), (Written<bool>{true}));
  EXPECT_EQ(FileExists(folder.wstring() + L"/caf\u00e9.txt"), (Written<bool>{true}));
  EXPECT_EQ(FileExists(folder.wstring() + L"/missing.bin"), (Written<bool>{false}));
  std::filesystem::remove_all(folder);
}

TEST(FileExistsNode, UnconnectedPathAndUnknownPortWriteFalseAndNothing) {
  EXPECT_EQ(writtenSingles<bool>(Evaluate(L"Quillix_fchk", requestOf(1, {}), kFileExists)),
            (Written<bool>{false}));
  EXPECT_EQ(Evaluate(L"Quillix_fchk", requestOf(1, {}), 2020).values.count, 0u);
}

}  // namespace
}  // namespace quillix::test
