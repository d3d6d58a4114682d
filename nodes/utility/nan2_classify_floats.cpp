// Quillix_nan2: whether each float, single or in an array, is NaN, positive infinity or
// negative infinity, as integers 1 or 0 in any context. A NaN is reported on "IsNaN" only, so
// that a count of broken values counts it once.
#include <optional>

#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "nodes/utility/float_class_evaluation.h"
#include "plugin/callback_guard.h"
#include "plugin/evaluation.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;
using quillix::FloatTest;

namespace {

constexpr FloatClassPortIds kPortIds{
    .input = 1010, .isNaN = 2010, .positiveInfinity = 2020, .negativeInfinity = 2030};

constexpr auto kPorts = FloatClassPorts(kPortIds, {.flagType = siICENodeDataLong,
                                                   .structures = siICENodeStructureAny,
                                                   .contexts = siICENodeContextAny});

}  // namespace

QUILLIX_EVALUATE(Quillix_nan2) {
  const std::optional<FloatTest> test =
      TestForPort(context.GetEvaluatedOutputPortID(), kPortIds, FloatTest::PositiveInfinity);
  if (!test) return CStatus::OK;
  const std::optional<PortInfo> info = QueryPortInfo(context, kPortIds.input);
  if (!info) return CStatus::OK;
  if (info->IsArray()) {
    ClassifyArrays(context, kPortIds.input, *test);
  } else {
    ClassifySingles<LONG>(context, kPortIds.input, *test);
  }
  return CStatus::OK;
}

CStatus Quillix_nan2_Register(PluginRegistrar& registrar) {
  return RegisterNode(
      registrar,
      {.name = L"Quillix_nan2", .threadingModel = siICENodeMultiThreading, .ports = kPorts});
}
