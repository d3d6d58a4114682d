#include <xsihost/evaluation.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <thread>

#include <xsi_icenodecontext.h>
#include <xsi_ref.h>
#include <xsi_status.h>
#include <xsihost/object.h>
#include <xsihost/session.h>
#include "eval_frame.h"

namespace XSI::host_detail {

const ResolvedInput* EvalFrame::FindInput(ULONG port, ULONG instance) const {
  if (!inputs) return nullptr;
  auto it = inputs->find({port, instance});
  return it == inputs->end() ? nullptr : &it->second;
}

}  // namespace XSI::host_detail

namespace xsihost {

using XSI::CRef;
using XSI::CStatus;
using XSI::ICENodeContext;
using XSI::host_detail::EvalFrame;
using XSI::host_detail::ResolvedInput;
using xsihost::ContextObject;
using xsihost::NodeDefinitionRecord;
using xsihost::Object;
using xsihost::PortRecord;

namespace {

constexpr ULONG kNoLink = 0xFFFFFFFFu;
constexpr std::byte kUnwritten{0xA5};  // fill of single-value outputs before evaluation

// The ICE node object that owns an instance: its name is the node's, its ID unique in the
// process.
class NodeObject : public Object {
 public:
  NodeObject(std::wstring name, std::uint32_t id) : name_(std::move(name)), id_(id) {}
  std::wstring Name() const override { return name_; }
  std::wstring TypeName() const override { return L"ICENode"; }
  std::uint32_t ObjectID() const override { return id_; }

