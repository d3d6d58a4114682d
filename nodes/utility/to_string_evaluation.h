// What the to-string nodes share: their "Input" and "Result" ports, and the evaluation and
// registration (QUILLIX_LIST_TEXT_NODE) of the six list renderings (Quillix_btoa, _itoa, _ftoa
// and their variadic forms _btoa2, _itoa2, _ftoa2), which write one string per element of the
// batch. The variadic nodes join the renderings of all their group instances with ",".
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/text/number_text.h"
#include "plugin/node.h"

namespace quillix::utility {

// The port IDs of a list-rendering node.
inline constexpr XSI::ULONG kListInputPort = 1010;
inline constexpr XSI::ULONG kListResultPort = 2010;

// The "Input" port of a to-string node: `dataTypes` values, single or array, any context.
constexpr plugin::PortDef TextInputPort(XSI::ULONG id, XSI::ULONG dataTypes,
                                        plugin::DefaultValue defaultValue) {
  return {.id = id,
          .direction = plugin::kIn,
          .dataTypes = dataTypes,
          .structures = XSI::siICENodeStructureAny,
          .contexts = XSI::siICENodeContextAny,
          .scriptName = L"Input",
          .displayName = L"Input",
          .defaultValue = defaultValue,
          .structureLink = plugin::kLinkStructure,
          .contextLink = plugin::kLinkContext};
}

// The "Result" port of a to-string node: one string per element, in the input's context.
constexpr plugin::PortDef TextResultPort(XSI::ULONG id) {
  return {.id = id,
          .direction = plugin::kOut,
          .dataTypes = XSI::siICENodeDataString,
          .structures = XSI::siICENodeStructureSingle,
          .contexts = XSI::siICENodeContextAny,
          .scriptName = L"Result",
          .displayName = L"Result",
          .contextLink = plugin::kLinkContext};
}

// The port table of a list-rendering node: "Input" of `dataType`, then "Result".
constexpr std::array<plugin::PortDef, 2> ListTextPorts(XSI::ULONG dataType,
                                                       plugin::DefaultValue defaultValue) {
  return {TextInputPort(kListInputPort, dataType, defaultValue), TextResultPort(kListResultPort)};
}

// Which group instances a node renders: its one input, or every instance of a variadic group.
enum class InputInstances { First, All };

// Where a batch ends. AfterShortInput ends it right after the first element whose input has at
// most one entry; the boolean node has always done so and graphs are built around it.
enum class BatchEnd { AllElements, AfterShortInput };

namespace detail {

inline void AppendListText(std::span<const bool> values, std::wstring& out) {
  AppendBoolListText(values, out);
}
inline void AppendListText(std::span<const XSI::LONG> values, std::wstring& out) {
  AppendIntListText(values, out);
}
inline void AppendListText(std::span<const float> values, std::wstring& out) {
  AppendFloatListText(values, out);
}

inline std::vector<XSI::ULONG> BatchIndices(const XSI::CIndexSet& indexSet) {
  std::vector<XSI::ULONG> indices;
  indices.reserve(indexSet.GetCount());
  for (XSI::CIndexSet::Iterator it = indexSet.Begin(); it.HasNext(); it.Next()) {
    indices.push_back(it);
  }
  return indices;
}

}  // namespace detail

// Writes, for every element of the batch, the list renderings of the `inputPort` values of type
// T (bool, LONG or float) into the evaluated output, those of several instances joined with ",".
// Writes nothing when the host cannot tell an instance's port information or, for a variadic
// group, its instance count.
template <class T>
void EvaluateListText(XSI::ICENodeContext& context, XSI::ULONG inputPort, InputInstances instances,
                      BatchEnd end) {
  XSI::ULONG instanceCount = 1;
  if (instances == InputInstances::All &&
      context.GetGroupInstanceCount(plugin::kGroupInputs, instanceCount) != XSI::CStatus::OK) {
    return;
  }
  XSI::CIndexSet indexSet(context);
  const std::vector<XSI::ULONG> indices = detail::BatchIndices(indexSet);
  std::vector<std::wstring> texts(indices.size());
  std::size_t written = indices.size();
  for (XSI::ULONG instance = 0; instance < instanceCount; ++instance) {
    const std::optional<plugin::PortInfo> info =
        plugin::QueryPortInfo(context, inputPort, instance);
    if (!info) return;
    const plugin::ElementView<T> input(context, inputPort, info->IsArray(), instance);
    for (std::size_t i = 0; i < written; ++i) {
      const std::span<const T> entries = input.At(indices[i]);
      if (instance > 0) texts[i] += L",";
      detail::AppendListText(entries, texts[i]);
      if (end == BatchEnd::AfterShortInput && entries.size() <= 1) written = i + 1;
    }
  }
  XSI::CDataArrayString result(context);
  for (std::size_t i = 0; i < written; ++i) {
    result.SetData(indices[i], texts[i].c_str(), static_cast<XSI::ULONG>(texts[i].size()));
  }
}

}  // namespace quillix::utility

// Defines the evaluation and the registration of the list-rendering node Quillix_<shortName>,
// so that its file holds only what tells it apart: the value type T of its "Input" (bool, LONG
// or float) with the port's `dataType` and `defaultValue`, the InputInstances it renders (its
// group is variadic for All) and its BatchEnd. The node is multi-threaded and answers "Result"
// only.
#define QUILLIX_LIST_TEXT_NODE(shortName, T, dataType, defaultValue, instances, end)          \
  QUILLIX_EVALUATE(Quillix_##shortName) {                                                     \
    if (context.GetEvaluatedOutputPortID() == ::quillix::utility::kListResultPort) {          \
      ::quillix::utility::EvaluateListText<T>(context, ::quillix::utility::kListInputPort,    \
                                              instances, end);                                \
    }                                                                                         \
    return XSI::CStatus::OK;                                                                  \
  }                                                                                           \
  XSI::CStatus Quillix_##shortName##_Register(XSI::PluginRegistrar& registrar) {              \
    static constexpr auto kPorts = ::quillix::utility::ListTextPorts(dataType, defaultValue); \
    return ::quillix::plugin::RegisterNode(                                                   \
        registrar, {.name = L"Quillix_" #shortName,                                           \
                    .threadingModel = XSI::siICENodeMultiThreading,                           \
                    .groupMax = instances == ::quillix::utility::InputInstances::All          \
                                    ? ::quillix::plugin::kUnbounded                           \
                                    : 1,                                                      \
                    .ports = kPorts});                                                        \
  }
