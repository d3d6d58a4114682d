// Quillix_itoa2: the integers of every "Input" instance of an element as text, the instances'
// renderings joined with "," ("<1,2>,-3").
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
    TextInputPort(kInputPort, siICENodeDataLong, DefaultInt(0)),
    TextResultPort(kResultPort),
};

}  // namespace

QUILLIX_EVALUATE(Quillix_itoa2) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  EvaluateListText<LONG>(context, kInputPort, InputInstances::All, BatchEnd::AllElements);
  return CStatus::OK;
}

CStatus Quillix_itoa2_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {.name = L"Quillix_itoa2",
                                  .threadingModel = siICENodeMultiThreading,
                                  .groupMax = kUnbounded,
                                  .ports = kPorts});
}
