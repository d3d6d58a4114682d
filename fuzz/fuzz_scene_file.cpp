// The scene reader on any bytes: JSON scenes with objects, transforms, parameters, inline
// meshes, curves and keys. Every failure must come back as one message, never a fault or an
// exception, and a successful read must give a scene.
#include <cstdint>
#include <string>

#include <xsihost/scene_file.h>

#include "fuzz/fuzz_common.h"

using quillix::fuzz::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  std::string error;
  // Mesh files named by the scene resolve under a folder that holds none, so the reader's
  // own file handling is reached without reading files of the machine.
  const auto scene = xsihost::ParseSceneText(text, "/nonexistent-quillix-fuzz", "fuzz.json", error);
  if (scene) {
    Check(error.empty(), "a scene was read and an error reported");
  } else {
    Check(!error.empty() && error.find('\n') == std::string::npos,
          "a failure without one message line");
  }
  return 0;
}
