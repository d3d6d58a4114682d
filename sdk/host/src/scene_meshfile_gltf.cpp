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
// anything is read, so that a count the file does not hold allocates nothing. When the last
// entry lies inside, every earlier one does too.
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
      auto fail = [&](const std::string& what) {
        error = where + what;
        return false;
      };
      if (primitive.mode != -1 && primitive.mode != TINYGLTF_MODE_TRIANGLES)
        return fail("only triangle lists are read (mode " + std::to_string(primitive.mode) + ")");
      const auto position = primitive.attributes.find("POSITION");
      if (position == primitive.attributes.end()) return fail("no POSITION attribute");
      if (position->second < 0 ||
          static_cast<std::size_t>(position->second) >= model.accessors.size())
        return fail("bad POSITION accessor");
      const tinygltf::Accessor& positions =
          model.accessors[static_cast<std::size_t>(position->second)];
      if (positions.type != TINYGLTF_TYPE_VEC3 ||
          positions.componentType != TINYGLTF_COMPONENT_TYPE_FLOAT || positions.sparse.isSparse)
        return fail("positions must be a dense accessor of float 3-vectors");
      std::int32_t first;
      if (const auto seen = firstVertexOfAccessor.find(position->second);
          seen != firstVertexOfAccessor.end()) {
        first = seen->second;
      } else {
        first = static_cast<std::int32_t>(mesh.points.size());
        firstVertexOfAccessor[position->second] = first;
        if (!holdsCount(model, positions, 12))
          return fail("the positions claim " + std::to_string(positions.count) +
                      " vertices, more than their buffer holds");
        for (std::size_t i = 0; i < positions.count; ++i) {
          float xyz[3];
          std::memcpy(xyz, element(model, positions, i, 12), sizeof xyz);
          mesh.points.push_back({xyz[0], xyz[1], xyz[2]});
        }
      }
      std::vector<std::int32_t> indices;
      if (primitive.indices < 0) {
        for (std::size_t i = 0; i < positions.count; ++i)
          indices.push_back(static_cast<std::int32_t>(i));
      } else {
        if (static_cast<std::size_t>(primitive.indices) >= model.accessors.size())
          return fail("bad index accessor");
        const tinygltf::Accessor& list =
            model.accessors[static_cast<std::size_t>(primitive.indices)];
        const int type = list.componentType;
        const std::size_t size = type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE    ? 1
                                 : type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT ? 2
                                 : type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT   ? 4
                                                                                  : 0;
        if (size == 0 || list.type != TINYGLTF_TYPE_SCALAR || list.sparse.isSparse)
          return fail("indices must be a dense accessor of unsigned integers");
        if (!holdsCount(model, list, size))
          return fail("the indices claim " + std::to_string(list.count) +
                      " entries, more than their buffer holds");
        for (std::size_t i = 0; i < list.count; ++i) {
          // glTF data and this host are little-endian: an index of 1, 2 or 4 bytes is the low
          // bytes of a zeroed 32-bit word.
          std::uint32_t v = 0;
          std::memcpy(&v, element(model, list, i, size), size);
          if (v >= positions.count)
            return fail("index " + std::to_string(i) + " names vertex " + std::to_string(v) +
                        ", but the primitive has " + std::to_string(positions.count));
          indices.push_back(static_cast<std::int32_t>(v));
        }
      }
      if (indices.size() % 3 != 0) return fail("the index count is not a multiple of 3");
      for (std::size_t i = 0; i < indices.size(); i += 3)
        mesh.polygons.push_back(
            {first + indices[i], first + indices[i + 1], first + indices[i + 2]});
    }
  }
  return true;
}

}  // namespace xsihost::detail
