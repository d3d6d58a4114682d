// Quillix_btoa2: the booleans of every "Input" instance of an element as text, the instances'
// renderings joined with "," ("0,1,<1,1>").
#include "nodes/utility/to_string_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr auto kPorts = ListTextPorts(siICENodeDataBool, DefaultBool(false));

}  // namespace

QUILLIX_EVALUATE(Quillix_btoa2) {
  return EvaluateListTextNode<bool>(context, InputInstances::All, BatchEnd::AllElements);
}

CStatus Quillix_btoa2_Register(PluginRegistrar& registrar) {
  return RegisterListTextNode(registrar, L"Quillix_btoa2", kPorts, InputInstances::All);
}
