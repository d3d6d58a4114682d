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
  auto put = [&value](const auto& v) { std::memcpy(value.data(), &v, sizeof v); };
  switch (p.type) {
    case XSI::siICENodeDataBool:
      put(static_cast<bool>(d));
      break;
    case XSI::siICENodeDataLong:
      put(static_cast<XSI::LONG>(d));
      break;
    case XSI::siICENodeDataFloat:
      put(static_cast<float>(d));
      break;
    case XSI::siICENodeDataVector3:
      if (d.GetType() == XSI::CValue::siVector3f) put(d.GetVector3f());
      break;
    case XSI::siICENodeDataMatrix44:
      if (d.GetType() == XSI::CValue::siMatrix4f) put(d.GetMatrix4f());
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

// True when the request's data of an input can be read as it is: one item per element, or
// constant with at least its one item.
bool ReadableAsGiven(const PortValues& given, ULONG elements) {
  return given.constant ? given.count >= 1 : given.count == elements;
}

// A copy of the request's data of one input with exactly one item per element (or the one
// zero item of an empty constant): the count the caller gave is padded or cut.
PortValues Normalised(const PortValues& given, ULONG elements) {
  if (given.constant) {
    PortValues p = given;
    p.Resize(1);
    return p;
  }
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

}  // namespace

// The evaluated elements (ascending), the same cut into batches, and the elements left out.
struct BatchLayout {
  ULONG elements = 0;
  ULONG batchSize = 0;
  std::vector<ULONG> indices;
  std::vector<std::vector<ULONG>> chunks;
  std::vector<ULONG> outside;
};

// The request resolved against the node's definition: which elements, in which chunks, and
// what each port reads or reports.
struct ResolvedEvaluation {
  ULONG elements = 0;
  ULONG context = 0;
  ULONG groupInstances = 1;
  double time = 1.0;
  unsigned threads = 1;
  std::shared_ptr<const BatchLayout> layout;
  std::vector<std::unique_ptr<PortValues>> owned;  // inputs not read from the request in place
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
      const PortValues* values = nullptr;
      if (given != request.inputs.end() && ReadableAsGiven(given->second, resolved.elements)) {
        values = &given->second;
      } else {
        resolved.owned.push_back(std::make_unique<PortValues>(
            given != request.inputs.end() ? Normalised(given->second, resolved.elements)
                                          : DefaultValues(port)));
        values = resolved.owned.back().get();
      }
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

// Elements per batch: the request's, or enough batches for every thread (see batchSize).
ULONG BatchSize(const EvaluationRequest& request, std::size_t indices, unsigned threads) {
  if (request.batchSize) return request.batchSize;
  const std::size_t batches = std::size_t(threads) * EvaluationRequest::kAutoBatchesPerThread;
  return static_cast<ULONG>(std::clamp<std::size_t>((indices + batches - 1) / batches,
                                                    EvaluationRequest::kMinAutoBatch,
                                                    EvaluationRequest::kMaxAutoBatch));
}

std::vector<std::vector<ULONG>> CutChunks(const std::vector<ULONG>& indices, ULONG batchSize) {
  std::vector<std::vector<ULONG>> chunks;
  for (std::size_t at = 0; at < indices.size(); at += batchSize)
    chunks.emplace_back(indices.begin() + at,
                        indices.begin() + std::min(indices.size(), at + batchSize));
  return chunks;
}

// The elements outside the evaluated batch; a node may write more than it was asked for.
std::vector<ULONG> ElementsOutside(const std::vector<ULONG>& indices, ULONG elements) {
  std::vector<ULONG> outside;
  if (indices.size() == elements) return outside;
  std::size_t at = 0;
  for (ULONG e = 0; e < elements; ++e) {
    if (at < indices.size() && indices[at] == e)
      ++at;
    else
      outside.push_back(e);
  }
  return outside;
}

// The batches of `request`; an evaluation of every element reuses `cache` when it has the same
// count and batch size, and becomes the cache otherwise.
std::shared_ptr<const BatchLayout> Layout(const EvaluationRequest& request, unsigned threads,
                                          std::shared_ptr<const BatchLayout>& cache) {
  if (!request.batch && cache && cache->elements == request.elements &&
      cache->batchSize == BatchSize(request, request.elements, threads))
    return cache;
  auto layout = std::make_shared<BatchLayout>();
  layout->elements = request.elements;
  layout->indices = ResolveIndices(request);
  layout->batchSize = BatchSize(request, layout->indices.size(), threads);
  layout->chunks = CutChunks(layout->indices, layout->batchSize);
  layout->outside = ElementsOutside(layout->indices, request.elements);
  if (!request.batch) cache = layout;
  return layout;
}

ResolvedEvaluation Resolve(const NodeDefinitionRecord& node, const EvaluationRequest& request,
                           std::shared_ptr<const BatchLayout>& cache) {
  ResolvedEvaluation resolved;
  resolved.elements = request.elements;
  const ULONG defaultContext =
      request.elements == 1 ? XSI::siICENodeContextSingleton : XSI::siICENodeContextComponent0D;
  resolved.context = request.context ? request.context : defaultContext;
  resolved.time = request.time;
  resolved.groupInstances = ResolveGroupInstances(request);
  ResolveInputs(node, request, resolved);
  ResolveOutputs(node, request, resolved);
  resolved.threads =
      node.threadingModel == XSI::siICENodeMultiThreading ? std::max(1u, request.threads) : 1u;
  resolved.layout = Layout(request, resolved.threads, cache);
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

// Empties every item of `items`, keeping their storage for the writes to come; storage of a
// kind the port does not use is released.
template <class Items>
void ResetItems(Items& items, std::size_t count, bool used) {
  if (!used) {
    Items().swap(items);
    return;
  }
  items.resize(count);
  for (auto& item : items) item.clear();
}

// Makes `out` the buffer of `port` before any chunk runs, in the storage it already has. Single
// values are filled and checked per batch (see WriteTracker); arrays and strings start empty and
// unwritten. A port without a value type gets no items.
void PrepareOutput(const ResolvedEvaluation& resolved, ULONG port, PortValues& out) {
  auto info = resolved.outputs.find(port);
  const bool known = info != resolved.outputs.end() && IsValueType(info->second.type);
  out.type = known ? info->second.type : 0;
  out.array = known && info->second.structure == 2;
  out.constant = false;
  out.contentHash.reset();
  out.count = known ? resolved.elements : 0;
  const bool flat = known && !out.IsString() && !out.array;
  if (flat)
    out.flat.resize(std::size_t(out.count) * ValueSize(out.type));
  else
    std::vector<std::byte>().swap(out.flat);
  ResetItems(out.arrays, out.count, known && !out.IsString() && out.array);
  ResetItems(out.strings, out.count, known && out.IsString() && !out.array);
  ResetItems(out.stringArrays, out.count, known && out.IsString() && out.array);
  if (flat)
    out.written.resize(out.count);
  else
    out.written.assign(out.count, 0);
}

// True when the ascending `elements` run without gaps, as a batch of every element does.
bool IsRun(const std::vector<ULONG>& elements) {
  return !elements.empty() && elements.back() - elements.front() + 1 == elements.size();
}

// Whether the value at `v` differs from the fill, compared a 32-bit word at a time.
template <std::size_t kSize>
bool Differs(const std::byte* v) {
  if constexpr (kSize % 4 != 0) {
    static_assert(kSize == 1);
    return v[0] != kUnwritten;
  } else {
    std::uint32_t any = 0;
    for (std::size_t k = 0; k < kSize; k += 4) {
      std::uint32_t word;
      std::memcpy(&word, v + k, 4);
      any |= word ^ 0xA5A5A5A5u;
    }
    return any != 0;
  }
}

template <std::size_t kSize>
void FillValues(std::byte* data, const std::vector<ULONG>& elements) {
  const int fill = std::to_integer<int>(kUnwritten);
  if (IsRun(elements)) {
    std::memset(data + std::size_t(elements.front()) * kSize, fill, elements.size() * kSize);
    return;
  }
  for (ULONG i : elements) std::memset(data + std::size_t(i) * kSize, fill, kSize);
}

template <std::size_t kSize>
void CheckRun(const std::byte* __restrict data, std::size_t count, char* __restrict written) {
  for (std::size_t i = 0; i < count; ++i) written[i] = Differs<kSize>(data + i * kSize);
}

template <std::size_t kSize>
void CheckValues(const std::byte* data, const std::vector<ULONG>& elements, char* written) {
  if (IsRun(elements)) {
    const std::size_t first = elements.front();
    CheckRun<kSize>(data + first * kSize, elements.size(), written + first);
    return;
  }
  for (ULONG i : elements) written[i] = Differs<kSize>(data + std::size_t(i) * kSize);
}

void MarkWritten(const std::vector<ULONG>& elements, char* written) {
  if (IsRun(elements)) {
    std::memset(written + elements.front(), 1, elements.size());
    return;
  }
  for (ULONG i : elements) written[i] = 1;
}

// Single values are written in place, so which of them a node wrote is found out afterwards: a
// batch's values are filled with kUnwritten when the node first acquires the output (see
// ICENodeContext::AcquireOutputDataArray) and checked right after the batch, on its thread while
// they are in cache; an element counts as written once any of its bytes differs from the fill.
// A node that promised to write the whole batch skips both. The value size is fixed at compile
// time so that fill and check compile to plain stores and compares. Arrays and strings record
// their writes as they happen and need no tracker.
struct WriteTracker {
  void (*fill)(std::byte*, const std::vector<ULONG>&) = nullptr;
  void (*check)(const std::byte*, const std::vector<ULONG>&, char*) = nullptr;

  static WriteTracker For(const PortValues& out) {
    if (out.array || out.IsString() || out.count == 0) return {};
    switch (ValueSize(out.type)) {
      case 1:
        return {&FillValues<1>, &CheckValues<1>};
      case 4:
        return {&FillValues<4>, &CheckValues<4>};
      case 8:
        return {&FillValues<8>, &CheckValues<8>};
      case 12:
        return {&FillValues<12>, &CheckValues<12>};
      case 16:
        return {&FillValues<16>, &CheckValues<16>};
      case 36:
        return {&FillValues<36>, &CheckValues<36>};
      default:
        return {&FillValues<64>, &CheckValues<64>};  // the 4 × 4 matrix, the largest
    }
  }
  // Elements outside every batch, which only a node writing more than it was asked for writes.
  void Before(PortValues& out, const std::vector<ULONG>& elements) const {
    if (fill) fill(out.flat.data(), elements);
  }
  void After(PortValues& out, const std::vector<ULONG>& elements) const {
    if (check) check(out.flat.data(), elements, out.written.data());
  }
  // A batch, after the node ran with `writes` promised (none: it never acquired the output,
  // whose values then get the fill as well).
  void AfterBatch(PortValues& out, const std::vector<ULONG>& elements,
                  std::optional<XSI::OutputWrites> writes) const {
    if (!check) return;
    if (writes == XSI::OutputWrites::WholeBatch) return MarkWritten(elements, out.written.data());
    if (!writes) Before(out, elements);
    After(out, elements);
  }
};

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
// the node clears it. Data are compared by their hashes, taken from the request when it has them.
void NodeInstance::UpdatePortStates(const ResolvedEvaluation& resolved) {
  for (const auto& [key, info] : resolved.inputs) {
    PortState& state = portStates_[key];
    const PortValues& values = *info.values;
    const std::uint64_t hash = values.contentHash ? *values.contentHash : values.ContentHash();
    if (!state.seen || state.hash != hash) {
      state.dirty = true;
      state.hash = hash;
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
  EvalFrame frame = MakeFrame(this, resolved, nullptr, 0, &resolved.layout->indices);
  ICENodeContext ctxt(resolved.contextRef, &frame);
  const std::wstring what(suffix, suffix + std::strlen(suffix));
  CallPlugin(callback, ctxt, node_.name + what);
}

void NodeInstance::EvaluatePort(ResolvedEvaluation& resolved, OutputResult& result) {
  auto evaluateFn = reinterpret_cast<NodeCallback>(plugin_.Symbol(CallbackName("_Evaluate")));
  const std::wstring what = node_.name + L"_Evaluate";
  const BatchLayout& layout = *resolved.layout;
  result.status = 0;
  PrepareOutput(resolved, result.port, result.values);
  const WriteTracker tracker = WriteTracker::For(result.values);
  tracker.Before(result.values, layout.outside);
  std::mutex statusMutex;
  ForEachChunk(layout.chunks.size(), resolved.threads, [&](std::size_t c) {
    EvalFrame frame = MakeFrame(this, resolved, &result.values, result.port, &layout.chunks[c]);
    frame.fillUnwritten = tracker.fill;
    ICENodeContext ctxt(resolved.contextRef, &frame);
    const CStatus status = evaluateFn ? CallPlugin(evaluateFn, ctxt, what) : CStatus(CStatus::Fail);
    tracker.AfterBatch(result.values, layout.chunks[c], frame.outputWrites);
    if (!status.Succeeded()) {
      std::lock_guard<std::mutex> lock(statusMutex);
      if (result.status == 0) result.status = status.GetCode();
    }
  });
  tracker.After(result.values, layout.outside);
}

std::vector<OutputResult> NodeInstance::Evaluate(const EvaluationRequest& request,
                                                 const std::vector<ULONG>& outputPorts) {
  std::vector<OutputResult> results;
  Evaluate(request, outputPorts, results);
  return results;
}

void NodeInstance::Evaluate(const EvaluationRequest& request, const std::vector<ULONG>& outputPorts,
                            std::vector<OutputResult>& results) {
  std::map<ULONG, PortValues> spare;
  for (OutputResult& r : results) spare.emplace(r.port, std::move(r.values));
  results.assign(outputPorts.size(), OutputResult());
  for (std::size_t i = 0; i < outputPorts.size(); ++i) {
    results[i].port = outputPorts[i];
    auto it = spare.find(outputPorts[i]);
    if (it != spare.end()) {
      results[i].values = std::move(it->second);
      spare.erase(it);
    }
  }
  ResolvedEvaluation resolved = Resolve(node_, request, layout_);
  UpdatePortStates(resolved);
  resolved.contextRef = CRef(context_);
  InitOnce();
  CallBracket("_BeginEvaluate", resolved);
  for (OutputResult& result : results) EvaluatePort(resolved, result);
  CallBracket("_EndEvaluate", resolved);
}

}  // namespace xsihost
