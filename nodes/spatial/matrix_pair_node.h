// What the three nodes that compare two 4×4 matrix inputs pair by pair share (Quillix_cdbte,
// Quillix_iotb, Quillix_iotmb): their port IDs and rows, reading the mode, and the one call
// into the pair broadcast of plugin/broadcast.h.
#pragma once

#include <xsi_matrix4f.h>

#include "plugin/broadcast.h"
#include "plugin/node.h"

namespace quillix::spatial {

using XSI::ULONG;

inline constexpr ULONG kModePort = 1000;
inline constexpr ULONG kMatrixAPort = 1010;
inline constexpr ULONG kMatrixBPort = 1020;
inline constexpr ULONG kResultPort = 2010;

// The "mode" input: one integer for the whole evaluation, no links.
constexpr plugin::PortDef ModePortRow(int defaultMode) {
  return {.id = kModePort,
          .direction = plugin::kIn,
          .dataTypes = XSI::siICENodeDataLong,
          .structures = XSI::siICENodeStructureSingle,
          .contexts = XSI::siICENodeContextSingleton,
          .scriptName = L"mode",
          .displayName = L"Mode",
          .defaultValue = plugin::DefaultInt(defaultMode)};
}

// A matrix input of either structure and any context, linked to the result by structure and
// context.
constexpr plugin::PortDef MatrixPortRow(ULONG id, const wchar_t* scriptName,
                                        const wchar_t* displayName) {
  return {.id = id,
          .direction = plugin::kIn,
          .dataTypes = XSI::siICENodeDataMatrix44,
          .structures = XSI::siICENodeStructureAny,
          .contexts = XSI::siICENodeContextAny,
          .scriptName = scriptName,
          .displayName = displayName,
          .defaultValue = plugin::DefaultMatrix44Zero(),
          .structureLink = plugin::kLinkStructure,
          .contextLink = plugin::kLinkContext};
}

// The "result" output, of the structure and context of the two matrix inputs.
constexpr plugin::PortDef ResultPortRow(ULONG dataType, const wchar_t* displayName) {
  return {.id = kResultPort,
          .direction = plugin::kOut,
          .dataTypes = dataType,
          .structures = XSI::siICENodeStructureAny,
          .contexts = XSI::siICENodeContextAny,
          .scriptName = L"result",
          .displayName = displayName,
          .structureLink = plugin::kLinkStructure,
          .contextLink = plugin::kLinkContext};
}

// The first value of the mode port, or `fallback` (the port's default) when the host
// supplies none.
inline XSI::LONG ReadMode(XSI::ICENodeContext& context, XSI::LONG fallback) {
  const XSI::CDataArray<XSI::LONG> mode(context, kModePort);
  return mode.GetCount() > 0 ? mode[0] : fallback;
}

// Writes kernel.Pair(kernel.Prepare(A), kernel.Prepare(B)) of the two matrix inputs into the
// result, of data type R, by the single/array rule of EvaluatePairs. The kernel offers
//   Prepared Prepare(const XSI::MATH::CMatrix4f& matrix, bool reused) const;
//   R Pair(const Prepared& a, const Prepared& b) const;
template <class R, class Kernel>
void EvaluateMatrixPairs(XSI::ICENodeContext& context, const Kernel& kernel) {
  using XSI::MATH::CMatrix4f;
  plugin::EvaluatePairs<CMatrix4f, CMatrix4f, R>(context, kMatrixAPort, kMatrixBPort,
                                                 plugin::SymmetricPairKernel<Kernel>{kernel});
}

}  // namespace quillix::spatial
