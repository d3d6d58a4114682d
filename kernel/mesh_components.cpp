#include "kernel/mesh_components.h"

namespace quillix {

std::int32_t* NumberComponents(const MeshView& mesh, const MeshNeighbours& neighbours,
                               QRVMemoryContext& memory) {
  const std::int32_t vertexCount = mesh.vertexCount;
  std::int32_t* numbers = memory.AllocateArray<std::int32_t>(std::size_t(vertexCount));
  if (numbers == nullptr) return nullptr;
  // A component's number depends only on its lowest vertex, so any traversal numbers alike.
  // This one walks the neighbour rows in order, joining sets in place in the result array
  // (no stack, no second array): every set's root is its lowest vertex, because the higher
  // root always joins the lower one, and path halving only ever points a vertex lower.
  std::int32_t* parent = numbers;
  for (std::int32_t v = 0; v < vertexCount; ++v) parent[v] = v;
  const auto root = [parent](std::int32_t v) {
    while (parent[v] != v) v = parent[v] = parent[parent[v]];
    return v;
  };
  for (std::int32_t v = 0; v < vertexCount; ++v) {
    // Each edge is met from both ends; its lower end's row holds it in its ascending tail.
    const std::int32_t begin = neighbours.offsets[v];
    std::int32_t i = neighbours.offsets[v + 1] - 1;
    if (i < begin || neighbours.lists[i] < v) continue;
    std::int32_t a = root(v);  // kept as v's root while its sets join
    for (; i >= begin && neighbours.lists[i] > v; --i) {
      const std::int32_t b = root(neighbours.lists[i]);
      if (a < b) {
        parent[b] = a;
      } else if (b < a) {
        parent[a] = b;
        a = b;
      }
    }
  }
  // In index order a vertex's parent is lower and already holds its final number; a root opens
  // the next number.
  std::int32_t component = 0;
  for (std::int32_t v = 0; v < vertexCount; ++v)
    numbers[v] = parent[v] == v ? component++ : numbers[parent[v]];
  return numbers;
}

}  // namespace quillix
