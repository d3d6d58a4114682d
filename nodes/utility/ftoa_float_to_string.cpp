// Quillix_ftoa: each element's float, or array of floats, as text in "%g" form: "0.5",
// "1e+020", an array as "<0.25,inf>", an empty one as "0".
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "nodes/utility/to_string_evaluation.h"
#include "plugin/callback_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr ULONG kInputPort = 1010;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kPorts[] = {
    TextInputPort(kInputPort, siICENodeDataFloat, DefaultFloat(0.0f)),
    TextResultPort(kResultPort),
};

}  // namespace

QUILLIX_EVALUATE(Quillix_ftoa) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  EvaluateListText<float>(context, kInputPort, InputInstances::First, BatchEnd::AllElements);
  return CStatus::OK;
}

CStatus Quillix_ftoa_Register(PluginRegistrar& registrar) {
  return RegisterNode(
      registrar,
      {.name = L"Quillix_ftoa", .threadingModel = siICENodeMultiThreading, .ports = kPorts});
}
