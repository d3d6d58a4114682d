#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <thread>

#include <nlohmann/json.hpp>
#include <xsi_decl.h>
#include <xsihost/evaluation.h>
#include <xsihost/session.h>

#include "tools/quillix/commands.h"
#include "tools/quillix/json_values.h"
#include "tools/quillix/scene_tool.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using XSI::host_detail::NodeDefinitionRecord;
using XSI::host_detail::PortRecord;

namespace {

ULONG readPortID(const std::string& key, const std::string& place) {
  char* end = nullptr;
  const unsigned long id = std::strtoul(key.c_str(), &end, 10);
  if (key.empty() || !end || *end != '\0' || id > 0xFFFFFFFFul)
    throw InputError(place, "\"" + key + "\" is not a port ID");
  return static_cast<ULONG>(id);
}

ULONG readUnsigned(const json& j, const std::string& place) {
  if (!j.is_number_unsigned() && !(j.is_number_integer() && j.get<std::int64_t>() >= 0))
    throw InputError(place, "expected a non-negative integer");
  const std::uint64_t v = j.get<std::uint64_t>();
  if (v > 0xFFFFFFFFull) throw InputError(place, "number too large");
  return static_cast<ULONG>(v);
}

ULONG readStructure(const json& j, const std::string& place) {
  if (j == "single") return 1;
  if (j == "array") return 2;
  throw InputError(place, "expected \"single\" or \"array\"");
}

ULONG readContext(const json& j, const std::string& place) {
  static const std::map<std::string, ULONG> kNames = {
      {"singleton", 1}, {"point", 2}, {"edge", 4}, {"polygon", 8}, {"node", 16}, {"generated", 32}};
  if (j.is_string() && kNames.count(j.get<std::string>())) return kNames.at(j.get<std::string>());
  const ULONG v = readUnsigned(j, place);
  if (v == 0 || v > 63) throw InputError(place, "expected a context name or bits between 1 and 63");
  return v;
}

const json& member(const json& object, const char* key, const std::string& place) {
  if (!object.contains(key)) throw InputError(place, std::string("missing \"") + key + "\"");
  return object.at(key);
}

// One input: {"structure", "type", "constant", "values"}; checked against the port.
xsihost::PortValues readInput(const json& j, const PortRecord& port, ULONG elements,
                              const std::string& place) {
  if (!j.is_object()) throw InputError(place, "expected an object with \"type\" and \"values\"");
  const json& typeJson = member(j, "type", place);
  const ULONG type = typeJson.is_string() ? xsihost::typeFromName(typeJson.get<std::string>()) : 0;
  if (type == 0) throw InputError(place + ".type", "unknown data type " + typeJson.dump());
  if ((port.dataTypes & type) == 0)
    throw InputError(place + ".type", "port " + std::to_string(port.id) + " does not accept " + typeJson.dump());
  const ULONG structure = j.contains("structure") ? readStructure(j["structure"], place + ".structure") : 1;
  if ((port.structures & structure) == 0)
    throw InputError(place + ".structure", "port " + std::to_string(port.id) + " does not accept this structure");
  const bool constant = j.value("constant", false);
  xsihost::PortValues values = readPortValues(member(j, "values", place), type, structure == 2, place + ".values");
  values.constant = constant;
  const ULONG expected = constant ? 1 : elements;
  if (values.count != expected)
    throw InputError(place + ".values", "expected " + std::to_string(expected) +
                                            (constant ? " value (constant input)" : " values (one per element)") +
                                            ", got " + std::to_string(values.count));
  return values;
}

void readInputs(const json& inputs, const NodeDefinitionRecord& node, ULONG instance, ULONG elements,
                const std::string& place, xsihost::EvaluationRequest& request) {
  if (!inputs.is_object()) throw InputError(place, "expected an object keyed by input port ID");
  for (const auto& [key, value] : inputs.items()) {
    const std::string at = place + "." + key;
    const ULONG id = readPortID(key, at);
    const PortRecord* port = node.findInput(id);
    if (!port) throw InputError(at, "node " + wideToUtf8(node.name) + " has no input port " + key);
    request.setInput(id, readInput(value, *port, elements, at), instance);
  }
}

struct Session {
  std::map<std::string, std::unique_ptr<xsihost::NodeInstance>> instances;
};

json runRequest(xsihost::LoadedPlugin& plugin, Session& session, const json& r, const EvalOptions& options,
                const std::string& place) {
  if (!r.is_object()) throw InputError(place, "expected a request object");
  const json& nodeJson = member(r, "node", place);
  if (!nodeJson.is_string()) throw InputError(place + ".node", "expected a node name");
  const std::wstring nodeName = utf8ToWide(nodeJson.get<std::string>());
  const NodeDefinitionRecord* node = plugin.findNode(nodeName);
  if (!node) throw InputError(place + ".node", "unknown node " + nodeJson.dump());

  std::vector<ULONG> ports;
  const json& portJson = member(r, "port", place);
  if (portJson.is_array()) {
    for (std::size_t i = 0; i < portJson.size(); ++i)
      ports.push_back(readUnsigned(portJson[i], place + ".port[" + std::to_string(i) + "]"));
  } else {
    ports.push_back(readUnsigned(portJson, place + ".port"));
  }

  xsihost::EvaluationRequest request;
  request.elements = r.contains("elements") ? readUnsigned(r["elements"], place + ".elements") : 1;
  if (request.elements > (1u << 24)) throw InputError(place + ".elements", "too many elements");
  if (r.contains("context")) request.context = readContext(r["context"], place + ".context");
  if (r.contains("time")) {
    if (!r["time"].is_number()) throw InputError(place + ".time", "expected a number of frames");
    request.time = r["time"].get<double>();
  }
  if (r.contains("batch")) {
    const json& b = r["batch"];
    if (!b.is_array()) throw InputError(place + ".batch", "expected a list of element indices");
    std::vector<ULONG> batch;
    for (std::size_t i = 0; i < b.size(); ++i) {
      const std::string at = place + ".batch[" + std::to_string(i) + "]";
      const ULONG index = readUnsigned(b[i], at);
      if (index >= request.elements) throw InputError(at, "element index beyond the element count");
      if (!batch.empty() && index <= batch.back()) throw InputError(at, "indices must be ascending");
      batch.push_back(index);
    }
    request.batch = batch;
  }
  if (r.contains("inputs")) readInputs(r["inputs"], *node, 0, request.elements, place + ".inputs", request);
  if (r.contains("instances")) {
    const json& groups = r["instances"];
    if (!groups.is_array() || groups.empty()) throw InputError(place + ".instances", "expected a list of group instances");
    ULONG maxInstances = 1;
    for (const auto& g : node->groups) maxInstances = std::max(maxInstances, g.maxInstances);
    if (groups.size() > maxInstances)
      throw InputError(place + ".instances", "the node's group takes at most " + std::to_string(maxInstances) + " instances");
    for (std::size_t k = 0; k < groups.size(); ++k)
      readInputs(groups[k], *node, static_cast<ULONG>(k), request.elements,
                 place + ".instances[" + std::to_string(k) + "]", request);
    request.groupInstances = static_cast<ULONG>(groups.size());
  }
  if (r.contains("portInfo")) {
    const json& info = r["portInfo"];
    if (!info.is_object()) throw InputError(place + ".portInfo", "expected an object keyed by port ID");
    for (const auto& [key, value] : info.items()) {
      const std::string at = place + ".portInfo." + key;
      const ULONG id = readPortID(key, at);
      if (!node->findPort(id)) throw InputError(at, "the node has no port " + key);
      xsihost::PortInfoOverride o;
      if (value.contains("type")) {
        o.type = value["type"].is_string() ? xsihost::typeFromName(value["type"].get<std::string>()) : 0;
        if (*o.type == 0) throw InputError(at + ".type", "unknown data type");
      }
      if (value.contains("structure")) o.structure = readStructure(value["structure"], at + ".structure");
      if (value.contains("context")) o.context = readContext(value["context"], at + ".context");
      request.portInfo[id] = o;
    }
  }
  if (r.contains("failPortInfo")) {
    const json& f = r["failPortInfo"];
    if (f == true) {
      for (const auto& p : node->inputs) request.failingPortInfo.insert(p.id);
      for (const auto& p : node->outputs) request.failingPortInfo.insert(p.id);
    } else if (f.is_array()) {
      for (std::size_t i = 0; i < f.size(); ++i)
        request.failingPortInfo.insert(readUnsigned(f[i], place + ".failPortInfo[" + std::to_string(i) + "]"));
    } else {
      throw InputError(place + ".failPortInfo", "expected true or a list of port IDs");
    }
  }
  const unsigned hardware = std::max(1u, std::thread::hardware_concurrency());
  request.threads = options.threads ? options.threads
                                    : r.contains("threads") ? readUnsigned(r["threads"], place + ".threads") : hardware;
  request.batchSize = options.batchSize ? options.batchSize
                                        : r.contains("batchSize") ? readUnsigned(r["batchSize"], place + ".batchSize") : 1024;
  if (request.threads == 0 || request.threads > 256) throw InputError(place + ".threads", "expected 1 to 256 threads");
  if (request.batchSize == 0) throw InputError(place + ".batchSize", "expected a positive batch size");

  // A named instance lives on across requests (Init once, Term at the end); an unnamed one
  // lives for this request only.
  std::unique_ptr<xsihost::NodeInstance> temporary;
  xsihost::NodeInstance* instance = nullptr;
  if (r.contains("instance")) {
    if (!r["instance"].is_string()) throw InputError(place + ".instance", "expected an instance name");
    auto& slot = session.instances[r["instance"].get<std::string>()];
    if (slot && &slot->definition() != node)
      throw InputError(place + ".instance", "instance " + r["instance"].dump() + " belongs to another node");
    if (!slot) slot = std::make_unique<xsihost::NodeInstance>(plugin, *node);
    instance = slot.get();
  } else {
    temporary = std::make_unique<xsihost::NodeInstance>(plugin, *node);
    instance = temporary.get();
  }

  std::vector<xsihost::OutputResult> results = instance->evaluate(request, ports);
  temporary.reset();  // Term of an unnamed instance belongs to this request's log

  json outputs = json::array();
  for (const auto& result : results)
    outputs.push_back({{"port", result.port}, {"status", result.status}, {"values", writePortValues(result.values, true)}});
  json log = json::array();
  for (const auto& line : xsihost::hostLog().take()) log.push_back({line.severity, wideToUtf8(line.text)});
  json out = {{"node", nodeJson}, {"outputs", outputs}, {"log", log}};
  if (r.contains("instance")) out["instance"] = r["instance"];
  return out;
}

}  // namespace

