// Quillix_jstr: joins element 0's array of strings with a delimiter, skipping empty entries; a
// single string is passed through. Singleton context, single-threaded (whole strings).
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/text/string_join.h"
#include "nodes/utility/host_strings.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr ULONG kInputPort = 1010;
constexpr ULONG kDelimiterPort = 1020;
constexpr ULONG kResultPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kInputPort, .direction = kIn, .dataTypes = siICENodeDataString,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextSingleton,
     .scriptName = L"input", .displayName = L"Input", .defaultValue = DefaultString(L"")},
    // Registered with the integer 0 as default, which the host shows as an empty delimiter.
    {.id = kDelimiterPort, .direction = kIn, .dataTypes = siICENodeDataString,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"delimiter", .displayName = L"Delimiter", .defaultValue = DefaultInt(0)},
    {.id = kResultPort, .direction = kOut, .dataTypes = siICENodeDataString,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"string", .displayName = L"String"},
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_jstr) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  CDataArrayString result(context);
  const std::optional<PortInfo> info = QueryPortInfoOrReport(context, kInputPort, result);
  if (!info) return CStatus::OK;
  if (!info->IsArray()) {
    const CDataArrayString input(context, kInputPort);
    const std::wstring_view text = StringAt(input, 0);
    result.SetData(0, text.data(), static_cast<ULONG>(text.size()));
    return CStatus::OK;
  }
  const CDataArray2DString input(context, kInputPort);
  const CDataArrayString delimiter(context, kDelimiterPort);
  const std::vector<std::wstring_view> entries = StringEntries(input[0]);
  const std::wstring joined = quillix::JoinStrings(entries, StringAt(delimiter, 0));
  result.SetData(0, joined.c_str(), static_cast<ULONG>(joined.size()));
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(jstr, siICENodeSingleThreading, kPorts)
