// Quillix_cdbte: gap between the surfaces of two ellipsoids along their centre line, over
// single matrices or arrays of them.
#include <xsi_application.h>
#include <xsi_dataarray.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "core/spatial/ellipsoid.h"
#include "nodes/spatial/matrix_pair_evaluation.h"
#include "plugin/callback_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

using namespace quillix::spatial;

constexpr auto kPorts =
    matrixPairPorts(0, L"Transformation of Ellipsoid A", L"Transformation of Ellipsoid B",
                    siICENodeDataFloat, L"Closest Distance between Surfaces");

struct EllipsoidGap {
  quillix::PreparedEllipsoid prepare(const quillix::Mat4f& matrix, bool) const {
    return quillix::PrepareEllipsoid(quillix::EllipsoidFromMatrix(matrix));
  }
  float pair(const quillix::PreparedEllipsoid& a, const quillix::PreparedEllipsoid& b) const {
    return quillix::ClosestDistance(a, b);
  }
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_cdbte_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    // Only one method exists; any other value is worth a warning but computes the same.
    if (readMode(context, 0) != 0) {
      Application().LogMessage(L"Quillix_cdbte: illegal method!", siWarningMsg);
    }
    evaluateMatrixPairs<float>(context, kMatrixAPort, kMatrixBPort, EllipsoidGap{});
  });
}

CStatus Quillix_cdbte_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_cdbte", siICENodeMultiThreading, 1, 1, kPorts});
}
