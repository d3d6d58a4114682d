// Quillix_fpom: shortest vertex paths on a polygon mesh given as raw ICE data. The mesh is
// built once per change of its ports and kept between evaluations in the instance's record.
#include <xsi_application.h>
#include <xsi_context.h>
#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_iceportstate.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>
#include <xsi_vector3f.h>

#include <cstdio>
#include <exception>
#include <new>
#include <vector>

#include "core/mesh/path_node.h"
#include "plugin/registration.h"

namespace {

using namespace quillix::plugin;
using quillix::PathNodeInstance;

constexpr ULONG kEnable = 1010;
constexpr ULONG kVerbose = 1015;
constexpr ULONG kVertexPositions = 1020;
constexpr ULONG kVertexFlags = 1823;
constexpr ULONG kPolygonalDescription = 1030;
constexpr ULONG kPathFindingAlgorithm = 1035;
constexpr ULONG kPathInitVertexIndices = 1040;
constexpr ULONG kReturnValue = 2010;
constexpr ULONG kPathVertexIndices = 2020;

constexpr PortDef kPorts[] = {
    {kEnable, PortDirection::In, XSI::siICENodeDataBool, XSI::siICENodeStructureSingle,
     XSI::siICENodeContextAny, L"enable", L"Enable", DefaultBool(true), kNoLink, kLinkStructure,
     kLinkContext},
    {kVerbose, PortDirection::In, XSI::siICENodeDataLong, XSI::siICENodeStructureSingle,
     XSI::siICENodeContextSingleton, L"verbose", L"Verbose", DefaultInt(0), kNoLink, kNoLink,
     kNoLink},
    {kVertexPositions, PortDirection::In, XSI::siICENodeDataVector3, XSI::siICENodeStructureArray,
     XSI::siICENodeContextSingleton, L"vertexPositions", L"Vertex Positions", DefaultVector3Zero(),
     kNoLink, kNoLink, kNoLink},
    {kVertexFlags, PortDirection::In, XSI::siICENodeDataBool, XSI::siICENodeStructureArray,
     XSI::siICENodeContextSingleton, L"vertexFlags", L"Vertex Flags", DefaultBool(true), kNoLink,
     kNoLink, kNoLink},
    {kPolygonalDescription, PortDirection::In, XSI::siICENodeDataLong, XSI::siICENodeStructureArray,
     XSI::siICENodeContextSingleton, L"polygonalDescription", L"Polygonal Description",
     DefaultInt(0), kNoLink, kNoLink, kNoLink},
    {kPathFindingAlgorithm, PortDirection::In, XSI::siICENodeDataLong,
     XSI::siICENodeStructureSingle, XSI::siICENodeContextSingleton, L"pathFindingAlgorithm",
     L"Path Finding Algorithm", DefaultInt(0), kNoLink, kNoLink, kNoLink},
    {kPathInitVertexIndices, PortDirection::In, XSI::siICENodeDataLong,
     XSI::siICENodeStructureArray, XSI::siICENodeContextAny, L"pathInitVertexIndices",
     L"Path Init Vertex Indices", DefaultInt(0), kNoLink, kLinkStructure, kLinkContext},
    {kReturnValue, PortDirection::Out, XSI::siICENodeDataLong, XSI::siICENodeStructureSingle,
     XSI::siICENodeContextSingleton, L"returnValue", L"Return Value", NoDefault(), kNoLink, kNoLink,
     kNoLink},
    {kPathVertexIndices, PortDirection::Out, XSI::siICENodeDataLong, XSI::siICENodeStructureArray,
     XSI::siICENodeContextAny, L"pathVertexIndices", L"Path Vertex Indices", NoDefault(), kNoLink,
     kNoLink, kLinkContext},
};

constexpr NodeDef kNode{L"Quillix_fpom", XSI::siICENodeMultiThreading, 1, 1, kPorts};

constexpr double kNodeVersion = 1.9;
constexpr int kSdkVersion = 12000;
constexpr const char* kSdkVersionName = "2014";

PathNodeInstance* instanceOf(const XSI::Context& context) {
  return static_cast<PathNodeInstance*>(static_cast<XSI::CValue::siPtrType>(context.GetUserData()));
}

void logLine(int severity, const std::string& text) {
  XSI::Application().LogMessage(XSI::CString(text.c_str()),
                                static_cast<XSI::siSeverityType>(severity));
}

// Whether `port` changed since the last begin-of-evaluation; the change is consumed.
bool consumeChange(XSI::ICENodeContext& context, ULONG port) {
  XSI::CICEPortState state(context, port);
  const bool dirty = state.IsDirty(XSI::siAnyDirtyState);
  state.ClearState();
  return dirty;
}

// The first sub-array of a singleton array port; empty when the port holds none.
template <class T, class View>
std::span<const View> firstSubArray(const XSI::CDataArray2D<T>& array) {
  if (array.GetCount() == 0) return {};
  const typename XSI::CDataArray2D<T>::Accessor entries = array[0];
  return {reinterpret_cast<const View*>(entries.GetData()), entries.GetCount()};
}

XSI::CStatus beginEvaluate(XSI::ICENodeContext& context) {
  PathNodeInstance* instance = instanceOf(context);
  if (instance == nullptr) return XSI::CStatus::OK;
  quillix::PathNodeBeginInputs in;
  in.enableChanged = consumeChange(context, kEnable);
  in.verboseChanged = consumeChange(context, kVerbose);
  in.positionsChanged = consumeChange(context, kVertexPositions);
  in.flagsChanged = consumeChange(context, kVertexFlags);
  in.descriptionChanged = consumeChange(context, kPolygonalDescription);
  in.algorithmChanged = consumeChange(context, kPathFindingAlgorithm);
  in.initChanged = consumeChange(context, kPathInitVertexIndices);
  in.time = context.GetTime().GetTime();
  in.timeText = XSI::CString(XSI::CValue(in.time)).GetAsciiString();

  in.anyEnabled = [&context] {
    XSI::CDataArray<bool> enable(context, kEnable);
    if (enable.GetCount() == 0) return false;
    XSI::CIndexSet indexSet(context);
    for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      if (enable[it]) return true;
    }
    return false;
  };
  {
    XSI::CDataArray<XSI::LONG> verbose(context, kVerbose);
    in.verbose = verbose.GetCount() > 0 ? verbose[0] : 0;
  }
  // The arrays stay acquired until BeginEvaluate returns, so the spans below stay valid.
  XSI::CDataArray2D<XSI::MATH::CVector3f> positions(context, kVertexPositions);
  XSI::CDataArray2D<XSI::LONG> description(context, kPolygonalDescription);
  XSI::CDataArray2D<bool> flags(context, kVertexFlags);
  static_assert(sizeof(XSI::MATH::CVector3f) == sizeof(quillix::Vec3f));
  in.positions = [&] { return firstSubArray<XSI::MATH::CVector3f, quillix::Vec3f>(positions); };
  in.description = [&] { return firstSubArray<XSI::LONG, std::int32_t>(description); };
  in.vertexFlags = [&] { return firstSubArray<bool, bool>(flags); };

