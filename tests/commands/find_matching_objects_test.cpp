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

// One polygon mesh of the scene below: a 2-unit cube unless `points` and `polygons` say
// otherwise.
std::string Mesh(const std::string& name, const std::string& parent, const std::string& extra,
                 const std::string& points =
                     "[-1,-1,-1],[1,-1,-1],[1,1,-1],[-1,1,-1],[-1,-1,1],"
                     "[1,-1,1],[1,1,1],[-1,1,1]",
                 const std::string& polygons =
                     "[0,3,2,1],[4,5,6,7],[0,1,5,4],[2,3,7,6],"
                     "[1,2,6,5],[0,4,7,3]") {
  return R"({ "name": ")" + name + R"(", "type": "polymsh", "parent": ")" + parent + "\", " +
         extra + R"( "mesh": { "points": [)" + points + R"(], "polygons": [)" + polygons +
         "] } },\n";
}

// A cube, a copy in its own group, a prism of six points and, in another group at the same
// place, a copy, a moved copy and a hidden copy; then nulls and a lone sphere primitive.
const std::string kScene =
    R"({ "objects": [ { "name": "src", "type": "null" }, { "name": "dst", "type": "null" },)" +
    Mesh("cube", "src", "") +
    Mesh("cube_sibling", "src", R"("transform": { "translation": [0, 0, 3] },)") +
    Mesh("prism", "dst", "", "[-1,0,-1],[1,0,-1],[0,1,-1],[-1,0,1],[1,0,1],[0,1,1]",
         "[0,2,1],[3,4,5],[0,1,4,3],[1,2,5,4],[2,0,3,5]") +
    Mesh("cube_copy", "dst", "") +
    Mesh("cube_moved", "dst", R"("transform": { "translation": [3, 0, 0] },)") +
    Mesh("cube_hidden", "dst", R"("visible": false,)") +
    R"({ "name": "near", "type": "null", "parent": "src", "transform": { "translation": [1, 0, 0] } },
  { "name": "far", "type": "null", "parent": "dst", "transform": { "translation": [9, 0, 0] } },
  { "name": "ball", "type": "sphere", "parameters": { "radius": 1 } } ] })";

class FindMatchingObjects : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { xsihost::AttachPluginCommands(Plugin()); }
  static void TearDownTestSuite() { xsihost::DetachPluginCommands(Plugin()); }
  void SetUp() override {
    std::string error;
    auto scene = xsihost::ParseSceneText(kScene, ".", "match test scene", error);
    ASSERT_TRUE(scene) << error;
    xsihost::SetActiveScene(scene);
    TakeLog();
  }
  void TearDown() override { xsihost::SetActiveScene(nullptr); }

  // Runs the command with the named arguments (the others take their defaults) and returns
  // the log lines that the command itself wrote, without the host's call line.
  CStatus Run(const std::map<std::wstring, CValue>& named) {
    const auto definition = xsihost::FindCommand(kCommand);
    CValueArray arguments;
    for (const auto& argument : definition->arguments_) {
      const auto it = named.find(argument.name);
      arguments.Add(it == named.end() ? CValue() : it->second);
    }
    const CStatus status = Application().ExecuteCommand(kCommand, arguments, result);
    log = TakeLog();
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
  CValue result;  // the command's return value; empty when it set none
};

LogLine Info(const std::wstring& text) { return {siCommentMsg, text}; }

TEST_F(FindMatchingObjects, InitDefinesTheTwentySixArgumentsWithTheirDefaults) {
  const auto definition = xsihost::FindCommand(kCommand);
  ASSERT_NE(definition, nullptr);
  EXPECT_EQ(definition->description_, L"Find matching objects");
  EXPECT_EQ(definition->flags_ & xsihost::kCommandNoLoggingFlag, 0);
  std::wstring table;
  for (const auto& argument : definition->arguments_) {
    table += argument.name + L"=" + CString(argument.value).GetWideString() + L"/" +
             std::to_wstring(argument.value.GetType()) + L" ";
  }
  // name=default/type, the types as the host numbers them: 8 string, 3 integer, 5 double,
  // 11 boolean, 4 float.
  EXPECT_EQ(table,
            L"inObj=/8 inObjConstructionMode=0/3 inObjEvaluationFrame=1.7976931348623157e+308/5 "
            L"candidateConstructionMode=0/3 candidateEvaluationFrame=1.7976931348623157e+308/5 "
            L"candidateSkipIfSameParent=true/11 candidateSkipIfNotVisible=true/11 "
            L"selectOut=false/11 numOut=1/3 verbose=false/11 weightName=0/4 weightPointCount=1/4 "
            L"weightTriangleCount=1/4 weightBoundingBox=1/4 weightBoundingSphere=1/4 "
            L"weightLocalSurfArea=1/4 weightLocalSurfNormalAverage=1/4 weightLocalPos=0/4 "
            L"weightLocalRot=0/4 weightLocalScl=0/4 weightGlobalVertexCenter=0.125/4 "
            L"weightGlobalSurfArea=0/4 weightGlobalSurfNormalAverage=0/4 weightGlobalPos=0/4 "
            L"weightGlobalRot=0/4 weightGlobalScl=0/4 ");
}

