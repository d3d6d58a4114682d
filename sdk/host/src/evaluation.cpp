#include <xsihost/evaluation.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <thread>

#include <xsi_icenodecontext.h>
#include <xsi_ref.h>
#include <xsi_status.h>
#include <xsihost/eval_frame.h>
#include <xsihost/object.h>
#include <xsihost/session.h>

namespace XSI::host_detail {

const xsihost::ResolvedInput* EvalFrame::findInput(ULONG port, ULONG instance) const {
  if (!inputs) return nullptr;
  auto it = inputs->find({port, instance});
  return it == inputs->end() ? nullptr : &it->second;
}

}  // namespace XSI::host_detail

namespace xsihost {

using XSI::CRef;
using XSI::CStatus;
using XSI::ICENodeContext;
using XSI::host_detail::ContextObject;
using XSI::host_detail::EvalFrame;
using XSI::host_detail::NodeDefinitionRecord;
using XSI::host_detail::Object;
using XSI::host_detail::PortRecord;

namespace {

constexpr ULONG kNoLink = 0xFFFFFFFFu;
constexpr std::byte kUnwritten{0xA5};  // fill of single-value outputs before evaluation

// The ICE node object that owns an instance: its name is the node's, its ID unique in the
// process.
class NodeObject : public Object {
 public:
  NodeObject(std::wstring name, std::uint32_t id) : m_name(std::move(name)), m_id(id) {}
  std::wstring name() const override { return m_name; }
  std::wstring typeName() const override { return L"ICENode"; }
  std::uint32_t objectID() const override { return m_id; }

