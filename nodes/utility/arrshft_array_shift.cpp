// Quillix_arrshft: rotates each element's array, of any value type, by that element's shift;
// single values are copied through and the shift ignored.
#include "nodes/utility/array_order_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr ULONG kArrayPort = 1010;
constexpr ULONG kShiftPort = 1020;
constexpr ULONG kResultPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    ReorderedArrayPort(kArrayPort),
    {.id = kShiftPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"Shift", .displayName = L"Shift",
     .defaultValue = DefaultInt(0), .contextLink = kLinkContext},
    ReorderedResultPort(kResultPort),
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_arrshft) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  const CDataArrayLong shifts(context, kShiftPort);
  if (shifts.GetCount() == 0) return CStatus::OK;
  ReorderArrays(context, kArrayPort, ShiftOrder{shifts});
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(arrshft, siICENodeMultiThreading, kPorts)
