// Quillix__FindMatchingObjects through the offline host: its definition, the exact log of
// verbose and quiet runs, skips, the selection, the return value and the stops.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <xsi_application.h>
#include <xsi_model.h>
#include <xsi_selection.h>
#include <xsi_x3dobject.h>
#include <xsihost/scene.h>
#include <xsihost/scene_commands.h>
#include <xsihost/scene_file.h>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

using namespace XSI;
using xsihost::LogLine;

constexpr const wchar_t* kCommand = L"Quillix__FindMatchingObjects";

// A cube, a copy in another group at the same place, a moved copy, a hidden copy, a copy in
// the cube's own group, a prism of six points, nulls and a lone sphere primitive.
constexpr const char* kScene = R"({ "objects": [
  { "name": "src", "type": "null" },
  { "name": "dst", "type": "null" },
  { "name": "cube", "type": "polymsh", "parent": "src", "mesh": {
      "points": [[-1,-1,-1],[1,-1,-1],[1,1,-1],[-1,1,-1],[-1,-1,1],[1,-1,1],[1,1,1],[-1,1,1]],
      "polygons": [[0,3,2,1],[4,5,6,7],[0,1,5,4],[2,3,7,6],[1,2,6,5],[0,4,7,3]] } },
  { "name": "cube_sibling", "type": "polymsh", "parent": "src",
    "transform": { "translation": [0, 0, 3] }, "mesh": {
      "points": [[-1,-1,-1],[1,-1,-1],[1,1,-1],[-1,1,-1],[-1,-1,1],[1,-1,1],[1,1,1],[-1,1,1]],
      "polygons": [[0,3,2,1],[4,5,6,7],[0,1,5,4],[2,3,7,6],[1,2,6,5],[0,4,7,3]] } },
  { "name": "prism", "type": "polymsh", "parent": "dst", "mesh": {
      "points": [[-1,0,-1],[1,0,-1],[0,1,-1],[-1,0,1],[1,0,1],[0,1,1]],
      "polygons": [[0,2,1],[3,4,5],[0,1,4,3],[1,2,5,4],[2,0,3,5]] } },
  { "name": "cube_copy", "type": "polymsh", "parent": "dst", "mesh": {
      "points": [[-1,-1,-1],[1,-1,-1],[1,1,-1],[-1,1,-1],[-1,-1,1],[1,-1,1],[1,1,1],[-1,1,1]],
      "polygons": [[0,3,2,1],[4,5,6,7],[0,1,5,4],[2,3,7,6],[1,2,6,5],[0,4,7,3]] } },
  { "name": "cube_moved", "type": "polymsh", "parent": "dst",
    "transform": { "translation": [3, 0, 0] }, "mesh": {
      "points": [[-1,-1,-1],[1,-1,-1],[1,1,-1],[-1,1,-1],[-1,-1,1],[1,-1,1],[1,1,1],[-1,1,1]],
      "polygons": [[0,3,2,1],[4,5,6,7],[0,1,5,4],[2,3,7,6],[1,2,6,5],[0,4,7,3]] } },
  { "name": "cube_hidden", "type": "polymsh", "parent": "dst", "visible": false, "mesh": {
      "points": [[-1,-1,-1],[1,-1,-1],[1,1,-1],[-1,1,-1],[-1,-1,1],[1,-1,1],[1,1,1],[-1,1,1]],
      "polygons": [[0,3,2,1],[4,5,6,7],[0,1,5,4],[2,3,7,6],[1,2,6,5],[0,4,7,3]] } },
  { "name": "near", "type": "null", "parent": "src", "transform": { "translation": [1, 0, 0] } },
  { "name": "far", "type": "null", "parent": "dst", "transform": { "translation": [9, 0, 0] } },
  { "name": "ball", "type": "sphere", "parameters": { "radius": 1 } }
] })";

