// Quillix_slins: simplifies each element's polyline to a distance tolerance, optionally merging
// the ends of a closed line and keeping at least three points.
#include <algorithm>
#include <new>
#include <vector>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>

#include "plugin/host_arrays.h"
#include "core/curve/line_simplify.h"
#include "plugin/callback_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kControlPointsPort = 1010;
constexpr ULONG kEpsilonPort = 1020;
constexpr ULONG kClosedPort = 1030;
constexpr ULONG kMinThreePort = 1040;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kPorts[] = {
    {kControlPointsPort, PortDirection::In, siICENodeDataVector3, siICENodeStructureArray,
     siICENodeContextAny, L"controlPoints", L"In Array of Control Points", DefaultVector3Zero(),
     kNoLink, kLinkStructure, kLinkContext},
    {kEpsilonPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureSingle,
     siICENodeContextAny, L"epsilon", L"Epsilon", DefaultDouble(1.0), kNoLink, kLinkStructure,
     kLinkContext},
    {kClosedPort, PortDirection::In, siICENodeDataBool, siICENodeStructureSingle,
     siICENodeContextAny, L"closed", L"Treat Spline as closed", DefaultBool(false), kNoLink,
     kLinkStructure, kLinkContext},
    {kMinThreePort, PortDirection::In, siICENodeDataBool, siICENodeStructureSingle,
     siICENodeContextAny, L"minThree", L"Result must have at least three Points",
     DefaultBool(false), kNoLink, kLinkStructure, kLinkContext},
    {kResultPort, PortDirection::Out, siICENodeDataVector3, siICENodeStructureArray,
     siICENodeContextAny, L"result", L"Result", NoDefault(), kNoLink, kNoLink, kLinkContext},
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_slins_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    const CDataArray2DVector3f points(context, kControlPointsPort);
    const CDataArrayFloat epsilon(context, kEpsilonPort);
    const CDataArrayBool closed(context, kClosedPort);
    const CDataArrayBool minThree(context, kMinThreePort);
    CDataArray2DVector3f result(context);
    CIndexSet indexSet(context);
    if (epsilon.GetCount() == 0 || closed.GetCount() == 0 || minThree.GetCount() == 0) return;

    // One work buffer for the whole batch, sized by its longest polyline.
    std::size_t longest = 0;
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next())
      longest = std::max<std::size_t>(longest, points[it].GetCount());
    std::vector<quillix::Vec3f> work;
    try {
      work.resize(quillix::SimplifyWorkSize(longest));
    } catch (const std::bad_alloc&) {
      for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) result.Resize(it, 0);
      return;
    }
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      const auto simplified = quillix::SimplifyPolyline(
          quillix::plugin::PointsAt(points, it), epsilon[it], closed[it], minThree[it], work);
      quillix::plugin::WriteArray(result, it, simplified);
    }
  });
}

CStatus Quillix_slins_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_slins", siICENodeMultiThreading, 1, 1, kPorts});
}
