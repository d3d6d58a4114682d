// Quillix_gpoc: position, tangent, normal and binormal on a sub-curve of a named curve object,
// in world space, at one parameter or an array of parameters per element. Reads the scene, so
// it runs on one thread.
#include <optional>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_geometry.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_kinematics.h>
#include <xsi_kinematicstate.h>
#include <xsi_math.h>
#include <xsi_nurbscurve.h>
#include <xsi_nurbscurvelist.h>
#include <xsi_pluginregistrar.h>
#include <xsi_primitive.h>
#include <xsi_ref.h>
#include <xsi_transformation.h>
#include <xsi_x3dobject.h>

#include "plugin/host_arrays.h"
#include "core/curve/point_on_curve.h"
#include "plugin/callback_guard.h"
#include "plugin/evaluation.h"
#include "plugin/registration.h"

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

constexpr PortDef output(ULONG id, const wchar_t* name) {
  return {id,
          PortDirection::Out,
          siICENodeDataVector3,
          siICENodeStructureAny,
          siICENodeContextAny,
          name,
          name,
          NoDefault(),
          kNoLink,
          kLinkStructure,
          kLinkContext};
}

constexpr PortDef kPorts[] = {
    {kNamePort, PortDirection::In, siICENodeDataString, siICENodeStructureSingle,
     siICENodeContextSingleton, L"Name", L"Name", DefaultString(L""), kNoLink, kNoLink, kNoLink},
    {kModePort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextSingleton, L"Mode", L"Mode", DefaultInt(2), kNoLink, kNoLink, kNoLink},
    {kParameterPort, PortDirection::In, siICENodeDataFloat, siICENodeStructureAny,
     siICENodeContextAny, L"U", L"U", DefaultFloat(0.0f), kNoLink, kLinkStructure, kLinkContext},
    {kSubCurvePort, PortDirection::In, siICENodeDataLong, siICENodeStructureSingle,
     siICENodeContextSingleton, L"SubC", L"SubC", DefaultInt(0), kNoLink, kNoLink, kNoLink},
    output(kPositionPort, L"Position"),
    output(kTangentPort, L"Tangent"),
    output(kNormalPort, L"Normal"),
    output(kBinormalPort, L"BiNormal"),
};

MATH::CVector3 wide(const quillix::CurvePoint& p) { return MATH::CVector3(p.x, p.y, p.z); }
quillix::CurvePoint narrow(const MATH::CVector3& v) { return {v.GetX(), v.GetY(), v.GetZ()}; }

class HostCurve final : public quillix::CurveSampler {
 public:
  explicit HostCurve(const NurbsCurve& curve) : m_curve(curve) {}
  quillix::CurveFrame At(quillix::CurveParameterMode mode, double value) const override {
    MATH::CVector3 position, tangent, normal, binormal;
    switch (mode) {
      case quillix::CurveParameterMode::Normalized:
        m_curve.EvaluateNormalizedPosition(value, position, tangent, normal, binormal);
        break;
      case quillix::CurveParameterMode::Percentage:
        m_curve.EvaluatePositionFromPercentage(value, position, tangent, normal, binormal);
        break;
      case quillix::CurveParameterMode::Parameter:
        m_curve.EvaluatePosition(value, position, tangent, normal, binormal);
        break;
    }
    return {narrow(position), narrow(tangent), narrow(normal), narrow(binormal)};
  }

 private:
  NurbsCurve m_curve;
};

// The object's global transform, and a copy without translation for directions.
class HostPlacement final : public quillix::CurvePlacement {
 public:
  explicit HostPlacement(const MATH::CTransformation& global)
      : m_global(global), m_directions(global) {
    m_directions.SetTranslationFromValues(0.0, 0.0, 0.0);
  }
  quillix::CurvePoint PositionToWorld(const quillix::CurvePoint& p) const override {
    return narrow(MATH::MapObjectPositionToWorldSpace(m_global, wide(p)));
  }
  quillix::CurvePoint DirectionToWorld(const quillix::CurvePoint& v) const override {
    return narrow(MATH::MapObjectPositionToWorldSpace(m_directions, wide(v)));
  }

 private:
  MATH::CTransformation m_global;
  MATH::CTransformation m_directions;
};

// The sub-curve `subCurve` of the object called `name` at `frame`, with the object's placement;
// nullopt when there is no such object, it holds no curves, or the sub-curve is unusable.
struct ResolvedCurve {
  NurbsCurve curve;
  MATH::CTransformation global;
};
std::optional<ResolvedCurve> resolveCurve(const CString& name, LONG subCurve, double frame) {
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

std::optional<quillix::CurveOutput> outputOf(ULONG port) {
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

XSIPLUGINCALLBACK CStatus Quillix_gpoc_Evaluate(ICENodeContext& context) {
  const std::optional<quillix::CurveOutput> output = outputOf(context.GetEvaluatedOutputPortID());
  if (!output) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    const auto parameterInfo = QueryPortInfo(context, kParameterPort);
    if (!parameterInfo) return;
    const double frame = context.GetTime().GetTime();
    const CDataArrayString name(context, kNamePort);
    const CDataArrayLong mode(context, kModePort);
    const CDataArrayLong subCurve(context, kSubCurvePort);
    if (name.GetCount() == 0 || mode.GetCount() == 0 || subCurve.GetCount() == 0) return;

    const std::optional<ResolvedCurve> resolved = resolveCurve(name[0], subCurve[0], frame);
    std::optional<HostCurve> curve;
    if (resolved) curve.emplace(resolved->curve);
    const HostPlacement placement(resolved ? resolved->global : MATH::CTransformation());
    const quillix::CurveParameterMode curveMode = quillix::CurveModeFromValue(mode[0]);
    const quillix::CurveSampler* sampler = curve ? &*curve : nullptr;
    CIndexSet indexSet(context);

    if (!parameterInfo->IsArray()) {
      const CDataArrayFloat parameters(context, kParameterPort);
      CDataArrayVector3f result(context);
      if (parameters.GetCount() == 0) return;
      for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
        quillix::Vec3f value;
        quillix::SampleCurve({&parameters[it], 1}, curveMode, sampler, placement, *output,
                             {&value, 1});
        result[it] = MATH::CVector3f(value.x, value.y, value.z);
      }
      return;
    }
    const CDataArray2DFloat parameters(context, kParameterPort);
    CDataArray2DVector3f result(context);
    for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
      const auto values = parameters[it];
      auto out = result.Resize(it, values.GetCount());
      if (out.GetCount() != values.GetCount()) continue;
      quillix::SampleCurve({values.GetData(), values.GetCount()}, curveMode, sampler, placement,
                           *output, quillix::plugin::MutablePoints(out));
    }
  });
}

CStatus Quillix_gpoc_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_gpoc", siICENodeSingleThreading, 1, 1, kPorts});
}
