#include "commands/recent_scene.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

namespace quillix {
namespace {

TEST(TrimSpace, SixWhitespaceCharactersAndNothingElse) {
  EXPECT_EQ(SkipLeadingSpace(" \n\t\v\f\rx "), 6u);
  EXPECT_EQ(FindLastNonSpace(" x \n\t\v\f\r"), 1u);
  EXPECT_EQ(SkipLeadingSpace("\a"), 0u);  // a bell is content, not space
  EXPECT_EQ(FindLastNonSpace(std::string_view("a\0", 2)), 1u);
  EXPECT_FALSE(SkipLeadingSpace(""));
  EXPECT_FALSE(SkipLeadingSpace(" \r\n "));
  EXPECT_FALSE(FindLastNonSpace(""));
  EXPECT_FALSE(FindLastNonSpace("\t\t"));
}

TEST(ExtractBetween, BadArgumentsAreRefusedWithoutWriting) {
  char out[8] = "keep";
  EXPECT_EQ(ExtractBetween(nullptr, "<a>", "</a>", out, 8, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", nullptr, "</a>", out, 8, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", "<a>", nullptr, out, 8, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", "<a>", "</a>", nullptr, 8, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", "<a>", "</a>", out, -1, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", "", "</a>", out, 8, false, false), kExtractBadArguments);
  EXPECT_EQ(ExtractBetween("x", "<a>", "", out, 8, false, false), kExtractBadArguments);
  EXPECT_STREQ(out, "keep");
}

TEST(ExtractBetween, MissingTagsEmptyTheOutput) {
  char out[16] = "stale";
  EXPECT_EQ(ExtractBetween("no tags", "<a>", "</a>", out, 16, false, false), kExtractTagNotFound);
  EXPECT_STREQ(out, "");
  std::strcpy(out, "stale");
  EXPECT_EQ(ExtractBetween("<a>open only", "<a>", "</a>", out, 16, false, false),
            kExtractTagNotFound);
  EXPECT_STREQ(out, "");
  // A closing tag before the opening one does not count.
  EXPECT_EQ(ExtractBetween("</a>x<a>y", "<a>", "</a>", out, 16, false, false),
            kExtractTagNotFound);
  // outSize 0: nothing is written, not even the emptying zero.
  char untouched[4] = "abc";
  EXPECT_EQ(ExtractBetween("none", "<a>", "</a>", untouched, 0, false, false),
            kExtractTagNotFound);
  EXPECT_STREQ(untouched, "abc");
}

TEST(ExtractBetween, CopiesVerbatimBetweenFirstOpenAndNextClose) {
  char out[64];
  EXPECT_EQ(ExtractBetween("x<a> p &amp; q </a><a>second</a>", "<a>", "</a>", out, 64, false,
                           false),
            kExtractOk);
  EXPECT_STREQ(out, " p &amp; q ");
  EXPECT_EQ(ExtractBetween("<a></a>", "<a>", "</a>", out, 64, false, false), kExtractOk);
  EXPECT_STREQ(out, "");
  // The closing tag is searched after the opening tag, not inside it.
  EXPECT_EQ(ExtractBetween("<aa>z<aa>", "<aa>", "a>", out, 64, false, false), kExtractOk);
  EXPECT_STREQ(out, "z<a");
}

TEST(ExtractBetween, ContentMustFitWithItsTerminatingZero) {
  char out[8];
  EXPECT_EQ(ExtractBetween("<a>1234567</a>", "<a>", "</a>", out, 8, false, false), kExtractOk);
  EXPECT_STREQ(out, "1234567");
  EXPECT_EQ(ExtractBetween("<a>12345678</a>", "<a>", "</a>", out, 8, false, false),
            kExtractTooLong);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(ExtractBetween("<a></a>", "<a>", "</a>", out, 0, false, false), kExtractTooLong);
}

TEST(ExtractBetween, TrimOptionsDropSpaceAtTheirEndOnly) {
  char out[32];
  EXPECT_EQ(ExtractBetween("<a> \t x y \r\n</a>", "<a>", "</a>", out, 32, true, false), kExtractOk);
  EXPECT_STREQ(out, "x y \r\n");
  EXPECT_EQ(ExtractBetween("<a> \t x y \r\n</a>", "<a>", "</a>", out, 32, false, true), kExtractOk);
  EXPECT_STREQ(out, " \t x y");
  EXPECT_EQ(ExtractBetween("<a> \t x y \r\n</a>", "<a>", "</a>", out, 32, true, true), kExtractOk);
  EXPECT_STREQ(out, "x y");
  for (bool leading : {true, false}) {
    std::strcpy(out, "stale");
    EXPECT_EQ(ExtractBetween("<a> \n </a>", "<a>", "</a>", out, 32, leading, !leading),
              kExtractOk);
    EXPECT_STREQ(out, "");
  }
  // Trimming happens before the size check: padded content that fits once trimmed is fine.
  char small[4];
  EXPECT_EQ(ExtractBetween("<a>   abc   </a>", "<a>", "</a>", small, 4, true, true), kExtractOk);
  EXPECT_STREQ(small, "abc");
}

std::string Entry(const std::string& path) { return "<recent_file>" + path + "</recent_file>"; }

TEST(FindMostRecentScene, TakesFirstEntryAfterTheFirstMarker) {
  std::string path;
  const std::string list = "<menus>\n<menu name=\"RECENT_MODELS_MENU\">" + Entry("/m/model.emdl") +
                           "</menu>\n<menu name=\"RECENT_SCENES_MENU\">\n  " +
                           Entry("/scenes/latest.scn") + Entry("/scenes/older.scn") +
                           "</menu>\n<menu name=\"RECENT_SCENES_MENU\">" + Entry("/x.scn") +
                           "</menu></menus>";
  EXPECT_EQ(FindMostRecentScene(list.c_str(), path), kExtractOk);
  EXPECT_EQ(path, "/scenes/latest.scn");

  // An empty first section: the next entry anywhere after the marker counts.
  const std::string emptySection = "RECENT_SCENES_MENU</menu><menu>" + Entry("/later.scn");
  EXPECT_EQ(FindMostRecentScene(emptySection.c_str(), path), kExtractOk);
  EXPECT_EQ(path, "/later.scn");
}

TEST(FindMostRecentScene, MissingMarkerOrEntryFails) {
  std::string path = "stale";
  const std::string noMarker = "<menu name=\"RECENT_MODELS_MENU\">" + Entry("/a.scn") + "</menu>";
  EXPECT_EQ(FindMostRecentScene(noMarker.c_str(), path), kExtractTagNotFound);
  EXPECT_EQ(path, "");
  EXPECT_EQ(FindMostRecentScene((Entry("/before.scn") + "RECENT_SCENES_MENU").c_str(), path),
            kExtractTagNotFound);
  EXPECT_EQ(FindMostRecentScene("", path), kExtractTagNotFound);
  EXPECT_EQ(FindMostRecentScene(nullptr, path), kExtractBadArguments);
}

TEST(FindMostRecentScene, KeepsSpacesAndAcceptsUpTo1023Bytes) {
  std::string path;
  const std::string padded = "RECENT_SCENES_MENU" + Entry("  /my scenes/a b.scn \t");
  EXPECT_EQ(FindMostRecentScene(padded.c_str(), path), kExtractOk);
  EXPECT_EQ(path, "  /my scenes/a b.scn \t");

  const std::string longest(1023, 'p');
  EXPECT_EQ(FindMostRecentScene(("RECENT_SCENES_MENU" + Entry(longest)).c_str(), path),
            kExtractOk);
  EXPECT_EQ(path, longest);
  EXPECT_EQ(FindMostRecentScene(("RECENT_SCENES_MENU" + Entry(longest + "p")).c_str(), path),
            kExtractTooLong);
  EXPECT_EQ(path, "");
}

TEST(FindMostRecentScene, ZeroByteEndsTheText) {
  std::string path;
  std::string list = "RECENT_SCENES_MENU<recent_file>/a.scn";
  list += '\0';
  list += "</recent_file>";
  EXPECT_EQ(FindMostRecentScene(list.c_str(), path), kExtractTagNotFound);
}

class ListFile : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("quillix_recent_scene_test_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }
  std::string Write(const std::string& name, const std::string& bytes) {
    const std::string path = (dir_ / name).string();
    std::FILE* f = std::fopen(path.c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
    return path;
  }
  std::filesystem::path dir_;
};

TEST_F(ListFile, SizeIsMinusOneForWhatCannotBeReadAndEmptyFilesAreNotReadable) {
  EXPECT_EQ(FileSize((dir_ / "missing.xml").c_str()), -1);
  EXPECT_EQ(FileSize(dir_.c_str()), -1);
  EXPECT_EQ(FileSize(nullptr), -1);
  const std::string empty = Write("empty.xml", "");
  EXPECT_EQ(FileSize(empty.c_str()), 0);
  EXPECT_FALSE(IsReadableListSize(0));
  EXPECT_FALSE(IsReadableListSize(-1));
  EXPECT_TRUE(IsReadableListSize(1));
}

TEST_F(ListFile, ReadsBinaryBytesAsTheyAre) {
  const std::string bytes = std::string("a\r\nb\0c", 6);
  const std::string path = Write("list.xml", bytes);
  ASSERT_EQ(FileSize(path.c_str()), 6);
  std::string buffer(7, 'X');
  EXPECT_EQ(ReadWholeFile(path.c_str(), std::span<char>(buffer.data(), 6)), 6u);
  EXPECT_EQ(buffer, bytes + "X");
  EXPECT_EQ(ReadWholeFile((dir_ / "missing.xml").c_str(), std::span<char>(buffer)), 0u);
}

}  // namespace
}  // namespace quillix
