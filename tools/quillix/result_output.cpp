#include "tools/quillix/result_output.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <numbers>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "core/math/math_types.h"
#include "tools/output/figures.h"
#include "tools/output/picture.h"
#include "tools/output/result_files.h"
#include "tools/output/shapes.h"

namespace quillix {
namespace {

using nlohmann::json;
namespace fs = std::filesystem;

// Input ports the pictures read, by node family.
constexpr std::int32_t kPolylinePointsPort = 1010;  // slins, rlins, dsals, dsals2
constexpr std::int32_t kMeshPositionsPort = 1020;   // fpom
constexpr std::int32_t kMeshPolygonsPort = 1030;
constexpr std::int32_t kMeshFlagsPort = 1823;
constexpr std::int32_t kPathInitPort = 1040;
constexpr std::int32_t kShapeAPort = 1010;  // iotb, iotmb, cdbte
constexpr std::int32_t kShapeBPort = 1020;

// Segments of each ring that stands for an ellipsoid in its OBJ wireframe.
constexpr int kEllipsoidRingSegments = 48;

// ---- Values as `quillix eval` reads and prints them ----

// A JSON number, or a float's bits written as "0x7FC00000" (NaN and infinities).
std::optional<float> ReadFloat(const json& j) {
  if (j.is_number()) return static_cast<float>(j.get<double>());
  if (!j.is_string()) return std::nullopt;
  const std::string& s = j.get_ref<const std::string&>();
  if (s.size() != 10 || s[0] != '0' || (s[1] != 'x' && s[1] != 'X')) return std::nullopt;
  std::uint32_t bits = 0;
  const char* end = s.data() + s.size();
  const auto [stop, error] = std::from_chars(s.data() + 2, end, bits, 16);
  if (error != std::errc() || stop != end) return std::nullopt;
  return std::bit_cast<float>(bits);
}

std::optional<std::int32_t> ReadInt(const json& j) {
  if (!j.is_number_integer()) return std::nullopt;
  const std::int64_t v = j.get<std::int64_t>();
  if (v < std::numeric_limits<std::int32_t>::min() || v > std::numeric_limits<std::int32_t>::max())
    return std::nullopt;
  return static_cast<std::int32_t>(v);
}

std::optional<std::uint8_t> ReadFlag(const json& j) {
  if (!j.is_boolean()) return std::nullopt;
  return static_cast<std::uint8_t>(j.get<bool>() ? 1 : 0);
}

// `count` floats from a flat list into `out`.
bool ReadFloats(const json& j, std::size_t count, float* out) {
  if (!j.is_array() || j.size() != count) return false;
  for (std::size_t i = 0; i < count; ++i) {
    const std::optional<float> f = ReadFloat(j[i]);
    if (!f) return false;
    out[i] = *f;
  }
  return true;
}

std::optional<Vec3f> ReadVec3(const json& j) {
  std::array<float, 3> v;
  if (!ReadFloats(j, 3, v.data())) return std::nullopt;
  return Vec3f{v[0], v[1], v[2]};
}

std::optional<std::array<float, 4>> ReadVec4(const json& j) {
  std::array<float, 4> v;
  if (!ReadFloats(j, 4, v.data())) return std::nullopt;
  return v;
}

// A matrix as a list of four rows, or as one flat row-major list of 16 numbers.
std::optional<Mat4f> ReadMat4(const json& j) {
  Mat4f m;
  if (ReadFloats(j, 16, &m.m[0][0])) return m;
  if (!j.is_array() || j.size() != 4) return std::nullopt;
  for (std::size_t r = 0; r < 4; ++r) {
    if (!ReadFloats(j[r], 4, m.m[r])) return std::nullopt;
  }
  return m;
}

// Every entry of a list read by `read`; nothing when `j` is not a list or an entry is unreadable.
template <class Read>
auto ReadList(const json& j, Read read)
    -> std::optional<std::vector<typename decltype(read(j))::value_type>> {
  using Value = typename decltype(read(j))::value_type;
  if (!j.is_array()) return std::nullopt;
  std::vector<Value> values;
  values.reserve(j.size());
  for (const json& entry : j) {
    std::optional<Value> value = read(entry);
    if (!value) return std::nullopt;
    values.push_back(std::move(*value));
  }
  return values;
}

// ReadList of an input value that may be absent; absent or unreadable gives an empty list.
template <class Read>
auto ReadListOrEmpty(const json* j, Read read) {
  using Values = typename decltype(ReadList(json(), read))::value_type;
  if (j == nullptr) return Values();
  return ReadList(*j, read).value_or(Values());
}

// The inputs of one request, looked up per port and element.
class RequestInputs {
 public:
  explicit RequestInputs(const json& request) {
    const auto inputs = request.find("inputs");
    if (inputs != request.end() && inputs->is_object()) inputs_ = &*inputs;
  }

