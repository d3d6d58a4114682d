// Quillix_iotmb: the fraction of a time step at which two moving boxes first touch (0 when
// they already intersect, -1 when no contact is found), over single matrices or arrays.
// Each matrix packs a box, its displacement over the step and a subdivision count.
#include <xsi_matrix4f.h>

#include "core/spatial/moving_box.h"
#include "nodes/spatial/matrix_pair_node.h"
#include "plugin/host_arrays.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::spatial;

namespace {

// Edge-diagonal tests are on by default here: a contact time is worth the stronger test.
constexpr LONG kDefaultMode = 1;

constexpr PortDef kPorts[] = {
    ModePortRow(kDefaultMode),
    MatrixPortRow(kMatrixAPort, L"tmA", L"Transformation of Box A"),
    MatrixPortRow(kMatrixBPort, L"tmB", L"Transformation of Box B"),
    ResultPortRow(siICENodeDataFloat, L"Intersection occurs in"),
};

struct MovingBoxKernel {
  LONG mode;
  quillix::PreparedMovingBox Prepare(const MATH::CMatrix4f& packed, bool reused) const {
    return quillix::PrepareMovingBox(quillix::MovingBoxFromMatrix(ToMat4f(packed)), reused);
  }
  float Pair(const quillix::PreparedMovingBox& a, const quillix::PreparedMovingBox& b) const {
    return quillix::BoxesContactTime(a, b, mode);
  }
};

}  // namespace

QUILLIX_EVALUATE(Quillix_iotmb) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  EvaluateMatrixPairs<float>(context, MovingBoxKernel{ReadMode(context, kDefaultMode)});
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(iotmb, siICENodeMultiThreading, kPorts)
