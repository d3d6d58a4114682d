// Quillix_dsals: spheres distributed along each element's spline, one encoded 4x4 matrix per
// sphere, with the interpolation of tangents and up vectors switched on by bit flags.
#include "core/curve/sphere_distribution.h"
#include "nodes/curve/sphere_distribution_evaluation.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;
using namespace quillix::curve;

namespace {

// Bit 0: interpolate tangents, bit 1: interpolate up vectors; positions always.
constexpr ULONG kInterpolatePort = 1100;

constexpr PortDef kInterpolationPorts[] = {
    IntegerInput(kInterpolatePort, L"interpolate", L"Interpolate", 3),
};
constexpr auto kPorts = SpherePortTable(kInterpolationPorts);

}  // namespace

QUILLIX_EVALUATE(Quillix_dsals) {
  if (context.GetEvaluatedOutputPortID() != kSpheresPort) return CStatus::OK;
  const CDataArrayLong interpolate(context, kInterpolatePort);
  if (interpolate.GetCount() == 0) return CStatus::OK;
  EvaluateSpheres(context, [&](ULONG element) {
    return quillix::InterpolationFromFlags(interpolate[element]);
  });
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(dsals, siICENodeMultiThreading, kPorts)
