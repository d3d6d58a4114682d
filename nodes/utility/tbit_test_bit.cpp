// Quillix_tbit: 1 if a bit of an integer is set, 0 otherwise, element-wise over single values
// and arrays. The bit number wraps modulo 32.
#include "core/math/int_bits.h"
#include "plugin/broadcast.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kValuePort = 1010;
constexpr ULONG kBitPort = 1020;
constexpr ULONG kResultPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kValuePort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextAny,
     .scriptName = L"Value", .displayName = L"Value",
     .defaultValue = DefaultInt(0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kBitPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextAny,
     .scriptName = L"Bit", .displayName = L"Bit",
     .defaultValue = DefaultInt(0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kResultPort, .direction = kOut, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextAny,
     .scriptName = L"Result", .displayName = L"Result",
     .structureLink = kLinkStructure, .contextLink = kLinkContext},
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_tbit) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  EvaluateElementwise<LONG, LONG, LONG>(context, kValuePort, kBitPort, quillix::TestBit);
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(tbit, siICENodeMultiThreading, kPorts)
