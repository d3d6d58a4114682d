// Quillix_divi: integer division giving the quotient ("Result") and the remainder, element-wise
// over single values and arrays. A zero divisor gives 0 on both outputs.
#include "core/math/int_divide.h"
#include "plugin/broadcast.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kValuePort = 1010;
constexpr ULONG kDivideByPort = 1020;
constexpr ULONG kResultPort = 2010;
constexpr ULONG kRemainderPort = 2020;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kValuePort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextAny,
     .scriptName = L"Value", .displayName = L"Value",
     .defaultValue = DefaultInt(0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kDivideByPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextAny,
     .scriptName = L"DivideBy", .displayName = L"Divide By",
     .defaultValue = DefaultInt(1), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kResultPort, .direction = kOut, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextAny,
     .scriptName = L"Result", .displayName = L"Result",
     .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kRemainderPort, .direction = kOut, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextAny,
     .scriptName = L"Remainder", .displayName = L"Remainder",
     .structureLink = kLinkStructure, .contextLink = kLinkContext},
};
// clang-format on

}  // namespace

// Quotient and remainder are evaluated in separate calls; each call divides again.
QUILLIX_EVALUATE(Quillix_divi) {
  const ULONG port = context.GetEvaluatedOutputPortID();
  if (port != kResultPort && port != kRemainderPort) return CStatus::OK;
  const bool quotient = port == kResultPort;
  EvaluateElementwise<LONG, LONG, LONG>(
      context, kValuePort, kDivideByPort, [quotient](LONG value, LONG divisor) {
        const quillix::QuotientRemainder r = quillix::DivideInt(value, divisor);
        return quotient ? r.quotient : r.remainder;
      });
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(divi, siICENodeMultiThreading, kPorts)
