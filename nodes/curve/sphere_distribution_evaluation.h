// Ports and evaluation shared by the two sphere-distribution nodes (Quillix_dsals,
// Quillix_dsals2). They differ only in how the interpolation of positions, tangents and up
// vectors is chosen, which each node reads from its own ports.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "core/curve/sphere_distribution.h"
#include "plugin/host_arrays.h"
#include "plugin/node.h"

namespace quillix::curve {

using XSI::ULONG;

inline constexpr ULONG kPositionsPort = 1010;
inline constexpr ULONG kUpVectorsPort = 1020;
inline constexpr ULONG kIntervalIndicesPort = 1025;
inline constexpr ULONG kRadiiPort = 1030;
inline constexpr ULONG kCornerThresholdPort = 1040;
inline constexpr ULONG kCornerScalePort = 1050;
inline constexpr ULONG kClosedPort = 1060;
inline constexpr ULONG kAlignmentPort = 1070;
inline constexpr ULONG kDistributionPort = 1080;
inline constexpr ULONG kRandomSeedPort = 1090;
// The interpolation ports of each node come here, from 1100 on.
inline constexpr ULONG kMaxNumSpheresPort = 1200;
inline constexpr ULONG kSpheresPort = 2010;

// An integer single-valued input of these nodes; every input is linked by structure and
// context.
constexpr plugin::PortDef IntegerInput(ULONG id, const wchar_t* scriptName,
                                       const wchar_t* displayName, int defaultValue) {
  return {.id = id,
          .direction = plugin::kIn,
          .dataTypes = XSI::siICENodeDataLong,
          .structures = XSI::siICENodeStructureSingle,
          .contexts = XSI::siICENodeContextAny,
          .scriptName = scriptName,
          .displayName = displayName,
          .defaultValue = plugin::DefaultInt(defaultValue),
          .structureLink = plugin::kLinkStructure,
          .contextLink = plugin::kLinkContext};
}

// Inputs before the interpolation ports.
// clang-format off
inline constexpr plugin::PortDef kLeadingSpherePorts[] = {
    {.id = kPositionsPort, .direction = plugin::kIn, .dataTypes = XSI::siICENodeDataVector3,
     .structures = XSI::siICENodeStructureArray, .contexts = XSI::siICENodeContextAny,
     .scriptName = L"controlPositions", .displayName = L"In Array of Control Point Positions",
     .defaultValue = plugin::DefaultVector3Zero(), .structureLink = plugin::kLinkStructure,
     .contextLink = plugin::kLinkContext},
    {.id = kUpVectorsPort, .direction = plugin::kIn, .dataTypes = XSI::siICENodeDataVector3,
     .structures = XSI::siICENodeStructureArray, .contexts = XSI::siICENodeContextAny,
     .scriptName = L"controlUpVectors", .displayName = L"In Array of Control Point Up Vectors",
     .defaultValue = plugin::DefaultVector3Zero(), .structureLink = plugin::kLinkStructure,
     .contextLink = plugin::kLinkContext},
    {.id = kIntervalIndicesPort, .direction = plugin::kIn, .dataTypes = XSI::siICENodeDataLong,
     .structures = XSI::siICENodeStructureArray, .contexts = XSI::siICENodeContextAny,
     .scriptName = L"controlIntervalIndices",
     .displayName = L"In Array of Control Interval Indices (Optional)",
     .defaultValue = plugin::DefaultInt(-1), .structureLink = plugin::kLinkStructure,
     .contextLink = plugin::kLinkContext},
    {.id = kRadiiPort, .direction = plugin::kIn, .dataTypes = XSI::siICENodeDataFloat,
     .structures = XSI::siICENodeStructureArray, .contexts = XSI::siICENodeContextAny,
     .scriptName = L"sphereRadiuses", .displayName = L"In Array of Sphere Radiuses",
     .defaultValue = plugin::DefaultFloat(1.0f), .structureLink = plugin::kLinkStructure,
     .contextLink = plugin::kLinkContext},
    {.id = kCornerThresholdPort, .direction = plugin::kIn, .dataTypes = XSI::siICENodeDataFloat,
     .structures = XSI::siICENodeStructureSingle, .contexts = XSI::siICENodeContextAny,
     .scriptName = L"cornerThreshold", .displayName = L"Corner Threshold",
     .defaultValue = plugin::DefaultFloat(1.0f), .structureLink = plugin::kLinkStructure,
     .contextLink = plugin::kLinkContext},
    {.id = kCornerScalePort, .direction = plugin::kIn, .dataTypes = XSI::siICENodeDataFloat,
     .structures = XSI::siICENodeStructureSingle, .contexts = XSI::siICENodeContextAny,
     .scriptName = L"cornerScale", .displayName = L"Corner Scale",
     .defaultValue = plugin::DefaultFloat(1.0f), .structureLink = plugin::kLinkStructure,
     .contextLink = plugin::kLinkContext},
    IntegerInput(kClosedPort, L"closed", L"Treat Spline as closed", 0),
    IntegerInput(kAlignmentPort, L"alignment", L"Alignment", 1),
    IntegerInput(kDistributionPort, L"distribution", L"Distribution", 0),
    IntegerInput(kRandomSeedPort, L"randomSeed", L"Random Seed", 0),
};

// Ports after the interpolation ports.
inline constexpr plugin::PortDef kTrailingSpherePorts[] = {
    IntegerInput(kMaxNumSpheresPort, L"maxNumSpheres", L"Max Num Spheres", 16777216),
    {.id = kSpheresPort, .direction = plugin::kOut, .dataTypes = XSI::siICENodeDataMatrix44,
     .structures = XSI::siICENodeStructureArray, .contexts = XSI::siICENodeContextAny,
     .scriptName = L"result", .displayName = L"Encoded 4x4 Matrix",
     .contextLink = plugin::kLinkContext},
};
// clang-format on

// The port table of one node: the shared inputs, its own interpolation ports, the shared tail.
template <std::size_t N>
constexpr auto SpherePortTable(const plugin::PortDef (&interpolationPorts)[N]) {
  std::array<plugin::PortDef, std::size(kLeadingSpherePorts) + N + std::size(kTrailingSpherePorts)>
      ports{};
  std::size_t next = 0;
  for (const plugin::PortDef& port : kLeadingSpherePorts) ports[next++] = port;
  for (const plugin::PortDef& port : interpolationPorts) ports[next++] = port;
  for (const plugin::PortDef& port : kTrailingSpherePorts) ports[next++] = port;
  return ports;
}

// Writes every element's sphere records to the evaluated output; `interpolationAt(element)`
// gives the element's SplineInterpolation from the node's own ports.
template <class InterpolationAt>
void EvaluateSpheres(XSI::ICENodeContext& context, InterpolationAt&& interpolationAt) {
  const XSI::CDataArray2DVector3f positions(context, kPositionsPort);
  const XSI::CDataArray2DVector3f upVectors(context, kUpVectorsPort);
  const XSI::CDataArray2DLong intervalIndices(context, kIntervalIndicesPort);
  const XSI::CDataArray2DFloat radii(context, kRadiiPort);
  const XSI::CDataArrayFloat cornerThreshold(context, kCornerThresholdPort);
  const XSI::CDataArrayFloat cornerScale(context, kCornerScalePort);
  const XSI::CDataArrayLong closed(context, kClosedPort);
  const XSI::CDataArrayLong alignment(context, kAlignmentPort);
  const XSI::CDataArrayLong distribution(context, kDistributionPort);
  const XSI::CDataArrayLong randomSeed(context, kRandomSeedPort);
  const XSI::CDataArrayLong maxNumSpheres(context, kMaxNumSpheresPort);
  XSI::CDataArray2DMatrix4f result(context);
  XSI::CIndexSet indexSet(context);

  // A batch whose longest spline has fewer than two points, or that has no up vector or no
  // radius anywhere, gives every element an empty result.
  ULONG longest = 0, mostUps = 0, mostRadii = 0;
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    longest = std::max(longest, positions[it].GetCount());
    mostUps = std::max(mostUps, upVectors[it].GetCount());
    mostRadii = std::max(mostRadii, radii[it].GetCount());
  }
  const bool anything =
      longest >= 2 && mostUps > 0 && mostRadii > 0 && cornerThreshold.GetCount() > 0 &&
      cornerScale.GetCount() > 0 && closed.GetCount() > 0 && alignment.GetCount() > 0 &&
      distribution.GetCount() > 0 && randomSeed.GetCount() > 0 && maxNumSpheres.GetCount() > 0;
  std::vector<SphereRecord> records;  // reused by every element of the batch
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    records.clear();
    if (anything) {
      SphereDistributionParams params;
      params.radii = plugin::ElementSpan<float>(radii, it);
      params.alignment = alignment[it];
      params.interpolation = interpolationAt(it);
      params.cornerScale = cornerScale[it];
      params.distribution = distribution[it];
      params.seed = randomSeed[it];
      params.cornerThreshold = cornerThreshold[it];
      params.maxSpheres = maxNumSpheres[it];
      DistributeSpheresOverIntervals(
          plugin::PointsAt(positions, it), plugin::PointsAt(upVectors, it),
          plugin::ElementSpan<std::int32_t>(intervalIndices, it), closed[it] != 0, params, records);
    }
    plugin::WriteArray(result, it, std::span<const SphereRecord>(records));
  }
}

}  // namespace quillix::curve
