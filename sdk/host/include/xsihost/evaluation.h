// Node instances and their evaluation, as the host's graph drives them.
//
// An evaluation is: the element count, optionally a batch (ascending subset of elements),
// the inputs by (port, instance), and the output ports to compute. The host calls Init once
// per instance, then per evaluation BeginEvaluate, Evaluate per output port and batch, and
// EndEvaluate; Term when the instance goes away. Batches of threading-model-2 nodes run on
// several threads at once.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <xsi_value.h>
#include <xsihost/definitions.h>
#include <xsihost/plugin_host.h>
#include <xsihost/port_values.h>

namespace xsihost {

class ContextObject;
class Object;

struct PortInfoOverride {
  std::optional<ULONG> type;
  std::optional<ULONG> structure;  // 1 single, 2 array
  std::optional<ULONG> context;
};

struct EvaluationRequest {
  ULONG elements = 1;
  ULONG context = 0;  // resolved context of every port; 0: singleton for 1 element, else per point
  std::optional<std::vector<ULONG>> batch;               // default: every element
  std::map<std::pair<ULONG, ULONG>, PortValues> inputs;  // (port ID, group instance)
  ULONG groupInstances = 0;  // 0: one more than the highest instance given, at least 1
  std::map<ULONG, PortInfoOverride> portInfo;  // by port ID
  std::set<ULONG> failingPortInfo;             // GetPortInfo fails for these
  double time = 1.0;
  unsigned threads = 1;
  // Elements per batch; 0 sizes batches so that every thread gets work, and a thread that
  // drew cheap elements takes more: ceil(elements / (threads × kAutoBatchesPerThread)), at
  // least kMinAutoBatch and at most kMaxAutoBatch.
  ULONG batchSize = 0;
  static constexpr ULONG kAutoBatchesPerThread = 4;
  static constexpr ULONG kMinAutoBatch = 16;
  static constexpr ULONG kMaxAutoBatch = 1024;

  /// Gives input `port` of group instance `instance` the data `values`, hashing them once so
  /// that evaluations tell an unchanged input from a changed one without reading it again.
  void SetInput(ULONG port, PortValues values, ULONG instance = 0) {
    values.contentHash = values.ContentHash();
    inputs[{port, instance}] = std::move(values);
  }
};

struct OutputResult {
  ULONG port = 0;
  ULONG status = 0;  // first failing status of the Evaluate calls, else 0
  PortValues values;
};

// The data of one evaluation after the request is resolved against the definition, and the
// cut of its elements into batches; private to the evaluation engine.
struct ResolvedEvaluation;
struct BatchLayout;

/// One instance of a node, as a node of the host's graph: it owns the node object, the user
/// data and the input port states, and runs the node's callbacks.
class NodeInstance {
 public:
  /// An instance of `node` of `plugin`; both must outlive it. Init runs at the first evaluation.
  NodeInstance(const LoadedPlugin& plugin, const NodeDefinitionRecord& node);
  /// Calls Term when Init ran.
  ~NodeInstance();
  NodeInstance(const NodeInstance&) = delete;
  NodeInstance& operator=(const NodeInstance&) = delete;

  /// Runs one evaluation computing `outputPorts` in order: Init if not yet run, BeginEvaluate,
  /// Evaluate per port and chunk, EndEvaluate. Returns one result per port. Ports the node
  /// does not define are still passed to its Evaluate callback (which should write nothing);
  /// their results hold no items. The node reads the request's input buffers in place.
  std::vector<OutputResult> Evaluate(const EvaluationRequest& request,
                                     const std::vector<ULONG>& outputPorts);
  /// The same, with `results` in and out: on entry earlier results (of any instance), whose
  /// buffers are reused for the ports they match instead of allocating fresh ones; on return
  /// the new results. Repeated evaluations then neither allocate nor fault in their outputs.
  void Evaluate(const EvaluationRequest& request, const std::vector<ULONG>& outputPorts,
                std::vector<OutputResult>& results);

  const NodeDefinitionRecord& Definition() const { return node_; }
  /// The ID of the node object (unique in the process, from 1001 up); nodes log it.
  std::uint32_t ObjectID() const;
  /// Calls Term now (if Init ran); a later evaluation calls Init again.
  void Terminate();

  /// Port states, as the SDK's CICEPortState reads and clears them.
  bool IsDirty(ULONG port, ULONG instance) const;
  void ClearState(ULONG port, ULONG instance);

 private:
  struct PortState {
    std::uint64_t hash = 0;  // ContentHash() of the data last seen
    bool seen = false;
    bool dirty = true;
  };

  void UpdatePortStates(const ResolvedEvaluation& resolved);
  void InitOnce();
  // Calls BeginEvaluate or EndEvaluate (`suffix`) over the whole batch, when the node has it.
  void CallBracket(const char* suffix, ResolvedEvaluation& resolved);
  void EvaluatePort(ResolvedEvaluation& resolved, OutputResult& result);
  std::string CallbackName(const char* suffix) const;

  const LoadedPlugin& plugin_;
  const NodeDefinitionRecord& node_;
  XSI::CValue userData_;
  std::shared_ptr<Object> object_;
  std::shared_ptr<ContextObject> context_;
  std::map<std::pair<ULONG, ULONG>, PortState> portStates_;
  // The batches of the last evaluation over every element, kept for the next one of the same
  // element count and batch size.
  std::shared_ptr<const BatchLayout> layout_;
  bool initialised_ = false;
};

}  // namespace xsihost
