// Mesh files for scenes: OBJ through tinyobjloader, PLY through a small reader of our own.
// Both keep the file's vertex numbering (vertex i of the file is point i of the mesh) and its
// polygons as written, since users name vertices by index.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <sstream>

#ifndef TINYOBJLOADER_USE_DOUBLE
#define TINYOBJLOADER_USE_DOUBLE  // real_t = double, matching the library we link
#endif
#include <tiny_obj_loader.h>

#include "xsihost/scene_file.h"

namespace xsihost {

#ifdef QUILLIX_HAVE_GLTF
namespace detail {
bool loadGltf(const std::string& path, MeshData& mesh,
              std::string& error);  // scene_meshfile_gltf.cpp
}
#endif

namespace {

std::string lowerExtension(const std::string& path) {
  const auto dot = path.rfind('.');
  if (dot == std::string::npos) return {};
  std::string ext = path.substr(dot + 1);
  std::transform(ext.begin(), ext.end(), ext.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return ext;
}

std::string firstLine(const std::string& text) {
  std::string line = text.substr(0, text.find('\n'));
  while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
  return line;
}

bool loadObj(const std::string& path, MeshData& mesh, std::string& error) {
  tinyobj::ObjReaderConfig config;
  config.triangulate = false;  // polygons stay polygons
  config.vertex_color = false;
  config.mtl_search_path = "";
  tinyobj::ObjReader reader;
  if (!reader.ParseFromFile(path, config)) {
    error = path + ": " +
            (reader.Error().empty() ? std::string("cannot read the OBJ file")
                                    : firstLine(reader.Error()));
    return false;
  }
  const tinyobj::attrib_t& attrib = reader.GetAttrib();
  const std::size_t count = attrib.vertices.size() / 3;
  mesh.points.resize(count);
  for (std::size_t i = 0; i < count; ++i)
    mesh.points[i] = {attrib.vertices[3 * i], attrib.vertices[3 * i + 1],
                      attrib.vertices[3 * i + 2]};
  // Every group and object of the file shares the one vertex list; faces are concatenated in
  // file order.
  for (const tinyobj::shape_t& shape : reader.GetShapes()) {
    std::size_t offset = 0;
    for (std::size_t f = 0; f < shape.mesh.num_face_vertices.size(); ++f) {
      const std::size_t n = shape.mesh.num_face_vertices[f];
      std::vector<std::int32_t> polygon;
      for (std::size_t k = 0; k < n; ++k) {
        const int v = shape.mesh.indices[offset + k].vertex_index;
        if (v < 0 || static_cast<std::size_t>(v) >= count) {
          error = path + ": face " + std::to_string(mesh.polygons.size() + 1) +
                  " uses a vertex that does not exist (the file has " + std::to_string(count) +
                  " vertices)";
          return false;
        }
        polygon.push_back(v);
      }
      offset += n;
      mesh.polygons.push_back(std::move(polygon));
    }
  }
  return true;
}

// ---- PLY ------------------------------------------------------------------------------------

enum class PlyFormat { Ascii, BinaryLittle, BinaryBig };

struct PlyProperty {
  std::string name;
  std::string type;       // scalar type, or the item type of a list
  std::string countType;  // set for list properties
};

struct PlyElement {
  std::string name;
  std::size_t count = 0;
  std::vector<PlyProperty> properties;
};

// The scalar of type T held in the first sizeof(T) bytes of `bytes`, in this host's byte order.
template <class T>
double LoadScalar(const unsigned char* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return static_cast<double>(value);
}

// A PLY scalar type: its two names, its size in bytes, and how its bytes read as a number.
struct PlyScalar {
  const char* name;
  const char* sizedName;
  std::size_t size;
  double (*load)(const unsigned char* bytes);
};

constexpr PlyScalar kPlyScalars[] = {
    {"char", "int8", 1, LoadScalar<std::int8_t>},
    {"uchar", "uint8", 1, LoadScalar<std::uint8_t>},
    {"short", "int16", 2, LoadScalar<std::int16_t>},
    {"ushort", "uint16", 2, LoadScalar<std::uint16_t>},
    {"int", "int32", 4, LoadScalar<std::int32_t>},
    {"uint", "uint32", 4, LoadScalar<std::uint32_t>},
    {"float", "float32", 4, LoadScalar<float>},
    {"double", "float64", 8, LoadScalar<double>},
};

// The scalar type named `t`; null for a name PLY does not define.
const PlyScalar* findPlyScalar(const std::string& t) {
  for (const PlyScalar& scalar : kPlyScalars)
    if (t == scalar.name || t == scalar.sizedName) return &scalar;
  return nullptr;
}

// Reads PLY bodies: text tokens line by line, or binary scalars in either byte order.
class PlyBody {
 public:
  // Failures set `error` to one line naming `path`.
  PlyBody(std::istream& in, PlyFormat format, std::string path, std::size_t headerLines,
          std::string& error)
      : in_(in), format_(format), path_(std::move(path)), line_(headerLines), error_(error) {}

  bool next(const std::string& type, double& out) {
    if (format_ == PlyFormat::Ascii) return nextText(out);
    // The header admits only the types of kPlyScalars.
    const PlyScalar& scalar = *findPlyScalar(type);
    unsigned char bytes[8];
    if (!in_.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(scalar.size)))
      return fail("the binary data end early");
    // This host is little-endian.
    if (format_ == PlyFormat::BinaryBig) std::reverse(bytes, bytes + scalar.size);
    out = scalar.load(bytes);
    return true;
  }

  // Text bodies hold one element per line; the next element starts on a new line.
  bool endElement() {
    if (format_ != PlyFormat::Ascii) return true;
    if (std::string rest; tokens_ >> rest)
      return failOnLine("more values than the header declares");
    haveLine_ = false;
    return true;
  }

 private:
  bool fail(const std::string& what) {
    error_ = path_ + ": " + what;
    return false;
  }
  bool failOnLine(const std::string& what) {
    return fail("line " + std::to_string(line_) + ": " + what);
  }

  bool nextText(double& out) {
    std::string token;
    while (!haveLine_ || !(tokens_ >> token)) {
      std::string line;
      if (haveLine_) return failOnLine("fewer values than the header declares");
      if (!std::getline(in_, line)) return fail("the file ends before all elements were read");
      ++line_;
      tokens_.clear();
      tokens_.str(line);
      haveLine_ = true;
    }
    char* end = nullptr;
    out = std::strtod(token.c_str(), &end);
    if (end == token.c_str() || *end != '\0')
      return failOnLine("\"" + token + "\" is not a number");
    return true;
  }

  std::istream& in_;
  PlyFormat format_;
  std::string path_;
  std::size_t line_;
  std::string& error_;
  std::istringstream tokens_;
  bool haveLine_ = false;
};

bool loadPly(const std::string& path, MeshData& mesh, std::string& error) {
  auto fail = [&](const std::string& what) {
    error = path + ": " + what;
    return false;
  };
  std::ifstream in(path, std::ios::binary);
  if (!in) return fail("cannot open the mesh file");
  std::string line;
  std::size_t lineNumber = 0;
  auto bad = [&](const std::string& what) {
    return fail("line " + std::to_string(lineNumber) + ": " + what);
  };
  if (!std::getline(in, line) || (++lineNumber, firstLine(line) != "ply"))
    return bad("not a PLY file (no \"ply\" first line)");
  PlyFormat format = PlyFormat::Ascii;
  bool haveFormat = false;
  std::vector<PlyElement> elements;
  for (;;) {
    if (!std::getline(in, line)) return bad("the header has no \"end_header\"");
    ++lineNumber;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream words(line);
    std::string keyword;
    words >> keyword;
    if (keyword.empty() || keyword == "comment" || keyword == "obj_info") continue;
    if (keyword == "end_header") break;
    if (keyword == "format") {
      std::string name, version;
      words >> name >> version;
      if (name == "ascii")
        format = PlyFormat::Ascii;
      else if (name == "binary_little_endian")
        format = PlyFormat::BinaryLittle;
      else if (name == "binary_big_endian")
        format = PlyFormat::BinaryBig;
      else
        return bad("unknown format \"" + name + "\"");
      haveFormat = true;
    } else if (keyword == "element") {
      PlyElement e;
      long long count = -1;
      words >> e.name >> count;
      if (e.name.empty() || count < 0) return bad("expected \"element NAME COUNT\"");
      e.count = static_cast<std::size_t>(count);
      elements.push_back(e);
    } else if (keyword == "property") {
      if (elements.empty()) return bad("a property before any element");
      PlyProperty p;
      std::string type;
      words >> type;
      if (type == "list") {
        words >> p.countType >> p.type >> p.name;
        if (!findPlyScalar(p.countType) || !findPlyScalar(p.type) || p.name.empty())
          return bad("expected \"property list COUNT_TYPE ITEM_TYPE NAME\"");
      } else {
        p.type = type;
        words >> p.name;
        if (!findPlyScalar(p.type) || p.name.empty())
          return bad("unknown property type \"" + type + "\"");
      }
      elements.back().properties.push_back(p);
    } else {
      return bad("unknown header line \"" + keyword + "\"");
    }
  }
  if (!haveFormat) return bad("the header has no \"format\" line");

  PlyBody body(in, format, path, lineNumber, error);
  for (const PlyElement& e : elements) {
    const bool isVertex = e.name == "vertex";
    const bool isFace = e.name == "face";
    int xyz[3] = {-1, -1, -1};
    int indexList = -1;
    for (std::size_t k = 0; k < e.properties.size(); ++k) {
      const PlyProperty& p = e.properties[k];
      if (isVertex && p.countType.empty() && (p.name == "x" || p.name == "y" || p.name == "z"))
        xyz[p.name[0] - 'x'] = static_cast<int>(k);
      if (isFace && !p.countType.empty() &&
          (p.name == "vertex_indices" || p.name == "vertex_index"))
        indexList = static_cast<int>(k);
    }
    if (isVertex && (xyz[0] < 0 || xyz[1] < 0 || xyz[2] < 0))
      return fail("the vertex element lacks an x, y or z property");
    if (isFace && indexList < 0) return fail("the face element lacks a vertex_indices list");
    // An element without properties holds no data: its count, however large, reads nothing.
    if (e.properties.empty()) continue;
    for (std::size_t i = 0; i < e.count; ++i) {
      Vec3d point{0, 0, 0};
      std::vector<std::int32_t> polygon;
      for (std::size_t k = 0; k < e.properties.size(); ++k) {
        const PlyProperty& p = e.properties[k];
        double value = 0.0;
        if (p.countType.empty()) {
          if (!body.next(p.type, value)) return false;
          for (int c = 0; c < 3; ++c)
            if (isVertex && xyz[c] == static_cast<int>(k))
              point[static_cast<std::size_t>(c)] = value;
          continue;
        }
        double count = 0.0;
        if (!body.next(p.countType, count)) return false;
        // Range first, so that no huge or NaN length is ever converted to an integer.
        if (!(count >= 0.0) || count > 1e9 || std::trunc(count) != count)
          return fail(e.name + " " + std::to_string(i) + ": bad list length");
        for (long long item = 0; item < static_cast<long long>(count); ++item) {
          if (!body.next(p.type, value)) return false;
          if (isFace && indexList == static_cast<int>(k)) {
            if (!(value >= 0.0) || value >= static_cast<double>(mesh.points.size()) ||
                std::trunc(value) != value)
              return fail("face " + std::to_string(i) + " uses vertex " + std::to_string(value) +
                          ", which does not exist (the file has " +
                          std::to_string(mesh.points.size()) + " vertices)");
            polygon.push_back(static_cast<std::int32_t>(value));
          }
        }
      }
      if (!body.endElement()) return false;
      if (isVertex) mesh.points.push_back(point);
      if (isFace) mesh.polygons.push_back(std::move(polygon));
    }
  }
  return true;
}

}  // namespace

bool LoadMeshFile(const std::string& path, MeshData& mesh, std::string& error) {
  mesh = MeshData();
  const std::string ext = lowerExtension(path);
  std::ifstream probe(path);
  if (!probe) {
    error = path + ": cannot open the mesh file";
    return false;
  }
  bool ok = false;
  if (ext == "obj") {
    ok = loadObj(path, mesh, error);
  } else if (ext == "ply") {
    ok = loadPly(path, mesh, error);
  } else if (ext == "gltf" || ext == "glb") {
#ifdef QUILLIX_HAVE_GLTF
    ok = detail::loadGltf(path, mesh, error);
#else
    error = path + ": glTF files need tinygltf, which this build was made without";
#endif
  } else {
    error = path + ": unknown mesh file type \"." + ext + "\" (OBJ, PLY, glTF or GLB)";
  }
  if (!ok) mesh = MeshData();
  return ok;
}

}  // namespace xsihost
