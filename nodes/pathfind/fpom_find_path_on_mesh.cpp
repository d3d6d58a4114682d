// Quillix_fpom: shortest vertex paths on a polygon mesh given as raw ICE data. The mesh is
// built once per change of its ports and kept between evaluations in the instance's record;
// the state machine is core/mesh/path_node_state.h, the searches core/mesh/path_chain.h.
#include <xsi_application.h>
#include <xsi_context.h>
#include <xsi_iceportstate.h>
#include <xsi_vector3f.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "core/mesh/path_chain.h"
#include "core/mesh/path_node_state.h"
#include "kernel/status.h"
#include "plugin/host_arrays.h"
#include "plugin/log.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kEnablePort = 1010;
constexpr ULONG kVerbosePort = 1015;
constexpr ULONG kVertexPositionsPort = 1020;
constexpr ULONG kVertexFlagsPort = 1823;
constexpr ULONG kPolygonalDescriptionPort = 1030;
constexpr ULONG kPathFindingAlgorithmPort = 1035;
constexpr ULONG kPathInitVertexIndicesPort = 1040;
constexpr ULONG kReturnValuePort = 2010;
constexpr ULONG kPathVertexIndicesPort = 2020;

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kEnablePort, .direction = kIn, .dataTypes = siICENodeDataBool,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextAny,
     .scriptName = L"enable", .displayName = L"Enable",
     .defaultValue = DefaultBool(true), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kVerbosePort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"verbose", .displayName = L"Verbose", .defaultValue = DefaultInt(0)},
    {.id = kVertexPositionsPort, .direction = kIn, .dataTypes = siICENodeDataVector3,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"vertexPositions", .displayName = L"Vertex Positions",
     .defaultValue = DefaultVector3Zero()},
    {.id = kVertexFlagsPort, .direction = kIn, .dataTypes = siICENodeDataBool,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"vertexFlags", .displayName = L"Vertex Flags",
     .defaultValue = DefaultBool(true)},
    {.id = kPolygonalDescriptionPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextSingleton,
     .scriptName = L"polygonalDescription", .displayName = L"Polygonal Description",
     .defaultValue = DefaultInt(0)},
    {.id = kPathFindingAlgorithmPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"pathFindingAlgorithm", .displayName = L"Path Finding Algorithm",
     .defaultValue = DefaultInt(0)},
    {.id = kPathInitVertexIndicesPort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextAny,
     .scriptName = L"pathInitVertexIndices", .displayName = L"Path Init Vertex Indices",
     .defaultValue = DefaultInt(0), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kReturnValuePort, .direction = kOut, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"returnValue", .displayName = L"Return Value"},
    {.id = kPathVertexIndicesPort, .direction = kOut, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureArray, .contexts = siICENodeContextAny,
     .scriptName = L"pathVertexIndices", .displayName = L"Path Vertex Indices",
     .contextLink = kLinkContext},
};
// clang-format on

constexpr double kNodeVersion = 1.9;
constexpr int kSdkVersion = 12000;
constexpr const char* kSdkVersionName = "2014";

// The instance's user data: the node's state and how its log lines begin.
struct FpomRecord {
  FpomRecord(ULONG objectID, bool isInteractive)
      : messagePrefix("Quillix_fpom(" + std::to_string(objectID) + "): "),
        timePrefix("Quillix_fpom(" + std::to_string(objectID) + ")__"),
        interactive(isInteractive) {}

  std::string messagePrefix;  // before every log line but the verbose time line
  std::string timePrefix;     // before the verbose time line
  bool interactive;           // kept for the record
  quillix::PathNodeState state;
};

FpomRecord* RecordOf(const Context& context) {
  return static_cast<FpomRecord*>(static_cast<CValue::siPtrType>(context.GetUserData()));
}

// Whether `port` changed since the last begin-of-evaluation; the change is consumed.
bool ConsumeChange(ICENodeContext& context, ULONG port) {
  CICEPortState state(context, port);
  const bool dirty = state.IsDirty(siAnyDirtyState);
  state.ClearState();
  return dirty;
}

bool AnyEnabled(ICENodeContext& context) {
  const CDataArrayBool enable(context, kEnablePort);
  if (enable.GetCount() == 0) return false;
  CIndexSet indexSet(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    if (enable[it]) return true;
  }
  return false;
}

// The log line of one begin-of-evaluation event, with its severity.
void LogEvent(const FpomRecord& record, const quillix::PathNodeEvent& event) {
  using Kind = quillix::PathNodeEvent::Kind;
  const std::string& prefix = record.messagePrefix;
  const auto elapsed = [&] { return quillix::PathNodeTimer::Format(event.milliseconds); };
  switch (event.kind) {
    case Kind::kVerboseTime:
      LogLine(kLogInfo,
              record.timePrefix + "f=" + CString(CValue(event.time)).GetAsciiString() + "__");
      break;
    case Kind::kBuildFailed:
      LogLine(kLogError, prefix + "(*ud.geo).Set() failed.");
      break;
    case Kind::kBuildTime:
      LogLine(kLogInfo, prefix + "    build geometry time:               " + elapsed());
      break;
    case Kind::kVertexCount:
      LogLine(kLogInfo, prefix + "    #vertices: " + std::to_string(event.count));
      break;
    case Kind::kPolygonCount:
      LogLine(kLogInfo, prefix + "    #polygons: " + std::to_string(event.count));
      break;
    case Kind::kFlagSizeMismatch:
      LogLine(kLogWarning, prefix + "    vertex flag array has wrong size... it's size is " +
                               std::to_string(event.count) + ", but it should be " +
                               std::to_string(event.expected) + ".");
      break;
    case Kind::kTotalTime:
      LogLine(kLogInfo, prefix + "    total initialisation time:         " + elapsed());
      break;
    case Kind::kFailed: {
      char text[quillix::kStatusMessageBufferSize];
      // The closing quotation mark without an opening one is part of the line as users know it.
      LogLine(kLogError, prefix + quillix::StatusMessage(event.status, text, true) + "\".");
      break;
    }
  }
}

