// Quillix_slins: simplifies each element's polyline to a distance tolerance, optionally merging
// the ends of a closed line and keeping at least three points.
#include <algorithm>
#include <new>
#include <vector>

#include "core/curve/line_simplify.h"
#include "plugin/host_arrays.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kControlPointsPort = 1010;
constexpr ULONG kEpsilonPort = 1020;
constexpr ULONG kClosedPort = 1030;
constexpr ULONG kMinThreePort = 1040;
constexpr ULONG kResultPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kControlPointsPort, .direction = kIn, .dataTypes = siICENodeDataVector3,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextAny,
     .scriptName = L"controlPoints", .displayName = L"In Array of Control Points",
     .defaultValue = DefaultVector3Zero(), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kEpsilonPort, .direction = kIn, .dataTypes = siICENodeDataFloat,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"epsilon", .displayName = L"Epsilon",
     .defaultValue = DefaultDouble(1.0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kClosedPort, .direction = kIn, .dataTypes = siICENodeDataBool,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"closed", .displayName = L"Treat Spline as closed",
     .defaultValue = DefaultBool(false), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kMinThreePort, .direction = kIn, .dataTypes = siICENodeDataBool,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"minThree", .displayName = L"Result must have at least three Points",
     .defaultValue = DefaultBool(false), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kResultPort, .direction = kOut, .dataTypes = siICENodeDataVector3,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextAny,
     .scriptName = L"result", .displayName = L"Result", .contextLink = kLinkContext},
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_slins) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  const CDataArray2DVector3f points(context, kControlPointsPort);
  const CDataArrayFloat epsilon(context, kEpsilonPort);
  const CDataArrayBool closed(context, kClosedPort);
  const CDataArrayBool minThree(context, kMinThreePort);
  CDataArray2DVector3f result(context);
  CIndexSet indexSet(context);
  if (epsilon.GetCount() == 0 || closed.GetCount() == 0 || minThree.GetCount() == 0)
    return CStatus::OK;

  // One work buffer for the whole batch, sized by its longest polyline; without it every
  // element's result is empty.
  std::size_t longest = 0;
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next())
    longest = std::max<std::size_t>(longest, points[it].GetCount());
  std::vector<quillix::Vec3f> work;
  try {
    work.resize(quillix::SimplifyWorkSize(longest));
  } catch (const std::bad_alloc&) {
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) result.Resize(it, 0);
    return CStatus::OK;
  }
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    WriteArray(result, it,
               quillix::SimplifyPolyline(PointsAt(points, it), epsilon[it], closed[it],
                                         minThree[it], work));
  }
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(slins, siICENodeMultiThreading, kPorts)
