// Result files and pictures of `quillix eval`: takes one request and its result object, as JSON,
// recognises the geometric results among them by node name and output port, and writes each
// result element as a file (OBJ or PLY) and as pictures (PNG, SVG) through tools/output.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tools/output/file_write.h"
#include "tools/output/view.h"

namespace quillix {

// Where the outputs go. An empty directory turns that kind of output off; the directories are
// created when something is written to them.
struct ResultOutputOptions {
  std::filesystem::path outDir;  // result files: OBJ, PLY
  std::filesystem::path pngDir;  // pictures as PNG
  std::filesystem::path svgDir;  // pictures as SVG
  ViewAxis view = ViewAxis::kZ;
};

// Writes the outputs of one evaluated request. `request` is one entry of a request file's
// "requests" list with its inputs given inline (the format of docs/quillix.md); `result` is
// the result object `quillix eval` printed for it ("node", "outputs"); `requestIndex` is its
// index in the request file and names the files (ResultFileName). Every non-null element of
// a recognised output port gives one file and one picture per enabled directory:
//  - Quillix_slins, Quillix_rlins port 2010: the result polyline as OBJ; the picture shows the
//    input polyline (port 1010) beside it;
//  - Quillix_fpom port 2020: the mesh (1020 positions, 1030 polygonal description) and the path
//    along its vertices as OBJ; the picture shows the path over the wireframe with the init
//    indices (1040) and the vertices the flags (1823) block;
//  - Quillix_dsals, Quillix_dsals2 port 2010 (encoded sphere matrices), Quillix_otos port 2010
//    (x, y, z, radius), Quillix_gpos port 2010 (points, radius 0): the spheres as PLY; the
//    picture shows them, along the control polygon (1010) for the spline nodes;
//  - Quillix_iotb, Quillix_iotmb, Quillix_cdbte port 2010: every pair of shapes (1010 and
//    1020, paired as the node pairs them) as OBJ wireframes; the picture has one panel per
//    pair, coloured by the pair's result with the contact time or gap written.
// Other nodes and ports write nothing. Input ports the request leaves out count as their
// defaults where the picture needs them (empty polylines and meshes, all-zero matrices).
// Values that cannot be read as the port's type are skipped element by element.
//
// The full paths of the files written are appended to `written` in order. The first file that
// cannot be written ends the call with its status; files written before it stay.
OutputStatus WriteResultOutputs(const nlohmann::json& request, const nlohmann::json& result,
                                std::size_t requestIndex, const ResultOutputOptions& options,
                                std::vector<std::string>& written);

}  // namespace quillix