// The log as one text, a line each: severity, blank, text.
std::wstring Joined(const std::vector<LogLine>& lines) {
  std::wstring text;
  for (const LogLine& line : lines)
    text += std::to_wstring(line.severity) + L" " + line.text + L"\n";
  return text;
}

TEST_F(FindMatchingObjects, VerboseRunLogsEveryStep) {
  // Counts only, so that every percentage is known: the cubes match fully, the prism has
  // 6 of 8 points and 8 of 12 triangles.
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")},
                 {L"verbose", CValue(true)},
                 {L"numOut", CValue(0)},
                 {L"weightBoundingBox", CValue(0.0f)},
                 {L"weightBoundingSphere", CValue(0.0f)},
                 {L"weightLocalSurfArea", CValue(0.0f)},
                 {L"weightLocalSurfNormalAverage", CValue(0.0f)},
                 {L"weightGlobalVertexCenter", CValue(0.0f)}}),
            CStatus(CStatus::OK));
  const double prism = double(0.75f + float(8.0 / 12.0)) / 2.0 * 99.99;
  char prismLine[64], prismText[64];
  std::snprintf(prismLine, sizeof prismLine, "%.1f", prism);
  std::snprintf(prismText, sizeof prismText, "%.2f", prism);
  EXPECT_EQ(Joined(log),
            std::wstring(L"32 input object \"cube\" is of type \"polymsh\"\n"
                         L"32     num points:    8\n"
                         L"32     num triangles: 12\n"
                         L"32 found 5 candidate(s):\n32 {\n"
                         L"32     \"cube_sibling\"\n32     \"prism\"\n32     \"cube_copy\"\n"
                         L"32     \"cube_moved\"\n32     \"cube_hidden\"\n32 }\n"
                         L"32 processing candidate \"prism\" (pnts: 6,  tris: 8).\n"
                         L"32 processing candidate \"cube_copy\" (pnts: 8,  tris: 12).\n"
                         L"32 processing candidate \"cube_moved\" (pnts: 8,  tris: 12).\n"
                         L"32 the final matches:\n32 {\n"
                         L"32 0.0%%    cube_hidden\"\n32 0.0%%    cube_sibling\"\n"
                         L"32 ") +
                CString(prismLine).GetWideString() +
                L"%%    prism\"\n"
                L"32 100.0%%    cube_moved\"\n32 100.0%%    cube_copy\"\n32 }\n");
  EXPECT_EQ(CString(result), CString(L"cube_copy,99.99,cube_moved,99.99,prism,") + prismText);
}

TEST_F(FindMatchingObjects, QuietRunWithDefaultWeightsLogsNothingAndSelectsTheFirstNumOut) {
  ASSERT_EQ(
      Run({{L"inObj", CValue(L"cube")}, {L"selectOut", CValue(true)}, {L"numOut", CValue(2)}}),
      CStatus(CStatus::OK));
  EXPECT_TRUE(log.empty());
  EXPECT_EQ(Selected(), (std::vector<std::wstring>{L"cube_copy", L"cube_moved"}));
  // The copy in place is perfect; the moved one loses three quarters of its centre term.
  char expected[64];
  std::snprintf(expected, sizeof expected, "cube_copy,99.99,cube_moved,%.2f",
                double(6.03125f) / 6.125 * 99.99);
  EXPECT_EQ(CString(result), CString(expected));
  // Without selectOut the selection stays as it was.
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")}}), CStatus(CStatus::OK));
  EXPECT_EQ(CString(result), CString(L"cube_copy,99.99"));
  EXPECT_EQ(Selected(), (std::vector<std::wstring>{L"cube_copy", L"cube_moved"}));
}

TEST_F(FindMatchingObjects, SkipsFollowTheirSwitches) {
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")},
                 {L"numOut", CValue(0)},
                 {L"candidateSkipIfSameParent", CValue(false)},
                 {L"candidateSkipIfNotVisible", CValue(false)},
                 {L"weightGlobalVertexCenter", CValue(0.0f)}}),
            CStatus(CStatus::OK));
  // Without the centre, every copy is perfect; equal scores keep the scene's order.
  EXPECT_EQ(
      std::wstring(CString(result).GetWideString())
          .rfind(L"cube_sibling,99.99,cube_copy,99.99,cube_moved,99.99,cube_hidden,99.99,prism,",
                 0),
      0u);
}

