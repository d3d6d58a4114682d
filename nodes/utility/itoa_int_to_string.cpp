// Quillix_itoa: each element's integer, or array of integers, as text: "-12", an array as
// "<3,-12>", an empty one as "0".
#include "nodes/utility/to_string_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr auto kPorts = ListTextPorts(siICENodeDataLong, DefaultInt(0));

}  // namespace

QUILLIX_EVALUATE(Quillix_itoa) {
  return EvaluateListTextNode<LONG>(context, InputInstances::First, BatchEnd::AllElements);
}

CStatus Quillix_itoa_Register(PluginRegistrar& registrar) {
  return RegisterListTextNode(registrar, L"Quillix_itoa", kPorts, InputInstances::First);
}
