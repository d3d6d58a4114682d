// Quillix_ntoa: each element's float, or array of floats, as text with a chosen precision, or
// rounded to an integer with leading zeros. A single value is written bare; an array always in
// brackets ("<3.14>"), and an empty array ("0") ends the batch, as this node has always done.
#include <optional>
#include <span>
#include <string>

#include "core/text/number_text.h"
#include "nodes/utility/host_strings.h"
#include "nodes/utility/to_string_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr ULONG kInputPort = 1010;
constexpr ULONG kPrecisionPort = 1020;
constexpr ULONG kTreatAsIntPort = 1030;
constexpr ULONG kLeadingZerosPort = 1040;
constexpr ULONG kResultPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    TextInputPort(kInputPort, siICENodeDataFloat, DefaultFloat(0.0f)),
    {.id = kPrecisionPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"Precision", .displayName = L"Precision",
     .defaultValue = DefaultInt(0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kTreatAsIntPort, .direction = kIn, .dataTypes = siICENodeDataBool,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"TreatAsInt", .displayName = L"Treat as Integer",
     .defaultValue = DefaultBool(false), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kLeadingZerosPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"IntLead0", .displayName = L"Leading Zeros (Integer)",
     .defaultValue = DefaultInt(0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    TextResultPort(kResultPort),
};
// clang-format on

// Reads a single-valued input at `element`; an input the host did not supply reads as zero.
template <class T>
T ValueAt(const CDataArray<T>& array, ULONG element) {
  return array.GetCount() > 0 ? array[element] : T{};
}

}  // namespace

QUILLIX_EVALUATE(Quillix_ntoa) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  CDataArrayString result(context);
  const std::optional<PortInfo> info = QueryPortInfoOrReport(context, kInputPort, result);
  if (!info) return CStatus::OK;
  const ElementView<float> input(context, kInputPort, info->IsArray());
  const CDataArrayLong precision(context, kPrecisionPort);
  const CDataArrayBool treatAsInt(context, kTreatAsIntPort);
  const CDataArrayLong leadingZeros(context, kLeadingZerosPort);
  CIndexSet indexSet(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const quillix::NumberTextOptions options{.precision = ValueAt(precision, it),
                                             .treatAsInteger = ValueAt(treatAsInt, it),
                                             .leadingZeros = ValueAt(leadingZeros, it)};
    const std::span<const float> entries = input.At(it);
    std::wstring text;
    if (info->IsArray()) {
      quillix::AppendNumberArrayText(entries, options, text);
    } else {
      quillix::AppendNumberText(entries.empty() ? 0.0f : entries[0], options, text);
    }
    result.SetData(it, text.c_str(), static_cast<ULONG>(text.size()));
    if (info->IsArray() && entries.empty()) break;
  }
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(ntoa, siICENodeMultiThreading, kPorts)
