// Quillix_btoa: each element's boolean, or array of booleans, as text: "1" or "0", an array
// as "<1,0,1>", an empty one as "0". Its batch ends right after an element whose input has at
// most one entry, as this node has always done.
#include "nodes/utility/to_string_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr auto kPorts = ListTextPorts(siICENodeDataBool, DefaultBool(false));

}  // namespace

QUILLIX_EVALUATE(Quillix_btoa) {
  return EvaluateListTextNode<bool>(context, InputInstances::First, BatchEnd::AfterShortInput);
}

CStatus Quillix_btoa_Register(PluginRegistrar& registrar) {
  return RegisterListTextNode(registrar, L"Quillix_btoa", kPorts, InputInstances::First);
}
