// Quillix_ftoa: each element's float, or array of floats, as text in "%g" form: "0.5",
// "1e+020", an array as "<0.25,inf>", an empty one as "0".
#include "nodes/utility/to_string_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr auto kPorts = ListTextPorts(siICENodeDataFloat, DefaultFloat(0.0f));

}  // namespace

QUILLIX_EVALUATE(Quillix_ftoa) {
  return EvaluateListTextNode<float>(context, InputInstances::First, BatchEnd::AllElements);
}

CStatus Quillix_ftoa_Register(PluginRegistrar& registrar) {
  return RegisterListTextNode(registrar, L"Quillix_ftoa", kPorts, InputInstances::First);
}
