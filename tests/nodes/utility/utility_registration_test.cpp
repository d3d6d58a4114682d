// The registered definitions of the utility nodes: threading model, group and every port
// field, in order, exactly as graphs and scripts address them. Each definition is written out
// one line per item so that the expectation reads like the node's port table.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/plugin_fixture.h"

namespace quillix::test {
namespace {

using Lines = std::vector<std::wstring>;

std::wstring number(ULONG value) { return value == 0xFFFFFFFFu ? L"-" : std::to_wstring(value); }

// "<value type>:<text>", e.g. "int:0", "string:''", "none".
std::wstring defaultText(const XSI::CValue& value) {
  const std::wstring text = value.GetAsText().Wide();
  switch (value.GetType()) {
    case XSI::CValue::siEmpty:
      return L"none";
    case XSI::CValue::siBool:
      return L"bool:" + text;
    case XSI::CValue::siInt4:
      return L"int:" + text;
    case XSI::CValue::siFloat:
      return L"float:" + text;
    case XSI::CValue::siString:
      return L"string:'" + text + L"'";
    default:
      return L"other:" + text;
  }
}

std::wstring portLine(const xsihost::PortRecord& p) {
  std::wstring line = (p.input ? L"in " : L"out ") + number(p.id) + L" " + p.scriptName + L" '" +
                      p.displayName + L"' " + number(p.dataTypes) + L" " + number(p.structures) +
                      L" " + number(p.contexts);
  if (p.input) line += L" group " + number(p.groupID) + L" " + defaultText(p.defaultValue);
  return line + L" links " + number(p.typeLink) + L" " + number(p.structureLink) + L" " +
         number(p.contextLink);
}

Lines describe(const std::wstring& node) {
  const auto* d = NodeDefinition(node);
  if (d == nullptr) return {};
  Lines lines{L"model " + number(d->threadingModel)};
  for (const auto& g : d->groups) {
    lines.push_back(L"group " + number(g.id) + L" " + g.name + L" " + number(g.minInstances) +
                    L".." + number(g.maxInstances));
  }
  for (const auto& p : d->inputs) lines.push_back(portLine(p));
  for (const auto& p : d->outputs) lines.push_back(portLine(p));
  return lines;
}

// Fields: ID, script name, 'display name', data types, structures, contexts, [group, default,]
// type link, structure link, context link ("-" for none).
const std::vector<std::pair<std::wstring, Lines>> kExpected = {
    {L"Quillix_arrrev",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Array 'Array' 181247 3 63 group 10 none links 4000 4001 4002",
      L"out 2010 Result 'Result' 181247 3 63 links 4000 4001 4002"}},
    {L"Quillix_arrshft",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Array 'Array' 181247 3 63 group 10 none links 4000 4001 4002",
      L"in 1020 Shift 'Shift' 2 1 63 group 10 int:0 links - - 4002",
      L"out 2010 Result 'Result' 181247 3 63 links 4000 4001 4002"}},
    {L"Quillix_btoa",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Input 'Input' 1 3 63 group 10 bool:false links - 4001 4002",
      L"out 2010 Result 'Result' 131072 1 63 links - - 4002"}},
    {L"Quillix_btoa2",
     {L"model 2", L"group 10 Inputs 1..-",
      L"in 1010 Input 'Input' 1 3 63 group 10 bool:false links - 4001 4002",
      L"out 2010 Result 'Result' 131072 1 63 links - - 4002"}},
    {L"Quillix_cuappid",
     {L"model 1", L"group 10 Inputs 1..1",
      L"in 1010 ArraySizePerPoint 'Array Size per Point' 2 1 2 group 10 none links - - 4002",
      L"out 2010 UIDs 'UIDs' 2 2 2 links - - 4002"}},
    {L"Quillix_fchk",
     {L"model 1", L"group 10 Inputs 1..1",
      L"in 1010 Filepath 'Filepath' 131072 1 1 group 10 string:'' links - - -",
      L"out 2010 FileExists 'File exists' 1 1 1 links - - -"}},
    {L"Quillix_ftoa",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Input 'Input' 4 3 63 group 10 float:0 links - 4001 4002",
      L"out 2010 Result 'Result' 131072 1 63 links - - 4002"}},
    {L"Quillix_ftoa2",
     {L"model 2", L"group 10 Inputs 1..-",
      L"in 1010 Input 'Input' 4 3 63 group 10 float:0 links - 4001 4002",
      L"out 2010 Result 'Result' 131072 1 63 links - - 4002"}},
    {L"Quillix_itoa",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Input 'Input' 2 3 63 group 10 int:0 links - 4001 4002",
      L"out 2010 Result 'Result' 131072 1 63 links - - 4002"}},
    {L"Quillix_itoa2",
     {L"model 2", L"group 10 Inputs 1..-",
      L"in 1010 Input 'Input' 2 3 63 group 10 int:0 links - 4001 4002",
      L"out 2010 Result 'Result' 131072 1 63 links - - 4002"}},
    {L"Quillix_jstr",
     {L"model 1", L"group 10 Inputs 1..1",
      L"in 1010 input 'Input' 131072 3 1 group 10 string:'' links - - -",
      L"in 1020 delimiter 'Delimiter' 131072 1 1 group 10 int:0 links - - -",
      L"out 2010 string 'String' 131072 1 1 links - - -"}},
    {L"Quillix_nan",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Input 'Input' 4 1 3 group 10 float:0 links - 4001 4002",
      L"out 2010 IsNaN 'IsNaN' 1 1 3 links - 4001 4002",
      L"out 2020 IsINFpos 'Positive INF' 1 1 3 links - 4001 4002",
      L"out 2030 IsINFneg 'Negative INF' 1 1 3 links - 4001 4002"}},
    {L"Quillix_nan2",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Input 'Input' 4 3 63 group 10 float:0 links - 4001 4002",
      L"out 2010 IsNaN 'IsNaN' 2 3 63 links - 4001 4002",
      L"out 2020 IsINFpos 'Positive INF' 2 3 63 links - 4001 4002",
      L"out 2030 IsINFneg 'Negative INF' 2 3 63 links - 4001 4002"}},
    {L"Quillix_ntoa",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Input 'Input' 4 3 63 group 10 float:0 links - 4001 4002",
      L"in 1020 Precision 'Precision' 2 1 63 group 10 int:0 links - 4001 4002",
      L"in 1030 TreatAsInt 'Treat as Integer' 1 1 63 group 10 bool:false links - 4001 4002",
      L"in 1040 IntLead0 'Leading Zeros (Integer)' 2 1 63 group 10 int:0 links - 4001 4002",
      L"out 2010 Result 'Result' 131072 1 63 links - - 4002"}},
    {L"Quillix_ntob",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Input 'Input' 2 1 63 group 10 int:0 links - 4001 4002",
      L"out 2010 Byte0 'Byte 0' 2 1 63 links - - 4002",
      L"out 2020 Byte1 'Byte 1' 2 1 63 links - - 4002",
      L"out 2030 Byte2 'Byte 2' 2 1 63 links - - 4002",
      L"out 2040 Byte3 'Byte 3' 2 1 63 links - - 4002"}},
    {L"Quillix_stoi",
     {L"model 1", L"group 10 Inputs 1..1",
      L"in 1010 Active 'Active' 1 1 1 group 10 bool:true links - - -",
      L"in 1620 String 'String' 131072 1 1 group 10 string:'' links - - -",
      L"out 2010 Array 'Array' 2 2 1 links - - -"}},
    {L"Quillix_tbit",
     {L"model 2", L"group 10 Inputs 1..1",
      L"in 1010 Value 'Value' 2 3 63 group 10 int:0 links - 4001 4002",
      L"in 1020 Bit 'Bit' 2 3 63 group 10 int:0 links - 4001 4002",
      L"out 2010 Result 'Result' 2 3 63 links - 4001 4002"}},
};

TEST(UtilityRegistration, EveryNodeRegistersExactlyItsPortTable) {
  for (const auto& [node, lines] : kExpected) {
    EXPECT_EQ(describe(node), lines);
    EXPECT_TRUE(NodeDefinition(node)->registered);
  }
  EXPECT_EQ(xsihost::FailedAssertions(), 0u);
}

TEST(UtilityRegistration, NodesAreRegisteredInCatalogueOrder) {
  std::vector<std::wstring> registered;
  for (const auto& node : Plugin().Record().nodes) {
    for (const auto& [name, lines] : kExpected) {
      if (node->name == name) registered.push_back(name);
    }
  }
  std::vector<std::wstring> catalogue;
  for (const auto& [name, lines] : kExpected) catalogue.push_back(name);
  EXPECT_EQ(registered, catalogue);
}

}  // namespace
}  // namespace quillix::test