TEST_F(FindMatchingObjects, PointCountWeightMovesAPerfectMatch) {
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")}, {L"weightPointCount", CValue(2.0f)}}),
            CStatus(CStatus::OK));
  char expected[32];
  std::snprintf(expected, sizeof expected, "cube_copy,%.2f", 6.125 / 7.125 * 99.99);
  EXPECT_EQ(CString(result), CString(expected));
  ASSERT_EQ(Run({{L"inObj", CValue(L"cube")}, {L"weightPointCount", CValue(0.5f)}}),
            CStatus(CStatus::OK));
  std::snprintf(expected, sizeof expected, "cube_copy,%.2f", 6.125 / 5.625 * 99.99);
  EXPECT_EQ(CString(result), CString(expected));
}

TEST_F(FindMatchingObjects, InputWithoutPointsIsComparedByTransformsOnly) {
  // Defaults weigh only geometry, which a null does not have.
  ASSERT_EQ(Run({{L"inObj", CValue(L"near")}}), CStatus(CStatus::OK));
  EXPECT_EQ(log, (std::vector<LogLine>{{siWarningMsg, L"all weights are zero... nothing to do."}}));
  EXPECT_TRUE(result.IsEmpty());

  // The point-count weight is dropped with the geometry: only the position weight counts.
  // "near" sits at x = 1; "src" and "dst" at the origin, "far" at x = 9.
  ASSERT_EQ(Run({{L"inObj", CValue(L"near")},
                 {L"numOut", CValue(0)},
                 {L"weightGlobalPos", CValue(1.0f)},
                 {L"weightPointCount", CValue(5.0f)}}),
            CStatus(CStatus::OK));
  char expected[64];
  std::snprintf(expected, sizeof expected, "src,%.2f,dst,%.2f,far,%.2f", 0.5 * 99.99, 0.5 * 99.99,
                double(1.0f / 9.0f) * 99.99);
  EXPECT_EQ(CString(result), CString(expected));
}

TEST_F(FindMatchingObjects, StopsLogTheirMessageAndLeaveSelectionAndResultAlone) {
  Application().GetSelection().Add(
      Application().GetActiveSceneRoot().FindChild2(L"prism").GetRef());
  EXPECT_EQ(Run({}), CStatus(CStatus::OK));
  EXPECT_EQ(log, (std::vector<LogLine>{{siWarningMsg, L"No input object specified, aborting."}}));
  EXPECT_TRUE(result.IsEmpty());

  EXPECT_EQ(Run({{L"inObj", CValue(L"nowhere")}, {L"selectOut", CValue(true)}}),
            CStatus(CStatus::Fail));
  EXPECT_EQ(log, (std::vector<LogLine>{{siErrorMsg, L"Unable to find \"nowhere\" in the scene."}}));
  EXPECT_TRUE(result.IsEmpty());

  std::map<std::wstring, CValue> zero = {{L"inObj", CValue(L"cube")}, {L"selectOut", CValue(true)}};
  for (const auto& argument : xsihost::FindCommand(kCommand)->arguments_) {
    if (argument.name.rfind(L"weight", 0) == 0) zero[argument.name] = CValue(-1.0f);
  }
  EXPECT_EQ(Run(zero), CStatus(CStatus::OK));
  EXPECT_EQ(log, (std::vector<LogLine>{{siWarningMsg, L"all weights are zero... nothing to do."}}));
  EXPECT_TRUE(result.IsEmpty());
  EXPECT_EQ(Selected(), (std::vector<std::wstring>{L"prism"}));
}

TEST_F(FindMatchingObjects, NoCandidatesGiveAnEmptyListAndAnEmptySelection) {
  Application().GetSelection().Add(
      Application().GetActiveSceneRoot().FindChild2(L"prism").GetRef());
  ASSERT_EQ(Run({{L"inObj", CValue(L"ball")},
                 {L"verbose", CValue(true)},
                 {L"selectOut", CValue(true)},
                 {L"weightName", CValue(1.0f)}}),
            CStatus(CStatus::OK));
  EXPECT_EQ(log, (std::vector<LogLine>{Info(L"input object \"ball\" is of type \"sphere\""),
                                       Info(L"    num points:    0"), Info(L"    num triangles: 0"),
                                       Info(L"found 0 candidates."), Info(L"the final matches:"),
                                       Info(L"{"), Info(L"}")}));
  EXPECT_FALSE(result.IsEmpty());
  EXPECT_EQ(CString(result), CString(L""));
  EXPECT_TRUE(Selected().empty());
}

}  // namespace
}  // namespace quillix::test
