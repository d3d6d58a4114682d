// Quillix_dsals2: spheres distributed along each element's spline, one encoded 4x4 matrix per
// sphere, with an interpolation type of its own for positions, tangents and up vectors.
#include "core/curve/spline.h"
#include "nodes/curve/sphere_distribution_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::curve;

namespace {

constexpr ULONG kInterpPositionsPort = 1100;
constexpr ULONG kInterpTangentsPort = 1104;
constexpr ULONG kInterpUpVectorsPort = 1108;

// 20 linear, 40 cubic, 50 Catmull-Rom, anything else no interpolation.
constexpr PortDef kInterpolationPorts[] = {
    IntegerInput(kInterpPositionsPort, L"interpTypePositions", L"interpTypePositions", 20),
    IntegerInput(kInterpTangentsPort, L"interpTypeTangents", L"interpTypeTangents", 20),
    IntegerInput(kInterpUpVectorsPort, L"interpTypeUpVectors", L"interpTypeUpVectors", 20),
};
constexpr auto kPorts = SpherePortTable(kInterpolationPorts);

}  // namespace

QUILLIX_EVALUATE(Quillix_dsals2) {
  if (context.GetEvaluatedOutputPortID() != kSpheresPort) return CStatus::OK;
  const CDataArrayLong positions(context, kInterpPositionsPort);
  const CDataArrayLong tangents(context, kInterpTangentsPort);
  const CDataArrayLong upVectors(context, kInterpUpVectorsPort);
  if (positions.GetCount() == 0 || tangents.GetCount() == 0 || upVectors.GetCount() == 0)
    return CStatus::OK;
  EvaluateSpheres(context, [&](ULONG element) {
    return quillix::SplineInterpolation{.positions = positions[element],
                                        .tangents = tangents[element],
                                        .upVectors = upVectors[element]};
  });
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(dsals2, siICENodeMultiThreading, kPorts)
