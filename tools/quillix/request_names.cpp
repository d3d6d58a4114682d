#include "tools/quillix/request_names.h"

#include "tools/quillix/json_values.h"
#include "tools/quillix/nearest_name.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using xsihost::NodeDefinitionRecord;
using xsihost::PortRecord;

namespace {

// The suggestion for `word` among `names`, or else the list of them all.
std::string Hint(const std::string& word, const std::vector<std::string>& names) {
  const std::string suggestion = DidYouMean(word, names);
  return suggestion.empty() ? " (" + Listed(names) + ")" : suggestion;
}

std::vector<const PortRecord*> PortsOf(const NodeDefinitionRecord& node, PortKind kind) {
  std::vector<const PortRecord*> ports;
  if (kind != PortKind::kOutput)
    for (const PortRecord& p : node.inputs) ports.push_back(&p);
  if (kind != PortKind::kInput)
    for (const PortRecord& p : node.outputs) ports.push_back(&p);
  return ports;
}

const char* KindText(PortKind kind) {
  return kind == PortKind::kInput    ? "input port"
         : kind == PortKind::kOutput ? "output port"
                                     : "port";
}

const PortRecord* FindScriptName(const std::vector<const PortRecord*>& ports,
                                 const std::string& name) {
  const std::wstring wide = Utf8ToWide(name);
  for (const PortRecord* p : ports)
    if (p->scriptName == wide) return p;
  return nullptr;
}

[[noreturn]] void UnknownPort(const NodeDefinitionRecord& node, const std::string& key,
                              PortKind kind, const JsonPlace& place) {
  std::vector<std::string> names;
  for (const PortRecord* p : PortsOf(node, kind)) {
    names.push_back(WideToUtf8(p->scriptName));
    names.push_back(std::to_string(p->id));
  }
  throw InputError(place, "node " + WideToUtf8(node.name) + " has no " + KindText(kind) + " \"" +
                              key + "\"" + DidYouMean(key, names));
}

}  // namespace

void CheckKnownKeys(const json& object, const JsonPlace& place,
                    std::initializer_list<const char*> known) {
  for (const auto& [key, value] : object.items()) {
    bool isKnown = false;
    for (const char* k : known) isKnown |= key == k;
    if (isKnown) continue;
    const std::vector<std::string> names(known.begin(), known.end());
    throw InputError(JsonPlace(place, key), "unknown key" + Hint(key, names));
  }
}

const NodeDefinitionRecord& FindNodeNamed(const xsihost::Host& host, const json& name,
                                          const JsonPlace& place) {
  if (!name.is_string()) throw InputError(place, "expected a node name");
  const std::string text = name.get<std::string>();
  if (const NodeDefinitionRecord* node = host.FindNode(Utf8ToWide(text))) return *node;
  std::vector<std::string> names;
  for (const auto& n : host.Plugin().nodes) names.push_back(WideToUtf8(n->name));
  throw InputError(place, "unknown node " + name.dump() + DidYouMean(text, names));
}

const PortRecord& FindPortByKey(const NodeDefinitionRecord& node, const std::string& key,
                                PortKind kind, const JsonPlace& place) {
  const std::vector<const PortRecord*> ports = PortsOf(node, kind);
  const bool digits =
      !key.empty() && key.find_first_not_of("0123456789") == std::string::npos && key.size() <= 10;
  if (digits) {
    const unsigned long long id = std::stoull(key);
    for (const PortRecord* p : ports)
      if (p->id == id) return *p;
  } else if (const PortRecord* p = FindScriptName(ports, key)) {
    return *p;
  }
  UnknownPort(node, key, kind, place);
}

ULONG ReadPortReference(const NodeDefinitionRecord& node, const json& j, PortKind kind,
                        const JsonPlace& place) {
  if (j.is_string()) {
    // In a list, numbers are IDs and strings script names: "2010" is neither.
    const std::string name = j.get<std::string>();
    if (const PortRecord* p = FindScriptName(PortsOf(node, kind), name)) return p->id;
    UnknownPort(node, name, kind, place);
  }
  if (!j.is_number_integer() && !j.is_number_unsigned())
    throw InputError(place, "expected a port ID or a port's script name");
  return ReadUnsigned(j, place);
}

ULONG ReadDataType(const json& j, const JsonPlace& place) {
  const ULONG type = j.is_string() ? xsihost::TypeFromName(j.get<std::string>()) : 0;
  if (type != 0) return type;
  const std::vector<std::string> names = DataTypeNames(0xFFFFFFFFu);
  throw InputError(place, "unknown data type " + j.dump() +
                              Hint(j.is_string() ? j.get<std::string>() : j.dump(), names));
}

std::vector<std::string> DataTypeNames(ULONG dataTypes) {
  std::vector<std::string> names;
  for (ULONG bit = 1; bit != 0; bit <<= 1)
    if ((dataTypes & bit) && xsihost::IsValueType(bit)) names.push_back(xsihost::TypeName(bit));
  return names;
}

std::string Listed(const std::vector<std::string>& names, const char* separator) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : separator) + name;
  return text;
}

ULONG ReadUnsigned(const json& j, const JsonPlace& place) {
  if (!j.is_number_unsigned() && !(j.is_number_integer() && j.get<std::int64_t>() >= 0))
    throw InputError(place, "expected a non-negative integer");
  const std::uint64_t v = j.get<std::uint64_t>();
  if (v > 0xFFFFFFFFull) throw InputError(place, "number too large");
  return static_cast<ULONG>(v);
}

}  // namespace quillix::tool
