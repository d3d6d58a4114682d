// Quillix_gpoc: position, tangent, normal and binormal on a sub-curve of a named curve object,
// in world space, at one parameter or an array of parameters per element. Reads the scene, so
// it runs on one thread.
#include <optional>
#include <span>

#include <xsi_geometry.h>
#include <xsi_kinematics.h>
#include <xsi_kinematicstate.h>
#include <xsi_math.h>
#include <xsi_nurbscurve.h>
#include <xsi_nurbscurvelist.h>
#include <xsi_primitive.h>
#include <xsi_ref.h>
#include <xsi_transformation.h>
#include <xsi_x3dobject.h>

#include "core/curve/point_on_curve.h"
#include "plugin/host_arrays.h"
#include "plugin/node.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kNamePort = 1010;
constexpr ULONG kModePort = 1020;
constexpr ULONG kParameterPort = 1030;
constexpr ULONG kSubCurvePort = 1040;
constexpr ULONG kPositionPort = 2010;
constexpr ULONG kTangentPort = 2020;
constexpr ULONG kNormalPort = 2030;
constexpr ULONG kBinormalPort = 2040;

// The four outputs follow "U": a vector per single parameter, an array per array of them.
constexpr PortDef OutputPort(ULONG id, const wchar_t* name) {
  return {.id = id,
          .direction = kOut,
          .dataTypes = siICENodeDataVector3,
          .structures = siICENodeStructureAny,
          .contexts = siICENodeContextAny,
          .scriptName = name,
          .displayName = name,
          .structureLink = kLinkStructure,
          .contextLink = kLinkContext};
}

// clang-format off
constexpr PortDef kPorts[] = {
    {.id = kNamePort, .direction = kIn, .dataTypes = siICENodeDataString,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"Name", .displayName = L"Name", .defaultValue = DefaultString(L"")},
    {.id = kModePort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"Mode", .displayName = L"Mode", .defaultValue = DefaultInt(2)},
    {.id = kParameterPort, .direction = kIn, .dataTypes = siICENodeDataFloat,
     .structures = siICENodeStructureAny, .contexts = siICENodeContextAny,
     .scriptName = L"U", .displayName = L"U",
     .defaultValue = DefaultFloat(0.0f), .structureLink = kLinkStructure, .contextLink = kLinkContext},
    {.id = kSubCurvePort, .direction = kIn, .dataTypes = siICENodeDataLong,
     .structures = siICENodeStructureSingle, .contexts = siICENodeContextSingleton,
     .scriptName = L"SubC", .displayName = L"SubC", .defaultValue = DefaultInt(0)},
    OutputPort(kPositionPort, L"Position"),
    OutputPort(kTangentPort, L"Tangent"),
    OutputPort(kNormalPort, L"Normal"),
    OutputPort(kBinormalPort, L"BiNormal"),
};
// clang-format on

MATH::CVector3 ToHost(const quillix::Vec3d& p) { return MATH::CVector3(p.x, p.y, p.z); }
quillix::Vec3d FromHost(const MATH::CVector3& v) { return {v.GetX(), v.GetY(), v.GetZ()}; }

class HostCurve final : public quillix::CurveSampler {
 public:
  explicit HostCurve(const NurbsCurve& curve) : curve_(curve) {}
  quillix::CurveFrame At(quillix::CurveParameterMode mode, double value) const override {
    MATH::CVector3 position, tangent, normal, binormal;
    switch (mode) {
      case quillix::CurveParameterMode::Normalized:
        curve_.EvaluateNormalizedPosition(value, position, tangent, normal, binormal);
        break;
      case quillix::CurveParameterMode::Percentage:
        curve_.EvaluatePositionFromPercentage(value, position, tangent, normal, binormal);
        break;
      case quillix::CurveParameterMode::Parameter:
        curve_.EvaluatePosition(value, position, tangent, normal, binormal);
        break;
    }
    return {FromHost(position), FromHost(tangent), FromHost(normal), FromHost(binormal)};
  }

 private:
  NurbsCurve curve_;
};

// The object's global transform, and a copy without translation for directions.
class HostPlacement final : public quillix::CurvePlacement {
 public:
  explicit HostPlacement(const MATH::CTransformation& global)
      : global_(global), directions_(global) {
    directions_.SetTranslationFromValues(0.0, 0.0, 0.0);
  }
  quillix::Vec3d PositionToWorld(const quillix::Vec3d& p) const override {
    return FromHost(MATH::MapObjectPositionToWorldSpace(global_, ToHost(p)));
  }
  quillix::Vec3d DirectionToWorld(const quillix::Vec3d& v) const override {
    return FromHost(MATH::MapObjectPositionToWorldSpace(directions_, ToHost(v)));
  }

