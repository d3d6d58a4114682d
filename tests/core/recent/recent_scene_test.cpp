#include "core/recent/recent_scene.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>

namespace quillix {
namespace {

TEST(TrimSpace, SixWhitespaceCharactersAndNothingElse) {
  EXPECT_EQ(SkipLeadingSpace(" \n\t\v\f\rx "), 6u);
  EXPECT_EQ(FindLastNonSpace(" x \n\t\v\f\r"), 1u);
  EXPECT_EQ(SkipLeadingSpace("\a"), 0u);  // a bell is content, not space
  EXPECT_FALSE(SkipLeadingSpace(""));
  EXPECT_FALSE(SkipLeadingSpace(" \r\n "));
  EXPECT_FALSE(FindLastNonSpace("\t\t"));
}

// ExtractBetween with the tags <a> and </a> into an `outSize`-byte buffer that starts as
// "stale": the code and what the buffer holds afterwards.
std::pair<int, std::string> Extract(const char* text, std::ptrdiff_t outSize, bool trimLeading,
                                    bool trimTrailing) {
  char out[64] = "stale";
  const int code = ExtractBetween(text, "<a>", "</a>", out, outSize, trimLeading, trimTrailing);
  return {code, out};
}

using Result = std::pair<int, std::string>;

TEST(ExtractBetween, BadArgumentsAreRefusedWithoutWriting) {
  char out[8] = "keep";
  EXPECT_EQ(ExtractBetween(nullptr, "<a>", "</a>", out, 8, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", nullptr, "</a>", out, 8, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", "<a>", "</a>", nullptr, 8, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", "<a>", "", out, 8, false, false), kExtractBadArguments);
  EXPECT_STREQ(out, "keep");
  EXPECT_EQ(Extract("<a>x</a>", -1, false, false), Result(kExtractBadArguments, "stale"));
}

TEST(ExtractBetween, MissingTagsAndOverlongContentLeaveAnEmptyOutput) {
  EXPECT_EQ(Extract("no tags", 64, false, false), Result(kExtractTagNotFound, ""));
  EXPECT_EQ(Extract("<a>open only", 64, false, false), Result(kExtractTagNotFound, ""));
  EXPECT_EQ(Extract("</a>x<a>y", 64, false, false), Result(kExtractTagNotFound, ""));
  EXPECT_EQ(Extract("<a>1234567</a>", 8, false, false), Result(kExtractOk, "1234567"));
  EXPECT_EQ(Extract("<a>12345678</a>", 8, false, false), Result(kExtractTooLong, ""));
  // Size 0: nothing is written, not even the emptying zero.
  EXPECT_EQ(Extract("<a></a>", 0, false, false), Result(kExtractTooLong, "stale"));
}

TEST(ExtractBetween, CopiesVerbatimAndTrimsOnlyWhenAsked) {
  EXPECT_EQ(Extract("x<a> p &amp; q </a><a>2</a>", 64, false, false),
            Result(kExtractOk, " p &amp; q "));
  EXPECT_EQ(Extract("<a> \t x y \r\n</a>", 64, true, false), Result(kExtractOk, "x y \r\n"));
  EXPECT_EQ(Extract("<a> \t x y \r\n</a>", 64, false, true), Result(kExtractOk, " \t x y"));
  EXPECT_EQ(Extract("<a> \n </a>", 64, true, false), Result(kExtractOk, ""));
  EXPECT_EQ(Extract("<a> \n </a>", 64, false, true), Result(kExtractOk, ""));
  // Trimming comes before the size check.
  EXPECT_EQ(Extract("<a>   abc   </a>", 4, true, true), Result(kExtractOk, "abc"));
}

std::string Entry(const std::string& path) { return "<recent_file>" + path + "</recent_file>"; }

// FindMostRecentScene on `list`: the code and the path.
Result Scan(const std::string& list) {
  std::string path = "stale";
  const int code = FindMostRecentScene(list.c_str(), path);
  return {code, path};
}

TEST(FindMostRecentScene, TakesTheFirstEntryAfterTheFirstMarker) {
  EXPECT_EQ(
      Scan("<menu name=\"RECENT_MODELS_MENU\">" + Entry("/m.emdl") +
           "</menu><menu name=\"RECENT_SCENES_MENU\">\n  " + Entry("/latest.scn") +
           Entry("/older.scn") + "</menu><menu name=\"RECENT_SCENES_MENU\">" + Entry("/x.scn")),
      Result(kExtractOk, "/latest.scn"));
  // An empty first section: the next entry anywhere after the marker counts.
  EXPECT_EQ(Scan("RECENT_SCENES_MENU</menu><menu>" + Entry("/later.scn")),
            Result(kExtractOk, "/later.scn"));
  EXPECT_EQ(Scan("RECENT_SCENES_MENU" + Entry(std::string(1023, 'p'))),
            Result(kExtractOk, std::string(1023, 'p')));
}

TEST(FindMostRecentScene, MissingMarkerEntryOrRoomFails) {
  EXPECT_EQ(Scan(Entry("/before.scn") + "RECENT_SCENES_MENU"), Result(kExtractTagNotFound, ""));
  EXPECT_EQ(Scan(""), Result(kExtractTagNotFound, ""));
  EXPECT_EQ(Scan("RECENT_SCENES_MENU" + Entry(std::string(1024, 'p'))),
            Result(kExtractTooLong, ""));
  // A zero byte ends the text.
  EXPECT_EQ(Scan(std::string("RECENT_SCENES_MENU<recent_file>/a.scn\0</recent_file>", 52)),
            Result(kExtractTagNotFound, ""));
}

TEST(ListFile, DirectoriesAreUnreadableAndBytesAreReadAsTheyAre) {
  const std::filesystem::path dir = std::filesystem::temp_directory_path() /
                                    ("quillix_recent_scene_test_" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  EXPECT_EQ(FileSize(dir.c_str()), -1);
  EXPECT_EQ(FileSize((dir / "missing.xml").c_str()), -1);
  const std::string path = (dir / "list.xml").string();
  const std::string bytes("a\r\nb\0c", 6);
  std::FILE* file = std::fopen(path.c_str(), "wb");
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
  EXPECT_EQ(FileSize(path.c_str()), 6);
  std::string buffer(7, 'X');
  EXPECT_EQ(ReadWholeFile(path.c_str(), std::span<char>(buffer.data(), 6)), 6u);
  EXPECT_EQ(buffer, bytes + "X");
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace quillix
