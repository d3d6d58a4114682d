// Quillix_nan2: whether each float, single or in an array, is NaN, positive infinity or
// negative infinity, as integers 1 or 0 in any context. A NaN is reported on "IsNaN" only, so
// that a count of broken values counts it once.
#include <optional>

#include "nodes/utility/float_class_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;
using quillix::FloatTest;

namespace {

constexpr auto kPorts = FloatClassPorts({.flagType = siICENodeDataLong,
                                         .structures = siICENodeStructureAny,
                                         .contexts = siICENodeContextAny});

}  // namespace

QUILLIX_EVALUATE(Quillix_nan2) {
  const std::optional<FloatTest> test =
      TestForPort(context.GetEvaluatedOutputPortID(), FloatTest::PositiveInfinity);
  if (!test) return CStatus::OK;
  const std::optional<PortInfo> info = QueryPortInfo(context, kFloatInputPort);
  if (!info) return CStatus::OK;
  if (info->IsArray()) {
    ClassifyArrays(context, *test);
  } else {
    ClassifySingles<LONG>(context, *test);
  }
  return CStatus::OK;
}

CStatus Quillix_nan2_Register(PluginRegistrar& registrar) {
  return RegisterNode(
      registrar,
      {.name = L"Quillix_nan2", .threadingModel = siICENodeMultiThreading, .ports = kPorts});
}
