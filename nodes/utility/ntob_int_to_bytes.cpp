// Quillix_ntob: splits each element's integer into its four bytes, Byte 0 the least
// significant; every output lies in 0 to 255, also for negative inputs.
#include "core/math/int_bits.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kInputPort = 1010;
constexpr ULONG kByte0Port = 2010;
constexpr ULONG kByte1Port = 2020;
constexpr ULONG kByte2Port = 2030;
constexpr ULONG kByte3Port = 2040;

constexpr PortDef ByteOutputPort(ULONG id, const wchar_t* scriptName, const wchar_t* displayName) {
  return {.id = id,
          .direction = kOut,
          .dataTypes = siICENodeDataLong,
          .structures = siICENodeStructureSingle,
          .contexts = siICENodeContextAny,
          .scriptName = scriptName,
          .displayName = displayName,
          .contextLink = kLinkContext};
}

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kInputPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"Input", .displayName = L"Input",
     .defaultValue = DefaultInt(0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    ByteOutputPort(kByte0Port, L"Byte0", L"Byte 0"),
    ByteOutputPort(kByte1Port, L"Byte1", L"Byte 1"),
    ByteOutputPort(kByte2Port, L"Byte2", L"Byte 2"),
    ByteOutputPort(kByte3Port, L"Byte3", L"Byte 3"),
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_ntob) {
  const ULONG port = context.GetEvaluatedOutputPortID();
  if (port < kByte0Port || port > kByte3Port || port % 10 != 0) return CStatus::OK;
  // The output ports are numbered in steps of 10 from Byte 0.
  const int byteIndex = static_cast<int>((port - kByte0Port) / 10);
  if (!QueryPortInfo(context, kInputPort)) return CStatus::OK;
  const CDataArrayLong input(context, kInputPort);
  CDataArrayLong result(context);
  if (input.GetCount() == 0 || result.GetCount() == 0) return CStatus::OK;
  CIndexSet indexSet(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    result[it] = quillix::ByteOfInt(input[it], byteIndex);
  }
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(ntob, siICENodeMultiThreading, kPorts)
