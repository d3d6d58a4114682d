// Draws the example pictures of docs/pictures.md from the shipped examples' data:
//   output_doc_pictures DIR   writes DIR/slins_r0_p2010_e0.png and DIR/fpom_r3_p2020_e0.png
// The results are those `quillix eval` prints for examples/curve/slins.json (request 0,
// element 0) and examples/pathfind/fpom.json (request 3, element 0).
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "tools/output/figures.h"

namespace {

using quillix::Vec3f;

// The 6 × 5 grid of examples/pathfind/meshes/hill_grid.obj, the mesh of fpom.json: vertex
// (i, j) is number 6·j + i, three raised.
std::vector<Vec3f> GridPositions() {
  std::vector<Vec3f> positions;
  for (int j = 0; j < 5; ++j) {
    for (int i = 0; i < 6; ++i) {
      const int index = 6 * j + i;
      const bool raised = index == 8 || index == 14 || index == 15;
      positions.push_back({float(i), float(j), raised ? 2.0f : 0.0f});
    }
  }
  return positions;
}

std::vector<std::int32_t> GridDescription() {
  std::vector<std::int32_t> description;
  for (int j = 0; j < 4; ++j) {
    for (int i = 0; i < 5; ++i) {
      const int a = 6 * j + i;
      description.insert(description.end(), {a, a + 1, a + 7, a + 6, -2});
    }
  }
  return description;
}

bool Write(const quillix::Figure& figure, const std::filesystem::path& file) {
  const quillix::OutputStatus status = quillix::WritePng(figure, {}, file);
  if (!status.ok) std::fprintf(stderr, "output_doc_pictures: %s\n", status.message.c_str());
  return status.ok;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: output_doc_pictures DIR\n");
    return 2;
  }
  const std::filesystem::path dir = argv[1];
  const std::vector<Vec3f> line = {{0, 0, 0}, {1, 0.05f, 0}, {2, -0.05f, 0},
                                   {3, 0, 0}, {4, 2, 0},     {5, 0, 0}};
  const std::vector<Vec3f> simplified = {{0, 0, 0}, {3, 0, 0}, {4, 2, 0}, {5, 0, 0}};
  std::vector<std::uint8_t> flags(30, 1);
  flags[3] = flags[9] = flags[15] = 0;
  const std::vector<std::int32_t> path = {24, 18, 19, 20, 21, 22, 16, 10, 4, 5};
  const std::vector<std::int32_t> requested = {24, 5};
  const bool ok =
      Write(quillix::PolylineResultFigure(line, simplified, "Quillix_slins, epsilon 0.5"),
            dir / "slins_r0_p2010_e0.png") &&
      Write(quillix::PathOnMeshFigure(GridPositions(), GridDescription(), path, requested, flags,
                                      "Quillix_fpom, vertices 3, 9 and 15 blocked"),
            dir / "fpom_r3_p2020_e0.png");
  return ok ? 0 : 1;
}
