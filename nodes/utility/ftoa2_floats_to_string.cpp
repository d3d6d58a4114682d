// Quillix_ftoa2: the floats of every "Input" instance of an element as text in "%g" form, the
// instances' renderings joined with ",".
#include "nodes/utility/to_string_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr auto kPorts = ListTextPorts(siICENodeDataFloat, DefaultFloat(0.0f));

}  // namespace

QUILLIX_EVALUATE(Quillix_ftoa2) {
  return EvaluateListTextNode<float>(context, InputInstances::All, BatchEnd::AllElements);
}

CStatus Quillix_ftoa2_Register(PluginRegistrar& registrar) {
  return RegisterListTextNode(registrar, L"Quillix_ftoa2", kPorts, InputInstances::All);
}
