// Quillix_rlins: resamples each element's polyline evenly by arc length (by count, or by
// density when the count is negative) and smooths the result.
#include <vector>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>

#include "plugin/host_arrays.h"
#include "core/curve/line_resample.h"
#include "plugin/callback_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kControlPointsPort = 1010;
constexpr ULONG kNumOutputPointsPort = 1020;
constexpr ULONG kSmoothStrengthPort = 1030;
constexpr ULONG kSmoothIterationsPort = 1040;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kPorts[] = {
    {kControlPointsPort, PortDirection::In, siICENodeDataVector3, siICENodeStructureArray,
     siICENodeContextAny, L"pntControlPoints", L"In Array of Control Points", DefaultVector3Zero(),
     kNoLink, kLinkStructure, kLinkContext},
    // A float on purpose: its sign selects count or density mode.
    {kNumOutputPointsPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureSingle,
     siICENodeContextAny, L"pntBasicNumOutputPoints", L"(Basic) Number of Output Points",
     DefaultDouble(20.0), kNoLink, kLinkStructure, kLinkContext},
    {kSmoothStrengthPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureSingle,
     siICENodeContextAny, L"pntBasicLaplacianSmoothStrength", L"(Basic) Laplacian Smooth Strength",
     DefaultFloat(0.7f), kNoLink, kLinkStructure, kLinkContext},
    {kSmoothIterationsPort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextAny, L"pntBasicLaplacianSmoothIterations",
     L"(Basic) Laplacian Smooth Iterations", DefaultInt(3), kNoLink, kLinkStructure, kLinkContext},
    {kResultPort, PortDirection::Out, siICENodeDataVector3, siICENodeStructureArray,
     siICENodeContextAny, L"basicResult", L"(Basic) Result", NoDefault(), kNoLink, kNoLink,
     kLinkContext},
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_rlins_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    const CDataArray2DVector3f points(context, kControlPointsPort);
    const CDataArrayFloat numOutputPoints(context, kNumOutputPointsPort);
    const CDataArrayFloat strength(context, kSmoothStrengthPort);
    const CDataArrayLong iterations(context, kSmoothIterationsPort);
    CDataArray2DVector3f result(context);
    CIndexSet indexSet(context);
    if (numOutputPoints.GetCount() == 0 || strength.GetCount() == 0 || iterations.GetCount() == 0)
      return;
    std::vector<float> segmentLengths;
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      const auto input = quillix::plugin::PointsAt(points, it);
      const quillix::ResamplePlan plan =
          quillix::PlanResample(input, numOutputPoints[it], segmentLengths);
      // Resampled and smoothed directly in the host's output array.
      auto out = result.Resize(it, static_cast<ULONG>(plan.count));
      if (out.GetCount() != plan.count) continue;
      quillix::ResampleLine(input, plan, segmentLengths, strength[it], iterations[it],
                            quillix::plugin::MutablePoints(out));
    }
  });
}

CStatus Quillix_rlins_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_rlins", siICENodeMultiThreading, 1, 1, kPorts});
}
