// Node definitions as data, and the one routine that turns them into host registrations.
//
// A node file declares its ports as a table of PortDef rows with named fields at the top:
//
//   constexpr PortDef kPorts[] = {
//       {.id = kValue, .direction = kIn, .dataTypes = XSI::siICENodeDataLong,
//        .structures = XSI::siICENodeStructureAny, .contexts = XSI::siICENodeContextAny,
//        .scriptName = L"Value", .displayName = L"Value", .defaultValue = DefaultInt(0),
//        .structureLink = kLinkStructure, .contextLink = kLinkContext},
//       ...
//   };
//
// and registers through RegisterNode, which follows the host's definition pattern step by
// step: create the definition, set the threading model, add the group, the inputs, the
// outputs (each step asserted), register, return success whatever the registrar said.
#pragma once

#include <span>

#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

namespace quillix::plugin {

using XSI::ULONG;

inline constexpr ULONG kGroupInputs = 10;         // the one group of every node, "Inputs"
inline constexpr ULONG kUnbounded = 4294967295u;  // maximum instance count of variadic groups
inline constexpr ULONG kNoLink = 4294967295u;     // port takes part in no link of that kind
inline constexpr ULONG kLinkType = 4000;
inline constexpr ULONG kLinkStructure = 4001;
inline constexpr ULONG kLinkContext = 4002;

// Default value of an input port, kept constexpr-friendly so that port tables stay data.
struct DefaultValue {
  enum class Kind { None, Bool, Int, Float, Double, String, Vector3Zero, Matrix44Zero };
  Kind kind = Kind::None;
  double number = 0.0;
  const wchar_t* text = L"";
};
constexpr DefaultValue NoDefault() { return {}; }
constexpr DefaultValue DefaultBool(bool v) { return {DefaultValue::Kind::Bool, v ? 1.0 : 0.0}; }
constexpr DefaultValue DefaultInt(int v) { return {DefaultValue::Kind::Int, double(v)}; }
constexpr DefaultValue DefaultFloat(float v) { return {DefaultValue::Kind::Float, double(v)}; }
// A default registered as a double value, as some float ports have always been.
constexpr DefaultValue DefaultDouble(double v) { return {DefaultValue::Kind::Double, v}; }
constexpr DefaultValue DefaultString(const wchar_t* v) {
  return {DefaultValue::Kind::String, 0.0, v};
}
constexpr DefaultValue DefaultVector3Zero() { return {DefaultValue::Kind::Vector3Zero}; }
constexpr DefaultValue DefaultMatrix44Zero() { return {DefaultValue::Kind::Matrix44Zero}; }

enum class PortDirection { In, Out };
inline constexpr PortDirection kIn = PortDirection::In;
inline constexpr PortDirection kOut = PortDirection::Out;

// One row of a node's port table, written with designated initializers. Outputs ignore
// `defaultValue`; a link left out means the port takes part in no link of that kind.
struct PortDef {
  ULONG id = 0;
  PortDirection direction = kIn;
  ULONG dataTypes = 0;   // siICENodeDataType bits
  ULONG structures = 0;  // 1 single, 2 array, 3 either
  ULONG contexts = 0;    // siICENodeContextType bits
  const wchar_t* scriptName = L"";
  const wchar_t* displayName = L"";
  DefaultValue defaultValue = {};
  ULONG typeLink = kNoLink;  // kLinkType or kNoLink
  ULONG structureLink = kNoLink;
  ULONG contextLink = kNoLink;
};

struct NodeDef {
  const wchar_t* name = L"";  // "Quillix_<short name>"
  ULONG threadingModel = 2;   // 1 single-threaded, 2 multi-threaded
  ULONG groupMin = 1;
  ULONG groupMax = 1;
  std::span<const PortDef> ports;  // added in table order: inputs, then outputs
};

// Registers `node` on `registrar`. Always returns success; a failed definition step is a
// programming error reported through CStatus::AssertSucceeded.
XSI::CStatus RegisterNode(XSI::PluginRegistrar& registrar, const NodeDef& node);

}  // namespace quillix::plugin

// Defines Quillix_<shortName>_Register, which registers the node "Quillix_<shortName>" with
// `model` (siICENodeSingleThreading or siICENodeMultiThreading) over the port table
// `portTable`, so that a node's name is written once.
#define QUILLIX_REGISTER_NODE(shortName, model, portTable)                                         \
  XSI::CStatus Quillix_##shortName##_Register(XSI::PluginRegistrar& registrar) {                   \
    return ::quillix::plugin::RegisterNode(                                                        \
        registrar, {.name = L"Quillix_" #shortName, .threadingModel = model, .ports = portTable}); \
  }
