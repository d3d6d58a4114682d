#include "kernel/mesh_components.h"

#include <algorithm>

namespace quillix {

std::int32_t* NumberComponents(const MeshView& mesh, const MeshNeighbours& neighbours,
                               QRVMemoryContext& memory) {
  const std::int32_t vertexCount = mesh.vertexCount;
  std::int32_t* numbers = memory.AllocateArray<std::int32_t>(std::size_t(vertexCount));
  std::int32_t* stack = memory.AllocateArray<std::int32_t>(std::size_t(vertexCount));
  if (numbers == nullptr || stack == nullptr) {
    memory.Release(numbers);
    memory.Release(stack);
    return nullptr;
  }
  // A component's number depends only on its lowest vertex (the seed), so an explicit-stack
  // fill numbers exactly as a recursive depth-first fill would, without its stack depth.
  std::fill(numbers, numbers + vertexCount, -1);
  std::int32_t component = 0;
  for (std::int32_t seed = 0; seed < vertexCount; ++seed) {
    if (numbers[seed] != -1) continue;
    std::int32_t top = 0;
    stack[top++] = seed;
    numbers[seed] = component;
    while (top > 0) {
      const std::int32_t v = stack[--top];
      for (std::int32_t i = neighbours.offsets[v]; i < neighbours.offsets[v + 1]; ++i) {
        const std::int32_t w = neighbours.lists[i];
        if (numbers[w] == -1) {
          numbers[w] = component;
          stack[top++] = w;
        }
      }
    }
    ++component;
  }
  memory.Release(stack);
  return numbers;
}

}  // namespace quillix