  instance->BeginEvaluate(in, logLine);
  return XSI::CStatus::OK;
}

void evaluatePaths(XSI::ICENodeContext& context, const PathNodeInstance& instance) {
  XSI::CDataArray2D<XSI::LONG> output(context);
  XSI::CIndexSet indexSet(context);
  if (!instance.Ready()) {
    for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next())
      output.Resize(it, 0);
    return;
  }
  XSI::CDataArray<bool> enable(context, kEnable);
  XSI::CDataArray<XSI::LONG> algorithm(context, kPathFindingAlgorithm);
  XSI::CDataArray2D<XSI::LONG> init(context, kPathInitVertexIndices);
  const XSI::LONG algorithmValue = algorithm.GetCount() > 0 ? algorithm[0] : 0;
  quillix::PathScratch scratch(*instance.memory);
  std::vector<std::int32_t> path;
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    path.clear();
    if (enable.GetCount() > 0 && enable[it] && init.GetCount() > 0) {
      const XSI::CDataArray2D<XSI::LONG>::Accessor entries = init[it];
      scratch.ChainPath(*instance.geo, {entries.GetData(), entries.GetCount()}, algorithmValue,
                        instance.vertexFlags, path);
    }
    XSI::CDataArray2D<XSI::LONG>::Accessor out = output.Resize(it, static_cast<ULONG>(path.size()));
    for (ULONG k = 0; k < out.GetCount(); ++k) out[k] = path[k];
  }
}

}  // namespace

