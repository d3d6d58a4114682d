// What Quillix_nan and Quillix_nan2 share: the shape of their port table, which test each
// output port applies, the classification of single values and of arrays, and the node's
// definition (QUILLIX_FLOAT_CLASS_NODE).
#pragma once

#include <array>
#include <optional>
#include <type_traits>

#include "core/math/float_class.h"
#include "plugin/node.h"

namespace quillix::utility {

// The port IDs of both classification nodes.
inline constexpr XSI::ULONG kFloatInputPort = 1010;
inline constexpr XSI::ULONG kIsNaNPort = 2010;
inline constexpr XSI::ULONG kPositiveInfinityPort = 2020;
inline constexpr XSI::ULONG kNegativeInfinityPort = 2030;

// What tells the two nodes' ports apart: the outputs' data type, and the structures and
// contexts every port accepts.
struct FloatClassPortKind {
  XSI::ULONG flagType = 0;
  XSI::ULONG structures = 0;
  XSI::ULONG contexts = 0;
};

// The port table of a classification node: the float "Input" and the three flags "IsNaN",
// "Positive INF" and "Negative INF", all linked in structure and context.
constexpr std::array<plugin::PortDef, 4> FloatClassPorts(const FloatClassPortKind& kind) {
  const auto flag = [&kind](XSI::ULONG id, const wchar_t* scriptName,
                            const wchar_t* displayName) -> plugin::PortDef {
    return {.id = id,
            .direction = plugin::kOut,
            .dataTypes = kind.flagType,
            .structures = kind.structures,
            .contexts = kind.contexts,
            .scriptName = scriptName,
            .displayName = displayName,
            .structureLink = plugin::kLinkStructure,
            .contextLink = plugin::kLinkContext};
  };
  return {plugin::PortDef{.id = kFloatInputPort,
                          .direction = plugin::kIn,
                          .dataTypes = XSI::siICENodeDataFloat,
                          .structures = kind.structures,
                          .contexts = kind.contexts,
                          .scriptName = L"Input",
                          .displayName = L"Input",
                          .defaultValue = plugin::DefaultFloat(0.0f),
                          .structureLink = plugin::kLinkStructure,
                          .contextLink = plugin::kLinkContext},
          flag(kIsNaNPort, L"IsNaN", L"IsNaN"),
          flag(kPositiveInfinityPort, L"IsINFpos", L"Positive INF"),
          flag(kNegativeInfinityPort, L"IsINFneg", L"Negative INF")};
}

// The test of output `port`, with `positiveTest` on "Positive INF"; nullopt for a port the node
// does not have.
inline std::optional<FloatTest> TestForPort(XSI::ULONG port, FloatTest positiveTest) {
  if (port == kIsNaNPort) return FloatTest::NaN;
  if (port == kPositiveInfinityPort) return positiveTest;
  if (port == kNegativeInfinityPort) return FloatTest::NegativeInfinity;
  return std::nullopt;
}

// Writes `test` of every single input value of the batch into the evaluated output, as R: a
// boolean, or an integer 1 or 0. Writes nothing when the host supplies no input.
template <class R>
void ClassifySingles(XSI::ICENodeContext& context, FloatTest test) {
  const XSI::CDataArrayFloat input(context, kFloatInputPort);
  XSI::CDataArray<R> result(context);
  if (input.GetCount() == 0 || result.GetCount() == 0) return;
  XSI::CIndexSet indexSet(context);
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    result[it] = static_cast<R>(ClassifyFloat(input[it], test));
  }
}

// Writes `test` of every entry of each element's input array into an integer array of the same
// length (1 or 0 per entry).
inline void ClassifyArrays(XSI::ICENodeContext& context, FloatTest test) {
  const XSI::CDataArray2DFloat input(context, kFloatInputPort);
  XSI::CDataArray2DLong result(context);
  XSI::CIndexSet indexSet(context);
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    const XSI::CDataArray2DFloat::Accessor values = input[it];
    XSI::CDataArray2DLong::Accessor out = result.Resize(it, values.GetCount());
    ClassifyFloats({values.GetData(), values.GetCount()}, test, {out.GetData(), out.GetCount()});
  }
}

// Writes the test of the evaluated output port (`positiveTest` on "Positive INF") into it, as R:
// booleans of single values only, as Quillix_nan has always read its input without asking its
// port information, or integers of single values or arrays, following the input's structure.
template <class R>
void EvaluateFloatClass(XSI::ICENodeContext& context, FloatTest positiveTest) {
  const std::optional<FloatTest> test =
      TestForPort(context.GetEvaluatedOutputPortID(), positiveTest);
  if (!test) return;
  if constexpr (std::is_same_v<R, XSI::LONG>) {
    const std::optional<plugin::PortInfo> info = plugin::QueryPortInfo(context, kFloatInputPort);
    if (!info) return;
    if (info->IsArray()) return ClassifyArrays(context, *test);
  }
  ClassifySingles<R>(context, *test);
}

}  // namespace quillix::utility

// Defines the evaluation and the registration of the classification node Quillix_<shortName>,
// whose flags are of type R (bool or LONG, see EvaluateFloatClass), whose "Positive INF" applies
// `positiveTest`, and whose ports accept `portStructures` and `portContexts`. Multi-threaded.
#define QUILLIX_FLOAT_CLASS_NODE(shortName, R, positiveTest, portStructures, portContexts)      \
  QUILLIX_EVALUATE(Quillix_##shortName) {                                                       \
    ::quillix::utility::EvaluateFloatClass<R>(context, positiveTest);                           \
    return XSI::CStatus::OK;                                                                    \
  }                                                                                             \
  XSI::CStatus Quillix_##shortName##_Register(XSI::PluginRegistrar& registrar) {                \
    static constexpr auto kPorts = ::quillix::utility::FloatClassPorts(                         \
        {.flagType = std::is_same_v<R, bool> ? XSI::siICENodeDataBool : XSI::siICENodeDataLong, \
         .structures = portStructures,                                                          \
         .contexts = portContexts});                                                            \
    return ::quillix::plugin::RegisterNode(registrar,                                           \
                                           {.name = L"Quillix_" #shortName,                     \
                                            .threadingModel = XSI::siICENodeMultiThreading,     \
                                            .ports = kPorts});                                  \
  }
