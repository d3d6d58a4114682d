// Quillix_btoa: each element's boolean, or array of booleans, as text: "1" or "0", an array
// as "<1,0,1>", an empty one as "0". Its batch ends right after an element whose input has at
// most one entry, as this node has always done.
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

QUILLIX_EVALUATE(Quillix_btoa) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  EvaluateListText<bool>(context, kInputPort, InputInstances::First, BatchEnd::AfterShortInput);
  return CStatus::OK;
}

CStatus Quillix_btoa_Register(PluginRegistrar& registrar) {
  return RegisterNode(
      registrar,
      {.name = L"Quillix_btoa", .threadingModel = siICENodeMultiThreading, .ports = kPorts});
}
