// Resource limits of `quillix eval`: a request whose results would not fit in the machine's
// memory is refused before anything is evaluated (see docs/quillix.md, "Limits").
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <xsihost/host.h>

namespace quillix::tool {

// The most elements one request may have, whatever the memory.
inline constexpr XSI::ULONG kMaxElements = XSI::ULONG(1) << 24;

// Bytes of physical memory of the machine (pages × page size), the budget of one request's
// results; 0 when the system does not say (no limit then).
std::uint64_t MachineMemoryBytes();

// Estimated bytes that the results of evaluating `ports` of `node` over `elements` elements
// take: the host's output values plus their JSON document and text, about 48 bytes per number
// and per value. An array output counts as an empty array per element here (its length is the
// node's choice; ResampledPoints estimates the one node whose length the request sets).
// Ports the node does not define cost one null per element.
std::uint64_t EstimateResultBytes(const xsihost::NodeDefinitionRecord& node, XSI::ULONG elements,
                                  const std::vector<XSI::ULONG>& ports);

// Estimated bytes of one entry of an array output of data type `type`, held and printed.
std::uint64_t ArrayEntryBytes(XSI::ULONG type);

// For Quillix_rlins, the output points that `request` asks for over its evaluated elements,
// counted as the node plans them: the count rounded half away from zero, or ceil(length ×
// density) for a negative count; 0 where the node answers an empty line (a count below 2 or
// beyond 2^31 − 1). 0 for every other node.
std::uint64_t ResampledPoints(const xsihost::NodeDefinitionRecord& node,
                              const xsihost::EvaluationRequest& request);

// The input port of Quillix_rlins that sets its output size.
inline constexpr XSI::ULONG kResampleCountPort = 1020;

// "23.4 GiB".
std::string ByteText(std::uint64_t bytes);

}  // namespace quillix::tool
