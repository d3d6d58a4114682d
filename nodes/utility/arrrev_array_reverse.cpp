// Quillix_arrrev: reverses each element's array, of any value type; single values are copied
// through.
#include <optional>

#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "nodes/utility/array_order_evaluation.h"
#include "plugin/callback_guard.h"
#include "plugin/evaluation.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;

namespace {

constexpr ULONG kArrayPort = 1010;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kPorts[] = {
    ReorderedArrayPort(kArrayPort),
    ReorderedResultPort(kResultPort),
};

}  // namespace

QUILLIX_EVALUATE(Quillix_arrrev) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  const std::optional<PortInfo> array = QueryPortInfo(context, kArrayPort);
  if (!array) return CStatus::OK;
  ReorderArrays(context, kArrayPort, *array, ReverseOrder{});
  return CStatus::OK;
}

CStatus Quillix_arrrev_Register(PluginRegistrar& registrar) {
  return RegisterNode(
      registrar,
      {.name = L"Quillix_arrrev", .threadingModel = siICENodeMultiThreading, .ports = kPorts});
}
