#include "tools/output/result_files.h"

#include <charconv>

#include "tools/output/shapes.h"

namespace quillix {
namespace {

void AppendFloat(std::string& text, float value) { text += FloatText(value); }

void AppendVector(std::string& text, const Vec3f& v) {
  AppendFloat(text, v.x);
  text += ' ';
  AppendFloat(text, v.y);
  text += ' ';
  AppendFloat(text, v.z);
}

// One element over 1-based vertex numbers: `l` for two or more, `p` for one, nothing for none.
template <class Numbers>
void AppendChain(std::string& text, std::size_t count, Numbers numberAt) {
  if (count == 0) return;
  text += count == 1 ? "p" : "l";
  for (std::size_t i = 0; i < count; ++i) text += ' ' + std::to_string(numberAt(i));
  text += '\n';
}

}  // namespace

std::string FloatText(float value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

ObjText::ObjText(std::string_view comment) {
  if (!comment.empty()) {
    text_ += "# ";
    text_ += comment;
    text_ += '\n';
  }
}

void ObjText::StartObject(std::string_view name) {
  text_ += "o ";
  text_ += name;
  text_ += '\n';
}

void ObjText::AddVertices(std::span<const Vec3f> points) {
  for (const Vec3f& p : points) {
    text_ += "v ";
    AppendVector(text_, p);
    text_ += '\n';
  }
  vertexCount_ += points.size();
}

void ObjText::AddPolyline(std::string_view name, std::span<const Vec3f> points) {
  StartObject(name);
  const std::size_t first = vertexCount_ + 1;
  AddVertices(points);
  AppendChain(text_, points.size(), [first](std::size_t i) { return first + i; });
}

std::size_t ObjText::AddMesh(std::string_view name, std::span<const Vec3f> positions,
                             std::span<const std::int32_t> polygonalDescription) {
  StartObject(name);
  const std::size_t first = vertexCount_;
  AddVertices(positions);
  for (const PolygonRange& polygon : SplitPolygons(polygonalDescription)) {
    const auto indices = polygonalDescription.subspan(polygon.first, polygon.count);
    if (indices.size() < 3 || !IndicesInRange(indices, positions.size())) continue;
    text_ += 'f';
    for (std::int32_t index : indices) text_ += ' ' + std::to_string(first + index + 1);
    text_ += '\n';
  }
  meshes_.push_back({first, positions.size()});
  return meshes_.size() - 1;
}

bool ObjText::AddVertexPath(std::string_view name, std::size_t mesh,
                            std::span<const std::int32_t> path) {
  if (mesh >= meshes_.size() || !IndicesInRange(path, meshes_[mesh].count)) return false;
  StartObject(name);
  const std::size_t first = meshes_[mesh].first + 1;
  AppendChain(text_, path.size(), [&](std::size_t i) { return first + path[i]; });
  return true;
}

void ObjText::AddBox(std::string_view name, const Mat4f& transform) {
  StartObject(name);
  const std::size_t first = vertexCount_ + 1;
  AddVertices(BoxCorners(transform));
  for (const auto& edge : kBoxEdges) {
    text_ += "l " + std::to_string(first + edge[0]) + ' ' + std::to_string(first + edge[1]) + '\n';
  }
}

std::vector<SpherePoint> SpheresFromEncodedMatrices(std::span<const Mat4f> encoded) {
  std::vector<SpherePoint> spheres;
  spheres.reserve(encoded.size());
  for (const Mat4f& m : encoded) spheres.push_back({{m.m[3][0], m.m[3][1], m.m[3][2]}, m.m[0][3]});
  return spheres;
}

std::vector<SpherePoint> SpheresFromVectors(std::span<const std::array<float, 4>> spheres) {
  std::vector<SpherePoint> result;
  result.reserve(spheres.size());
  for (const auto& s : spheres) result.push_back({{s[0], s[1], s[2]}, s[3]});
  return result;
}

std::vector<SpherePoint> SpheresFromPoints(std::span<const Vec3f> points, float radius) {
  std::vector<SpherePoint> result;
  result.reserve(points.size());
  for (const Vec3f& p : points) result.push_back({p, radius});
  return result;
}

std::string SpheresToPly(std::span<const SpherePoint> spheres, std::string_view comment) {
  std::string text = "ply\nformat ascii 1.0\n";
  if (!comment.empty()) {
    text += "comment ";
    text += comment;
    text += '\n';
  }
  text += "element vertex " + std::to_string(spheres.size()) + '\n';
  text += "property float x\nproperty float y\nproperty float z\nproperty float radius\n";
  text += "end_header\n";
  for (const SpherePoint& s : spheres) {
    AppendVector(text, s.centre);
    text += ' ';
    AppendFloat(text, s.radius);
    text += '\n';
  }
  return text;
}

}  // namespace quillix
