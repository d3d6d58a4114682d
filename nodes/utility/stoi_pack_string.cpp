// Quillix_stoi: packs element 0's string into a framed array of 32-bit integers, so that text
// can travel through integer-only attributes. Singleton context, single-threaded (whole
// strings).
#include <cstddef>

#include "core/text/string_pack.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kActivePort = 1010;
constexpr ULONG kStringPort = 1620;
constexpr ULONG kArrayPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kActivePort, .direction = kIn, .dataTypes = siICENodeDataBool,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"Active", .displayName = L"Active", .defaultValue = DefaultBool(true)},
    {.id = kStringPort, .direction = kIn, .dataTypes = siICENodeDataString,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"String", .displayName = L"String", .defaultValue = DefaultString(L"")},
    {.id = kArrayPort, .direction = kOut, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"Array", .displayName = L"Array"},
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_stoi) {
  if (context.GetEvaluatedOutputPortID() != kArrayPort) return CStatus::OK;
  const CDataArrayBool active(context, kActivePort);
  const CDataArrayString text(context, kStringPort);
  CDataArray2DLong result(context);
  const bool isActive = active.GetCount() > 0 && active[0];
  const CString string = isActive ? text[0] : CString();
  const std::size_t length = string.Length();
  const std::size_t words = quillix::PackedStringLength(isActive, length);
  CDataArray2DLong::Accessor out = result.Resize(0, static_cast<ULONG>(words));
  if (out.GetCount() != words) return CStatus::OK;
  // The host's narrow conversion decides what becomes of characters beyond 8 bits.
  quillix::PackString(isActive, length, string.GetAsciiString(), {out.GetData(), out.GetCount()});
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(stoi, siICENodeSingleThreading, kPorts)
