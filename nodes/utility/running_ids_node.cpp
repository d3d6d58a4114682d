// Quillix_cuappid: per-point arrays of IDs numbered by one running counter over all points.
//
// Every call walks all points of the object in order, not just the batch, so that the
// numbering is the same whatever the batches are; this is why the node is single-threaded.
#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

#include "core/array/running_ids.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kArraySizePort = 1010;
constexpr ULONG kIdsPort = 2010;

constexpr PortDef kPorts[] = {
    {kArraySizePort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextComponent0D, L"ArraySizePerPoint", L"Array Size per Point", NoDefault(),
     kNoLink, kNoLink, kLinkContext},
    {kIdsPort, PortDirection::Out, siICENodeDataLong, siICENodeStructureArray,
     siICENodeContextComponent0D, L"UIDs", L"UIDs", NoDefault(), kNoLink, kNoLink, kLinkContext},
};

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_cuappid_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kIdsPort) return CStatus::OK;
  const CDataArrayLong sizes(context, kArraySizePort);
  CDataArray2DLong result(context);
  // A constant input holds one size for all points; the output still spans every point.
  if (sizes.GetCount() == 0) return CStatus::OK;
  const ULONG points = sizes.IsConstant() ? result.GetCount() : sizes.GetCount();
  std::int32_t nextId = 0;
  for (ULONG point = 0; point < points; ++point) {
    CDataArray2DLong::Accessor ids = result.Resize(point, quillix::idCountForSize(sizes[point]));
    nextId = quillix::writeRunningIds(nextId, {ids.GetData(), ids.GetCount()});
  }
  return CStatus::OK;
}

CStatus Quillix_cuappid_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_cuappid", siICENodeSingleThreading, 1, 1, kPorts});
}
