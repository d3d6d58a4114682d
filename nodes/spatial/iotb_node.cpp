// Quillix_iotb: whether two oriented boxes intersect (1) or not (0), over single matrices or
// arrays of them, with the strength of the test chosen by "mode".
#include <xsi_dataarray.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "nodes/spatial/box_intersect.h"
#include "nodes/spatial/matrix_pair_evaluation.h"
#include "nodes/utility/evaluation_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kModePort = 1000;
constexpr ULONG kBoxAPort = 1010;
constexpr ULONG kBoxBPort = 1020;
constexpr ULONG kResultPort = 2010;

constexpr PortDef kPorts[] = {
    {kModePort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextSingleton, L"mode", L"Mode", defaultInt(0), kNoLink, kNoLink, kNoLink},
    {kBoxAPort, PortDirection::In, siICENodeDataMatrix44, siICENodeStructureAny,
     siICENodeContextAny, L"tmA", L"Transformation of Box A", defaultMatrix44Zero(), kNoLink,
     kLinkStructure, kLinkContext},
    {kBoxBPort, PortDirection::In, siICENodeDataMatrix44, siICENodeStructureAny,
     siICENodeContextAny, L"tmB", L"Transformation of Box B", defaultMatrix44Zero(), kNoLink,
     kLinkStructure, kLinkContext},
    {kResultPort, PortDirection::Out, siICENodeDataLong, siICENodeStructureAny, siICENodeContextAny,
     L"result", L"A and B intersect", noDefault(), kNoLink, kLinkStructure, kLinkContext},
};

struct BoxPair {
  LONG mode;
  // A box met in many pairs is inverted up front; one met once only if its pair needs it.
  quillix::PreparedBox prepare(const quillix::Mat4f& matrix, bool reused) const {
    return quillix::PrepareBox(quillix::EllipsoidFromMatrix(matrix), reused);
  }
  LONG pair(const quillix::PreparedBox& a, const quillix::PreparedBox& b) const {
    return quillix::BoxesIntersect(a, b, mode) ? 1 : 0;
  }
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_iotb_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::utility::evaluateGuarded([&] {
    // Every integer is a mode: negative, zero and positive select the three test strengths.
    const CDataArrayLong mode(context, kModePort);
    const BoxPair kernel{mode.GetCount() > 0 ? mode[0] : 0};
    quillix::spatial::evaluateMatrixPairs<LONG>(context, kBoxAPort, kBoxBPort, kernel);
  });
}

CStatus Quillix_iotb_Register(PluginRegistrar& registrar) {
  return registerNode(registrar, {L"Quillix_iotb", siICENodeMultiThreading, 1, 1, kPorts});
}