 private:
  std::wstring name_;
  std::uint32_t id_;
};

std::atomic<std::uint32_t> g_nextObjectID{1001};

using NodeCallback = CStatus (*)(ICENodeContext&);
using RefCallback = CStatus (*)(CRef&);

ULONG LowestBit(ULONG bits) { return bits & (~bits + 1u); }

// The port's default as a constant input: one item, an array of one entry for array ports.
PortValues DefaultValues(const PortRecord& port) {
  PortValues p;
  p.type = LowestBit(port.dataTypes);
  if (!IsValueType(p.type)) p.type = XSI::siICENodeDataLong;
  p.array = port.structures == XSI::siICENodeStructureArray;
  p.constant = true;
  p.Resize(1);
  const XSI::CValue& d = port.defaultValue;
  std::vector<std::byte> value(ValueSize(p.type), std::byte{0});
  switch (p.type) {
    case XSI::siICENodeDataBool: {
      const bool b = static_cast<bool>(d);
      std::memcpy(value.data(), &b, sizeof b);
      break;
    }
    case XSI::siICENodeDataLong: {
      const XSI::LONG v = static_cast<XSI::LONG>(d);
      std::memcpy(value.data(), &v, sizeof v);
      break;
    }
    case XSI::siICENodeDataFloat: {
      const float v = static_cast<float>(d);
      std::memcpy(value.data(), &v, sizeof v);
      break;
    }
    case XSI::siICENodeDataVector3:
      if (d.GetType() == XSI::CValue::siVector3f) {
        const XSI::MATH::CVector3f v = d.GetVector3f();
        std::memcpy(value.data(), &v, sizeof v);
      }
      break;
    case XSI::siICENodeDataMatrix44:
      if (d.GetType() == XSI::CValue::siMatrix4f) {
        const XSI::MATH::CMatrix4f v = d.GetMatrix4f();
        std::memcpy(value.data(), &v, sizeof v);
      }
      break;
    default:
      break;
  }
  if (p.IsString()) {
    // Only a string default reads as text; a numeric default (such as 0) is an empty string.
    std::wstring text = d.GetType() == XSI::CValue::siString ? d.GetAsText().Wide() : L"";
    if (p.array)
      p.stringArrays[0] = {text};
    else
      p.strings[0] = text;
  } else if (p.array) {
    p.arrays[0] = value;
  } else {
    p.flat = value;
  }
  return p;
}

// Request data of one input, with exactly one item per element unless it is constant.
PortValues Normalised(const PortValues& given, ULONG elements) {
  if (given.constant) {
    if (given.count >= 1) return given;
    PortValues p = given;
    p.Resize(1);
    return p;
  }
  if (given.count == elements) return given;
  PortValues p;
  p.type = given.type;
  p.array = given.array;
  p.Resize(elements);
  for (ULONG i = 0; i < std::min(elements, given.count); ++i) {
    if (p.IsString() && p.array)
      p.stringArrays[i] = given.stringArrays[i];
    else if (p.IsString())
      p.strings[i] = given.strings[i];
    else if (p.array)
      p.arrays[i] = given.arrays[i];
  }
  if (!p.IsString() && !p.array) {
    const std::size_t bytes = std::min(p.flat.size(), given.flat.size());
    if (bytes) std::memcpy(p.flat.data(), given.flat.data(), bytes);
  }
  return p;
}

void ApplyOverride(const std::map<ULONG, PortInfoOverride>& overrides, ULONG port,
                   ResolvedInput& info) {
  auto it = overrides.find(port);
  if (it == overrides.end()) return;
  if (it->second.type) info.type = *it->second.type;
  if (it->second.structure) info.structure = *it->second.structure;
  if (it->second.context) info.context = *it->second.context;
}

// Runs `work(chunk)` for every chunk, on up to `threads` threads.
template <class Work>
void ForEachChunk(std::size_t chunks, unsigned threads, Work work) {
  if (threads <= 1 || chunks <= 1) {
    for (std::size_t c = 0; c < chunks; ++c) work(c);
    return;
  }
  std::atomic<std::size_t> next{0};
  std::vector<std::thread> pool;
  const unsigned count = static_cast<unsigned>(std::min<std::size_t>(threads, chunks));
  for (unsigned t = 0; t < count; ++t) {
    pool.emplace_back([&] {
      for (std::size_t c = next++; c < chunks; c = next++) work(c);
    });
  }
  for (std::thread& t : pool) t.join();
}

// Calls a plug-in callback; an exception escaping the plug-in is a fault of the plug-in and
// is reported as a failed status instead of taking the host down.
template <class Fn, class Arg>
CStatus CallPlugin(Fn fn, Arg& arg, const std::wstring& what) {
  try {
    return fn(arg);
  } catch (...) {
    HostLog().Add(XSI::siErrorMsg, what + L": an exception escaped the plug-in");
    return CStatus::Fail;
  }
}

}  // namespace

// The request resolved against the node's definition: which elements, in which chunks, and
// what each port reads or reports.
struct ResolvedEvaluation {
  ULONG elements = 0;
  ULONG context = 0;
  ULONG groupInstances = 1;
  double time = 1.0;
  unsigned threads = 1;
  std::vector<ULONG> indices;
  std::vector<std::vector<ULONG>> chunks;
  std::vector<std::unique_ptr<PortValues>> owned;  // the inputs' data
  std::map<std::pair<ULONG, ULONG>, ResolvedInput> inputs;
  std::map<ULONG, ResolvedInput> outputs;
  CRef contextRef;
};

namespace {

// The batch's element indices: ascending, unique and below the element count.
std::vector<ULONG> ResolveIndices(const EvaluationRequest& request) {
  std::vector<ULONG> indices;
  if (request.batch) {
    for (ULONG i : *request.batch)
      if (i < request.elements) indices.push_back(i);
    std::sort(indices.begin(), indices.end());
    indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
  } else {
    indices.resize(request.elements);
    for (ULONG i = 0; i < request.elements; ++i) indices[i] = i;
  }
  return indices;
}

ULONG ResolveGroupInstances(const EvaluationRequest& request) {
  ULONG groupInstances = request.groupInstances;
  if (groupInstances == 0) {
    for (const auto& [key, values] : request.inputs)
      groupInstances = std::max(groupInstances, key.second + 1);
    groupInstances = std::max<ULONG>(groupInstances, 1);
  }
  return groupInstances;
}

// Inputs: the request's data or the port's default, per group instance.
void ResolveInputs(const NodeDefinitionRecord& node, const EvaluationRequest& request,
                   ResolvedEvaluation& resolved) {
  for (const PortRecord& port : node.inputs) {
    ULONG instances = 1;
    for (const auto& g : node.groups)
      if (g.id == port.groupID && g.maxInstances > 1) instances = resolved.groupInstances;
    for (ULONG k = 0; k < instances; ++k) {
      auto given = request.inputs.find({port.id, k});
      resolved.owned.push_back(std::make_unique<PortValues>(
          given != request.inputs.end() ? Normalised(given->second, resolved.elements)
                                        : DefaultValues(port)));
      const PortValues* values = resolved.owned.back().get();
      ResolvedInput info{values, values->type, values->array ? 2u : 1u, resolved.context,
                         request.failingPortInfo.count(port.id) > 0};
      ApplyOverride(request.portInfo, port.id, info);
      resolved.inputs[{port.id, k}] = info;
    }
  }
}

// Outputs: type and structure follow the linked inputs.
void ResolveOutputs(const NodeDefinitionRecord& node, const EvaluationRequest& request,
                    ResolvedEvaluation& resolved) {
  auto& inputs = resolved.inputs;
  for (const PortRecord& port : node.outputs) {
    ResolvedInput info;
    info.type = LowestBit(port.dataTypes);
    if (port.typeLink != kNoLink) {
      for (const PortRecord& in : node.inputs)
        if (in.typeLink == port.typeLink) {
          info.type = inputs[{in.id, 0}].type;
          break;
        }
    }
    info.structure = port.structures == XSI::siICENodeStructureArray ? 2 : 1;
    if (port.structures == XSI::siICENodeStructureAny && port.structureLink != kNoLink) {
      for (const PortRecord& in : node.inputs)
        if (in.structureLink == port.structureLink && inputs[{in.id, 0}].structure == 2)
          info.structure = 2;
    }
    info.context = resolved.context;
    info.failsInfo = request.failingPortInfo.count(port.id) > 0;
    ApplyOverride(request.portInfo, port.id, info);
    resolved.outputs[port.id] = info;
  }
}

std::vector<std::vector<ULONG>> CutChunks(const std::vector<ULONG>& indices, ULONG batchSize) {
  std::vector<std::vector<ULONG>> chunks;
  for (std::size_t at = 0; at < indices.size(); at += batchSize)
    chunks.emplace_back(indices.begin() + at,
                        indices.begin() + std::min(indices.size(), at + batchSize));
  return chunks;
}

ResolvedEvaluation Resolve(const NodeDefinitionRecord& node, const EvaluationRequest& request) {
  ResolvedEvaluation resolved;
  resolved.elements = request.elements;
  const ULONG defaultContext =
      request.elements == 1 ? XSI::siICENodeContextSingleton : XSI::siICENodeContextComponent0D;
  resolved.context = request.context ? request.context : defaultContext;
  resolved.time = request.time;
  resolved.indices = ResolveIndices(request);
  resolved.groupInstances = ResolveGroupInstances(request);
  ResolveInputs(node, request, resolved);
  ResolveOutputs(node, request, resolved);
  resolved.chunks = CutChunks(resolved.indices, std::max<ULONG>(request.batchSize, 1));
  resolved.threads =
      node.threadingModel == XSI::siICENodeMultiThreading ? std::max(1u, request.threads) : 1u;
  return resolved;
}

EvalFrame MakeFrame(NodeInstance* instance, const ResolvedEvaluation& resolved, PortValues* output,
                    ULONG port, const std::vector<ULONG>* batch) {
  EvalFrame frame;
  frame.instance = instance;
  frame.inputs = &resolved.inputs;
  frame.outputs = &resolved.outputs;
  frame.output = output;
  frame.outputPort = port;
  frame.indices = batch;
  frame.elements = resolved.elements;
  frame.groupInstances = resolved.groupInstances;
  frame.time = resolved.time;
  return frame;
}

// The output buffer of `port` before any chunk runs: single values hold the fill byte, so that
// writes can be told apart afterwards. A port without a value type gets no items.
PortValues PrepareOutput(const ResolvedEvaluation& resolved, ULONG port) {
  PortValues out;
  auto info = resolved.outputs.find(port);
  if (info != resolved.outputs.end() && IsValueType(info->second.type)) {
    out.type = info->second.type;
    out.array = info->second.structure == 2;
    out.Resize(resolved.elements);
    std::fill(out.flat.begin(), out.flat.end(), kUnwritten);
  } else {
    out.type = 0;
    out.count = 0;
  }
  out.written.assign(out.count, 0);
  return out;
}

// Single values are written in place; an element counts as written once any of its bytes
// differs from the fill.
void MarkWrittenSingles(PortValues& out) {
  if (out.array || out.IsString() || out.count == 0) return;
  const std::size_t size = ValueSize(out.type);
  for (ULONG i = 0; i < out.count; ++i) {
    const std::byte* v = out.flat.data() + std::size_t(i) * size;
    out.written[i] = std::any_of(v, v + size, [](std::byte b) { return b != kUnwritten; });
  }
}

}  // namespace

NodeInstance::NodeInstance(const LoadedPlugin& plugin, const NodeDefinitionRecord& node)
    : plugin_(plugin),
      node_(node),
      object_(std::make_shared<NodeObject>(node.name, g_nextObjectID++)) {
  context_ = std::make_shared<ContextObject>(&userData_, CRef(object_));
}

NodeInstance::~NodeInstance() { Terminate(); }

std::uint32_t NodeInstance::ObjectID() const { return object_->ObjectID(); }

std::string NodeInstance::CallbackName(const char* suffix) const {
  return std::string(node_.name.begin(), node_.name.end()) + suffix;
}

void NodeInstance::Terminate() {
  if (!initialised_) return;
  initialised_ = false;
  if (auto term = reinterpret_cast<RefCallback>(plugin_.Symbol(CallbackName("_Term")))) {
    CRef ref(context_);
    CallPlugin(term, ref, node_.name + L"_Term");
  }
  portStates_.clear();
}

bool NodeInstance::IsDirty(ULONG port, ULONG instance) const {
  auto it = portStates_.find({port, instance});
  return it == portStates_.end() || it->second.dirty;
}

void NodeInstance::ClearState(ULONG port, ULONG instance) {
  portStates_[{port, instance}].dirty = false;
}

// An input is dirty once its data differ from the previous evaluation's, and stays dirty until
// the node clears it.
void NodeInstance::UpdatePortStates(const ResolvedEvaluation& resolved) {
  for (const auto& [key, info] : resolved.inputs) {
    PortState& state = portStates_[key];
    if (!state.seen || !state.previous.SameData(*info.values)) {
      state.dirty = true;
      state.previous = *info.values;
      state.seen = true;
    }
  }
}

void NodeInstance::InitOnce() {
  if (initialised_) return;
  initialised_ = true;
  if (auto init = reinterpret_cast<RefCallback>(plugin_.Symbol(CallbackName("_Init")))) {
    CRef contextRef(context_);
    CallPlugin(init, contextRef, node_.name + L"_Init");
  }
}

void NodeInstance::CallBracket(const char* suffix, ResolvedEvaluation& resolved) {
  auto callback = reinterpret_cast<NodeCallback>(plugin_.Symbol(CallbackName(suffix)));
  if (!callback) return;
  EvalFrame frame = MakeFrame(this, resolved, nullptr, 0, &resolved.indices);
  ICENodeContext ctxt(resolved.contextRef, &frame);
  const std::wstring what(suffix, suffix + std::strlen(suffix));
  CallPlugin(callback, ctxt, node_.name + what);
}

OutputResult NodeInstance::EvaluatePort(ULONG port, ResolvedEvaluation& resolved) {
  auto evaluateFn = reinterpret_cast<NodeCallback>(plugin_.Symbol(CallbackName("_Evaluate")));
  OutputResult result;
  result.port = port;
  result.values = PrepareOutput(resolved, port);
  std::mutex statusMutex;
  ForEachChunk(resolved.chunks.size(), resolved.threads, [&](std::size_t c) {
    EvalFrame frame = MakeFrame(this, resolved, &result.values, port, &resolved.chunks[c]);
    ICENodeContext ctxt(resolved.contextRef, &frame);
    const CStatus status = evaluateFn ? CallPlugin(evaluateFn, ctxt, node_.name + L"_Evaluate")
                                      : CStatus(CStatus::Fail);
    if (!status.Succeeded()) {
      std::lock_guard<std::mutex> lock(statusMutex);
      if (result.status == 0) result.status = status.GetCode();
    }
  });
  MarkWrittenSingles(result.values);
  return result;
}

std::vector<OutputResult> NodeInstance::Evaluate(const EvaluationRequest& request,
                                                 const std::vector<ULONG>& outputPorts) {
  ResolvedEvaluation resolved = Resolve(node_, request);
  UpdatePortStates(resolved);
  resolved.contextRef = CRef(context_);
  InitOnce();
  CallBracket("_BeginEvaluate", resolved);
  std::vector<OutputResult> results;
  for (ULONG port : outputPorts) results.push_back(EvaluatePort(port, resolved));
  CallBracket("_EndEvaluate", resolved);
  return results;
}

}  // namespace xsihost
