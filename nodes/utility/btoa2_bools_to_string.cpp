// Quillix_btoa2: the booleans of every "Input" instance of an element as text, the instances'
// renderings joined with "," ("0,1,<1,1>").
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
    TextInputPort(kInputPort, siICENodeDataBool, DefaultBool(false)),
    TextResultPort(kResultPort),
};

}  // namespace

QUILLIX_EVALUATE(Quillix_btoa2) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  EvaluateListText<bool>(context, kInputPort, InputInstances::All, BatchEnd::AllElements);
  return CStatus::OK;
}

CStatus Quillix_btoa2_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {.name = L"Quillix_btoa2",
                                  .threadingModel = siICENodeMultiThreading,
                                  .groupMax = kUnbounded,
                                  .ports = kPorts});
}
