// Quillix_iotmb: the fraction of a time step at which two moving boxes first touch (0 when
// they already intersect, -1 when no contact is found), over single matrices or arrays.
// Each matrix packs a box, its displacement over the step and a subdivision count.
#include <xsi_dataarray.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "nodes/spatial/matrix_pair_evaluation.h"
#include "core/spatial/moving_box.h"
#include "plugin/callback_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

using namespace quillix::spatial;

// Edge-diagonal tests are on by default here: a contact time is worth the stronger test.
constexpr LONG kDefaultMode = 1;

constexpr auto kPorts =
    matrixPairPorts(kDefaultMode, L"Transformation of Box A", L"Transformation of Box B",
                    siICENodeDataFloat, L"Intersection occurs in");

struct MovingBoxPair {
  LONG mode;
  quillix::PreparedMovingBox prepare(const quillix::Mat4f& packed, bool reused) const {
    return quillix::PrepareMovingBox(quillix::MovingBoxFromMatrix(packed), reused);
  }
  float pair(const quillix::PreparedMovingBox& a, const quillix::PreparedMovingBox& b) const {
    return quillix::ContactTime(a, b, mode);
  }
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_iotmb_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    const MovingBoxPair kernel{readMode(context, kDefaultMode)};
    evaluateMatrixPairs<float>(context, kMatrixAPort, kMatrixBPort, kernel);
  });
}

CStatus Quillix_iotmb_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_iotmb", siICENodeMultiThreading, 1, 1, kPorts});
}
