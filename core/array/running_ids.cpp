#include "core/array/running_ids.h"

namespace quillix {

std::uint32_t IdCountForSize(std::int32_t size) {
  return size > 0 ? static_cast<std::uint32_t>(size) : 0u;
}

std::int32_t WriteRunningIds(std::int32_t firstId, std::span<std::int32_t> out) {
  auto next = static_cast<std::uint32_t>(firstId);
  for (std::int32_t& id : out) id = static_cast<std::int32_t>(next++);
  return static_cast<std::int32_t>(next);
}

}  // namespace quillix
