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

namespace XSI::host_detail {
class ContextObject;
class Object;
}

namespace xsihost {

struct PortInfoOverride {
  std::optional<ULONG> type;
  std::optional<ULONG> structure;  // 1 single, 2 array
  std::optional<ULONG> context;
};

struct EvaluationRequest {
  ULONG elements = 1;
  ULONG context = 0;  // resolved context of every port; 0: singleton for 1 element, else per point
  std::optional<std::vector<ULONG>> batch;             // default: every element
  std::map<std::pair<ULONG, ULONG>, PortValues> inputs; // (port ID, group instance)
  ULONG groupInstances = 0;  // 0: one more than the highest instance given, at least 1
  std::map<ULONG, PortInfoOverride> portInfo;           // by port ID
  std::set<ULONG> failingPortInfo;                      // GetPortInfo fails for these
  double time = 1.0;
  unsigned threads = 1;
  ULONG batchSize = 1024;

  void setInput(ULONG port, PortValues values, ULONG instance = 0) {
    inputs[{port, instance}] = std::move(values);
  }
};

struct OutputResult {
  ULONG port = 0;
  ULONG status = 0;  // first failing status of the Evaluate calls, else 0
  PortValues values;
};

// Resolved view of one input for an evaluation (the request's data or the port's default).
struct ResolvedInput {
  const PortValues* values = nullptr;
  ULONG type = 0;
  ULONG structure = 1;
  ULONG context = 1;
  bool failsInfo = false;
};

class NodeInstance {
 public:
  NodeInstance(const LoadedPlugin& plugin, const XSI::host_detail::NodeDefinitionRecord& node);
  ~NodeInstance();  // calls Term when Init ran
  NodeInstance(const NodeInstance&) = delete;
  NodeInstance& operator=(const NodeInstance&) = delete;

  // Runs one evaluation computing `outputPorts` in order. Ports the node does not define are
  // still passed to its Evaluate callback (which should write nothing).
  std::vector<OutputResult> evaluate(const EvaluationRequest& request,
                                     const std::vector<ULONG>& outputPorts);

  const XSI::host_detail::NodeDefinitionRecord& definition() const { return m_node; }
  std::uint32_t objectID() const;
  // Calls Term now (if Init ran); later evaluations call Init again.
  void terminate();

 private:
  struct PortState {
    PortValues previous;
    bool seen = false;
    bool dirty = true;
  };
  friend struct XSI::host_detail::EvalFrame;

  const LoadedPlugin& m_plugin;
  const XSI::host_detail::NodeDefinitionRecord& m_node;
  XSI::CValue m_userData;
  std::shared_ptr<XSI::host_detail::Object> m_object;
  std::shared_ptr<XSI::host_detail::ContextObject> m_context;
  std::map<std::pair<ULONG, ULONG>, PortState> m_portStates;
  bool m_initialised = false;

 public:
  // Used by the SDK's CICEPortState.
  bool isDirty(ULONG port, ULONG instance) const;
  void clearState(ULONG port, ULONG instance);
};

}  // namespace xsihost
