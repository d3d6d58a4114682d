#include "tools/quillix/result_limits.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace quillix::tool {

using XSI::ULONG;
using xsihost::NodeDefinitionRecord;
using xsihost::PortValues;

namespace {

// A number or value in the result document: the JSON value (16 bytes), its share of the list
// holding it and its text (up to 16 characters, ", " and indentation).
constexpr std::uint64_t kJsonBytesPerNumber = 48;

constexpr ULONG kResamplePointsPort = 1010;

// The largest data type a port may carry: what one of its values costs at most.
ULONG LargestType(ULONG dataTypes) {
  ULONG largest = 0;
  for (ULONG bit = 1; bit != 0; bit <<= 1)
    if ((dataTypes & bit) && xsihost::ValueSize(bit) >= xsihost::ValueSize(largest)) largest = bit;
  return largest;
}

std::uint64_t Numbers(ULONG type) {
  const std::size_t size = xsihost::ValueSize(type);
  return size == 0 ? 4 : (size + 3) / 4;  // strings: as a short text
}

float ItemFloat(const PortValues& values, ULONG element) {
  return values.Single<float>(values.constant ? 0 : element);
}

// The node's count for one element (see PlanResample of the curve core); `points` (x, y, z
// after one another) are read in density mode only.
template <class Points>
std::uint64_t PlannedPoints(float value, Points points) {
  constexpr double kLargest = double(std::numeric_limits<std::int32_t>::max());
  double count = 0.0;
  if (!(value < 0.0f)) {
    count = std::trunc(value > 0.0f ? double(value) + 0.5 : double(value) - 0.5);
    if (!(count >= 2.0)) return 0;
  } else {
    const std::vector<float> xyz = points();
    float total = 0.0f;
    for (std::size_t k = 3; k + 2 < xyz.size(); k += 3) {
      const float dx = xyz[k] - xyz[k - 3], dy = xyz[k + 1] - xyz[k - 2],
                  dz = xyz[k + 2] - xyz[k - 1];
      total += std::sqrt(dx * dx + dy * dy + dz * dz);
    }
    if (!(total > 0.0f)) return 0;
    count = std::ceil(double(total * -value));
  }
  return count <= kLargest ? static_cast<std::uint64_t>(count) : 0;
}

}  // namespace

std::uint64_t MachineMemoryBytes() {
  const long pages = ::sysconf(_SC_PHYS_PAGES), pageSize = ::sysconf(_SC_PAGE_SIZE);
  if (pages <= 0 || pageSize <= 0) return 0;
  return std::uint64_t(pages) * std::uint64_t(pageSize);
}

std::uint64_t ArrayEntryBytes(ULONG type) {
  return xsihost::ValueSize(type) + kJsonBytesPerNumber * (Numbers(type) + 1);
}

std::uint64_t EstimateResultBytes(const NodeDefinitionRecord& node, ULONG elements,
                                  const std::vector<ULONG>& ports) {
  std::uint64_t perElement = 0;
  for (ULONG id : ports) {
    const xsihost::PortRecord* port = node.FindOutput(id);
    if (!port) {
      perElement += kJsonBytesPerNumber;
      continue;
    }
    const ULONG type = LargestType(port->dataTypes);
    // Held by the host (value and written flag), then as JSON; an array as an empty list.
    perElement += port->structures == 2
                      ? sizeof(std::vector<std::byte>) + 1 + kJsonBytesPerNumber
                      : xsihost::ValueSize(type) + 1 + kJsonBytesPerNumber * (Numbers(type) + 1);
  }
  return perElement * elements;
}

std::uint64_t ResampledPoints(const NodeDefinitionRecord& node,
                              const xsihost::EvaluationRequest& request) {
  if (node.name != L"Quillix_rlins") return 0;
  const auto count = request.inputs.find({kResampleCountPort, 0});
  const auto points = request.inputs.find({kResamplePointsPort, 0});
  const xsihost::PortRecord* countPort = node.FindInput(kResampleCountPort);
  const float byDefault = countPort ? static_cast<float>(double(countPort->defaultValue)) : 0.0f;
  auto pointsOf = [&](ULONG element) {
    std::vector<float> xyz;
    if (points == request.inputs.end() || !points->second.array || points->second.IsString() ||
        points->second.arrays.empty())
      return xyz;
    const auto& bytes = points->second.arrays[points->second.constant ? 0 : element];
    xyz.resize(bytes.size() / sizeof(float));
    if (!xyz.empty()) std::memcpy(xyz.data(), bytes.data(), xyz.size() * sizeof(float));
    return xyz;
  };
  auto one = [&](ULONG element) {
    const bool given = count != request.inputs.end() &&
                       count->second.type == XSI::siICENodeDataFloat && count->second.count > 0;
    return PlannedPoints(given ? ItemFloat(count->second, element) : byDefault,
                         [&] { return pointsOf(element); });
  };
  std::uint64_t total = 0;
  if (request.batch) {
    for (ULONG element : *request.batch) total += one(element);
  } else {
    for (ULONG element = 0; element < request.elements; ++element) total += one(element);
  }
  return total;
}

std::string ByteText(std::uint64_t bytes) {
  char text[32];
  if (bytes >= (std::uint64_t(1) << 30))
    std::snprintf(text, sizeof text, "%.1f GiB", double(bytes) / double(1u << 30));
  else
    std::snprintf(text, sizeof text, "%.1f MiB", double(bytes) / double(1u << 20));
  return text;
}

}  // namespace quillix::tool
