// Commands through the offline host: Init definitions, ExecuteCommand round trips with
// arguments by position, user data, logging, and "OpenScene" with the recent-scenes list.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <xsi_application.h>
#include <xsi_model.h>
#include <xsi_plugin.h>
#include <xsi_selection.h>
#include <xsi_x3dobject.h>
#include <xsihost/plugin_host.h>
#include <xsihost/scene.h>
#include <xsihost/scene_commands.h>
#include <xsihost/session.h>

namespace {

using namespace XSI;
namespace fs = std::filesystem;

std::string readFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void writeFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

// A path as a command argument: CValue holds wide text.
CValue pathValue(const fs::path& path) { return CValue(CString(path.string().c_str())); }

// The first recent-file entry after the recent-scenes marker, read as plain text.
std::string mostRecentScene(const std::string& list) {
  const auto marker = list.find("RECENT_SCENES_MENU");
  const auto open = list.find("<recent_file>", marker);
  const auto close = list.find("</recent_file>", open);
  if (marker == std::string::npos || open == std::string::npos || close == std::string::npos)
    return {};
  return list.substr(open + 13, close - open - 13);
}

class Commands : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::string error;
    s_plugin = xsihost::LoadedPlugin::Load(SCENE_TEST_PLUGIN_PATH, error).release();
    ASSERT_NE(s_plugin, nullptr) << error;  // loading runs the commands' Init
  }
  static void TearDownTestSuite() { delete s_plugin; }
  void SetUp() override {
    home_ = fs::temp_directory_path() / ("scene_command_test_" + std::to_string(::getpid()));
    fs::remove_all(home_);
    fs::create_directories(home_);
    ::setenv("XSI_USERHOME", home_.c_str(), 1);
    writeFile(home_ / "a.json", R"({"objects": [{"name": "cone", "type": "null"}]})");
    writeFile(home_ / "b.json", R"({"objects": [{"name": "box", "type": "cube"}]})");
    xsihost::SetActiveScene(nullptr);
    xsihost::HostLog().Take();
  }
  void TearDown() override {
    ::unsetenv("XSI_USERHOME");
    fs::remove_all(home_);
    xsihost::SetActiveScene(nullptr);
  }
  fs::path listFile() const { return home_ / "Data" / "Preferences" / "RecentFileMenus.xml"; }

  static xsihost::LoadedPlugin* s_plugin;
  fs::path home_;
};

xsihost::LoadedPlugin* Commands::s_plugin = nullptr;

TEST_F(Commands, InitDefinesDescriptionFlagsAndArgumentsWithDefaults) {
  const auto sum = xsihost::FindCommand(L"SceneTest__Sum");
  ASSERT_NE(sum, nullptr);
  EXPECT_EQ(sum->description_, L"Adds two numbers");
  EXPECT_EQ(sum->flags_ & xsihost::kCommandNoLoggingFlag, 0);
  ASSERT_EQ(sum->arguments_.size(), 3u);
  EXPECT_EQ(sum->arguments_[1].name, L"b");
  EXPECT_EQ(static_cast<double>(sum->arguments_[1].value), 2.5);
}

TEST_F(Commands, ExecuteCommandRoundTripWithArgumentsByPosition) {
  CValueArray arguments;
  arguments.Add(CValue(4));
  CValue result;
  ASSERT_EQ(Application().ExecuteCommand(L"SceneTest__Sum", arguments, result),
            CStatus(CStatus::OK));
  EXPECT_EQ(static_cast<double>(result), 6.5);  // b keeps its default
  arguments.Add(CValue(0.25));
  ASSERT_EQ(Application().ExecuteCommand(L"SceneTest__Sum", arguments, result),
            CStatus(CStatus::OK));
  EXPECT_EQ(static_cast<double>(result), 4.25);
  // An empty value stands for the default; the definition's defaults never change.
  arguments[0] = CValue();
  Application().ExecuteCommand(L"SceneTest__Sum", arguments, result);
  EXPECT_EQ(static_cast<double>(result), 1.25);
  EXPECT_EQ(static_cast<LONG>(xsihost::FindCommand(L"SceneTest__Sum")->arguments_[0].value), 1);

  const auto log = xsihost::HostLog().Take();
  ASSERT_EQ(log.size(), 3u);
  EXPECT_EQ(log[0], (xsihost::LogLine{siInfoMsg, L"SceneTest__Sum(4, 2.5, \"\")"}));
}

