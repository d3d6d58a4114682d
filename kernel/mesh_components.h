// Connected components of a mesh's vertex graph (derived item 8192 of QRVGeometry).
#pragma once

#include <cstdint>

#include "kernel/memory_context.h"
#include "kernel/mesh_neighbours.h"
#include "kernel/mesh_view.h"

namespace quillix {

// One component number per vertex (vertexCount entries from `memory`): the vertices are
// visited in index order and each one not yet numbered opens the next number, counting from
// 0, which is given to every vertex it reaches through `neighbours`. Vertices without
// neighbours get a component of their own. Null when `memory` refuses. The numbers come from
// joining sets over the neighbour rows in place, so a long chain of vertices costs no call
// depth and no memory beyond the result.
std::int32_t* NumberComponents(const MeshView& mesh, const MeshNeighbours& neighbours,
                               QRVMemoryContext& memory);

}  // namespace quillix
