#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <thread>

#include <xsi_decl.h>
#include <xsihost/host.h>
#include <nlohmann/json.hpp>

#include "tools/quillix/bound_inputs.h"
#include "tools/quillix/commands.h"
#include "tools/quillix/json_values.h"
#include "tools/quillix/scene_tool.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using xsihost::NodeDefinitionRecord;
using xsihost::PortRecord;

namespace {

ULONG ReadPortID(const std::string& key, const std::string& place) {
  char* end = nullptr;
  const unsigned long id = std::strtoul(key.c_str(), &end, 10);
  if (key.empty() || !end || *end != '\0' || id > 0xFFFFFFFFul)
    throw InputError(place, "\"" + key + "\" is not a port ID");
  return static_cast<ULONG>(id);
}

ULONG ReadUnsigned(const json& j, const std::string& place) {
  if (!j.is_number_unsigned() && !(j.is_number_integer() && j.get<std::int64_t>() >= 0))
    throw InputError(place, "expected a non-negative integer");
  const std::uint64_t v = j.get<std::uint64_t>();
  if (v > 0xFFFFFFFFull) throw InputError(place, "number too large");
  return static_cast<ULONG>(v);
}

ULONG ReadStructure(const json& j, const std::string& place) {
  if (j == "single") return 1;
  if (j == "array") return 2;
  throw InputError(place, "expected \"single\" or \"array\"");
}

ULONG ReadContext(const json& j, const std::string& place) {
  static const std::map<std::string, ULONG> kNames = {
      {"singleton", 1}, {"point", 2}, {"edge", 4}, {"polygon", 8}, {"node", 16}, {"generated", 32}};
  if (j.is_string() && kNames.count(j.get<std::string>())) return kNames.at(j.get<std::string>());
  const ULONG v = ReadUnsigned(j, place);
  if (v == 0 || v > 63) throw InputError(place, "expected a context name or bits between 1 and 63");
  return v;
}

const json& Member(const json& object, const char* key, const std::string& place) {
  if (!object.contains(key)) throw InputError(place, std::string("missing \"") + key + "\"");
  return object.at(key);
}

// One input: {"structure", "type", "constant", "values"}, or {"from"} (bound_inputs.h); checked
// against the port.
xsihost::PortValues ReadInput(const json& j, const PortRecord& port,
                              const xsihost::EvaluationRequest& request, const std::string& place,
                              BoundInputReader& bound) {
  if (BoundInputReader::IsBound(j)) return bound.Read(j, port, request.time, place);
  const ULONG elements = request.elements;
  if (!j.is_object()) throw InputError(place, "expected an object with \"type\" and \"values\"");
  const json& typeJson = Member(j, "type", place);
  const ULONG type = typeJson.is_string() ? xsihost::TypeFromName(typeJson.get<std::string>()) : 0;
  if (type == 0) throw InputError(place + ".type", "unknown data type " + typeJson.dump());
  if ((port.dataTypes & type) == 0)
    throw InputError(place + ".type",
                     "port " + std::to_string(port.id) + " does not accept " + typeJson.dump());
  const ULONG structure =
      j.contains("structure") ? ReadStructure(j["structure"], place + ".structure") : 1;
  if ((port.structures & structure) == 0)
    throw InputError(place + ".structure",
                     "port " + std::to_string(port.id) + " does not accept this structure");
  const bool constant = j.value("constant", false);
  xsihost::PortValues values =
      ReadPortValues(Member(j, "values", place), type, structure == 2, place + ".values");
  values.constant = constant;
  const ULONG expected = constant ? 1 : elements;
  if (values.count != expected)
    throw InputError(place + ".values",
                     "expected " + std::to_string(expected) +
                         (constant ? " value (constant input)" : " values (one per element)") +
                         ", got " + std::to_string(values.count));
  return values;
}

void ReadInputs(const json& inputs, const NodeDefinitionRecord& node, ULONG instance,
                const std::string& place, xsihost::EvaluationRequest& request,
                BoundInputReader& bound) {
  if (!inputs.is_object()) throw InputError(place, "expected an object keyed by input port ID");
  for (const auto& [key, value] : inputs.items()) {
    const std::string at = place + "." + key;
    const ULONG id = ReadPortID(key, at);
    const PortRecord* port = node.FindInput(id);
    if (!port) throw InputError(at, "node " + WideToUtf8(node.name) + " has no input port " + key);
    request.SetInput(id, ReadInput(value, *port, request, at, bound), instance);
  }
}

const NodeDefinitionRecord& ReadNode(const xsihost::Host& host, const json& r,
                                     const std::string& place) {
  const json& nodeJson = Member(r, "node", place);
  if (!nodeJson.is_string()) throw InputError(place + ".node", "expected a node name");
  const NodeDefinitionRecord* node = host.FindNode(Utf8ToWide(nodeJson.get<std::string>()));
  if (!node) throw InputError(place + ".node", "unknown node " + nodeJson.dump());
  return *node;
}

std::vector<ULONG> ReadPorts(const json& r, const std::string& place) {
  std::vector<ULONG> ports;
  const json& portJson = Member(r, "port", place);
  if (portJson.is_array()) {
    for (std::size_t i = 0; i < portJson.size(); ++i)
      ports.push_back(ReadUnsigned(portJson[i], place + ".port[" + std::to_string(i) + "]"));
  } else {
    ports.push_back(ReadUnsigned(portJson, place + ".port"));
  }
  return ports;
}

std::vector<ULONG> ReadBatch(const json& b, ULONG elements, const std::string& place) {
  if (!b.is_array()) throw InputError(place, "expected a list of element indices");
  std::vector<ULONG> batch;
  for (std::size_t i = 0; i < b.size(); ++i) {
    const std::string at = place + "[" + std::to_string(i) + "]";
    const ULONG index = ReadUnsigned(b[i], at);
    if (index >= elements) throw InputError(at, "element index beyond the element count");
    if (!batch.empty() && index <= batch.back()) throw InputError(at, "indices must be ascending");
    batch.push_back(index);
  }
  return batch;
}

// Element count, context, time and batch.
void ReadElements(const json& r, const std::string& place, xsihost::EvaluationRequest& request) {
  request.elements = r.contains("elements") ? ReadUnsigned(r["elements"], place + ".elements") : 1;
  if (request.elements > (1u << 24)) throw InputError(place + ".elements", "too many elements");
  if (r.contains("context")) request.context = ReadContext(r["context"], place + ".context");
  if (r.contains("time")) {
    if (!r["time"].is_number()) throw InputError(place + ".time", "expected a number of frames");
    request.time = r["time"].get<double>();
  }
  if (r.contains("batch"))
    request.batch = ReadBatch(r["batch"], request.elements, place + ".batch");
}

// "inputs", or "instances" with one input object per group instance.
void ReadAllInputs(const json& r, const NodeDefinitionRecord& node, const std::string& place,
                   xsihost::EvaluationRequest& request, BoundInputReader& bound) {
  if (r.contains("inputs")) ReadInputs(r["inputs"], node, 0, place + ".inputs", request, bound);
  if (!r.contains("instances")) return;
  const json& groups = r["instances"];
  if (!groups.is_array() || groups.empty())
    throw InputError(place + ".instances", "expected a list of group instances");
  ULONG maxInstances = 1;
  for (const auto& g : node.groups) maxInstances = std::max(maxInstances, g.maxInstances);
  if (groups.size() > maxInstances)
    throw InputError(place + ".instances", "the node's group takes at most " +
                                               std::to_string(maxInstances) + " instances");
  for (std::size_t k = 0; k < groups.size(); ++k)
    ReadInputs(groups[k], node, static_cast<ULONG>(k),
               place + ".instances[" + std::to_string(k) + "]", request, bound);
  request.groupInstances = static_cast<ULONG>(groups.size());
}

// "portInfo" overrides and "failPortInfo".
void ReadPortInfo(const json& r, const NodeDefinitionRecord& node, const std::string& place,
                  xsihost::EvaluationRequest& request) {
  if (r.contains("portInfo")) {
    const json& info = r["portInfo"];
    if (!info.is_object())
      throw InputError(place + ".portInfo", "expected an object keyed by port ID");
    for (const auto& [key, value] : info.items()) {
      const std::string at = place + ".portInfo." + key;
      const ULONG id = ReadPortID(key, at);
      if (!node.FindPort(id)) throw InputError(at, "the node has no port " + key);
      xsihost::PortInfoOverride o;
      if (value.contains("type")) {
        o.type =
            value["type"].is_string() ? xsihost::TypeFromName(value["type"].get<std::string>()) : 0;
        if (*o.type == 0) throw InputError(at + ".type", "unknown data type");
      }
      if (value.contains("structure"))
        o.structure = ReadStructure(value["structure"], at + ".structure");
      if (value.contains("context")) o.context = ReadContext(value["context"], at + ".context");
      request.portInfo[id] = o;
    }
  }
  if (r.contains("failPortInfo")) {
    const json& f = r["failPortInfo"];
    if (f == true) {
      for (const auto& p : node.inputs) request.failingPortInfo.insert(p.id);
      for (const auto& p : node.outputs) request.failingPortInfo.insert(p.id);
    } else if (f.is_array()) {
      for (std::size_t i = 0; i < f.size(); ++i)
        request.failingPortInfo.insert(
            ReadUnsigned(f[i], place + ".failPortInfo[" + std::to_string(i) + "]"));
    } else {
      throw InputError(place + ".failPortInfo", "expected true or a list of port IDs");
    }
  }
}

// Threads and batch size: the command line's, else the request's, else the defaults.
void ReadThreading(const json& r, const EvalOptions& options, const std::string& place,
                   xsihost::EvaluationRequest& request) {
  const unsigned hardware = std::max(1u, std::thread::hardware_concurrency());
  request.threads = options.threads         ? options.threads
                    : r.contains("threads") ? ReadUnsigned(r["threads"], place + ".threads")
                                            : hardware;
  request.batchSize = options.batchSize         ? options.batchSize
                      : r.contains("batchSize") ? ReadUnsigned(r["batchSize"], place + ".batchSize")
                                                : 1024;
  if (request.threads == 0 || request.threads > 256)
    throw InputError(place + ".threads", "expected 1 to 256 threads");
  if (request.batchSize == 0)
    throw InputError(place + ".batchSize", "expected a positive batch size");
}

// A named instance lives on across requests (Init once, Term at the end); an unnamed one lives
// for this request only, and its Term belongs to this request's log.
xsihost::EvaluationOutcome EvaluateRequest(xsihost::Host& host, const json& r,
                                           const NodeDefinitionRecord& node,
                                           const xsihost::EvaluationRequest& request,
                                           const std::vector<ULONG>& ports,
                                           const std::string& place) {
  if (!r.contains("instance")) return *host.EvaluateOnce(node.name, request, ports);
  if (!r["instance"].is_string())
    throw InputError(place + ".instance", "expected an instance name");
  xsihost::NodeInstance* instance = host.Instance(r["instance"].get<std::string>(), node.name);
  if (!instance)
    throw InputError(place + ".instance",
                     "instance " + r["instance"].dump() + " belongs to another node");
  return host.Evaluate(*instance, request, ports);
}

json ResultJson(const json& r, const xsihost::EvaluationOutcome& outcome) {
  json outputs = json::array();
  for (const auto& result : outcome.outputs)
    outputs.push_back({{"port", result.port},
                       {"status", result.status},
                       {"values", WritePortValues(result.values, true)}});
  json out = {{"node", r["node"]}, {"outputs", outputs}, {"log", LogJson(outcome.log)}};
  if (r.contains("instance")) out["instance"] = r["instance"];
  return out;
}

json RunRequest(xsihost::Host& host, const json& r, const EvalOptions& options,
                const std::string& place, BoundInputReader& bound) {
  if (!r.is_object()) throw InputError(place, "expected a request object");
  const NodeDefinitionRecord& node = ReadNode(host, r, place);
  const std::vector<ULONG> ports = ReadPorts(r, place);
  xsihost::EvaluationRequest request;
  ReadElements(r, place, request);
  ReadAllInputs(r, node, place, request, bound);
  ReadPortInfo(r, node, place, request);
  ReadThreading(r, options, place, request);
  return ResultJson(r, EvaluateRequest(host, r, node, request, ports, place));
}

std::string ReadRequestText(const EvalOptions& options, const std::string& file, std::ostream& err,
                            bool& ok) {
  std::string text;
  ok = true;
  if (options.requestPath == "-") {
    text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    return text;
  }
  std::ifstream in(options.requestPath, std::ios::binary);
  if (!in) {
    err << "quillix: " << file << ": cannot open the request file\n";
    ok = false;
    return text;
  }
  text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return text;
}

// A request file may name the scene its nodes read, relative to the file itself; a scene given
// on the command line takes precedence.
bool LoadRequestScene(const json& document, const EvalOptions& options, const std::string& file,
                      std::ostream& err) {
  if (!document.is_object() || !document.contains("scene") || options.sceneGiven) return true;
  if (!document["scene"].is_string()) {
    err << "quillix: " << file << ": $.scene: expected the path of a scene file\n";
    return false;
  }
  std::filesystem::path scene = document["scene"].get<std::string>();
  if (scene.is_relative() && options.requestPath != "-")
    scene = std::filesystem::path(options.requestPath).parent_path() / scene;
  return LoadActiveScene(scene.string(), err);
}

// Writes the result files and pictures of one request when any folder was asked for; a
// folder that cannot be written is one message and the end of the run.
bool WriteOutputs(const json& request, const json& result, std::size_t index,
                  const ResultOutputOptions& outputs, BoundInputReader& bound, std::ostream& err) {
  if (outputs.outDir.empty() && outputs.pngDir.empty() && outputs.svgDir.empty()) return true;
  std::vector<std::string> written;
  const OutputStatus status =
      WriteResultOutputs(bound.Inline(request), result, index, outputs, written);
  if (!status.ok) err << "quillix: " << status.message << '\n';
  return status.ok;
}

}  // namespace

