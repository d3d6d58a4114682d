// Quillix_iotb: whether two oriented boxes intersect (1) or not (0), over single matrices or
// arrays of them, with the strength of the test chosen by "mode".
#include <xsi_dataarray.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "core/spatial/box_intersect.h"
#include "nodes/spatial/matrix_pair_evaluation.h"
#include "plugin/callback_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

using namespace quillix::spatial;

constexpr auto kPorts = matrixPairPorts(0, L"Transformation of Box A", L"Transformation of Box B",
                                        siICENodeDataLong, L"A and B intersect");

struct BoxPair {
  LONG mode;
  // A box met in many pairs is inverted up front; one met once only if its pair needs it.
  quillix::PreparedBox prepare(const quillix::Mat4f& matrix, bool reused) const {
    return quillix::PrepareBox(quillix::EllipsoidFromMatrix(matrix), reused);
  }
  LONG pair(const quillix::PreparedBox& a, const quillix::PreparedBox& b) const {
    return quillix::BoxesIntersect(a, b, mode) ? 1 : 0;
  }
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_iotb_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    // Every integer is a mode: negative, zero and positive select the three test strengths.
    evaluateMatrixPairs<LONG>(context, kMatrixAPort, kMatrixBPort, BoxPair{readMode(context, 0)});
  });
}

CStatus Quillix_iotb_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_iotb", siICENodeMultiThreading, 1, 1, kPorts});
}
