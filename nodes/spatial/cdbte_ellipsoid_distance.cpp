// Quillix_cdbte: gap between the surfaces of two ellipsoids along their centre line, over
// single matrices or arrays of them.
#include <xsi_matrix4f.h>
#include <xsi_string.h>

#include "core/spatial/ellipsoid.h"
#include "nodes/spatial/matrix_pair_node.h"
#include "plugin/host_arrays.h"
#include "plugin/log.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::spatial;

namespace {

constexpr PortDef kPorts[] = {
    ModePortRow(0),
    MatrixPortRow(kMatrixAPort, L"tmA", L"Transformation of Ellipsoid A"),
    MatrixPortRow(kMatrixBPort, L"tmB", L"Transformation of Ellipsoid B"),
    ResultPortRow(siICENodeDataFloat, L"Closest Distance between Surfaces"),
};

struct EllipsoidDistanceKernel {
  quillix::PreparedEllipsoid Prepare(const MATH::CMatrix4f& matrix, bool) const {
    return quillix::PrepareEllipsoid(quillix::EllipsoidFromMatrix(ToMat4f(matrix)));
  }
  float Pair(const quillix::PreparedEllipsoid& a, const quillix::PreparedEllipsoid& b) const {
    return quillix::EllipsoidDistance(a, b);
  }
};

}  // namespace

QUILLIX_EVALUATE(Quillix_cdbte) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  // Only one method exists; any other value is worth a warning but computes the same.
  if (ReadMode(context, 0) != 0) {
    LogLine(kLogWarning, CString(L"Quillix_cdbte: illegal method!"));
  }
  EvaluateMatrixPairs<float>(context, EllipsoidDistanceKernel{});
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(cdbte, siICENodeMultiThreading, kPorts)
