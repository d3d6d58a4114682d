// What an ICENodeContext refers to during one callback: the instance, the resolved inputs,
// the evaluated output and the batch.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include <xsi_icenodecontext.h>
#include <xsihost/evaluation.h>
#include <xsihost/port_values.h>

namespace XSI::host_detail {

// Resolved view of one input for an evaluation (the request's data or the port's default).
struct ResolvedInput {
  const xsihost::PortValues* values = nullptr;
  ULONG type = 0;
  ULONG structure = 1;
  ULONG context = 1;
  bool failsInfo = false;
};

struct EvalFrame {
  xsihost::NodeInstance* instance = nullptr;
  const std::map<std::pair<ULONG, ULONG>, ResolvedInput>* inputs = nullptr;
  const std::map<ULONG, ResolvedInput>* outputs = nullptr;  // resolved output info
  xsihost::PortValues* output = nullptr;  // buffer of the evaluated port; null in Begin/End
  ULONG outputPort = 0;
  const std::vector<ULONG>* indices = nullptr;
  ULONG elements = 0;
  ULONG groupInstances = 1;
  double time = 1.0;
  std::vector<std::unique_ptr<xsihost::PortValues>> copies;  // private input copies
  // Single-value outputs: what the node promised when it first acquired the output of this
  // batch (none when it did not), and how the host marks the batch's values as unwritten before
  // some of them are written (null for arrays and strings, which record their writes).
  std::optional<XSI::OutputWrites> outputWrites;
  void (*fillUnwritten)(std::byte* values, const std::vector<ULONG>& elements) = nullptr;

  const ResolvedInput* FindInput(ULONG port, ULONG instance) const;
};

}  // namespace XSI::host_detail
