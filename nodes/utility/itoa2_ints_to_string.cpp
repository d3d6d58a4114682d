// Quillix_itoa2: the integers of every "Input" instance of an element as text, the instances'
// renderings joined with "," ("<1,2>,-3").
#include "nodes/utility/to_string_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr auto kPorts = ListTextPorts(siICENodeDataLong, DefaultInt(0));

}  // namespace

QUILLIX_EVALUATE(Quillix_itoa2) {
  return EvaluateListTextNode<LONG>(context, InputInstances::All, BatchEnd::AllElements);
}

CStatus Quillix_itoa2_Register(PluginRegistrar& registrar) {
  return RegisterListTextNode(registrar, L"Quillix_itoa2", kPorts, InputInstances::All);
}
