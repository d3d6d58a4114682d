#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cassert>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <thread>

#include <xsi_decl.h>
#include <xsihost/host.h>
#include <nlohmann/json.hpp>

#include "tools/quillix/bound_inputs.h"
#include "tools/quillix/commands.h"
#include "tools/quillix/eval_document.h"
#include "tools/quillix/file_text.h"
#include "tools/quillix/json_values.h"
#include "tools/quillix/nearest_name.h"
#include "tools/quillix/request_names.h"
#include "tools/quillix/request_reader.h"
#include "tools/quillix/result_document.h"
#include "tools/quillix/result_limits.h"
#include "tools/quillix/scene_tool.h"

namespace quillix::tool {

using nlohmann::json;
using XSI::ULONG;
using xsihost::NodeDefinitionRecord;
using xsihost::PortRecord;

namespace {

ULONG ReadStructure(const json& j, const JsonPlace& place) {
  if (j == "single") return 1;
  if (j == "array") return 2;
  throw InputError(place, "expected \"single\" or \"array\"");
}

ULONG ReadContext(const json& j, const JsonPlace& place) {
  static const std::map<std::string, ULONG> kNames = {
      {"singleton", 1}, {"point", 2}, {"edge", 4}, {"polygon", 8}, {"node", 16}, {"generated", 32}};
  if (j.is_string()) {
    const std::string name = j.get<std::string>();
    if (kNames.count(name)) return kNames.at(name);
    std::vector<std::string> names;
    for (const auto& [n, bits] : kNames) names.push_back(n);
    throw InputError(place, "unknown context " + j.dump() + DidYouMean(name, names));
  }
  const ULONG v = ReadUnsigned(j, place);
  if (v == 0 || v > 63) throw InputError(place, "expected a context name or bits between 1 and 63");
  return v;
}

const json& Member(const json& object, const char* key, const JsonPlace& place) {
  if (!object.contains(key)) throw InputError(place, std::string("missing \"") + key + "\"");
  return object.at(key);
}

// Where input values come from besides the document's own lists: the scene and mesh files, and
// the lists the request reader decoded as it read.
struct InputSources {
  BoundInputReader& bound;
  DecodedValues& decoded;
};

// One input: {"structure", "type", "constant", "values"}, or {"from"} (bound_inputs.h); checked
// against the port.
xsihost::PortValues ReadInput(const json& j, const PortRecord& port,
                              const xsihost::EvaluationRequest& request, const JsonPlace& place,
                              InputSources& sources) {
  if (BoundInputReader::IsBound(j)) return sources.bound.Read(j, port, request.time, place);
  const ULONG elements = request.elements;
  if (!j.is_object()) throw InputError(place, "expected an object with \"type\" and \"values\"");
  CheckKnownKeys(j, place, {"type", "structure", "constant", "values"});
  const json& typeJson = Member(j, "type", place);
  const JsonPlace typePlace(place, "type");
  const ULONG type = ReadDataType(typeJson, typePlace);
  if ((port.dataTypes & type) == 0)
    throw InputError(typePlace, "port " + std::to_string(port.id) + " does not accept " +
                                    typeJson.dump() + " (it takes " +
                                    Listed(DataTypeNames(port.dataTypes)) + ")");
  const JsonPlace structurePlace(place, "structure");
  const ULONG structure =
      j.contains("structure") ? ReadStructure(j["structure"], structurePlace) : 1;
  if ((port.structures & structure) == 0)
    throw InputError(structurePlace,
                     "port " + std::to_string(port.id) + " does not accept this structure");
  const bool constant = j.contains("constant") && j["constant"] == true;
  if (j.contains("constant") && !j["constant"].is_boolean())
    throw InputError(JsonPlace(place, "constant"), "expected true or false");
  const JsonPlace valuesPlace(place, "values");
  const json& valuesJson = Member(j, "values", place);
  xsihost::PortValues values;
  if (xsihost::PortValues* decoded = sources.decoded.Find(j)) {
    assert(decoded->type == type && decoded->array == (structure == 2));
    values = std::move(*decoded);
  } else {
    values = ReadPortValues(valuesJson, type, structure == 2, valuesPlace);
  }
  values.constant = constant;
  const ULONG expected = constant ? 1 : elements;
  if (values.count != expected)
    throw InputError(valuesPlace,
                     "expected " + std::to_string(expected) +
                         (constant ? " value (constant input)" : " values (one per element)") +
                         ", got " + std::to_string(values.count));
  return values;
}

void ReadInputs(const json& inputs, const NodeDefinitionRecord& node, ULONG instance,
                const JsonPlace& place, xsihost::EvaluationRequest& request,
                InputSources& sources) {
  if (!inputs.is_object())
    throw InputError(place, "expected an object keyed by input port ID or script name");
  for (const auto& [key, value] : inputs.items()) {
    const JsonPlace at(place, key);
    const PortRecord& port = FindPortByKey(node, key, PortKind::kInput, at);
    request.SetInput(port.id, ReadInput(value, port, request, at, sources), instance);
  }
}

std::vector<ULONG> ReadPorts(const json& r, const NodeDefinitionRecord& node,
                             const JsonPlace& place) {
  std::vector<ULONG> ports;
  const json& portJson = Member(r, "port", place);
  const JsonPlace portPlace(place, "port");
  if (portJson.is_array()) {
    for (std::size_t i = 0; i < portJson.size(); ++i)
      ports.push_back(
          ReadPortReference(node, portJson[i], PortKind::kOutput, JsonPlace(portPlace, i)));
  } else {
    ports.push_back(ReadPortReference(node, portJson, PortKind::kOutput, portPlace));
  }
  return ports;
}

std::vector<ULONG> ReadBatch(const json& b, ULONG elements, const JsonPlace& place) {
  if (!b.is_array()) throw InputError(place, "expected a list of element indices");
  std::vector<ULONG> batch;
  for (std::size_t i = 0; i < b.size(); ++i) {
    const JsonPlace at(place, i);
    const ULONG index = ReadUnsigned(b[i], at);
    if (index >= elements) throw InputError(at, "element index beyond the element count");
    if (!batch.empty() && index <= batch.back()) throw InputError(at, "indices must be ascending");
    batch.push_back(index);
  }
  return batch;
}

// Element count, context, time and batch.
void ReadElements(const json& r, const JsonPlace& place, xsihost::EvaluationRequest& request) {
  const JsonPlace elementsPlace(place, "elements");
  request.elements = r.contains("elements") ? ReadUnsigned(r["elements"], elementsPlace) : 1;
  if (request.elements > kMaxElements)
    throw InputError(elementsPlace, "too many elements: " + std::to_string(request.elements) +
                                        " (at most " + std::to_string(kMaxElements) +
                                        " in one request)");
  if (r.contains("context"))
    request.context = ReadContext(r["context"], JsonPlace(place, "context"));
  if (r.contains("time")) {
    if (!r["time"].is_number())
      throw InputError(JsonPlace(place, "time"), "expected a number of frames");
    request.time = r["time"].get<double>();
  }
  if (r.contains("batch"))
    request.batch = ReadBatch(r["batch"], request.elements, JsonPlace(place, "batch"));
}

// "inputs", or "instances" with one input object per group instance.
void ReadAllInputs(const json& r, const NodeDefinitionRecord& node, const JsonPlace& place,
                   xsihost::EvaluationRequest& request, InputSources& sources) {
  if (r.contains("inputs"))
    ReadInputs(r["inputs"], node, 0, JsonPlace(place, "inputs"), request, sources);
  if (!r.contains("instances")) return;
  const json& groups = r["instances"];
  const JsonPlace instancesPlace(place, "instances");
  if (!groups.is_array() || groups.empty())
    throw InputError(instancesPlace, "expected a list of group instances");
  ULONG maxInstances = 1;
  for (const auto& g : node.groups) maxInstances = std::max(maxInstances, g.maxInstances);
  if (groups.size() > maxInstances)
    throw InputError(instancesPlace, "the node's group takes at most " +
                                         std::to_string(maxInstances) + " instances");
  for (std::size_t k = 0; k < groups.size(); ++k)
    ReadInputs(groups[k], node, static_cast<ULONG>(k), JsonPlace(instancesPlace, k), request,
               sources);
  request.groupInstances = static_cast<ULONG>(groups.size());
}

// "portInfo" overrides and "failPortInfo".
void ReadPortInfo(const json& r, const NodeDefinitionRecord& node, const JsonPlace& place,
                  xsihost::EvaluationRequest& request) {
  if (r.contains("portInfo")) {
    const json& info = r["portInfo"];
    const JsonPlace infoPlace(place, "portInfo");
    if (!info.is_object())
      throw InputError(infoPlace, "expected an object keyed by port ID or script name");
    for (const auto& [key, value] : info.items()) {
      const JsonPlace at(infoPlace, key);
      const ULONG id = FindPortByKey(node, key, PortKind::kAny, at).id;
      if (!value.is_object()) throw InputError(at, "expected an object");
      CheckKnownKeys(value, at, {"type", "structure", "context"});
      xsihost::PortInfoOverride o;
      if (value.contains("type")) o.type = ReadDataType(value["type"], JsonPlace(at, "type"));
      if (value.contains("structure"))
        o.structure = ReadStructure(value["structure"], JsonPlace(at, "structure"));
      if (value.contains("context"))
        o.context = ReadContext(value["context"], JsonPlace(at, "context"));
      request.portInfo[id] = o;
    }
  }
  if (r.contains("failPortInfo")) {
    const json& f = r["failPortInfo"];
    const JsonPlace failPlace(place, "failPortInfo");
    if (f == true) {
      for (const auto& p : node.inputs) request.failingPortInfo.insert(p.id);
      for (const auto& p : node.outputs) request.failingPortInfo.insert(p.id);
    } else if (f.is_array()) {
      for (std::size_t i = 0; i < f.size(); ++i)
        request.failingPortInfo.insert(
            ReadPortReference(node, f[i], PortKind::kAny, JsonPlace(failPlace, i)));
    } else {
      throw InputError(failPlace, "expected true or a list of port IDs");
    }
  }
}

// Threads and batch size: the command line's, else the request's, else the defaults.
void ReadThreading(const json& r, const EvalOptions& options, const JsonPlace& place,
                   xsihost::EvaluationRequest& request) {
  const unsigned hardware = std::max(1u, std::thread::hardware_concurrency());
  const JsonPlace threadsPlace(place, "threads"), batchSizePlace(place, "batchSize");
  request.threads = options.threads         ? options.threads
                    : r.contains("threads") ? ReadUnsigned(r["threads"], threadsPlace)
                                            : hardware;
  if (request.threads == 0 || request.threads > 256)
    throw InputError(threadsPlace, "expected 1 to 256 threads");
  // Without a batch size the host sizes batches for the threads.
  request.batchSize = options.batchSize;
  if (!options.batchSize && r.contains("batchSize")) {
    request.batchSize = ReadUnsigned(r["batchSize"], batchSizePlace);
    if (request.batchSize == 0) throw InputError(batchSizePlace, "expected a positive batch size");
  }
}

// A named instance lives on across requests (Init once, Term at the end); an unnamed one lives
// for this request only, and its Term belongs to this request's log.
xsihost::EvaluationOutcome EvaluateRequest(xsihost::Host& host, const json& r,
                                           const NodeDefinitionRecord& node,
                                           const xsihost::EvaluationRequest& request,
                                           const std::vector<ULONG>& ports,
                                           const JsonPlace& place) {
  if (!r.contains("instance")) return *host.EvaluateOnce(node.name, request, ports);
  const JsonPlace instancePlace(place, "instance");
  if (!r["instance"].is_string()) throw InputError(instancePlace, "expected an instance name");
  xsihost::NodeInstance* instance = host.Instance(r["instance"].get<std::string>(), node.name);
  if (!instance)
    throw InputError(instancePlace,
                     "instance " + r["instance"].dump() + " belongs to another node");
  return host.Evaluate(*instance, request, ports);
}

// The key of "inputs" that names input `port`, for a message about its value.
std::string InputKeyOf(const json& r, const NodeDefinitionRecord& node, ULONG port) {
  if (r.contains("inputs") && r["inputs"].is_object())
    for (const auto& [key, value] : r["inputs"].items())
      if (FindPortByKey(node, key, PortKind::kInput, JsonPlace()).id == port) return key;
  return std::to_string(port);
}

// Refuses, before anything is evaluated, a request whose results would not fit in memory.
void CheckResultSize(const json& r, const NodeDefinitionRecord& node,
                     const xsihost::EvaluationRequest& request, const std::vector<ULONG>& ports,
                     const JsonPlace& place) {
  const std::uint64_t memory = MachineMemoryBytes();
  if (memory == 0) return;
  const std::uint64_t bytes = EstimateResultBytes(node, request.elements, ports);
  if (bytes > memory)
    throw InputError(JsonPlace(place, "elements"),
                     "too many elements: the results of " + std::to_string(request.elements) +
                         " elements on " + std::to_string(ports.size()) +
                         " port(s) would need about " + ByteText(bytes) + ", more than the " +
                         ByteText(memory) + " of memory this machine has");
  const std::uint64_t points = ResampledPoints(node, request);
  const std::uint64_t pointBytes = points * ArrayEntryBytes(XSI::siICENodeDataVector3);
  if (points > 0 && pointBytes > memory - bytes) {
    const std::string key = InputKeyOf(r, node, kResampleCountPort);
    const JsonPlace inputsPlace(place, "inputs");
    throw InputError(JsonPlace(inputsPlace, key),
                     "the resampled lines would have " + std::to_string(points) +
                         " points, about " + ByteText(pointBytes) +
                         " with their results, more than the " + ByteText(memory) +
                         " of memory this machine has");
  }
}

json ResultJson(const json& r, ULONG elements, xsihost::EvaluationOutcome outcome,
                ResultDocument& document) {
  json outputs = json::array();
  for (auto& result : outcome.outputs) {
    // A port the node does not define has no data: like every unwritten element, null.
    const bool unknown = result.values.type == 0;
    outputs.push_back({{"port", result.port},
                       {"status", result.status},
                       {"values", unknown ? json(std::vector<std::nullptr_t>(elements, nullptr))
                                          : document.Hold(std::move(result.values))}});
  }
  json out = {{"node", r["node"]}, {"outputs", outputs}, {"log", LogJson(outcome.log)}};
  if (r.contains("instance")) out["instance"] = r["instance"];
  return out;
}

json RunRequest(xsihost::Host& host, const json& r, const EvalOptions& options,
                const JsonPlace& place, InputSources& sources, ResultDocument& document) {
  if (!r.is_object()) throw InputError(place, "expected a request object");
  CheckKnownKeys(r, place,
                 {"node", "port", "elements", "context", "batch", "inputs", "instances", "portInfo",
                  "failPortInfo", "time", "instance", "threads", "batchSize"});
  const NodeDefinitionRecord& node =
      FindNodeNamed(host, Member(r, "node", place), JsonPlace(place, "node"));
  const std::vector<ULONG> ports = ReadPorts(r, node, place);
  xsihost::EvaluationRequest request;
  ReadElements(r, place, request);
  ReadAllInputs(r, node, place, request, sources);
  ReadPortInfo(r, node, place, request);
  ReadThreading(r, options, place, request);
  CheckResultSize(r, node, request, ports, place);
  return ResultJson(r, request.elements, EvaluateRequest(host, r, node, request, ports, place),
                    document);
}

// A request file may name the scene its nodes read, relative to the file itself; a scene given
// on the command line takes precedence.
bool LoadRequestScene(const json& document, const EvalOptions& options, const std::string& file,
                      std::ostream& err) {
  if (!document.is_object() || !document.contains("scene") || options.sceneGiven) return true;
  if (!document["scene"].is_string()) {
    err << "quillix: " << file << ": /scene: expected the path of a scene file\n";
    return false;
  }
  std::filesystem::path scene = document["scene"].get<std::string>();
  if (scene.is_relative() && options.requestPath != "-")
    scene = std::filesystem::path(options.requestPath).parent_path() / scene;
  return LoadActiveScene(scene.string(), err);
}

bool WantsOutputs(const ResultOutputOptions& outputs) {
  return !outputs.outDir.empty() || !outputs.pngDir.empty() || !outputs.svgDir.empty();
}

// Writes the result files and pictures of one request; a folder that cannot be written is one
// message and the end of the run.
bool WriteOutputs(const json& request, const json& result, std::size_t index,
                  const ResultOutputOptions& outputs, BoundInputReader& bound, std::ostream& err) {
  std::vector<std::string> written;
  const OutputStatus status =
      WriteResultOutputs(bound.Inline(request), result, index, outputs, written);
  if (!status.ok) err << "quillix: " << status.message << '\n';
  return status.ok;
}

}  // namespace

int EvaluateDocument(xsihost::Host& host, const json& document, DecodedValues& decoded,
                     const EvalOptions& options, const std::string& file, ResultDocument& out,
                     std::ostream& err) {
  if (!LoadRequestScene(document, options, file, err)) return 2;
  json results = json::array();
  BoundInputReader bound(options.requestPath == "-"
                             ? std::filesystem::path()
                             : std::filesystem::path(options.requestPath).parent_path());
  InputSources sources{bound, decoded};
  host.TakeLog();
  try {
    const JsonPlace root;
    const json* requests = &document;
    if (document.is_object()) {
      CheckKnownKeys(document, root, {"requests", "scene"});
      requests = &Member(document, "requests", root);
    }
    const JsonPlace requestsPlace(root, "requests");
    if (!requests->is_array())
      throw InputError(document.is_object() ? requestsPlace : root, "expected a list of requests");
    for (std::size_t i = 0; i < requests->size(); ++i) {
      results.push_back(RunRequest(host, (*requests)[i], options,
                                   JsonPlace(document.is_object() ? requestsPlace : root, i),
                                   sources, out));
      if (WantsOutputs(options.outputs) &&
          !WriteOutputs((*requests)[i], out.Inline(results.back()), i, options.outputs, bound, err))
        return 2;
    }
  } catch (const InputError& e) {
    if (!options.keepInstances) host.DestroyInstances();
    err << "quillix: " << file << ": " << e.what() << '\n';
    return 2;
  }
  // Term of the named instances, unless the caller keeps them for its next requests.
  const std::vector<xsihost::LogLine> shutdown =
      options.keepInstances ? std::vector<xsihost::LogLine>{} : host.DestroyInstances();
  out.tree = {{"results", std::move(results)}, {"shutdownLog", LogJson(shutdown)}};
  return 0;
}

std::string NotValidJson(const json::exception& e) {
  std::string reason = e.what();
  const std::size_t id = reason.rfind("] ", reason.find(' '));
  if (reason.rfind("[json.exception.", 0) == 0 && id != std::string::npos) reason.erase(0, id + 2);
  return "not valid JSON: " + reason;
}

namespace {

// Reads a request file through the request reader, when it is a regular file (which the plain
// reader can read again should this one give up) and no pictures want the inputs as JSON.
bool ReadDocumentFast(const EvalOptions& options, json& document, DecodedValues& decoded) {
  if (options.requestPath == "-" || WantsOutputs(options.outputs)) return false;
  const int fd = ::open(options.requestPath.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat info {};
  const bool read = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) &&
                    ReadRequestDocument(fd, document, decoded);
  ::close(fd);
  return read;
}

}  // namespace

int RunEval(xsihost::Host& host, const EvalOptions& options, ResultDocument& out,
            std::ostream& err) {
  const std::string file = options.requestPath == "-" ? "<stdin>" : options.requestPath;
  json document;
  DecodedValues decoded;
  if (ReadDocumentFast(options, document, decoded))
    return EvaluateDocument(host, document, decoded, options, file, out, err);
  decoded = DecodedValues();
  std::string text, error;
  if (!ReadFileText(options.requestPath, "request", text, error)) {
    err << "quillix: " << error << '\n';
    return 2;
  }
  if (!WantsOutputs(options.outputs) && ReadRequestDocument(text, document, decoded)) {
    text = std::string();
    return EvaluateDocument(host, document, decoded, options, file, out, err);
  }
  decoded = DecodedValues();
  try {
    document = json::parse(text);
  } catch (const json::exception& e) {
    // Syntax errors, and numbers beyond a double (1E400), which the parser refuses apart.
    err << "quillix: " << file << ": " << NotValidJson(e) << '\n';
    return 2;
  }
  text = std::string();  // the document holds it all now
  return EvaluateDocument(host, document, decoded, options, file, out, err);
}

}  // namespace quillix::tool
