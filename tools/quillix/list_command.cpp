#include <ostream>
#include <string>
#include <vector>

#include <xsihost/port_values.h>
#include <nlohmann/json.hpp>

#include "tools/quillix/commands.h"
#include "tools/quillix/json_values.h"
#include "tools/quillix/request_names.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using xsihost::NodeDefinitionRecord;
using xsihost::PortRecord;

namespace {

// What each node and command does, from the headings of its docs section.
struct Summary {
  const wchar_t* name;
  const char* text;
};
constexpr Summary kSummaries[] = {
#include "tools/quillix/node_summaries.inc"
};

std::string SummaryOf(const std::wstring& name) {
  for (const Summary& s : kSummaries)
    if (name == s.name) return s.text;
  return "";
}

const char* ThreadingName(ULONG model) {
  return model == 1 ? "single-threaded" : model == 2 ? "multi-threaded" : "unknown";
}

const char* StructureName(ULONG s) { return s == 1 ? "single" : s == 2 ? "array" : "any"; }

// Context bits as names, "any" for all six.
std::vector<std::string> ContextNames(ULONG bits) {
  static const char* const kNames[] = {"singleton",   "per point",        "per edge",
                                       "per polygon", "per polygon node", "per generated element"};
  if ((bits & 63u) == 63u) return {"any"};
  std::vector<std::string> names;
  for (unsigned k = 0; k < 6; ++k)
    if (bits & (1u << k)) names.push_back(kNames[k]);
  return names;
}

json link(ULONG id) { return id == 0xFFFFFFFFu ? json(nullptr) : json(id); }

json DefaultJson(const XSI::CValue& v) {
  switch (v.GetType()) {
    case XSI::CValue::siEmpty:
      return nullptr;
    case XSI::CValue::siBool:
      return static_cast<bool>(v);
    case XSI::CValue::siFloat:
    case XSI::CValue::siDouble:
      return static_cast<double>(v);
    case XSI::CValue::siString:
      return WideToUtf8(v.GetAsText().Wide());
    case XSI::CValue::siVector3f: {
      const auto p = v.GetVector3f();
      return json::array({p.GetX(), p.GetY(), p.GetZ()});
    }
    case XSI::CValue::siMatrix4f: {
      const auto m = v.GetMatrix4f();
      json rows = json::array();
      for (short r = 0; r < 4; ++r)
        rows.push_back(
            json::array({m.GetValue(r, 0), m.GetValue(r, 1), m.GetValue(r, 2), m.GetValue(r, 3)}));
      return rows;
    }
    default:
      return static_cast<std::int64_t>(v);
  }
}

json PortJson(const PortRecord& p) {
  json j = {{"id", p.id},
            {"scriptName", WideToUtf8(p.scriptName)},
            {"displayName", WideToUtf8(p.displayName)},
            {"dataTypes", p.dataTypes},
            {"types", DataTypeNames(p.dataTypes)},
            {"structures", p.structures},
            {"structure", StructureName(p.structures)},
            {"contexts", p.contexts},
            {"contextNames", ContextNames(p.contexts)},
            {"links",
             {{"type", link(p.typeLink)},
              {"structure", link(p.structureLink)},
              {"context", link(p.contextLink)}}}};
  if (p.input) j["default"] = DefaultJson(p.defaultValue);
  return j;
}

json NodeJson(const NodeDefinitionRecord& n) {
  json groups = json::array();
  for (const auto& g : n.groups)
    groups.push_back({{"id", g.id},
                      {"name", WideToUtf8(g.name)},
                      {"min", g.minInstances},
                      {"max", g.maxInstances}});
  json inputs = json::array(), outputs = json::array();
  for (const auto& p : n.inputs) inputs.push_back(PortJson(p));
  for (const auto& p : n.outputs) outputs.push_back(PortJson(p));
  return {{"name", WideToUtf8(n.name)},
          {"summary", SummaryOf(n.name)},
          {"threadingModel", n.threadingModel},
          {"threading", ThreadingName(n.threadingModel)},
          {"groups", groups},
          {"inputs", inputs},
          {"outputs", outputs}};
}

// The text listing's port columns: "int/float, single, per point/per polygon".
std::string TypesText(ULONG dataTypes) {
  const std::vector<std::string> names = DataTypeNames(dataTypes);
  return names == DataTypeNames(0xFFFFFFFFu) ? "any type" : Listed(names, "/");
}

std::string StructureText(ULONG s) { return s == 1 || s == 2 ? StructureName(s) : "any structure"; }

std::string ContextText(ULONG contexts) {
  const std::vector<std::string> names = ContextNames(contexts);
  return names.size() == 1 && names[0] == "any" ? "any context" : Listed(names, "/");
}

}  // namespace

int RunList(const xsihost::PluginRecord& plugin, bool asJson, std::ostream& out) {
  const auto& r = plugin;
  if (asJson) {
    json commands = json::array(), nodes = json::array();
    for (const auto& c : r.commands) commands.push_back(WideToUtf8(c));
    for (const auto& n : r.nodes) nodes.push_back(NodeJson(*n));
    json j = {{"plugin",
               {{"name", WideToUtf8(r.name)},
                {"author", WideToUtf8(r.author)},
                {"email", WideToUtf8(r.email)},
                {"url", WideToUtf8(r.url)},
                {"version", {r.versionMajor, r.versionMinor}}}},
              {"commands", commands},
              {"nodes", nodes}};
    out << j.dump(2) << '\n';
    return 0;
  }
  out << WideToUtf8(r.name) << " " << r.versionMajor << "." << r.versionMinor << " by "
      << WideToUtf8(r.author) << " <" << WideToUtf8(r.email) << "> " << WideToUtf8(r.url) << "\n\n";
  out << "Commands:\n";
  for (const auto& c : r.commands) out << "  " << WideToUtf8(c) << " — " << SummaryOf(c) << '\n';
  out << "\nNodes (" << r.nodes.size() << "):\n";
  for (const auto& n : r.nodes) {
    out << "  " << WideToUtf8(n->name) << " — " << SummaryOf(n->name) << " ("
        << ThreadingName(n->threadingModel) << ")\n";
    for (const auto& g : n->groups)
      out << "    group " << g.id << " \"" << WideToUtf8(g.name) << "\" " << g.minInstances << ".."
          << g.maxInstances << '\n';
    auto printPort = [&out](const PortRecord& p) {
      out << "    " << (p.input ? "in  " : "out ") << p.id << " " << WideToUtf8(p.scriptName)
          << " \"" << WideToUtf8(p.displayName) << "\": " << TypesText(p.dataTypes) << ", "
          << StructureText(p.structures) << ", " << ContextText(p.contexts);
      if (p.input) out << ", default " << DefaultJson(p.defaultValue).dump();
      out << '\n';
    };
    for (const auto& p : n->inputs) printPort(p);
    for (const auto& p : n->outputs) printPort(p);
  }
  return 0;
}

}  // namespace quillix::tool
