// glTF meshes for scenes (.gltf and .glb), read with tinygltf.
//
// A glTF file stores positions per primitive accessor. Vertex i of the file is entry i of the
// POSITION accessors taken in mesh and primitive order, each accessor once (primitives that
// share an accessor share its vertices), so the numbering a user sees in the file's data is
// the mesh's. Node transforms are not applied: the mesh is in its own space, as scene objects
// carry their transforms themselves.
#include <cstdint>
#include <cstring>
#include <map>

#include <tiny_gltf.h>

#include "xsihost/scene_file.h"

namespace xsihost::detail {

namespace {

// The bytes of element `index` of `accessor`, or null when they lie outside the buffer.
const unsigned char* element(const tinygltf::Model& model, const tinygltf::Accessor& accessor,
                             std::size_t index, std::size_t elementSize) {
  if (accessor.bufferView < 0 ||
      static_cast<std::size_t>(accessor.bufferView) >= model.bufferViews.size())
    return nullptr;
  const tinygltf::BufferView& view =
      model.bufferViews[static_cast<std::size_t>(accessor.bufferView)];
  if (view.buffer < 0 || static_cast<std::size_t>(view.buffer) >= model.buffers.size())
    return nullptr;
  const tinygltf::Buffer& buffer = model.buffers[static_cast<std::size_t>(view.buffer)];
  const int strideValue = accessor.ByteStride(view);
  if (strideValue <= 0) return nullptr;
  const std::size_t stride = static_cast<std::size_t>(strideValue);
  const std::size_t start = view.byteOffset + accessor.byteOffset;
  if (start < view.byteOffset || index > (SIZE_MAX - start) / stride) return nullptr;
  const std::size_t offset = start + index * stride;
  if (offset > SIZE_MAX - elementSize || offset + elementSize > buffer.data.size() ||
      offset + elementSize > view.byteOffset + view.byteLength)
    return nullptr;
  return buffer.data.data() + offset;
}

// Whether every one of the `accessor.count` entries lies inside the buffer: checked before
// anything is read, so that a count the file does not hold allocates nothing.
bool holdsCount(const tinygltf::Model& model, const tinygltf::Accessor& accessor,
                std::size_t elementSize) {
  return accessor.count == 0 || element(model, accessor, accessor.count - 1, elementSize);
}

}  // namespace

bool loadGltf(const std::string& path, MeshData& mesh, std::string& error) {
  tinygltf::TinyGLTF loader;
  tinygltf::Model model;
  std::string err, warn;
  const bool binary = path.size() >= 4 && (path.compare(path.size() - 4, 4, ".glb") == 0 ||
                                           path.compare(path.size() - 4, 4, ".GLB") == 0);
  const bool ok = binary ? loader.LoadBinaryFromFile(&model, &err, &warn, path)
                         : loader.LoadASCIIFromFile(&model, &err, &warn, path);
  if (!ok) {
    error =
        path + ": " +
        (err.empty() ? std::string("cannot read the glTF file") : err.substr(0, err.find('\n')));
    return false;
  }
  std::map<int, std::int32_t> firstVertexOfAccessor;
  for (std::size_t m = 0; m < model.meshes.size(); ++m) {
    for (std::size_t p = 0; p < model.meshes[m].primitives.size(); ++p) {
      const tinygltf::Primitive& primitive = model.meshes[m].primitives[p];
      const std::string where =
          path + ": mesh " + std::to_string(m) + ", primitive " + std::to_string(p) + ": ";
      if (primitive.mode != -1 && primitive.mode != TINYGLTF_MODE_TRIANGLES) {
        error =
            where + "only triangle lists are read (mode " + std::to_string(primitive.mode) + ")";
        return false;
      }
      const auto position = primitive.attributes.find("POSITION");
      if (position == primitive.attributes.end()) {
        error = where + "no POSITION attribute";
        return false;
      }
      if (position->second < 0 ||
          static_cast<std::size_t>(position->second) >= model.accessors.size()) {
        error = where + "bad POSITION accessor";
        return false;
      }
      const tinygltf::Accessor& positions =
          model.accessors[static_cast<std::size_t>(position->second)];
      if (positions.type != TINYGLTF_TYPE_VEC3 ||
          positions.componentType != TINYGLTF_COMPONENT_TYPE_FLOAT || positions.sparse.isSparse) {
        error = where + "positions must be a dense accessor of float 3-vectors";
        return false;
      }
      std::int32_t first;
      if (const auto seen = firstVertexOfAccessor.find(position->second);
          seen != firstVertexOfAccessor.end()) {
        first = seen->second;
      } else {
        first = static_cast<std::int32_t>(mesh.points.size());
        firstVertexOfAccessor[position->second] = first;
        if (!holdsCount(model, positions, 12)) {
          error = where + "the positions claim " + std::to_string(positions.count) +
                  " vertices, more than their buffer holds";
          return false;
        }
        for (std::size_t i = 0; i < positions.count; ++i) {
          const unsigned char* bytes = element(model, positions, i, 12);
          if (!bytes) {
            error = where + "position data lie outside their buffer";
            return false;
          }
          float xyz[3];
          std::memcpy(xyz, bytes, sizeof xyz);
          mesh.points.push_back({xyz[0], xyz[1], xyz[2]});
        }
      }
      std::vector<std::int32_t> indices;
      if (primitive.indices < 0) {
        for (std::size_t i = 0; i < positions.count; ++i)
          indices.push_back(static_cast<std::int32_t>(i));
      } else {
        if (static_cast<std::size_t>(primitive.indices) >= model.accessors.size()) {
          error = where + "bad index accessor";
          return false;
        }
        const tinygltf::Accessor& list =
            model.accessors[static_cast<std::size_t>(primitive.indices)];
        const int type = list.componentType;
        const std::size_t size = type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE    ? 1
                                 : type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT ? 2
                                 : type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT   ? 4
                                                                                  : 0;
        if (size == 0 || list.type != TINYGLTF_TYPE_SCALAR || list.sparse.isSparse) {
          error = where + "indices must be a dense accessor of unsigned integers";
          return false;
        }
        if (!holdsCount(model, list, size)) {
          error = where + "the indices claim " + std::to_string(list.count) +
                  " entries, more than their buffer holds";
          return false;
        }
        for (std::size_t i = 0; i < list.count; ++i) {
          const unsigned char* bytes = element(model, list, i, size);
          if (!bytes) {
            error = where + "index data lie outside their buffer";
            return false;
          }
          std::uint32_t v = 0;
          if (size == 1) v = bytes[0];
          if (size == 2) {
            std::uint16_t s;
            std::memcpy(&s, bytes, 2);
            v = s;
          }
          if (size == 4) std::memcpy(&v, bytes, 4);
          if (v >= positions.count) {
            error = where + "index " + std::to_string(i) + " names vertex " + std::to_string(v) +
                    ", but the primitive has " + std::to_string(positions.count);
            return false;
          }
          indices.push_back(static_cast<std::int32_t>(v));
        }
      }
      if (indices.size() % 3 != 0) {
        error = where + "the index count is not a multiple of 3";
        return false;
      }
      for (std::size_t i = 0; i < indices.size(); i += 3)
        mesh.polygons.push_back(
            {first + indices[i], first + indices[i + 1], first + indices[i + 2]});
    }
  }
  return true;
}

}  // namespace xsihost::detail
