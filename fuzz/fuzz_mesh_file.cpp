// The scene's mesh-file readers (PLY of our own, OBJ) on any bytes: the first input byte picks
// the format, the rest is the file. A failure must be one message line, never a fault, an
// exception or a mesh whose polygons name vertices it does not have.
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>

#include <xsihost/scene_file.h>

#include "fuzz/fuzz_common.h"

using quillix::fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  static const std::string base = "/tmp/quillix-fuzz-mesh-" + std::to_string(getpid());
  const std::string path = base + ((bytes[0] & 1) ? ".obj" : ".ply");
  {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes + 1), std::streamsize(size - 1));
  }
  xsihost::MeshData mesh;
  std::string error;
  if (xsihost::LoadMeshFile(path, mesh, error)) {
    for (const auto& polygon : mesh.polygons)
      for (std::int32_t v : polygon)
        Check(v >= 0 && std::size_t(v) < mesh.points.size(),
              "a polygon names a vertex the mesh lacks");
  } else {
    Check(!error.empty() && error.find('\n') == std::string::npos,
          "a failure without one message line");
  }
  return 0;
}
