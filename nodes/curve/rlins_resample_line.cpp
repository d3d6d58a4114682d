// Quillix_rlins: resamples each element's polyline evenly by arc length (by count, or by
// density when the count is negative) and smooths the result.
#include <vector>

#include "core/curve/line_resample.h"
#include "plugin/host_arrays.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kControlPointsPort = 1010;
constexpr ULONG kNumOutputPointsPort = 1020;
constexpr ULONG kSmoothStrengthPort = 1030;
constexpr ULONG kSmoothIterationsPort = 1040;
constexpr ULONG kResultPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kControlPointsPort, .direction = kIn, .dataTypes = siICENodeDataVector3,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextAny,
     .scriptName = L"pntControlPoints", .displayName = L"In Array of Control Points",
     .defaultValue = DefaultVector3Zero(), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    // A float on purpose: its sign selects count or density mode.
    {.id = kNumOutputPointsPort, .direction = kIn, .dataTypes = siICENodeDataFloat,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"pntBasicNumOutputPoints", .displayName = L"(Basic) Number of Output Points",
     .defaultValue = DefaultDouble(20.0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kSmoothStrengthPort, .direction = kIn, .dataTypes = siICENodeDataFloat,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"pntBasicLaplacianSmoothStrength", .displayName = L"(Basic) Laplacian Smooth Strength",
     .defaultValue = DefaultFloat(0.7f), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kSmoothIterationsPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"pntBasicLaplacianSmoothIterations", .displayName = L"(Basic) Laplacian Smooth Iterations",
     .defaultValue = DefaultInt(3), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kResultPort, .direction = kOut, .dataTypes = siICENodeDataVector3,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextAny,
     .scriptName = L"basicResult", .displayName = L"(Basic) Result", .contextLink = kLinkContext},
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_rlins) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  const CDataArray2DVector3f points(context, kControlPointsPort);
  const CDataArrayFloat numOutputPoints(context, kNumOutputPointsPort);
  const CDataArrayFloat strength(context, kSmoothStrengthPort);
  const CDataArrayLong iterations(context, kSmoothIterationsPort);
  CDataArray2DVector3f result(context);
  CIndexSet indexSet(context);
  if (numOutputPoints.GetCount() == 0 || strength.GetCount() == 0 || iterations.GetCount() == 0)
    return CStatus::OK;
  std::vector<float> segmentLengths;  // reused by every element of the batch
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const auto input = PointsAt(points, it);
    const quillix::ResamplePlan plan =
        quillix::PlanResample(input, numOutputPoints[it], segmentLengths);
    // Resampled and smoothed directly in the host's output array.
    auto out = result.Resize(it, static_cast<ULONG>(plan.count));
    if (out.GetCount() != plan.count) continue;
    quillix::ResampleLine(input, plan, segmentLengths, strength[it], iterations[it],
                          MutablePoints(out));
  }
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(rlins, siICENodeMultiThreading, kPorts)