void WritePaths(ICENodeContext& context, const quillix::PathNodeState& state) {
  CDataArray2DLong output(context);
  CIndexSet indexSet(context);
  if (!state.Ready()) {
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) output.Resize(it, 0);
    return;
  }
  const CDataArrayBool enable(context, kEnablePort);
  const CDataArrayLong algorithm(context, kPathFindingAlgorithmPort);
  const CDataArray2DLong init(context, kPathInitVertexIndicesPort);
  const LONG algorithmValue = algorithm.GetCount() > 0 ? algorithm[0] : 0;
  quillix::PathScratch scratch(state.Memory());
  std::vector<std::int32_t> path;
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    path.clear();
    if (enable.GetCount() > 0 && enable[it] && init.GetCount() > 0) {
      quillix::ChainPath(state.Geometry(), ElementSpan<std::int32_t>(init, it), algorithmValue,
                         state.VertexFlags(), scratch, path);
    }
    WriteArray(output, it, std::span<const std::int32_t>(path));
  }
}

}  // namespace

QUILLIX_NODE_CALLBACK(Quillix_fpom_Init, CRef&, in) {
  char version[64];
  std::snprintf(version, sizeof version, "%g", kNodeVersion);
  LogLine(kLogInfo, std::string("Quillix_fpom_Init_Init() version ") + version + " called,");
  LogLine(kLogInfo, "built with XSISDK_VERSION = " + std::to_string(kSdkVersion) +
                        ", XSISDK_VERSION_NAME = \"" + kSdkVersionName + "\".");
  Context context(in);
  const ULONG objectID = ProjectItem(context.GetSource()).GetObjectID();
  auto record = std::make_unique<FpomRecord>(objectID, Application().IsInteractive());
  context.PutUserData(CValue(static_cast<CValue::siPtrType>(record.get())));
  record.release();  // owned by the user data until Term
  return CStatus::OK;
}

QUILLIX_NODE_CALLBACK(Quillix_fpom_Term, CRef&, in) {
  Context context(in);
  const std::unique_ptr<FpomRecord> record(RecordOf(context));
  if (record == nullptr) return CStatus::OK;
  context.PutUserData(CValue());
  LogLine(kLogInfo, record->messagePrefix + "Sarnoth5_Term() called");
  return CStatus::OK;
}

QUILLIX_NODE_CALLBACK(Quillix_fpom_BeginEvaluate, ICENodeContext&, context) {
  FpomRecord* record = RecordOf(context);
  if (record == nullptr) return CStatus::OK;
  const quillix::PathNodeChanges changes = {
      .enable = ConsumeChange(context, kEnablePort),
      .verbose = ConsumeChange(context, kVerbosePort),
      .positions = ConsumeChange(context, kVertexPositionsPort),
      .vertexFlags = ConsumeChange(context, kVertexFlagsPort),
      .description = ConsumeChange(context, kPolygonalDescriptionPort),
      .algorithm = ConsumeChange(context, kPathFindingAlgorithmPort),
      .init = ConsumeChange(context, kPathInitVertexIndicesPort),
  };
  if (!record->state.Refresh(changes, context.GetTime().GetTime())) return CStatus::OK;

  const CDataArrayLong verbose(context, kVerbosePort);
  const CDataArray2DVector3f positions(context, kVertexPositionsPort);
  const CDataArray2DLong description(context, kPolygonalDescriptionPort);
  const CDataArray2DBool flags(context, kVertexFlagsPort);
  const quillix::PathNodeInputs inputs = {
      .anyEnabled = AnyEnabled(context),
      .verbose = verbose.GetCount() > 0 ? verbose[0] : 0,
      .positions = FirstSubArray<quillix::Vec3f>(positions),
      .description = FirstSubArray<std::int32_t>(description),
      .vertexFlags = FirstSubArray<bool>(flags),
  };
  std::vector<quillix::PathNodeEvent> events;
  record->state.Update(inputs, events);
  for (const quillix::PathNodeEvent& event : events) LogEvent(*record, event);
  return CStatus::OK;
}

QUILLIX_EVALUATE(Quillix_fpom) {
  const FpomRecord* record = RecordOf(context);
  if (record == nullptr) return CStatus::OK;
  const ULONG port = context.GetEvaluatedOutputPortID();
  if (port == kReturnValuePort) {
    CDataArrayLong output(context);
    if (output.GetCount() == 0) return CStatus::OK;
    CIndexSet indexSet(context);
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next())
      output[it] = record->state.ReturnValue();
  } else if (port == kPathVertexIndicesPort) {
    WritePaths(context, record->state);
  }
  return CStatus::OK;
}

QUILLIX_NODE_CALLBACK(Quillix_fpom_EndEvaluate, ICENodeContext&, context) {
  if (FpomRecord* record = RecordOf(context)) record->state.EndEvaluate();
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(fpom, siICENodeMultiThreading, kPorts)