 private:
  MATH::CTransformation global_;
  MATH::CTransformation directions_;
};

// The sub-curve `subCurve` of the object called `name` at `frame`, with the object's placement;
// nullopt when there is no such object, it holds no curves, or the sub-curve is unusable.
struct ResolvedCurve {
  NurbsCurve curve;
  MATH::CTransformation global;
};
std::optional<ResolvedCurve> ResolveCurve(const CString& name, LONG subCurve, double frame) {
  CRef ref;
  if (ref.Set(name) != CStatus::OK) return std::nullopt;
  const X3DObject object(ref);
  if (!object.IsValid()) return std::nullopt;
  ResolvedCurve resolved;
  resolved.global = object.GetKinematics().GetGlobal().GetTransform(frame);
  const NurbsCurveList curves(
      object.GetActivePrimitive().GetGeometry(frame, siConstructionModeAnimation).GetRef());
  if (!curves.IsValid()) return std::nullopt;
  const CNurbsCurveRefArray list = curves.GetCurves();
  const LONG count = list.GetCount();
  if (count == 0) return std::nullopt;
  LONG index = subCurve <= count - 1 ? subCurve : count - 1;
  if (index < 0) index = 0;
  resolved.curve = NurbsCurve(list[index]);
  if (!resolved.curve.IsValid()) return std::nullopt;
  return resolved;
}

std::optional<quillix::CurveOutput> OutputOf(ULONG port) {
  switch (port) {
    case kPositionPort:
      return quillix::CurveOutput::Position;
    case kTangentPort:
      return quillix::CurveOutput::Tangent;
    case kNormalPort:
      return quillix::CurveOutput::Normal;
    case kBinormalPort:
      return quillix::CurveOutput::Binormal;
    default:
      return std::nullopt;
  }
}

}  // namespace

QUILLIX_EVALUATE(Quillix_gpoc) {
  const std::optional<quillix::CurveOutput> output = OutputOf(context.GetEvaluatedOutputPortID());
  if (!output) return CStatus::OK;
  const auto parameterInfo = QueryPortInfo(context, kParameterPort);
  if (!parameterInfo) return CStatus::OK;
  const double frame = context.GetTime().GetTime();
  const CDataArrayString name(context, kNamePort);
  const CDataArrayLong mode(context, kModePort);
  const CDataArrayLong subCurve(context, kSubCurvePort);
  if (name.GetCount() == 0 || mode.GetCount() == 0 || subCurve.GetCount() == 0) return CStatus::OK;

  const std::optional<ResolvedCurve> resolved = ResolveCurve(name[0], subCurve[0], frame);
  std::optional<HostCurve> curve;
  if (resolved) curve.emplace(resolved->curve);
  const HostPlacement placement(resolved ? resolved->global : MATH::CTransformation());
  const quillix::CurveParameterMode curveMode = quillix::CurveModeFromValue(mode[0]);
  const quillix::CurveSampler* sampler = curve ? &*curve : nullptr;
  CIndexSet indexSet(context);

  if (!parameterInfo->IsArray()) {
    const CDataArrayFloat parameters(context, kParameterPort);
    CDataArrayVector3f result(context);
    if (parameters.GetCount() == 0) return CStatus::OK;
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      quillix::Vec3f value;
      quillix::SampleCurve({&parameters[it], 1}, curveMode, sampler, placement, *output,
                           {&value, 1});
      result[it] = MATH::CVector3f(value.x, value.y, value.z);
    }
    return CStatus::OK;
  }
  const CDataArray2DFloat parameters(context, kParameterPort);
  CDataArray2DVector3f result(context);
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const std::span<const float> values = ElementSpan<float>(parameters, it);
    auto out = result.Resize(it, static_cast<ULONG>(values.size()));
    if (out.GetCount() != values.size()) continue;
    quillix::SampleCurve(values, curveMode, sampler, placement, *output, MutablePoints(out));
  }
  return CStatus::OK;
}

QUILLIX_REGISTER_NODE(gpoc, siICENodeSingleThreading, kPorts)