class FindMatchingObjects : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { xsihost::AttachPluginCommands(plugin()); }
  static void TearDownTestSuite() { xsihost::DetachPluginCommands(plugin()); }
  void SetUp() override {
    std::string error;
    auto scene = xsihost::ParseSceneText(kScene, ".", "match test scene", error);
    ASSERT_TRUE(scene) << error;
    xsihost::setActiveScene(scene);
    takeLog();
  }
  void TearDown() override { xsihost::setActiveScene(nullptr); }

  // Runs the command with the named arguments (the others take their defaults) and returns
  // the log lines that the command itself wrote, without the host's call line.
  CStatus Run(const std::map<std::wstring, CValue>& named, CValue& result) {
    const auto definition = xsihost::FindCommand(kCommand);
    CValueArray arguments;
    for (const auto& argument : definition->m_arguments) {
      const auto it = named.find(argument.name);
      arguments.Add(it == named.end() ? CValue() : it->second);
    }
    const CStatus status = Application().ExecuteCommand(kCommand, arguments, result);
    log = takeLog();
    if (!log.empty() && log.front().severity == siInfoMsg) log.erase(log.begin());
    return status;
  }

  std::vector<std::wstring> Selected() const {
    std::vector<std::wstring> names;
    Selection selection = Application().GetSelection();
    for (LONG i = 0; i < selection.GetCount(); ++i) {
      names.push_back(SIObject(selection[i]).GetName().GetWideString());
    }
    return names;
  }

  std::vector<LogLine> log;
};

LogLine Info(const std::wstring& text) { return {siCommentMsg, text}; }

TEST_F(FindMatchingObjects, InitDefinesTheTwentySixArgumentsWithTheirDefaults) {
  const auto definition = xsihost::FindCommand(kCommand);
  ASSERT_NE(definition, nullptr);
  EXPECT_EQ(definition->m_description, L"Find matching objects");
  EXPECT_EQ(definition->m_flags & xsihost::kCommandNoLoggingFlag, 0);
  struct Expected {
    const wchar_t* name;
    CValue::DataType type;
    double value;
  };
  const Expected expected[] = {
      {L"inObj", CValue::siString, 0},
      {L"inObjConstructionMode", CValue::siInt4, 0},
      {L"inObjEvaluationFrame", CValue::siDouble, 1.7976931348623157e308},
      {L"candidateConstructionMode", CValue::siInt4, 0},
      {L"candidateEvaluationFrame", CValue::siDouble, 1.7976931348623157e308},
      {L"candidateSkipIfSameParent", CValue::siBool, 1},
      {L"candidateSkipIfNotVisible", CValue::siBool, 1},
      {L"selectOut", CValue::siBool, 0},
      {L"numOut", CValue::siInt4, 1},
      {L"verbose", CValue::siBool, 0},
      {L"weightName", CValue::siFloat, 0},
      {L"weightPointCount", CValue::siFloat, 1},
      {L"weightTriangleCount", CValue::siFloat, 1},
      {L"weightBoundingBox", CValue::siFloat, 1},
      {L"weightBoundingSphere", CValue::siFloat, 1},
      {L"weightLocalSurfArea", CValue::siFloat, 1},
      {L"weightLocalSurfNormalAverage", CValue::siFloat, 1},
      {L"weightLocalPos", CValue::siFloat, 0},
      {L"weightLocalRot", CValue::siFloat, 0},
      {L"weightLocalScl", CValue::siFloat, 0},
      {L"weightGlobalVertexCenter", CValue::siFloat, 0.125},
      {L"weightGlobalSurfArea", CValue::siFloat, 0},
      {L"weightGlobalSurfNormalAverage", CValue::siFloat, 0},
      {L"weightGlobalPos", CValue::siFloat, 0},
      {L"weightGlobalRot", CValue::siFloat, 0},
      {L"weightGlobalScl", CValue::siFloat, 0},
  };
  ASSERT_EQ(definition->m_arguments.size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    const auto& argument = definition->m_arguments[i];
    EXPECT_EQ(argument.name, expected[i].name) << i;
    EXPECT_EQ(argument.value.GetType(), expected[i].type) << i;
    if (expected[i].type == CValue::siString) {
      EXPECT_TRUE(CString(argument.value).IsEmpty());
    } else {
      EXPECT_EQ(double(argument.value), expected[i].value) << i;
    }
  }
}

