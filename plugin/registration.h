// Node definitions as data, and the one routine that turns them into host registrations.
//
// A node file declares its ports as a table of PortDef at the top and registers through
// registerNode, which follows the host's definition pattern step by step: create the
// definition, set the threading model, add the group, the inputs, the outputs (each step
// asserted), register, return success whatever the registrar said.
#pragma once

#include <span>

#include <xsi_pluginregistrar.h>
#include <xsi_status.h>

namespace quillix::plugin {

using XSI::ULONG;

inline constexpr ULONG kGroupInputs = 10;                 // the one group of every node, "Inputs"
inline constexpr ULONG kUnbounded = 4294967295u;          // maximum instance count of variadic groups
inline constexpr ULONG kNoLink = 4294967295u;             // port takes part in no link of that kind
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
constexpr DefaultValue noDefault() { return {}; }
constexpr DefaultValue defaultBool(bool v) { return {DefaultValue::Kind::Bool, v ? 1.0 : 0.0, L""}; }
constexpr DefaultValue defaultInt(int v) { return {DefaultValue::Kind::Int, double(v), L""}; }
constexpr DefaultValue defaultFloat(float v) { return {DefaultValue::Kind::Float, double(v), L""}; }
// A default registered as a double value, as some float ports have always been.
constexpr DefaultValue defaultDouble(double v) { return {DefaultValue::Kind::Double, v, L""}; }
constexpr DefaultValue defaultString(const wchar_t* v) { return {DefaultValue::Kind::String, 0.0, v}; }
constexpr DefaultValue defaultVector3Zero() { return {DefaultValue::Kind::Vector3Zero, 0.0, L""}; }
constexpr DefaultValue defaultMatrix44Zero() { return {DefaultValue::Kind::Matrix44Zero, 0.0, L""}; }

enum class PortDirection { In, Out };

// One row of a node's port table. Outputs ignore `defaultValue`.
struct PortDef {
  ULONG id;
  PortDirection direction;
  ULONG dataTypes;    // siICENodeDataType bits
  ULONG structures;   // 1 single, 2 array, 3 either
  ULONG contexts;     // siICENodeContextType bits
  const wchar_t* scriptName;
  const wchar_t* displayName;
  DefaultValue defaultValue;
  ULONG typeLink;     // kLinkType or kNoLink
  ULONG structureLink;
  ULONG contextLink;
};

struct NodeDef {
  const wchar_t* name;      // "Quillix_<short name>"
  ULONG threadingModel;     // 1 single-threaded, 2 multi-threaded
  ULONG groupMin;
  ULONG groupMax;
  std::span<const PortDef> ports;  // added in table order: inputs, then outputs
};

// Registers `node` on `registrar`. Always returns success; a failed definition step is a
// programming error reported through CStatus::AssertSucceeded.
XSI::CStatus registerNode(XSI::PluginRegistrar& registrar, const NodeDef& node);

}  // namespace quillix::plugin
