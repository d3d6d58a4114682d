// Quillix_nan: whether each single float is NaN, positive infinity or negative infinity, as
// booleans, in the singleton or per-point context. A NaN answers true on "Positive INF" as well
// as on "IsNaN", as this node has always done.
#include <optional>

#include "nodes/utility/float_class_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::utility;
using quillix::FloatTest;

namespace {

constexpr auto kPorts = FloatClassPorts({.flagType = siICENodeDataBool,
                                         .structures = siICENodeStructureSingle,
                                         .contexts = siICENodeContextSingletonOrComponent0D});

}  // namespace

QUILLIX_EVALUATE(Quillix_nan) {
  const std::optional<FloatTest> test =
      TestForPort(context.GetEvaluatedOutputPortID(), FloatTest::PositiveInfinityOrNaN);
  if (!test) return CStatus::OK;
  ClassifySingles<bool>(context, *test);
  return CStatus::OK;
}

CStatus Quillix_nan_Register(PluginRegistrar& registrar) {
  return RegisterNode(
      registrar,
      {.name = L"Quillix_nan", .threadingModel = siICENodeMultiThreading, .ports = kPorts});
}
