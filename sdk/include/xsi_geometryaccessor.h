// CGeometryAccessor: flat arrays of a polygon mesh.
#pragma once

#include <memory>

#include <xsi_decl.h>
#include <xsi_plainarray.h>
#include <xsi_status.h>

// Host-side object behind this class; opaque to plug-ins.
namespace xsihost {
class Object;
}

namespace XSI {

class CGeometryAccessor {
 public:
  CGeometryAccessor() = default;

  /// x, y, z of every vertex in order.
  CStatus GetVertexPositions(CDoubleArray& positions) const;
  /// The vertex of every polygon node, polygon by polygon.
  CStatus GetVertexIndices(CLongArray& indices) const;
  /// The vertex count of every polygon.
  CStatus GetPolygonVerticesCount(CLongArray& counts) const;
  /// Three vertex indices per triangle (each polygon fanned from its first vertex).
  CStatus GetTriangleVertexIndices(CLongArray& indices) const;

  // Host side only.
  explicit CGeometryAccessor(std::shared_ptr<xsihost::Object> owner) : mesh_(std::move(owner)) {}

 private:
  std::shared_ptr<xsihost::Object> mesh_;
};

}  // namespace XSI
