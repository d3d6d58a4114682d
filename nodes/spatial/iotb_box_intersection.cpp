// Quillix_iotb: whether two oriented boxes intersect (1) or not (0), over single matrices or
// arrays of them, with the strength of the test chosen by "mode".
#include <xsi_matrix4f.h>

#include "core/spatial/box_intersect.h"
#include "nodes/spatial/matrix_pair_node.h"
#include "plugin/host_arrays.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::spatial;

namespace {

constexpr PortDef kPorts[] = {
    ModePortRow(0),
    MatrixPortRow(kMatrixAPort, L"tmA", L"Transformation of Box A"),
    MatrixPortRow(kMatrixBPort, L"tmB", L"Transformation of Box B"),
    ResultPortRow(siICENodeDataLong, L"A and B intersect"),
};

struct BoxIntersectionKernel {
  LONG mode;
  // A box met in many pairs is inverted up front; one met once only if its pair needs it.
  quillix::PreparedBox Prepare(const MATH::CMatrix4f& matrix, bool reused) const {
    return quillix::PrepareBox(quillix::EllipsoidFromMatrix(ToMat4f(matrix)), reused);
  }
  LONG Pair(const quillix::PreparedBox& a, const quillix::PreparedBox& b) const {
    return quillix::BoxesIntersect(a, b, mode) ? 1 : 0;
  }
};

}  // namespace

QUILLIX_EVALUATE(Quillix_iotb) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  // Every integer is a mode: negative, zero and positive select the three test strengths.
  EvaluateMatrixPairs<LONG>(context, BoxIntersectionKernel{ReadMode(context, 0)});
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(iotb, siICENodeMultiThreading, kPorts)
