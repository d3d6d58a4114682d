// Quillix_iotmb: the fraction of a time step at which two moving boxes first touch (0 when
// they already intersect, -1 when no contact is found), over single matrices or arrays.
// Each matrix packs a box, its displacement over the step and a subdivision count.
#include <xsi_dataarray.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "nodes/spatial/matrix_pair_evaluation.h"
#include "nodes/spatial/moving_box.h"
#include "nodes/utility/evaluation_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kModePort = 1000;
constexpr ULONG kBoxAPort = 1010;
constexpr ULONG kBoxBPort = 1020;
constexpr ULONG kResultPort = 2010;
constexpr LONG kDefaultMode = 1;

constexpr PortDef kPorts[] = {
    {kModePort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextSingleton, L"mode", L"Mode", defaultInt(kDefaultMode), kNoLink, kNoLink,
     kNoLink},
    {kBoxAPort, PortDirection::In, siICENodeDataMatrix44, siICENodeStructureAny,
     siICENodeContextAny, L"tmA", L"Transformation of Box A", defaultMatrix44Zero(), kNoLink,
     kLinkStructure, kLinkContext},
    {kBoxBPort, PortDirection::In, siICENodeDataMatrix44, siICENodeStructureAny,
     siICENodeContextAny, L"tmB", L"Transformation of Box B", defaultMatrix44Zero(), kNoLink,
     kLinkStructure, kLinkContext},
    {kResultPort, PortDirection::Out, siICENodeDataFloat, siICENodeStructureAny,
     siICENodeContextAny, L"result", L"Intersection occurs in", noDefault(), kNoLink,
     kLinkStructure, kLinkContext},
};

struct MovingBoxPair {
  LONG mode;
  quillix::PreparedMovingBox prepare(const quillix::Mat4f& packed, bool reused) const {
    return quillix::PrepareMovingBox(quillix::MovingBoxFromMatrix(packed), reused);
  }
  float pair(const quillix::PreparedMovingBox& a, const quillix::PreparedMovingBox& b) const {
    return quillix::ContactTime(a, b, mode);
  }
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_iotmb_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::utility::evaluateGuarded([&] {
    const CDataArrayLong mode(context, kModePort);
    const MovingBoxPair kernel{mode.GetCount() > 0 ? mode[0] : kDefaultMode};
    quillix::spatial::evaluateMatrixPairs<float>(context, kBoxAPort, kBoxBPort, kernel);
  });
}

CStatus Quillix_iotmb_Register(PluginRegistrar& registrar) {
  return registerNode(registrar, {L"Quillix_iotmb", siICENodeMultiThreading, 1, 1, kPorts});
}