TEST_F(FindMatchingObjects, VerboseRunLogsEveryStepAndRanksTheCopiesFirst) {
  CValue result;
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")}, {L"verbose", CValue(true)}, {L"numOut", CValue(0)}},
                result),
            CStatus(CStatus::OK));
  const std::vector<LogLine> expected = {
      Info(L"input object \"cube\" is of type \"polymsh\""),
      Info(L"    num points:    8"),
      Info(L"    num triangles: 12"),
      Info(L"found 5 candidate(s):"),
      Info(L"{"),
      Info(L"    \"cube_sibling\""),
      Info(L"    \"prism\""),
      Info(L"    \"cube_copy\""),
      Info(L"    \"cube_moved\""),
      Info(L"    \"cube_hidden\""),
      Info(L"}"),
      Info(L"processing candidate \"prism\" (pnts: 6,  tris: 8)."),
      Info(L"processing candidate \"cube_copy\" (pnts: 8,  tris: 12)."),
      Info(L"processing candidate \"cube_moved\" (pnts: 8,  tris: 12)."),
      Info(L"the final matches:"),
      Info(L"{"),
      Info(L"0.0%%    cube_hidden\""),
      Info(L"0.0%%    cube_sibling\""),
      Info(L"PRISM"),
      Info(L"MOVED"),
      Info(L"100.0%%    cube_copy\""),
      Info(L"}"),
  };
  char movedLine[64];
  std::snprintf(movedLine, sizeof movedLine, "%.1f%%%%    cube_moved\"",
                (6.0 + 0.125 / 4.0) / 6.125 * 99.99);
  ASSERT_EQ(log.size(), expected.size());
  for (std::size_t i = 0; i < log.size(); ++i) {
    if (expected[i].text == L"MOVED") {
      EXPECT_EQ(log[i], Info(CString(movedLine).GetWideString())) << i;
      continue;
    }
    if (expected[i].text == L"PRISM") {  // its percentage is checked through the return value
      EXPECT_EQ(log[i].severity, siCommentMsg);
      EXPECT_NE(log[i].text.find(L"%%    prism\""), std::wstring::npos) << i;
      continue;
    }
    EXPECT_EQ(log[i], expected[i]) << i;
  }
  // The copy at the same place in another group is a perfect match; the moved copy loses
  // only its vertex-centre term: 6 + 0.125 / 4 of 6.125.
  char moved[32];
  std::snprintf(moved, sizeof moved, "%.2f", (6.0 + 0.125 / 4.0) / 6.125 * 99.99);
  const std::wstring text = CString(result).GetWideString();
  EXPECT_EQ(text.rfind(std::wstring(L"cube_copy,99.99,cube_moved,") + CString(moved).GetWideString() + L",prism,",
                       0),
            0u)
      << std::string(CString(result).GetAsciiString());
}

TEST_F(FindMatchingObjects, QuietRunLogsNothingAndSelectsTheFirstNumOut) {
  CValue result;
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")}, {L"selectOut", CValue(true)}, {L"numOut", CValue(2)}},
                result),
            CStatus(CStatus::OK));
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(Selected(), (std::vector<std::wstring>{L"cube_copy", L"cube_moved"}));
  EXPECT_EQ(std::wstring(CString(result).GetWideString()).rfind(L"cube_copy,99.99,cube_moved,", 0),
            0u);

  // numOut 1 (the default) and no selection: the selection stays as it was.
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")}}, result), CStatus(CStatus::OK));
  EXPECT_EQ(CString(result), CString(L"cube_copy,99.99"));
  EXPECT_EQ(Selected(), (std::vector<std::wstring>{L"cube_copy", L"cube_moved"}));
}

TEST_F(FindMatchingObjects, SkipsFollowTheirSwitches) {
  CValue result;
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")},
                 {L"numOut", CValue(0)},
                 {L"candidateSkipIfSameParent", CValue(false)},
                 {L"candidateSkipIfNotVisible", CValue(false)},
                 {L"weightGlobalVertexCenter", CValue(0.0f)}},
                result),
            CStatus(CStatus::OK));
  // Without the centre, every copy is perfect; equal scores keep the scene's order.
  EXPECT_EQ(std::wstring(CString(result).GetWideString())
                .rfind(L"cube_sibling,99.99,cube_copy,99.99,cube_moved,99.99,cube_hidden,99.99,prism,",
                       0),
            0u)
      << CString(result).GetAsciiString();
}

