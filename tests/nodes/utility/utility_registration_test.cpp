// The registered definitions of the utility nodes: threading model, group and every port
// field, in order, exactly as graphs and scripts address them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

constexpr ULONG kNone = 0xFFFFFFFFu;
constexpr ULONG kAnyValue = 181247;  // every value type, strings included

struct Port {
  ULONG id;
  ULONG types, structures, contexts;
  const wchar_t* script;
  const wchar_t* display;
  XSI::CValue defaultValue;  // outputs: empty
  ULONG typeLink, structureLink, contextLink;
};

struct Node {
  const wchar_t* name;
  ULONG threadingModel;
  ULONG groupMax;
  std::vector<Port> inputs;
  std::vector<Port> outputs;
};

const XSI::CValue kEmpty;
const XSI::CValue kZero(XSI::LONG(0));
const XSI::CValue kFalse(false);
const XSI::CValue kZeroFloat(0.0f);
const XSI::CValue kEmptyText(L"");

Port in(ULONG id, ULONG types, ULONG structures, ULONG contexts, const wchar_t* script,
        const wchar_t* display, XSI::CValue value, ULONG t, ULONG s, ULONG c) {
  return {id, types, structures, contexts, script, display, value, t, s, c};
}
Port out(ULONG id, ULONG types, ULONG structures, ULONG contexts, const wchar_t* script,
         const wchar_t* display, ULONG t, ULONG s, ULONG c) {
  return {id, types, structures, contexts, script, display, kEmpty, t, s, c};
}

// A to-string node: one input 1010 "Input" and the string result.
Node toString(const wchar_t* name, ULONG groupMax, ULONG type, XSI::CValue value) {
  return {name,
          2,
          groupMax,
          {in(1010, type, 3, 63, L"Input", L"Input", value, kNone, 4001, 4002)},
          {out(2010, 131072, 1, 63, L"Result", L"Result", kNone, kNone, 4002)}};
}

std::vector<Node> expectedNodes() {
  const std::vector<Port> classifyFloatOutputs = {
      out(2010, 1, 1, 3, L"IsNaN", L"IsNaN", kNone, 4001, 4002),
      out(2020, 1, 1, 3, L"IsINFpos", L"Positive INF", kNone, 4001, 4002),
      out(2030, 1, 1, 3, L"IsINFneg", L"Negative INF", kNone, 4001, 4002)};
  return {
      {L"Quillix_arrrev",
       2,
       1,
       {in(1010, kAnyValue, 3, 63, L"Array", L"Array", kEmpty, 4000, 4001, 4002)},
       {out(2010, kAnyValue, 3, 63, L"Result", L"Result", 4000, 4001, 4002)}},
      {L"Quillix_arrshft",
       2,
       1,
       {in(1010, kAnyValue, 3, 63, L"Array", L"Array", kEmpty, 4000, 4001, 4002),
        in(1020, 2, 1, 63, L"Shift", L"Shift", kZero, kNone, kNone, 4002)},
       {out(2010, kAnyValue, 3, 63, L"Result", L"Result", 4000, 4001, 4002)}},
      toString(L"Quillix_btoa", 1, 1, kFalse),
      toString(L"Quillix_btoa2", kNone, 1, kFalse),
      {L"Quillix_cuappid",
       1,
       1,
       {in(1010, 2, 1, 2, L"ArraySizePerPoint", L"Array Size per Point", kEmpty, kNone, kNone,
           4002)},
       {out(2010, 2, 2, 2, L"UIDs", L"UIDs", kNone, kNone, 4002)}},
      {L"Quillix_fchk",
       1,
       1,
       {in(1010, 131072, 1, 1, L"Filepath", L"Filepath", kEmptyText, kNone, kNone, kNone)},
       {out(2010, 1, 1, 1, L"FileExists", L"File exists", kNone, kNone, kNone)}},
      toString(L"Quillix_ftoa", 1, 4, kZeroFloat),
      toString(L"Quillix_ftoa2", kNone, 4, kZeroFloat),
      toString(L"Quillix_itoa", 1, 2, kZero),
      toString(L"Quillix_itoa2", kNone, 2, kZero),
      {L"Quillix_jstr",
       1,
       1,
       {in(1010, 131072, 3, 1, L"input", L"Input", kEmptyText, kNone, kNone, kNone),
        in(1020, 131072, 1, 1, L"delimiter", L"Delimiter", kZero, kNone, kNone, kNone)},
       {out(2010, 131072, 1, 1, L"string", L"String", kNone, kNone, kNone)}},
      {L"Quillix_nan",
       2,
       1,
       {in(1010, 4, 1, 3, L"Input", L"Input", kZeroFloat, kNone, 4001, 4002)},
       classifyFloatOutputs},
      {L"Quillix_nan2",
       2,
       1,
       {in(1010, 4, 3, 63, L"Input", L"Input", kZeroFloat, kNone, 4001, 4002)},
       {out(2010, 2, 3, 63, L"IsNaN", L"IsNaN", kNone, 4001, 4002),
        out(2020, 2, 3, 63, L"IsINFpos", L"Positive INF", kNone, 4001, 4002),
        out(2030, 2, 3, 63, L"IsINFneg", L"Negative INF", kNone, 4001, 4002)}},
      {L"Quillix_ntoa",
       2,
       1,
       {in(1010, 4, 3, 63, L"Input", L"Input", kZeroFloat, kNone, 4001, 4002),
        in(1020, 2, 1, 63, L"Precision", L"Precision", kZero, kNone, 4001, 4002),
        in(1030, 1, 1, 63, L"TreatAsInt", L"Treat as Integer", kFalse, kNone, 4001, 4002),
        in(1040, 2, 1, 63, L"IntLead0", L"Leading Zeros (Integer)", kZero, kNone, 4001, 4002)},
       {out(2010, 131072, 1, 63, L"Result", L"Result", kNone, kNone, 4002)}},
      {L"Quillix_ntob",
       2,
       1,
       {in(1010, 2, 1, 63, L"Input", L"Input", kZero, kNone, 4001, 4002)},
       {out(2010, 2, 1, 63, L"Byte0", L"Byte 0", kNone, kNone, 4002),
        out(2020, 2, 1, 63, L"Byte1", L"Byte 1", kNone, kNone, 4002),
        out(2030, 2, 1, 63, L"Byte2", L"Byte 2", kNone, kNone, 4002),
        out(2040, 2, 1, 63, L"Byte3", L"Byte 3", kNone, kNone, 4002)}},
      {L"Quillix_stoi",
       1,
       1,
       {in(1010, 1, 1, 1, L"Active", L"Active", XSI::CValue(true), kNone, kNone, kNone),
        in(1620, 131072, 1, 1, L"String", L"String", kEmptyText, kNone, kNone, kNone)},
       {out(2010, 2, 2, 1, L"Array", L"Array", kNone, kNone, kNone)}},
      {L"Quillix_tbit",
       2,
       1,
       {in(1010, 2, 3, 63, L"Value", L"Value", kZero, kNone, 4001, 4002),
        in(1020, 2, 3, 63, L"Bit", L"Bit", kZero, kNone, 4001, 4002)},
       {out(2010, 2, 3, 63, L"Result", L"Result", kNone, 4001, 4002)}},
  };
}

