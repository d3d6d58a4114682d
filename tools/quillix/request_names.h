// Names in `quillix eval` requests: the keys an object may have, nodes, ports by ID or script
// name, and data types. Each lookup that fails throws InputError naming the place and, when a
// known name is near, suggesting it.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include <xsihost/host.h>
#include <nlohmann/json.hpp>

#include "tools/quillix/json_place.h"

namespace quillix::tool {

// Refuses every key of `object` (a JSON object at `place`) that is not in `known`.
void CheckKnownKeys(const nlohmann::json& object, const JsonPlace& place,
                    std::initializer_list<const char*> known);

// The registered node called `name` (the string at `place`).
const xsihost::NodeDefinitionRecord& FindNodeNamed(const xsihost::Host& host,
                                                   const nlohmann::json& name,
                                                   const JsonPlace& place);

// Which ports a key may name.
enum class PortKind { kInput, kOutput, kAny };

// The port of `node` that `key` names: a decimal port ID, or a port's script name. `place` is
// where the key stands. Throws InputError when the node has no such port of `kind`.
const xsihost::PortRecord& FindPortByKey(const xsihost::NodeDefinitionRecord& node,
                                         const std::string& key, PortKind kind,
                                         const JsonPlace& place);

// A port given in a list ("port", "failPortInfo"): an ID as a number (any ID, whether the node
// defines it or not) or a script name of a port of `kind` as a string (a string of digits is
// no name, so "2010" is refused).
XSI::ULONG ReadPortReference(const xsihost::NodeDefinitionRecord& node, const nlohmann::json& j,
                             PortKind kind, const JsonPlace& place);

// A data type named by `j` ("int", "vector3", ...).
XSI::ULONG ReadDataType(const nlohmann::json& j, const JsonPlace& place);

// The names of the value types in the bit set `dataTypes`, lowest bit first.
std::vector<std::string> DataTypeNames(XSI::ULONG dataTypes);

// The names one after another, `separator` between them: "a, b, c".
std::string Listed(const std::vector<std::string>& names, const char* separator = ", ");

// A non-negative integer that fits 32 bits.
XSI::ULONG ReadUnsigned(const nlohmann::json& j, const JsonPlace& place);

}  // namespace quillix::tool
