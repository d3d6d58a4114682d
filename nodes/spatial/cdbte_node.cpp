// Quillix_cdbte: gap between the surfaces of two ellipsoids along their centre line, over
// single matrices or arrays of them.
#include <xsi_application.h>
#include <xsi_dataarray.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "nodes/spatial/ellipsoid.h"
#include "nodes/spatial/matrix_pair_evaluation.h"
#include "nodes/utility/evaluation_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kModePort = 1000;
constexpr ULONG kEllipsoidAPort = 1010;
constexpr ULONG kEllipsoidBPort = 1020;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kPorts[] = {
    {kModePort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextSingleton, L"mode", L"Mode", defaultInt(0), kNoLink, kNoLink, kNoLink},
    {kEllipsoidAPort, PortDirection::In, siICENodeDataMatrix44, siICENodeStructureAny,
     siICENodeContextAny, L"tmA", L"Transformation of Ellipsoid A", defaultMatrix44Zero(), kNoLink,
     kLinkStructure, kLinkContext},
    {kEllipsoidBPort, PortDirection::In, siICENodeDataMatrix44, siICENodeStructureAny,
     siICENodeContextAny, L"tmB", L"Transformation of Ellipsoid B", defaultMatrix44Zero(), kNoLink,
     kLinkStructure, kLinkContext},
    {kResultPort, PortDirection::Out, siICENodeDataFloat, siICENodeStructureAny,
     siICENodeContextAny, L"result", L"Closest Distance between Surfaces", noDefault(), kNoLink,
     kLinkStructure, kLinkContext},
};

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
  return quillix::utility::evaluateGuarded([&] {
    // Only one method exists; any other value is worth a warning but computes the same.
    const CDataArrayLong mode(context, kModePort);
    if (mode.GetCount() > 0 && mode[0] != 0) {
      Application().LogMessage(L"Quillix_cdbte: illegal method!", siWarningMsg);
    }
    quillix::spatial::evaluateMatrixPairs<float>(context, kEllipsoidAPort, kEllipsoidBPort,
                                                 EllipsoidGap{});
  });
}

CStatus Quillix_cdbte_Register(PluginRegistrar& registrar) {
  return registerNode(registrar, {L"Quillix_cdbte", siICENodeMultiThreading, 1, 1, kPorts});
}
