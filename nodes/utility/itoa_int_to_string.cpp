// Quillix_itoa: each element's integer, or array of integers, as text: "-12", an array as
// "<3,-12>", an empty one as "0".
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

QUILLIX_EVALUATE(Quillix_itoa) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  EvaluateListText<LONG>(context, kInputPort, InputInstances::First, BatchEnd::AllElements);
  return CStatus::OK;
}

CStatus Quillix_itoa_Register(PluginRegistrar& registrar) {
  return RegisterNode(
      registrar,
      {.name = L"Quillix_itoa", .threadingModel = siICENodeMultiThreading, .ports = kPorts});
}