TEST_F(Commands, UserDataPersistsBetweenCallsOfOneCommand) {
  const auto sum = xsihost::FindCommand(L"SceneTest__Sum");
  sum->userData_ = CValue(10);
  CValue result;
  Application().ExecuteCommand(L"SceneTest__Sum", CValueArray(), result);
  Application().ExecuteCommand(L"SceneTest__Sum", CValueArray(), result);
  EXPECT_EQ(static_cast<LONG>(sum->userData_), 12);
}

TEST_F(Commands, CommandsSelectSceneObjectsAndReportFailures) {
  writeFile(
      home_ / "c.json",
      R"({"objects": [{"name": "a", "type": "null"}, {"name": "b", "type": "null", "parent": "a"}]})");
  CValue result;
  CValueArray open;
  open.Add(pathValue(home_ / "c.json"));
  ASSERT_EQ(Application().ExecuteCommand(L"OpenScene", open, result), CStatus(CStatus::OK));
  CValueArray arguments(3);
  arguments[2] = CValue(L"b");
  ASSERT_EQ(Application().ExecuteCommand(L"SceneTest__Sum", arguments, result),
            CStatus(CStatus::OK));
  ASSERT_EQ(Application().GetSelection().GetCount(), 1);
  EXPECT_EQ(Application().GetSelection()[0].GetAsText(), CString(L"b"));

  arguments[2] = CValue(L"nobody");
  EXPECT_EQ(Application().ExecuteCommand(L"SceneTest__Sum", arguments, result),
            CStatus(CStatus::Fail));
  EXPECT_TRUE(result.IsEmpty());
  arguments.Add(CValue(1));
  EXPECT_EQ(Application().ExecuteCommand(L"SceneTest__Sum", arguments, result),
            CStatus(CStatus::Fail));
  EXPECT_EQ(Application().ExecuteCommand(L"SceneTest__Nothing", CValueArray(), result),
            CStatus(CStatus::Fail));
  const auto log = xsihost::HostLog().Take();
  ASSERT_GE(log.size(), 3u);
  EXPECT_EQ(log[log.size() - 2],
            (xsihost::LogLine{siErrorMsg,
                              L"SceneTest__Sum: 4 arguments given, but the command takes 3."}));
  EXPECT_EQ(log.back(), (xsihost::LogLine{siErrorMsg, L"Unknown command \"SceneTest__Nothing\"."}));
}

TEST_F(Commands, OpenSceneLoadsTheFileAndPutsItAtTheTopOfTheRecentList) {
  CValue result;
  for (const char* name : {"a.json", "b.json", "a.json"}) {
    CValueArray arguments;
    arguments.Add(pathValue(home_ / name));
    ASSERT_EQ(Application().ExecuteCommand(L"OpenScene", arguments, result), CStatus(CStatus::OK));
  }
  EXPECT_TRUE(Application().GetActiveSceneRoot().FindChild2(L"cone").IsValid());
  const std::string list = readFile(listFile());
  EXPECT_EQ(mostRecentScene(list), (home_ / "a.json").string());
  // a.json appears once: re-opening moves it up instead of repeating it.
  EXPECT_EQ(list.find("a.json"), list.rfind("a.json"));
  EXPECT_NE(list.find((home_ / "b.json").string()), std::string::npos);
}

TEST_F(Commands, OpenSceneFromInsideAPluginCommandWithoutLoggingTheOuterCall) {
  xsihost::FindCommand(L"SceneTest__Quiet")->userData_ = pathValue(home_ / "b.json");
  CValue result;
  ASSERT_EQ(Application().ExecuteCommand(L"SceneTest__Quiet", CValueArray(), result),
            CStatus(CStatus::OK));
  EXPECT_TRUE(Application().GetActiveSceneRoot().FindChild2(L"box").IsValid());
  const auto log = xsihost::HostLog().Take();
  ASSERT_EQ(log.size(), 1u);  // only OpenScene's own call line
  EXPECT_EQ(log[0].text.rfind(L"OpenScene(", 0), 0u);
}

