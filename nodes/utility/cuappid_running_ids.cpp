// Quillix_cuappid: per-point arrays of IDs numbered by one running counter over all points.
//
// Every call walks all points of the object in order, not just the batch, so that the
// numbering is the same whatever the batches are; this is why the node is single-threaded.
#include <cstdint>

#include "core/array/running_ids.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kArraySizePort = 1010;
constexpr ULONG kIdsPort = 2010;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kArraySizePort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextComponent0D,
     .scriptName = L"ArraySizePerPoint", .displayName = L"Array Size per Point",
     .defaultValue = NoDefault(), .contextLink = kLinkContext},
    {.id = kIdsPort, .direction = kOut, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextComponent0D,
     .scriptName = L"UIDs", .displayName = L"UIDs", .contextLink = kLinkContext},
};
// clang-format on

}  // namespace

QUILLIX_EVALUATE(Quillix_cuappid) {
  if (context.GetEvaluatedOutputPortID() != kIdsPort) return CStatus::OK;
  const CDataArrayLong sizes(context, kArraySizePort);
  CDataArray2DLong result(context);
  // A constant input holds one size for all points; the output still spans every point.
  if (sizes.GetCount() == 0) return CStatus::OK;
  const ULONG points = sizes.IsConstant() ? result.GetCount() : sizes.GetCount();
  std::int32_t nextId = 0;
  for (ULONG point = 0; point < points; ++point) {
    CDataArray2DLong::Accessor ids = result.Resize(point, quillix::IdCountForSize(sizes[point]));
    nextId = quillix::WriteRunningIds(nextId, {ids.GetData(), ids.GetCount()});
  }
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(cuappid, siICENodeSingleThreading, kPorts)
