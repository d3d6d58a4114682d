// Geometric results as text files other tools open: polylines, paths on meshes and boxes as
// Wavefront OBJ, spheres and points as ASCII PLY.
//
// Numbers are written in the shortest form that reads back as the same float (std::to_chars),
// so the files carry the results exactly. OBJ indices are 1-based, as the format requires.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/math/math_types.h"

namespace quillix {

// The shortest decimal text that reads back as the same float ("0.45", "1e+20", "nan").
std::string FloatText(float value);

// Builds one OBJ text from named objects; each Add... appends an `o <name>` line, the object's
// `v` lines and its elements, numbering vertices after those of the objects before it.
// Names are written as given (keep them free of blanks and line breaks).
class ObjText {
 public:
  // Starts the text with `# <comment>` when the comment is not empty.
  explicit ObjText(std::string_view comment = {});

  // A polyline: its points as vertices and one `l` element through them in order; a single
  // point gives a `p` element, no point gives only the `o` line.
  void AddPolyline(std::string_view name, std::span<const Vec3f> points);

  // A mesh as #V `positions` and one `f` element per polygon of `polygonalDescription`
  // (vertex indices, each polygon ended by a negative value; see SplitPolygons). Polygons with
  // fewer than 3 vertices or an index outside [0, #V) are left out. Returns the mesh's number
  // for AddVertexPath.
  std::size_t AddMesh(std::string_view name, std::span<const Vec3f> positions,
                      std::span<const std::int32_t> polygonalDescription);

  // A path along the vertices of the mesh numbered `mesh` (AddMesh): one `l` element through
  // the mesh's vertices `path` (0-based, in path order), adding no vertices. A path of one
  // vertex gives a `p` element, an empty path only the `o` line. Returns false and adds
  // nothing when `mesh` is unknown or an index lies outside the mesh.
  bool AddVertexPath(std::string_view name, std::size_t mesh, std::span<const std::int32_t> path);

  // A box, the cube [−1, 1]³ under `transform` (BoxCorners), as its 8 corners and 12 two-vertex
  // `l` elements (kBoxEdges order).
  void AddBox(std::string_view name, const Mat4f& transform);

  const std::string& Text() const { return text_; }

 private:
  struct MeshVertices {
    std::size_t first = 0;  // 0-based OBJ vertex number of the mesh's vertex 0
    std::size_t count = 0;
  };
  void StartObject(std::string_view name);
  void AddVertices(std::span<const Vec3f> points);

  std::string text_;
  std::size_t vertexCount_ = 0;
  std::vector<MeshVertices> meshes_;
};

// A sphere or a point with a size: centre and radius.
struct SpherePoint {
  Vec3f centre;
  float radius = 0.0f;
};

// The spheres of encoded sphere matrices (the sphere distribution nodes' records): centre from
// elements 12–14 (row 3), radius from element 3 (row 0, column 3). One sphere per matrix.
std::vector<SpherePoint> SpheresFromEncodedMatrices(std::span<const Mat4f> encoded);

// Spheres given as (x, y, z, radius) vectors (the objects-to-spheres node's output).
std::vector<SpherePoint> SpheresFromVectors(std::span<const std::array<float, 4>> spheres);

// Points of one common radius (surface positions: radius 0 unless the caller gives a size).
std::vector<SpherePoint> SpheresFromPoints(std::span<const Vec3f> points, float radius);

// ASCII PLY with one `vertex` element per sphere and the float properties x, y, z, radius,
// preceded by `comment <comment>` in the header when the comment is not empty.
std::string SpheresToPly(std::span<const SpherePoint> spheres, std::string_view comment = {});

}  // namespace quillix