TEST_F(Commands, OpenSceneOfABadFileKeepsTheSceneAndTheList) {
  CValue result;
  CValueArray good;
  good.Add(pathValue(home_ / "a.json"));
  Application().ExecuteCommand(L"OpenScene", good, result);
  writeFile(home_ / "bad.json", "{\"objects\": [ {\"name\": \"x\" } ]}");
  CValueArray bad;
  bad.Add(pathValue(home_ / "bad.json"));
  xsihost::HostLog().Take();
  EXPECT_EQ(Application().ExecuteCommand(L"OpenScene", bad, result), CStatus(CStatus::Fail));
  EXPECT_TRUE(Application().GetActiveSceneRoot().FindChild2(L"cone").IsValid());
  EXPECT_EQ(mostRecentScene(readFile(listFile())), (home_ / "a.json").string());
  const auto log = xsihost::HostLog().Take();
  ASSERT_EQ(log.size(), 2u);
  EXPECT_EQ(log[1].severity, siErrorMsg);
  EXPECT_NE(log[1].text.find(L"bad.json: /objects/0: missing \"type\""), std::wstring::npos);
}

TEST_F(Commands, OpenSceneWithoutAUserHomeOnlyWarns) {
  ::unsetenv("XSI_USERHOME");
  CValue result;
  CValueArray arguments;
  arguments.Add(pathValue(home_ / "b.json"));
  EXPECT_EQ(Application().ExecuteCommand(L"OpenScene", arguments, result), CStatus(CStatus::OK));
  EXPECT_TRUE(Application().GetActiveSceneRoot().FindChild2(L"box").IsValid());
  EXPECT_EQ(xsihost::HostLog().Take().back().severity, siWarningMsg);
  EXPECT_FALSE(fs::exists(listFile()));
}

TEST_F(Commands, AttachingAgainKeepsTheDefinitionsAndUnloadingForgetsThem) {
  const auto before = xsihost::FindCommand(L"SceneTest__Sum");
  xsihost::AttachPluginCommands(*s_plugin);
  EXPECT_EQ(xsihost::FindCommand(L"SceneTest__Sum"), before);
  EXPECT_EQ(Application().GetPlugins().GetCount(), 1);

  std::string error;
  auto second = xsihost::LoadedPlugin::Load(SCENE_TEST_PLUGIN_PATH, error);
  ASSERT_NE(second, nullptr) << error;
  EXPECT_EQ(Application().GetPlugins().GetCount(), 2);
  second->Unload();
  EXPECT_EQ(Application().GetPlugins().GetCount(), 1);
  // The second load's definitions replaced the first's and left with it.
  EXPECT_EQ(xsihost::FindCommand(L"SceneTest__Sum"), nullptr);
  xsihost::DetachPluginCommands(*s_plugin);
  xsihost::AttachPluginCommands(*s_plugin);
  EXPECT_NE(xsihost::FindCommand(L"SceneTest__Sum"), nullptr);
}

TEST_F(Commands, PluginsAreListedWithTheirFolder) {
  const CRefArray plugins = Application().GetPlugins();
  ASSERT_EQ(plugins.GetCount(), 1);
  const Plugin plugin(plugins[0]);
  EXPECT_EQ(plugin.GetName(), CString(L"SceneTestPlugin"));
  const std::string origin = plugin.GetOriginPath().GetAsciiString();
  EXPECT_EQ(origin, fs::path(SCENE_TEST_PLUGIN_PATH).parent_path().string() + "/");
}

TEST(RecentScenes, UpdateKeepsOtherSectionsDropsDuplicatesAndKeepsTen) {
  const std::string start =
      "<recent_file_menus>\n  <menu name=\"RECENT_PROJECTS_MENU\">\n    "
      "<recent_file>/p</recent_file>\n"
      "  </menu>\n</recent_file_menus>\n";
  std::string list = xsihost::UpdateRecentScenes(start, "/s0");
  EXPECT_EQ(mostRecentScene(list), "/s0");
  EXPECT_NE(list.find("<recent_file>/p</recent_file>"), std::string::npos);
  for (int i = 1; i <= 12; ++i) list = xsihost::UpdateRecentScenes(list, "/s" + std::to_string(i));
  list = xsihost::UpdateRecentScenes(list, "/s5");
  EXPECT_EQ(mostRecentScene(list), "/s5");
  EXPECT_EQ(list.find("/s5<"), list.rfind("/s5<"));
  const auto section = list.substr(list.find("RECENT_SCENES_MENU"));
  std::size_t entries = 0;
  for (auto pos = section.find("<recent_file>");
       pos != std::string::npos && pos < section.find("</menu>");
       pos = section.find("<recent_file>", pos + 1))
    ++entries;
  EXPECT_EQ(entries, 10u);
  EXPECT_NE(list.find("RECENT_PROJECTS_MENU"), std::string::npos);
  // Paths are written as they are, blanks included.
  EXPECT_EQ(mostRecentScene(xsihost::UpdateRecentScenes("", " /with blank ")), " /with blank ");
}

}  // namespace
