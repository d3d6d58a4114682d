// Loading and unloading the real plug-in: identity, registration order, unload message.
#include <gtest/gtest.h>

#include <xsi_pluginregistrar.h>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

TEST(PluginEntry, IdentityIsPutInOrderWithVersionAsTwoIntegers) {
  const auto& record = Plugin().Record();
  EXPECT_EQ(record.name, L"Quillix Plugin");
  EXPECT_FALSE(record.author.empty());
  EXPECT_FALSE(record.email.empty());
  EXPECT_FALSE(record.url.empty());
  EXPECT_EQ(record.versionMajor, 1900);
  EXPECT_EQ(record.versionMinor, 0);
  ASSERT_GE(record.calls.size(), 5u);
  EXPECT_EQ(std::vector<std::wstring>(record.calls.begin(), record.calls.begin() + 5),
            (std::vector<std::wstring>{L"author", L"name", L"email", L"url", L"version"}));
}

TEST(PluginEntry, CommandsComeFirstThenNodesInCatalogueOrder) {
  const auto& record = Plugin().Record();
  EXPECT_EQ(record.commands, (std::vector<std::wstring>{L"Quillix__FindMatchingObjects",
                                                        L"Quillix__OpenMostRecentScene"}));
  ASSERT_GE(record.calls.size(), 7u);
  EXPECT_EQ(record.calls[5], L"command:Quillix__FindMatchingObjects");
  EXPECT_EQ(record.calls[6], L"command:Quillix__OpenMostRecentScene");
  std::vector<std::wstring> names;
  for (const auto& node : record.nodes) names.push_back(node->name);
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end()))
      << "nodes register alphabetically by short name";
  EXPECT_NE(record.FindNode(L"Quillix_divi"), nullptr);
  // Every definition step passed its assertion.
  EXPECT_EQ(xsihost::FailedAssertions(), 0u);
}

TEST(PluginEntry, EveryNodeFollowsThePortVocabulary) {
  for (const auto& node : Plugin().Record().nodes) {
    SCOPED_TRACE(std::string(node->name.begin(), node->name.end()));
    EXPECT_TRUE(node->threadingModel == 1 || node->threadingModel == 2);
    ASSERT_EQ(node->groups.size(), 1u);
    EXPECT_EQ(node->groups[0].id, 10u);
    EXPECT_EQ(node->groups[0].name, L"Inputs");
    ULONG expectedOutput = 2010;
    for (const auto& port : node->outputs) {
      EXPECT_EQ(port.id, expectedOutput);
      expectedOutput += 10;
    }
    for (const auto& port : node->inputs) EXPECT_EQ(port.groupID, 10u);
  }
}

TEST(PluginEntry, DiviRegistersItsExactPortTable) {
  const auto* divi = NodeDefinition(L"Quillix_divi");
  ASSERT_NE(divi, nullptr);
  EXPECT_EQ(divi->threadingModel, 2u);
  EXPECT_EQ(divi->groups[0].minInstances, 1u);
  EXPECT_EQ(divi->groups[0].maxInstances, 1u);
  ASSERT_EQ(divi->inputs.size(), 2u);
  ASSERT_EQ(divi->outputs.size(), 2u);
  const auto& value = divi->inputs[0];
  EXPECT_EQ(value.id, 1010u);
  EXPECT_EQ(value.scriptName, L"Value");
  EXPECT_EQ(value.displayName, L"Value");
  EXPECT_EQ(value.dataTypes, 2u);
  EXPECT_EQ(value.structures, 3u);
  EXPECT_EQ(value.contexts, 63u);
  EXPECT_EQ(static_cast<XSI::LONG>(value.defaultValue), 0);
  EXPECT_EQ(value.typeLink, 0xFFFFFFFFu);
  EXPECT_EQ(value.structureLink, 4001u);
  EXPECT_EQ(value.contextLink, 4002u);
  EXPECT_EQ(divi->inputs[1].scriptName, L"DivideBy");
  EXPECT_EQ(divi->inputs[1].displayName, L"Divide By");
  EXPECT_EQ(static_cast<XSI::LONG>(divi->inputs[1].defaultValue), 1);
  EXPECT_EQ(divi->outputs[1].scriptName, L"Remainder");
}

TEST(PluginEntry, UnloadLogsTheRegisteredNameOnce) {
  std::string error;
  auto second = xsihost::LoadedPlugin::Load(PluginPath(), error);
  ASSERT_NE(second, nullptr) << error;
  TakeLog();
  second->Unload();
  const auto log = TakeLog();
  ASSERT_EQ(log.size(), 1u);
  EXPECT_EQ(log[0].severity, 32);
  EXPECT_EQ(log[0].text, L"Quillix Plugin has been unloaded.");
}

TEST(PluginEntry, UnloadMessageFollowsTheRegisteredName) {
  using UnloadFunction = XSI::CStatus (*)(const XSI::PluginRegistrar&);
  auto unload = reinterpret_cast<UnloadFunction>(Plugin().Symbol("XSIUnloadPlugin"));
  ASSERT_NE(unload, nullptr);
  xsihost::PluginRecord renamed;
  XSI::PluginRegistrar registrar(&renamed);
  registrar.PutName(L"Other Name");
  TakeLog();
  EXPECT_EQ(unload(registrar), XSI::CStatus::OK);
  const auto log = TakeLog();
  ASSERT_EQ(log.size(), 1u);
  EXPECT_EQ(log[0].text, L"Other Name has been unloaded.");
}

TEST(PluginEntry, MissingOrForeignFilesAreRefusedWithAReason) {
  std::string error;
  EXPECT_EQ(xsihost::LoadedPlugin::Load("/nonexistent/libQuillix.so", error), nullptr);
  EXPECT_NE(error.find("/nonexistent/libQuillix.so"), std::string::npos);
  EXPECT_EQ(xsihost::LoadedPlugin::Load("/etc/hostname", error), nullptr);
  EXPECT_NE(error.find("cannot load"), std::string::npos);
}

}  // namespace
}  // namespace quillix::test