XSIPLUGINCALLBACK XSI::CStatus Quillix_fpom_Evaluate(XSI::ICENodeContext& context) {
  try {
    const PathNodeInstance* instance = instanceOf(context);
    const ULONG port = context.GetEvaluatedOutputPortID();
    if (instance == nullptr) return XSI::CStatus::OK;
    if (port == kReturnValue) {
      XSI::CDataArray<XSI::LONG> output(context);
      if (output.GetCount() == 0) return XSI::CStatus::OK;
      XSI::CIndexSet indexSet(context);
      for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
        output[it] = instance->ReturnValue();
      }
    } else if (port == kPathVertexIndices) {
      evaluatePaths(context, *instance);
    }
  } catch (const std::exception&) {
    // Out of memory in a result array: the elements not yet written stay empty.
  }
  return XSI::CStatus::OK;
}

XSIPLUGINCALLBACK XSI::CStatus Quillix_fpom_Init(XSI::CRef& in) {
  try {
    char version[64];
    std::snprintf(version, sizeof version, "%g", kNodeVersion);
    logLine(quillix::kLogInfo,
            std::string("Quillix_fpom_Init_Init() version ") + version + " called,");
    logLine(quillix::kLogInfo, "built with XSISDK_VERSION = " + std::to_string(kSdkVersion) +
                                   ", XSISDK_VERSION_NAME = \"" + kSdkVersionName + "\".");
    XSI::Context context(in);
    const XSI::ULONG objectID = XSI::ProjectItem(context.GetSource()).GetObjectID();
    auto* instance = new PathNodeInstance(objectID, XSI::Application().IsInteractive());
    context.PutUserData(XSI::CValue(static_cast<XSI::CValue::siPtrType>(instance)));
  } catch (const std::exception&) {
    // Without a record every other callback does nothing.
  }
  return XSI::CStatus::OK;
}

XSIPLUGINCALLBACK XSI::CStatus Quillix_fpom_Term(XSI::CRef& in) {
  XSI::Context context(in);
  PathNodeInstance* instance = instanceOf(context);
  if (instance == nullptr) return XSI::CStatus::OK;
  try {
    logLine(quillix::kLogInfo, instance->messagePrefix + "Sarnoth5_Term() called");
  } catch (const std::exception&) {
  }
  delete instance;
  context.PutUserData(XSI::CValue());
  return XSI::CStatus::OK;
}

XSIPLUGINCALLBACK XSI::CStatus Quillix_fpom_BeginEvaluate(XSI::ICENodeContext& context) {
  try {
    return beginEvaluate(context);
  } catch (const std::exception&) {
    return XSI::CStatus::OK;
  }
}

XSIPLUGINCALLBACK XSI::CStatus Quillix_fpom_EndEvaluate(XSI::ICENodeContext& context) {
  if (PathNodeInstance* instance = instanceOf(context)) instance->EndEvaluate();
  return XSI::CStatus::OK;
}

XSI::CStatus Quillix_fpom_Register(XSI::PluginRegistrar& registrar) {
  return RegisterNode(registrar, kNode);
}