int RunEval(xsihost::Host& host, const EvalOptions& options, nlohmann::json& out,
            std::ostream& err) {
  const std::string file = options.requestPath == "-" ? "<stdin>" : options.requestPath;
  bool ok = true;
  const std::string text = ReadRequestText(options, file, err, ok);
  if (!ok) return 2;
  json document;
  try {
    document = json::parse(text);
  } catch (const json::exception& e) {
    // Syntax errors, and numbers beyond a double (1E400), which the parser refuses apart.
    err << "quillix: " << file << ": not valid JSON: " << e.what() << '\n';
    return 2;
  }
  if (!LoadRequestScene(document, options, file, err)) return 2;

  json results = json::array();
  BoundInputReader bound(options.requestPath == "-"
                             ? std::filesystem::path()
                             : std::filesystem::path(options.requestPath).parent_path());
  host.TakeLog();
  try {
    const json* requests = &document;
    if (document.is_object()) requests = &Member(document, "requests", "$");
    if (!requests->is_array()) throw InputError("$.requests", "expected a list of requests");
    for (std::size_t i = 0; i < requests->size(); ++i) {
      results.push_back(RunRequest(host, (*requests)[i], options,
                                   "$.requests[" + std::to_string(i) + "]", bound));
      if (!WriteOutputs((*requests)[i], results.back(), i, options.outputs, bound, err)) return 2;
    }
  } catch (const InputError& e) {
    if (!options.keepInstances) host.DestroyInstances();
    err << "quillix: " << file << ": " << e.what() << '\n';
    return 2;
  }
  // Term of the named instances, unless the caller keeps them for its next requests.
  const std::vector<xsihost::LogLine> shutdown =
      options.keepInstances ? std::vector<xsihost::LogLine>{} : host.DestroyInstances();
  out = {{"results", results}, {"shutdownLog", LogJson(shutdown)}};
  return 0;
}

}  // namespace quillix::tool
