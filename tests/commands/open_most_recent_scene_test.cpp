// Quillix__OpenMostRecentScene through the offline host: the user directory, the list file,
// the exact log lines and the scene that "OpenScene" really opens.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <xsi_application.h>
#include <xsi_model.h>
#include <xsi_x3dobject.h>
#include <xsihost/scene.h>
#include <xsihost/scene_commands.h>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

using namespace XSI;
using xsihost::LogLine;
namespace fs = std::filesystem;

constexpr const wchar_t* kCommand = L"Quillix__OpenMostRecentScene";

std::wstring Wide(const std::string& s) { return std::wstring(s.begin(), s.end()); }

std::string Entry(const std::string& path) { return "<recent_file>" + path + "</recent_file>"; }

class OpenMostRecentScene : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { xsihost::AttachPluginCommands(Plugin()); }
  static void TearDownTestSuite() { xsihost::DetachPluginCommands(Plugin()); }
  void SetUp() override {
    home_ = fs::temp_directory_path() / ("quillix_recent_" + std::to_string(getpid()));
    fs::remove_all(home_);
    fs::create_directories(home_ / "Data" / "Preferences");
    ::setenv("XSI_USERHOME", home_.c_str(), 1);
    xsihost::SetActiveScene(nullptr);
    TakeLog();
  }
  void TearDown() override {
    ::unsetenv("XSI_USERHOME");
    fs::remove_all(home_);
    xsihost::SetActiveScene(nullptr);
  }

  std::string ListPath() const {
    return (home_ / "Data" / "Preferences" / "RecentFileMenus.xml").string();
  }
  void WriteList(const std::string& bytes) const {
    std::ofstream(ListPath(), std::ios::binary) << bytes;
  }
  std::string WriteScene(const std::string& name, const std::string& object) const {
    const std::string path = (home_ / name).string();
    std::ofstream(path) << R"({ "objects": [ { "name": ")" << object
                        << R"(", "type": "null" } ] })";
    return path;
  }
  // Runs the command; the log lines after the host's call line.
  CStatus Run() {
    CValue result;
    const CStatus status = Application().ExecuteCommand(kCommand, CValueArray(), result);
    log_ = TakeLog();
    EXPECT_FALSE(log_.empty());
    if (!log_.empty()) {
      EXPECT_EQ(log_.front(), (LogLine{siInfoMsg, L"Quillix__OpenMostRecentScene()"}));
      log_.erase(log_.begin());
    }
    return status;
  }
  fs::path home_;
  std::vector<LogLine> log_;
};

TEST_F(OpenMostRecentScene, InitSetsDescriptionAndNoArguments) {
  const auto definition = xsihost::FindCommand(kCommand);
  ASSERT_NE(definition, nullptr);
  EXPECT_EQ(definition->description_, L"Opens the most recent scene file");
  EXPECT_EQ(definition->flags_ & xsihost::kCommandNoLoggingFlag, 0);
  EXPECT_TRUE(definition->arguments_.empty());
}

TEST_F(OpenMostRecentScene, OpensTheFirstSceneAfterTheMarker) {
  const std::string latest = WriteScene("latest.json", "fresh");
  const std::string older = WriteScene("older.json", "stale");
  WriteList("<recent_file_menus>\n  <menu name=\"RECENT_MODELS_MENU\">" + Entry(older) +
            "</menu>\n  <menu name=\"RECENT_SCENES_MENU\">\n    " + Entry(latest) + "\n    " +
            Entry(older) + "\n  </menu>\n  <menu name=\"RECENT_SCENES_MENU\">" + Entry(older) +
            "</menu>\n</recent_file_menus>\n");
  EXPECT_EQ(Run(), CStatus(CStatus::OK));
  ASSERT_GE(log_.size(), 2u);
  EXPECT_EQ(log_[0],
            (LogLine{siCommentMsg, L"found most recent scene \"" + Wide(latest) + L"\"."}));
  EXPECT_EQ(log_[1].text.rfind(L"OpenScene(\"" + Wide(latest) + L"\"", 0), 0u);
  EXPECT_TRUE(Application().GetActiveSceneRoot().FindChild2(L"fresh").IsValid());
}

TEST_F(OpenMostRecentScene, SpacesAroundTheEntryArePartOfThePath) {
  WriteList("RECENT_SCENES_MENU" + Entry("  /scenes/my scene.json\t"));
  // "OpenScene" cannot open that file and says so, but the command has done its part.
  EXPECT_EQ(Run(), CStatus(CStatus::OK));
  ASSERT_GE(log_.size(), 2u);
  EXPECT_EQ(log_[0],
            (LogLine{siCommentMsg, L"found most recent scene \"  /scenes/my scene.json\t\"."}));
  EXPECT_EQ(log_[1].text.rfind(L"OpenScene(\"  /scenes/my scene.json\t\"", 0), 0u);
}

TEST_F(OpenMostRecentScene, WithoutUserHomeNothingIsRead) {
  ::unsetenv("XSI_USERHOME");
  EXPECT_EQ(Run(), CStatus(CStatus::Fail));
  EXPECT_EQ(log_, (std::vector<LogLine>{{siErrorMsg,
                                         L"unable to get user home directory (environment variable "
                                         L"\"XSI_USERHOME\" not set?)."}}));
}

TEST_F(OpenMostRecentScene, MissingOrEmptyListCannotBeOpened) {
  const std::vector<LogLine> unableToOpen = {
      {siErrorMsg, L"unable to open \"" + Wide(ListPath()) + L"\"."}};
  EXPECT_EQ(Run(), CStatus(CStatus::Fail));
  EXPECT_EQ(log_, unableToOpen);
  WriteList("");
  EXPECT_EQ(Run(), CStatus(CStatus::Fail));
  EXPECT_EQ(log_, unableToOpen);
}

TEST_F(OpenMostRecentScene, ListsWithoutAUsableEntryCannotBeExtracted) {
  for (const std::string& list :
       {"<menu name=\"RECENT_MODELS_MENU\">" + Entry("/a.json") + "</menu>",
        std::string("RECENT_SCENES_MENU<recent_file>/never/closed.json"),
        "RECENT_SCENES_MENU" + Entry("/" + std::string(1023, 'p'))}) {  // 1,024 bytes
    WriteList(list);
    EXPECT_EQ(Run(), CStatus(CStatus::Fail));
    EXPECT_EQ(
        log_,
        (std::vector<LogLine>{{siErrorMsg, L"unable to extract the most recent scene from \"" +
                                               Wide(ListPath()) + L"\"."}}));
  }
}

}  // namespace
}  // namespace quillix::test