TEST_F(FindMatchingObjects, PointCountWeightMovesAPerfectMatch) {
  CValue result;
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")}, {L"weightPointCount", CValue(2.0f)}}, result),
            CStatus(CStatus::OK));
  char expected[32];
  std::snprintf(expected, sizeof expected, "cube_copy,%.2f", 6.125 / 7.125 * 99.99);
  EXPECT_EQ(CString(result), CString(expected));
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")}, {L"weightPointCount", CValue(0.5f)}}, result),
            CStatus(CStatus::OK));
  std::snprintf(expected, sizeof expected, "cube_copy,%.2f", 6.125 / 5.625 * 99.99);
  EXPECT_EQ(CString(result), CString(expected));
}

TEST_F(FindMatchingObjects, InputWithoutPointsIsComparedByTransformsOnly) {
  CValue result;
  // Defaults weigh only geometry, which a null does not have.
  ASSERT_EQ(Run({{L"inObj", CValue(L"near")}}, result), CStatus(CStatus::OK));
  EXPECT_EQ(log, (std::vector<LogLine>{{siWarningMsg, L"all weights are zero... nothing to do."}}));
  EXPECT_TRUE(result.IsEmpty());

  // The point-count weight is dropped with the geometry: only the position weight counts.
  // "near" sits at x = 1; "src" and "dst" at the origin, "far" at x = 9.
  ASSERT_EQ(Run({{L"inObj", CValue(L"near")},
                 {L"numOut", CValue(0)},
                 {L"weightGlobalPos", CValue(1.0f)},
                 {L"weightPointCount", CValue(5.0f)}},
                result),
            CStatus(CStatus::OK));
  char expected[64];
  std::snprintf(expected, sizeof expected, "src,%.2f,dst,%.2f,far,%.2f", 0.5 * 99.99,
                0.5 * 99.99, double(1.0f / 9.0f) * 99.99);
  EXPECT_EQ(CString(result), CString(expected));
}

TEST_F(FindMatchingObjects, StopsLogTheirMessageAndLeaveSelectionAndResultAlone) {
  Application().GetSelection().Add(Application().GetActiveSceneRoot().FindChild2(L"prism").GetRef());
  CValue result;
  EXPECT_EQ(Run({}, result), CStatus(CStatus::OK));
  EXPECT_EQ(log, (std::vector<LogLine>{{siWarningMsg, L"No input object specified, aborting."}}));
  EXPECT_TRUE(result.IsEmpty());

  EXPECT_EQ(Run({{L"inObj", CValue(L"nowhere")}, {L"selectOut", CValue(true)}}, result),
            CStatus(CStatus::Fail));
  EXPECT_EQ(log, (std::vector<LogLine>{{siErrorMsg, L"Unable to find \"nowhere\" in the scene."}}));
  EXPECT_TRUE(result.IsEmpty());

  std::map<std::wstring, CValue> zero = {{L"inObj", CValue(L"cube")}, {L"selectOut", CValue(true)}};
  for (const auto& argument : xsihost::FindCommand(kCommand)->m_arguments) {
    if (argument.name.rfind(L"weight", 0) == 0) zero[argument.name] = CValue(-1.0f);
  }
  EXPECT_EQ(Run(zero, result), CStatus(CStatus::OK));
  EXPECT_EQ(log, (std::vector<LogLine>{{siWarningMsg, L"all weights are zero... nothing to do."}}));
  EXPECT_TRUE(result.IsEmpty());
  EXPECT_EQ(Selected(), (std::vector<std::wstring>{L"prism"}));
}

TEST_F(FindMatchingObjects, NoCandidatesGiveAnEmptyListAndAnEmptySelection) {
  Application().GetSelection().Add(Application().GetActiveSceneRoot().FindChild2(L"prism").GetRef());
  CValue result;
  ASSERT_EQ(Run({{L"inObj", CValue(L"ball")},
                 {L"verbose", CValue(true)},
                 {L"selectOut", CValue(true)},
                 {L"weightName", CValue(1.0f)}},
                result),
            CStatus(CStatus::OK));
  EXPECT_EQ(log, (std::vector<LogLine>{Info(L"input object \"ball\" is of type \"sphere\""),
                                       Info(L"    num points:    0"),
                                       Info(L"    num triangles: 0"), Info(L"found 0 candidates."),
                                       Info(L"the final matches:"), Info(L"{"), Info(L"}")}));
  EXPECT_FALSE(result.IsEmpty());
  EXPECT_EQ(CString(result), CString(L""));
  EXPECT_TRUE(Selected().empty());
}

}  // namespace
}  // namespace quillix::test