void expectPorts(const std::vector<XSI::host_detail::PortRecord>& actual,
                 const std::vector<Port>& expected, bool inputs) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const auto& a = actual[i];
    const Port& e = expected[i];
    SCOPED_TRACE(testing::Message() << "port " << e.id);
    EXPECT_EQ(a.id, e.id);
    EXPECT_EQ(a.groupID, inputs ? 10u : kNone);
    EXPECT_EQ(a.dataTypes, e.types);
    EXPECT_EQ(a.structures, e.structures);
    EXPECT_EQ(a.contexts, e.contexts);
    EXPECT_EQ(a.scriptName, e.script);
    EXPECT_EQ(a.displayName, e.display);
    if (inputs) {
      EXPECT_EQ(a.defaultValue.GetType(), e.defaultValue.GetType());
      EXPECT_TRUE(a.defaultValue == e.defaultValue);
    }
    EXPECT_EQ(a.typeLink, e.typeLink);
    EXPECT_EQ(a.structureLink, e.structureLink);
    EXPECT_EQ(a.contextLink, e.contextLink);
  }
}

TEST(UtilityRegistration, EveryNodeRegistersExactlyItsPortTable) {
  for (const Node& node : expectedNodes()) {
    SCOPED_TRACE(std::string(node.name, node.name + std::wcslen(node.name)));
    const auto* definition = nodeDefinition(node.name);
    ASSERT_NE(definition, nullptr);
    EXPECT_TRUE(definition->registered);
    EXPECT_EQ(definition->threadingModel, node.threadingModel);
    ASSERT_EQ(definition->groups.size(), 1u);
    EXPECT_EQ(definition->groups[0].id, 10u);
    EXPECT_EQ(definition->groups[0].minInstances, 1u);
    EXPECT_EQ(definition->groups[0].maxInstances, node.groupMax);
    EXPECT_EQ(definition->groups[0].name, L"Inputs");
    expectPorts(definition->inputs, node.inputs, true);
    expectPorts(definition->outputs, node.outputs, false);
  }
  EXPECT_EQ(xsihost::failedAssertions(), 0u);
}

TEST(UtilityRegistration, NodesAreRegisteredInCatalogueOrder) {
  std::vector<std::wstring> utility;
  for (const auto& node : plugin().record().nodes) {
    for (const Node& expected : expectedNodes()) {
      if (node->name == expected.name) utility.push_back(node->name);
    }
  }
  std::vector<std::wstring> names;
  for (const Node& expected : expectedNodes()) names.push_back(expected.name);
  EXPECT_EQ(utility, names);
}

}  // namespace
}  // namespace quillix::test
