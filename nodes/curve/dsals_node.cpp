// Quillix_dsals and Quillix_dsals2: spheres distributed along each element's spline, one
// encoded 4x4 matrix per sphere. The two differ only in how interpolation is chosen: bit flags
// for the first, one interpolation type per channel for the second.
#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <utility>

#include <xsi_dataarray.h>
#include <xsi_dataarray2D.h>
#include <xsi_icenodecontext.h>
#include <xsi_indexset.h>
#include <xsi_pluginregistrar.h>

#include "plugin/host_arrays.h"
#include "core/curve/sphere_distribution.h"
#include "plugin/callback_guard.h"
#include "plugin/registration.h"

using namespace XSI;
using namespace quillix::plugin;

namespace {

constexpr ULONG kPositionsPort = 1010;
constexpr ULONG kUpVectorsPort = 1020;
constexpr ULONG kIntervalIndicesPort = 1025;
constexpr ULONG kRadiiPort = 1030;
constexpr ULONG kCornerThresholdPort = 1040;
constexpr ULONG kCornerScalePort = 1050;
constexpr ULONG kClosedPort = 1060;
constexpr ULONG kAlignmentPort = 1070;
constexpr ULONG kDistributionPort = 1080;
constexpr ULONG kRandomSeedPort = 1090;
constexpr ULONG kInterpolatePort = 1100;      // Quillix_dsals: bit flags
constexpr ULONG kInterpPositionsPort = 1100;  // Quillix_dsals2: one type per channel
constexpr ULONG kInterpTangentsPort = 1104;
constexpr ULONG kInterpUpVectorsPort = 1108;
constexpr ULONG kMaxNumSpheresPort = 1200;
constexpr ULONG kResultPort = 2010;

constexpr PortDef input(ULONG id, ULONG type, ULONG structure, const wchar_t* script,
                        const wchar_t* display, DefaultValue value) {
  return {id,          PortDirection::In, type,  structure, siICENodeContextAny,
          script,      display,           value, kNoLink,   kLinkStructure,
          kLinkContext};
}

constexpr PortDef kSharedInputs[] = {
    input(kPositionsPort, siICENodeDataVector3, siICENodeStructureArray, L"controlPositions",
          L"In Array of Control Point Positions", DefaultVector3Zero()),
    input(kUpVectorsPort, siICENodeDataVector3, siICENodeStructureArray, L"controlUpVectors",
          L"In Array of Control Point Up Vectors", DefaultVector3Zero()),
    input(kIntervalIndicesPort, siICENodeDataLong, siICENodeStructureArray,
          L"controlIntervalIndices", L"In Array of Control Interval Indices (Optional)",
          DefaultInt(-1)),
    input(kRadiiPort, siICENodeDataFloat, siICENodeStructureArray, L"sphereRadiuses",
          L"In Array of Sphere Radiuses", DefaultFloat(1.0f)),
    input(kCornerThresholdPort, siICENodeDataFloat, siICENodeStructureSingle, L"cornerThreshold",
          L"Corner Threshold", DefaultFloat(1.0f)),
    input(kCornerScalePort, siICENodeDataFloat, siICENodeStructureSingle, L"cornerScale",
          L"Corner Scale", DefaultFloat(1.0f)),
    input(kClosedPort, siICENodeDataLong, siICENodeStructureSingle, L"closed",
          L"Treat Spline as closed", DefaultInt(0)),
    input(kAlignmentPort, siICENodeDataLong, siICENodeStructureSingle, L"alignment", L"Alignment",
          DefaultInt(1)),
    input(kDistributionPort, siICENodeDataLong, siICENodeStructureSingle, L"distribution",
          L"Distribution", DefaultInt(0)),
    input(kRandomSeedPort, siICENodeDataLong, siICENodeStructureSingle, L"randomSeed",
          L"Random Seed", DefaultInt(0)),
};

constexpr PortDef kSharedTail[] = {
    input(kMaxNumSpheresPort, siICENodeDataLong, siICENodeStructureSingle, L"maxNumSpheres",
          L"Max Num Spheres", DefaultInt(16777216)),
    {kResultPort, PortDirection::Out, siICENodeDataMatrix44, siICENodeStructureArray,
     siICENodeContextAny, L"result", L"Encoded 4x4 Matrix", NoDefault(), kNoLink, kNoLink,
     kLinkContext},
};

constexpr PortDef kDsalsInterpolation[] = {
    input(kInterpolatePort, siICENodeDataLong, siICENodeStructureSingle, L"interpolate",
          L"Interpolate", DefaultInt(3)),
};

constexpr PortDef kDsals2Interpolation[] = {
    input(kInterpPositionsPort, siICENodeDataLong, siICENodeStructureSingle, L"interpTypePositions",
          L"interpTypePositions", DefaultInt(20)),
    input(kInterpTangentsPort, siICENodeDataLong, siICENodeStructureSingle, L"interpTypeTangents",
          L"interpTypeTangents", DefaultInt(20)),
    input(kInterpUpVectorsPort, siICENodeDataLong, siICENodeStructureSingle, L"interpTypeUpVectors",
          L"interpTypeUpVectors", DefaultInt(20)),
};

// The port table of one variant: the shared inputs, its interpolation ports, the shared tail.
template <std::size_t N>
constexpr auto portTable(const PortDef (&interpolation)[N]) {
  std::array<PortDef, std::size(kSharedInputs) + N + std::size(kSharedTail)> ports{};
  std::size_t next = 0;
  for (const PortDef& port : kSharedInputs) ports[next++] = port;
  for (const PortDef& port : interpolation) ports[next++] = port;
  for (const PortDef& port : kSharedTail) ports[next++] = port;
  return ports;
}

constexpr auto kDsalsPorts = portTable(kDsalsInterpolation);
constexpr auto kDsals2Ports = portTable(kDsals2Interpolation);

// The evaluation both nodes share; `interpolationAt(element)` reads the node's own ports.
template <class InterpolationAt>
void evaluateSpheres(ICENodeContext& context, InterpolationAt&& interpolationAt) {
  const CDataArray2DVector3f positions(context, kPositionsPort);
  const CDataArray2DVector3f upVectors(context, kUpVectorsPort);
  const CDataArray2DLong intervalIndices(context, kIntervalIndicesPort);
  const CDataArray2DFloat radii(context, kRadiiPort);
  const CDataArrayFloat cornerThreshold(context, kCornerThresholdPort);
  const CDataArrayFloat cornerScale(context, kCornerScalePort);
  const CDataArrayLong closed(context, kClosedPort);
  const CDataArrayLong alignment(context, kAlignmentPort);
  const CDataArrayLong distribution(context, kDistributionPort);
  const CDataArrayLong randomSeed(context, kRandomSeedPort);
  const CDataArrayLong maxNumSpheres(context, kMaxNumSpheresPort);
  CDataArray2DMatrix4f result(context);
  CIndexSet indexSet(context);

  // A batch whose longest spline has fewer than two points, or that has no up vector or no
  // radius anywhere, gives every element an empty result.
  ULONG longest = 0, mostUps = 0, mostRadii = 0;
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    longest = std::max(longest, positions[it].GetCount());
    mostUps = std::max(mostUps, upVectors[it].GetCount());
    mostRadii = std::max(mostRadii, radii[it].GetCount());
  }
  const bool anything =
      longest >= 2 && mostUps > 0 && mostRadii > 0 && cornerThreshold.GetCount() > 0 &&
      cornerScale.GetCount() > 0 && closed.GetCount() > 0 && alignment.GetCount() > 0 &&
      distribution.GetCount() > 0 && randomSeed.GetCount() > 0 && maxNumSpheres.GetCount() > 0;
  quillix::CountedArray<quillix::SphereRecord> records;
  for (CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    records.Clear();
    if (anything) {
      const auto radiusList = radii[it];
      const auto indexList = intervalIndices[it];
      quillix::SphereDistributionParams params;
      params.radii = {radiusList.GetData(), radiusList.GetCount()};
      params.alignment = alignment[it];
      params.interpolation = interpolationAt(it);
      params.cornerScale = cornerScale[it];
      params.distribution = distribution[it];
      params.seed = randomSeed[it];
      params.cornerThreshold = cornerThreshold[it];
      params.maxSpheres = maxNumSpheres[it];
      quillix::DistributeSpheresOverIntervals(
          quillix::plugin::PointsAt(positions, it), quillix::plugin::PointsAt(upVectors, it),
          {indexList.GetData(), indexList.GetCount()}, closed[it] != 0, params, records, nullptr);
    }
    quillix::plugin::WriteArray(result, it, std::as_const(records).span());
  }
}

}  // namespace

