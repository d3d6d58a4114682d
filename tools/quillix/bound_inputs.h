// Inputs of `quillix eval` requests that take their data from the loaded scene or from a mesh
// file instead of inline values. An input port gives "from" in place of its values:
//   {"from": {"object": "grid", "data": "points"}}          a mesh's point positions
//   {"from": {"object": "grid", "data": "polygons"}}        its polygonal description
//   {"from": {"object": "crv", "data": "controlPoints"}}    a curve's control points
//   {"from": {"object": "grid", "attribute": "Weights"}}    an ICE attribute of a mesh
//   {"from": {"object": "o", "data": "globalTransform"}}    or "localTransform"
//   {"from": {"meshFile": "meshes/grid.obj", "data": "points"}}   or "polygons"
// The data go straight from the scene's objects into the port's typed buffer. A bound input is
// one value shared by every element of the evaluation: a constant input.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include <xsihost/definitions.h>
#include <xsihost/port_values.h>
#include <xsihost/scene.h>
#include <nlohmann/json.hpp>

#include "tools/quillix/json_place.h"

namespace quillix::tool {

class BoundInputReader {
 public:
  /// Relative mesh-file paths resolve against `requestDirectory` (the request file's folder;
  /// empty for the working directory).
  explicit BoundInputReader(std::filesystem::path requestDirectory)
      : requestDirectory_(std::move(requestDirectory)) {}

  /// True when `input`, one entry of a request's "inputs", is an object with "from".
  static bool IsBound(const nlohmann::json& input);

  /// The data that `input` ({"from": {...}}) names, as the constant input of `port`: one item,
  /// typed and structured by the data (points and control points: an array of vector3;
  /// polygons: an array of int, each polygon's vertex indices closed by -2; an attribute: its
  /// values as an array, or a single value for a singleton attribute; transforms: a single
  /// matrix44 at scene time `time`). Objects are looked up by full name in the active scene; a
  /// mesh file named again is not read again. Throws InputError at the place below `place`
  /// (the input's JSON Pointer) that is wrong: an unknown object or attribute, data the object
  /// lacks, a mesh file that cannot be read, or data the port does not accept.
  xsihost::PortValues Read(const nlohmann::json& input, const xsihost::PortRecord& port,
                           double time, const JsonPlace& place);

  /// A copy of `request` whose bound "inputs" are written out inline ("type", "structure",
  /// "constant", "values"), for readers of a request's values as JSON such as the pictures. The
  /// request must have been read by Read already; its other inputs are kept as they are.
  nlohmann::json Inline(const nlohmann::json& request);

 private:
  xsihost::PortValues Fetch(const nlohmann::json& from, double time, const JsonPlace& place);
  std::shared_ptr<const xsihost::MeshData> MeshFile(const nlohmann::json& path,
                                                    const JsonPlace& place);

  std::filesystem::path requestDirectory_;
  std::map<std::string, std::shared_ptr<const xsihost::MeshData>> meshFiles_;  // by path
};

}  // namespace quillix::tool