  // The value of input `port` for `element`: the one value of a constant input, or the
  // element's own; null when the request does not give one.
  const json* Value(std::int32_t port, std::size_t element) const {
    const json* input = Port(port);
    if (input == nullptr) return nullptr;
    const auto values = input->find("values");
    if (values == input->end() || !values->is_array()) return nullptr;
    const bool constant = input->value("constant", false);
    const std::size_t index = constant ? 0 : element;
    return index < values->size() ? &(*values)[index] : nullptr;
  }

  bool IsArray(std::int32_t port) const {
    const json* input = Port(port);
    return input != nullptr && input->value("structure", std::string()) == "array";
  }

 private:
  const json* Port(std::int32_t port) const {
    if (inputs_ == nullptr) return nullptr;
    const auto input = inputs_->find(std::to_string(port));
    return input != inputs_->end() && input->is_object() ? &*input : nullptr;
  }

  const json* inputs_ = nullptr;
};

// ---- One result element as a file and a figure ----

struct ElementOutput {
  std::string extension;  // of the result file, without its dot
  std::string fileText;
  Figure figure;
};

// What is known of the element being written.
struct ElementSource {
  const RequestInputs& inputs;
  std::size_t element;
  const json& value;  // the element's result value, never null
  std::string title;  // names the element in files and pictures
};

using ElementWriter = std::optional<ElementOutput> (*)(const ElementSource&);

std::optional<ElementOutput> PolylineOutput(const ElementSource& source) {
  const auto result = ReadList(source.value, ReadVec3);
  if (!result) return std::nullopt;
  const std::vector<Vec3f> input =
      ReadListOrEmpty(source.inputs.Value(kPolylinePointsPort, source.element), ReadVec3);
  ObjText obj(source.title);
  obj.AddPolyline("result", *result);
  return ElementOutput{"obj", obj.Text(), PolylineResultFigure(input, *result, source.title)};
}

std::optional<ElementOutput> PathOutput(const ElementSource& source) {
  const auto path = ReadList(source.value, ReadInt);
  if (!path) return std::nullopt;
  const RequestInputs& inputs = source.inputs;
  const std::size_t e = source.element;
  const std::vector<Vec3f> positions =
      ReadListOrEmpty(inputs.Value(kMeshPositionsPort, e), ReadVec3);
  const std::vector<std::int32_t> polygons =
      ReadListOrEmpty(inputs.Value(kMeshPolygonsPort, e), ReadInt);
  const std::vector<std::int32_t> requested =
      ReadListOrEmpty(inputs.Value(kPathInitPort, e), ReadInt);
  const std::vector<std::uint8_t> flags =
      ReadListOrEmpty(inputs.Value(kMeshFlagsPort, e), ReadFlag);
  ObjText obj(source.title);
  const std::size_t mesh = obj.AddMesh("mesh", positions, polygons);
  obj.AddVertexPath("path", mesh, *path);
  return ElementOutput{
      "obj", obj.Text(),
      PathOnMeshFigure(positions, polygons, *path, requested, flags, source.title)};
}

std::optional<ElementOutput> SplineSpheresOutput(const ElementSource& source) {
  const auto encoded = ReadList(source.value, ReadMat4);
  if (!encoded) return std::nullopt;
  const std::vector<Vec3f> controlPoints =
      ReadListOrEmpty(source.inputs.Value(kPolylinePointsPort, source.element), ReadVec3);
  return ElementOutput{"ply", SpheresToPly(SpheresFromEncodedMatrices(*encoded), source.title),
                       SpheresAlongSplineFigure(controlPoints, *encoded, source.title)};
}

// Spheres that lie along no spline, drawn as the spline figure draws its stretch spheres.
ElementOutput FreeSpheresOutput(const std::vector<SpherePoint>& spheres, const std::string& title) {
  std::vector<Mat4f> encoded;
  encoded.reserve(spheres.size());
  for (const SpherePoint& sphere : spheres) {
    Mat4f m = Mat4f::Identity();
    m.m[0][3] = sphere.radius;
    m.m[3][0] = sphere.centre.x;
    m.m[3][1] = sphere.centre.y;
    m.m[3][2] = sphere.centre.z;
    m.m[3][3] = 0.0f;  // not a corner sphere
    encoded.push_back(m);
  }
  Figure figure = SpheresAlongSplineFigure({}, encoded, title);
  figure.panels.front().notes = {std::to_string(spheres.size()) +
                                 (spheres.size() == 1 ? " sphere" : " spheres")};
  return {"ply", SpheresToPly(spheres, title), std::move(figure)};
}

std::optional<ElementOutput> VectorSpheresOutput(const ElementSource& source) {
  const auto vectors = ReadList(source.value, ReadVec4);
  if (!vectors) return std::nullopt;
  return FreeSpheresOutput(SpheresFromVectors(*vectors), source.title);
}

std::optional<ElementOutput> SurfacePointsOutput(const ElementSource& source) {
  const auto points = ReadList(source.value, ReadVec3);
  if (!points) return std::nullopt;
  return FreeSpheresOutput(SpheresFromPoints(*points, 0.0f), source.title);
}

// ---- Pairs of shapes: boxes, moving boxes, ellipsoids ----

struct ShapePair {
  Mat4f a;
  Mat4f b;
  const json* result = nullptr;
};

// The matrices of one shape input for an element: one for a single input, a list for an array
// input. An input the request leaves out is the ports' default, the all-zero matrix.
std::optional<std::vector<Mat4f>> ShapeMatrices(const RequestInputs& inputs, std::int32_t port,
                                                std::size_t element) {
  const json* value = inputs.Value(port, element);
  if (value == nullptr) return std::vector<Mat4f>{Mat4f{}};
  if (inputs.IsArray(port)) return ReadList(*value, ReadMat4);
  const std::optional<Mat4f> m = ReadMat4(*value);
  if (!m) return std::nullopt;
  return std::vector<Mat4f>{*m};
}

// The pairs of one element as the pair nodes form them: two single inputs give one pair with a
// single result; otherwise every array entry pairs with the other input's single matrix, or two
// arrays pair entry by entry up to the shorter one, each with its entry of the result list.
std::vector<ShapePair> ShapePairs(const ElementSource& source) {
  const auto a = ShapeMatrices(source.inputs, kShapeAPort, source.element);
  const auto b = ShapeMatrices(source.inputs, kShapeBPort, source.element);
  if (!a || !b) return {};
  const bool arrayA = source.inputs.IsArray(kShapeAPort);
  const bool arrayB = source.inputs.IsArray(kShapeBPort);
  if (!arrayA && !arrayB) return {{a->front(), b->front(), &source.value}};
  if (!source.value.is_array()) return {};
  std::size_t count = source.value.size();
  if (arrayA) count = std::min(count, a->size());
  if (arrayB) count = std::min(count, b->size());
  std::vector<ShapePair> pairs;
  for (std::size_t k = 0; k < count; ++k) {
    pairs.push_back({(*a)[arrayA ? k : 0], (*b)[arrayB ? k : 0], &source.value[k]});
  }
  return pairs;
}

// One OBJ with both shapes of every pair (named A and B, or A0, B0, A1, ... for several pairs)
// and one figure with a panel per pair. `addShape` adds one shape to the OBJ; `readResult`
// reads a pair's result, which `pairFigure` (a figures.h builder) draws with the pair. An
// unreadable result gives nothing for the element.
template <class AddShape, class ReadResult, class PairFigure>
std::optional<ElementOutput> PairsOutput(const ElementSource& source, AddShape addShape,
                                         ReadResult readResult, PairFigure pairFigure) {
  const std::vector<ShapePair> pairs = ShapePairs(source);
  if (pairs.empty()) return std::nullopt;
  ElementOutput output{"obj", {}, {}};
  ObjText obj(source.title);
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    const std::string suffix = pairs.size() == 1 ? "" : std::to_string(k);
    const std::string title =
        pairs.size() == 1 ? source.title : source.title + ", pair " + std::to_string(k);
    const auto result = readResult(*pairs[k].result);
    if (!result) return std::nullopt;
    Figure figure = pairFigure(pairs[k].a, pairs[k].b, *result, title);
    addShape(obj, "A" + suffix, pairs[k].a);
    addShape(obj, "B" + suffix, pairs[k].b);
    for (Panel& panel : figure.panels) output.figure.panels.push_back(std::move(panel));
  }
  output.fileText = obj.Text();
  return output;
}

void AddBoxShape(ObjText& obj, const std::string& name, const Mat4f& m) { obj.AddBox(name, m); }

// An ellipsoid as the three rings its principal planes cut from it (the unit circles in the
// xy, yz and zx planes under its matrix), each a closed polyline.
void AddEllipsoidShape(ObjText& obj, const std::string& name, const Mat4f& m) {
  static constexpr std::array<std::pair<const char*, std::array<int, 2>>, 3> kRings = {
      {{"_xy", {0, 1}}, {"_yz", {1, 2}}, {"_zx", {2, 0}}}};
  for (const auto& [ringName, axes] : kRings) {
    std::vector<Vec3f> ring;
    for (int i = 0; i <= kEllipsoidRingSegments; ++i) {
      const double angle =
          2.0 * std::numbers::pi * (i % kEllipsoidRingSegments) / kEllipsoidRingSegments;
      std::array<float, 3> local{0.0f, 0.0f, 0.0f};
      local[axes[0]] = static_cast<float>(std::cos(angle));
      local[axes[1]] = static_cast<float>(std::sin(angle));
      ring.push_back(TransformPoint(m, {local[0], local[1], local[2]}));
    }
    obj.AddPolyline(name + ringName, ring);
  }
}

// The box node's integer result: 1 for intersecting boxes, 0 for separate ones.
std::optional<bool> ReadIntersect(const json& j) {
  const std::optional<std::int32_t> value = ReadInt(j);
  if (!value) return std::nullopt;
  return *value != 0;
}

std::optional<ElementOutput> BoxPairsOutput(const ElementSource& source) {
  return PairsOutput(source, AddBoxShape, ReadIntersect, BoxPairFigure);
}

std::optional<ElementOutput> MovingBoxPairsOutput(const ElementSource& source) {
  return PairsOutput(source, AddBoxShape, ReadFloat, MovingBoxPairFigure);
}

std::optional<ElementOutput> EllipsoidPairsOutput(const ElementSource& source) {
  return PairsOutput(source, AddEllipsoidShape, ReadFloat, EllipsoidPairFigure);
}

// ---- Which results are geometric ----

struct GeometricResult {
  std::string_view node;
  std::int32_t port;
  ElementWriter write;
};

constexpr std::array<GeometricResult, 10> kGeometricResults = {{
    {"Quillix_slins", 2010, PolylineOutput},
    {"Quillix_rlins", 2010, PolylineOutput},
    {"Quillix_fpom", 2020, PathOutput},
    {"Quillix_dsals", 2010, SplineSpheresOutput},
    {"Quillix_dsals2", 2010, SplineSpheresOutput},
    {"Quillix_otos", 2010, VectorSpheresOutput},
    {"Quillix_gpos", 2010, SurfacePointsOutput},
    {"Quillix_iotb", 2010, BoxPairsOutput},
    {"Quillix_iotmb", 2010, MovingBoxPairsOutput},
    {"Quillix_cdbte", 2010, EllipsoidPairsOutput},
}};

ElementWriter WriterFor(std::string_view node, std::int32_t port) {
  for (const GeometricResult& kind : kGeometricResults) {
    if (kind.node == node && kind.port == port) return kind.write;
  }
  return nullptr;
}

// Writes one file into `dir` (created first) through `write`, unless `dir` is empty.
template <class Write>
OutputStatus WriteInto(const fs::path& dir, const std::string& name, Write write,
                       std::vector<std::string>& written) {
  if (dir.empty()) return {};
  OutputStatus status = EnsureDirectory(dir);
  if (!status.ok) return status;
  const fs::path file = dir / name;
  status = write(file);
  if (status.ok) written.push_back(file.string());
  return status;
}

OutputStatus WriteElement(const ElementOutput& output, std::size_t requestIndex, std::int32_t port,
                          std::size_t element, const ResultOutputOptions& options,
                          std::vector<std::string>& written) {
  const PictureOptions picture{.axis = options.view};
  auto name = [&](std::string_view extension) {
    return ResultFileName(requestIndex, port, element, extension);
  };
  OutputStatus status = WriteInto(
      options.outDir, name(output.extension),
      [&](const fs::path& file) { return WriteFileBytes(file, output.fileText); }, written);
  if (!status.ok) return status;
  status = WriteInto(
      options.pngDir, name("png"),
      [&](const fs::path& file) { return WritePng(output.figure, picture, file); }, written);
  if (!status.ok) return status;
  return WriteInto(
      options.svgDir, name("svg"),
      [&](const fs::path& file) { return WriteSvg(output.figure, picture, file); }, written);
}

OutputStatus WriteOutputs(const json& request, const json& result, std::size_t requestIndex,
                          const ResultOutputOptions& options, std::vector<std::string>& written) {
  const auto node = result.find("node");
  const auto outputs = result.find("outputs");
  if (node == result.end() || !node->is_string() || outputs == result.end() || !outputs->is_array())
    return {};
  const std::string& nodeName = node->get_ref<const std::string&>();
  const RequestInputs inputs(request);
  for (const json& output : *outputs) {
    if (!output.is_object()) continue;
    const std::optional<std::int32_t> port = ReadInt(output.value("port", json()));
    const ElementWriter write = port ? WriterFor(nodeName, *port) : nullptr;
    const auto values = output.find("values");
    if (write == nullptr || values == output.end() || !values->is_array()) continue;
    for (std::size_t e = 0; e < values->size(); ++e) {
      const json& value = (*values)[e];
      if (value.is_null()) continue;  // not evaluated
      const std::string title =
          nodeName + ", request " + std::to_string(requestIndex) + ", element " + std::to_string(e);
      const std::optional<ElementOutput> element = write({inputs, e, value, title});
      if (!element) continue;
      const OutputStatus status = WriteElement(*element, requestIndex, *port, e, options, written);
      if (!status.ok) return status;
    }
  }
  return {};
}

}  // namespace

OutputStatus WriteResultOutputs(const json& request, const json& result, std::size_t requestIndex,
                                const ResultOutputOptions& options,
                                std::vector<std::string>& written) {
  try {
    return WriteOutputs(request, result, requestIndex, options, written);
  } catch (const std::exception& error) {
    // Allocation failures and the like, reported as every other output failure is.
    return {false, "result " + std::to_string(requestIndex) + ": " + error.what()};
  }
}

}  // namespace quillix