int runEval(xsihost::LoadedPlugin& plugin, const EvalOptions& options, nlohmann::json& out, std::ostream& err) {
  const std::string file = options.requestPath == "-" ? "<stdin>" : options.requestPath;
  std::string text;
  if (options.requestPath == "-") {
    text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
  } else {
    std::ifstream in(options.requestPath, std::ios::binary);
    if (!in) {
      err << "quillix: " << file << ": cannot open the request file\n";
      return 2;
    }
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  json document;
  try {
    document = json::parse(text);
  } catch (const json::exception& e) {
    // Syntax errors, and numbers beyond a double (1E400), which the parser refuses apart.
    err << "quillix: " << file << ": not valid JSON: " << e.what() << '\n';
    return 2;
  }

  // A request file may name the scene its nodes read, relative to the file itself; a scene
  // given on the command line takes precedence.
  if (document.is_object() && document.contains("scene") && !options.sceneGiven) {
    if (!document["scene"].is_string()) {
      err << "quillix: " << file << ": $.scene: expected the path of a scene file\n";
      return 2;
    }
    std::filesystem::path scene = document["scene"].get<std::string>();
    if (scene.is_relative() && options.requestPath != "-")
      scene = std::filesystem::path(options.requestPath).parent_path() / scene;
    if (!loadActiveScene(scene.string(), err)) return 2;
  }

  json results = json::array();
  Session session;
  xsihost::hostLog().take();
  try {
    const json* requests = &document;
    if (document.is_object()) requests = &member(document, "requests", "$");
    if (!requests->is_array()) throw InputError("$.requests", "expected a list of requests");
    for (std::size_t i = 0; i < requests->size(); ++i)
      results.push_back(runRequest(plugin, session, (*requests)[i], options, "$.requests[" + std::to_string(i) + "]"));
  } catch (const InputError& e) {
    session.instances.clear();
    xsihost::hostLog().take();
    err << "quillix: " << file << ": " << e.what() << '\n';
    return 2;
  }
  session.instances.clear();  // Term of the named instances
  json shutdown = json::array();
  for (const auto& line : xsihost::hostLog().take()) shutdown.push_back({line.severity, wideToUtf8(line.text)});
  out = {{"results", results}, {"shutdownLog", shutdown}};
  return 0;
}

}  // namespace quillix::tool
