// Quillix_arrrev: reverses each element's array, of any value type; single values are copied
// through.
#include "nodes/utility/array_order_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr ULONG kArrayPort = 1010;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kPorts[] = {
    ReorderedArrayPort(kArrayPort),
    ReorderedResultPort(kResultPort),
};

}  // namespace

QUILLIX_EVALUATE(Quillix_arrrev) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  ReorderArrays(context, kArrayPort, ReverseOrder{});
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(arrrev, siICENodeMultiThreading, kPorts)