XSIPLUGINCALLBACK CStatus Quillix_dsals_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    const CDataArrayLong interpolate(context, kInterpolatePort);
    if (interpolate.GetCount() == 0) return;
    evaluateSpheres(context, [&](ULONG element) {
      return quillix::InterpolationFromFlags(interpolate[element]);
    });
  });
}

CStatus Quillix_dsals_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_dsals", siICENodeMultiThreading, 1, 1, kDsalsPorts});
}

XSIPLUGINCALLBACK CStatus Quillix_dsals2_Evaluate(ICENodeContext& context) {
  if (context.GetEvaluatedOutputPortID() != kResultPort) return CStatus::OK;
  return quillix::plugin::EvaluateGuarded([&] {
    const CDataArrayLong positions(context, kInterpPositionsPort);
    const CDataArrayLong tangents(context, kInterpTangentsPort);
    const CDataArrayLong upVectors(context, kInterpUpVectorsPort);
    if (positions.GetCount() == 0 || tangents.GetCount() == 0 || upVectors.GetCount() == 0) return;
    evaluateSpheres(context, [&](ULONG element) {
      return quillix::SplineInterpolation{positions[element], tangents[element],
                                          upVectors[element]};
    });
  });
}

CStatus Quillix_dsals2_Register(PluginRegistrar& registrar) {
  return RegisterNode(registrar, {L"Quillix_dsals2", siICENodeMultiThreading, 1, 1, kDsals2Ports});
}