 private:
  std::wstring m_name;
  std::uint32_t m_id;
};

std::atomic<std::uint32_t> g_nextObjectID{1001};

using NodeCallback = CStatus (*)(ICENodeContext&);
using RefCallback = CStatus (*)(CRef&);

ULONG lowestBit(ULONG bits) { return bits & (~bits + 1u); }

// The port's default as a constant input: one item, an array of one entry for array ports.
PortValues defaultValues(const PortRecord& port) {
  PortValues p;
  p.type = lowestBit(port.dataTypes);
  if (!isValueType(p.type)) p.type = XSI::siICENodeDataLong;
  p.array = port.structures == XSI::siICENodeStructureArray;
  p.constant = true;
  p.resize(1);
  const XSI::CValue& d = port.defaultValue;
  std::vector<std::byte> value(valueSize(p.type), std::byte{0});
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
    default: break;
  }
  if (p.isString()) {
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
PortValues normalised(const PortValues& given, ULONG elements) {
  if (given.constant) {
    if (given.count >= 1) return given;
    PortValues p = given;
    p.resize(1);
    return p;
  }
  if (given.count == elements) return given;
  PortValues p;
  p.type = given.type;
  p.array = given.array;
  p.resize(elements);
  for (ULONG i = 0; i < std::min(elements, given.count); ++i) {
    if (p.isString() && p.array) p.stringArrays[i] = given.stringArrays[i];
    else if (p.isString()) p.strings[i] = given.strings[i];
    else if (p.array) p.arrays[i] = given.arrays[i];
  }
  if (!p.isString() && !p.array) {
    const std::size_t bytes = std::min(p.flat.size(), given.flat.size());
    if (bytes) std::memcpy(p.flat.data(), given.flat.data(), bytes);
  }
  return p;
}

void applyOverride(const std::map<ULONG, PortInfoOverride>& overrides, ULONG port,
                   ResolvedInput& info) {
  auto it = overrides.find(port);
  if (it == overrides.end()) return;
  if (it->second.type) info.type = *it->second.type;
  if (it->second.structure) info.structure = *it->second.structure;
  if (it->second.context) info.context = *it->second.context;
}

// Runs `work(chunk)` for every chunk, on up to `threads` threads.
template <class Work>
void forEachChunk(std::size_t chunks, unsigned threads, Work work) {
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
CStatus callPlugin(Fn fn, Arg& arg, const std::wstring& what) {
  try {
    return fn(arg);
  } catch (...) {
    hostLog().add(XSI::siErrorMsg, what + L": an exception escaped the plug-in");
    return CStatus::Fail;
  }
}

}  // namespace

NodeInstance::NodeInstance(const LoadedPlugin& plugin, const NodeDefinitionRecord& node)
    : m_plugin(plugin),
      m_node(node),
      m_object(std::make_shared<NodeObject>(node.name, g_nextObjectID++)) {
  m_context = std::make_shared<ContextObject>(&m_userData, CRef(m_object));
}

NodeInstance::~NodeInstance() { terminate(); }

std::uint32_t NodeInstance::objectID() const { return m_object->objectID(); }

void NodeInstance::terminate() {
  if (!m_initialised) return;
  m_initialised = false;
  const std::string name(m_node.name.begin(), m_node.name.end());
  if (auto term = reinterpret_cast<RefCallback>(m_plugin.symbol(name + "_Term"))) {
    CRef ref(m_context);
    callPlugin(term, ref, m_node.name + L"_Term");
  }
  m_portStates.clear();
}

bool NodeInstance::isDirty(ULONG port, ULONG instance) const {
  auto it = m_portStates.find({port, instance});
  return it == m_portStates.end() || it->second.dirty;
}

void NodeInstance::clearState(ULONG port, ULONG instance) {
  m_portStates[{port, instance}].dirty = false;
}

std::vector<OutputResult> NodeInstance::evaluate(const EvaluationRequest& request,
                                                 const std::vector<ULONG>& outputPorts) {
  const ULONG elements = request.elements;
  const ULONG defaultContext = elements == 1 ? XSI::siICENodeContextSingleton
                                             : XSI::siICENodeContextComponent0D;
  const ULONG context = request.context ? request.context : defaultContext;
  std::vector<ULONG> indices;
  if (request.batch) {
    for (ULONG i : *request.batch)
      if (i < elements) indices.push_back(i);
    std::sort(indices.begin(), indices.end());
    indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
  } else {
    indices.resize(elements);
    for (ULONG i = 0; i < elements; ++i) indices[i] = i;
  }

  ULONG groupInstances = request.groupInstances;
  if (groupInstances == 0) {
    for (const auto& [key, values] : request.inputs) groupInstances = std::max(groupInstances, key.second + 1);
    groupInstances = std::max<ULONG>(groupInstances, 1);
  }

  // Inputs: the request's data or the port's default, per group instance.
  std::vector<std::unique_ptr<PortValues>> owned;
  std::map<std::pair<ULONG, ULONG>, ResolvedInput> inputs;
  for (const PortRecord& port : m_node.inputs) {
    ULONG instances = 1;
    for (const auto& g : m_node.groups)
      if (g.id == port.groupID && g.maxInstances > 1) instances = groupInstances;
    for (ULONG k = 0; k < instances; ++k) {
      auto given = request.inputs.find({port.id, k});
      owned.push_back(std::make_unique<PortValues>(
          given != request.inputs.end() ? normalised(given->second, elements) : defaultValues(port)));
      const PortValues* values = owned.back().get();
      ResolvedInput info{values, values->type, values->array ? 2u : 1u, context,
                         request.failingPortInfo.count(port.id) > 0};
      applyOverride(request.portInfo, port.id, info);
      inputs[{port.id, k}] = info;
    }
  }

  // Outputs: type and structure follow the linked inputs.
  std::map<ULONG, ResolvedInput> outputs;
  for (const PortRecord& port : m_node.outputs) {
    ResolvedInput info;
    info.type = lowestBit(port.dataTypes);
    if (port.typeLink != kNoLink) {
      for (const PortRecord& in : m_node.inputs)
        if (in.typeLink == port.typeLink) {
          info.type = inputs[{in.id, 0}].type;
          break;
        }
    }
    info.structure = port.structures == XSI::siICENodeStructureArray ? 2 : 1;
    if (port.structures == XSI::siICENodeStructureAny && port.structureLink != kNoLink) {
      for (const PortRecord& in : m_node.inputs)
        if (in.structureLink == port.structureLink && inputs[{in.id, 0}].structure == 2)
          info.structure = 2;
    }
    info.context = context;
    info.failsInfo = request.failingPortInfo.count(port.id) > 0;
    applyOverride(request.portInfo, port.id, info);
    outputs[port.id] = info;
  }

  // Port states: an input is dirty once its data differ from the previous evaluation's, and
  // stays dirty until the node clears it.
  for (const auto& [key, info] : inputs) {
    PortState& state = m_portStates[key];
    if (!state.seen || !state.previous.sameData(*info.values)) {
      state.dirty = true;
      state.previous = *info.values;
      state.seen = true;
    }
  }

  const std::string name(m_node.name.begin(), m_node.name.end());
  CRef contextRef(m_context);
  if (!m_initialised) {
    m_initialised = true;
    if (auto init = reinterpret_cast<RefCallback>(m_plugin.symbol(name + "_Init")))
      callPlugin(init, contextRef, m_node.name + L"_Init");
  }

  auto makeFrame = [&](PortValues* output, ULONG port, const std::vector<ULONG>* batch) {
    EvalFrame frame;
    frame.instance = this;
    frame.inputs = &inputs;
    frame.outputs = &outputs;
    frame.output = output;
    frame.outputPort = port;
    frame.indices = batch;
    frame.elements = elements;
    frame.groupInstances = groupInstances;
    frame.time = request.time;
    return frame;
  };

  if (auto begin = reinterpret_cast<NodeCallback>(m_plugin.symbol(name + "_BeginEvaluate"))) {
    EvalFrame frame = makeFrame(nullptr, 0, &indices);
    ICENodeContext ctxt(contextRef, &frame);
    callPlugin(begin, ctxt, m_node.name + L"_BeginEvaluate");
  }

  auto evaluateFn = reinterpret_cast<NodeCallback>(m_plugin.symbol(name + "_Evaluate"));
  const ULONG batchSize = std::max<ULONG>(request.batchSize, 1);
  std::vector<std::vector<ULONG>> chunks;
  for (std::size_t at = 0; at < indices.size(); at += batchSize)
    chunks.emplace_back(indices.begin() + at,
                        indices.begin() + std::min(indices.size(), at + batchSize));
  const unsigned threads = m_node.threadingModel == XSI::siICENodeMultiThreading
                               ? std::max(1u, request.threads) : 1u;

  std::vector<OutputResult> results;
  for (ULONG port : outputPorts) {
    OutputResult result;
    result.port = port;
    PortValues& out = result.values;
    auto info = outputs.find(port);
    if (info != outputs.end() && isValueType(info->second.type)) {
      out.type = info->second.type;
      out.array = info->second.structure == 2;
      out.resize(elements);
      std::fill(out.flat.begin(), out.flat.end(), kUnwritten);
    } else {
      out.type = 0;
      out.count = 0;
    }
    out.written.assign(out.count, 0);

    std::mutex statusMutex;
    forEachChunk(chunks.size(), threads, [&](std::size_t c) {
      EvalFrame frame = makeFrame(&out, port, &chunks[c]);
      ICENodeContext ctxt(contextRef, &frame);
      const CStatus status = evaluateFn ? callPlugin(evaluateFn, ctxt, m_node.name + L"_Evaluate")
                                        : CStatus(CStatus::Fail);
      if (!status.Succeeded()) {
        std::lock_guard<std::mutex> lock(statusMutex);
        if (result.status == 0) result.status = status.GetCode();
      }
    });

    // Single values are written in place; an element counts as written once any of its
    // bytes differs from the fill.
    if (!out.array && !out.isString() && out.count > 0) {
      const std::size_t size = valueSize(out.type);
      for (ULONG i = 0; i < out.count; ++i) {
        const std::byte* v = out.flat.data() + std::size_t(i) * size;
        out.written[i] = std::any_of(v, v + size, [](std::byte b) { return b != kUnwritten; });
      }
    }
    results.push_back(std::move(result));
  }

  if (auto end = reinterpret_cast<NodeCallback>(m_plugin.symbol(name + "_EndEvaluate"))) {
    EvalFrame frame = makeFrame(nullptr, 0, &indices);
    ICENodeContext ctxt(contextRef, &frame);
    callPlugin(end, ctxt, m_node.name + L"_EndEvaluate");
  }
  return results;
}

}  // namespace xsihost
