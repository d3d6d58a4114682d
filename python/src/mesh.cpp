// The path node's mesh and its searches (Quillix_fpom): a Mesh is built once, with the node's
// clean-up and derived neighbour lists, and then searched any number of times, from any
// number of threads.
#include <algorithm>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <pybind11/stl/filesystem.h>
#include <xsihost/scene.h>
#include <xsihost/scene_file.h>

#include "python/src/arrays.h"
#include "python/src/mesh_searches.h"

namespace quillix::python {

namespace {

class Mesh {
 public:
  Mesh(py::handle positionsValue, py::handle polygonsValue) {
    const PointsArg positions = ToPoints(positionsValue, "positions");
    const std::vector<std::int32_t> description = Description(polygonsValue);
    QRVStatus status;
    {
      GilRelease release(positions.points.size() >= kReleaseThreshold);
      status = mesh_.Build(positions.points, description);
    }
    if (status != 0) ThrowKernelError(status);
  }

  const SearchableMesh& Searchable() const { return mesh_; }
  std::int32_t VertexCount() const { return mesh_.VertexCount(); }
  std::int32_t PolygonCount() const { return mesh_.PolygonCount(); }
  std::int32_t ComponentCount() const { return mesh_.ComponentCount(); }

  FloatArray Positions() const {
    FloatArray out = NewPoints(std::size_t(VertexCount()));
    std::copy_n(mesh_.Geometry().Positions(), VertexCount(), MutablePoints(out));
    return out;
  }

  IntArray Neighbours(std::int64_t vertex) const {
    if (vertex < 0 || vertex >= VertexCount()) {
      throw py::index_error("vertex " + std::to_string(vertex) + " outside 0.." +
                            std::to_string(VertexCount() - 1));
    }
    const QRVGeometry& geo = mesh_.Geometry();
    const std::int32_t* offsets = geo.NeighbourOffsets();
    return NewIntArray({geo.NeighbourLists() + offsets[vertex],
                        std::size_t(offsets[vertex + 1] - offsets[vertex])});
  }

  IntArray Components() const {
    return NewIntArray({mesh_.Geometry().ComponentNumbers(), std::size_t(VertexCount())});
  }

  // The (V,) boolean mask of blocked vertices, checked; nullopt for None.
  std::optional<BoolArray> BlockedMask(py::handle blockedValue) const {
    if (blockedValue.is_none()) return std::nullopt;
    static constexpr const char* kExpected = "a (V,) bool mask with V = vertex_count";
    BoolArray blocked = ToBoolArray(blockedValue, "blocked", kExpected);
    RequireShape(blocked, "blocked", kExpected, {VertexCount()});
    return blocked;
  }

 private:
  // The node's polygonal description (indices, each polygon closed by a negative value) from
  // that description itself, a (P, k) array of polygons, or a list of index lists.
  static std::vector<std::int32_t> Description(py::handle value) {
    static constexpr const char* kExpected =
        "a polygonal description (1-D, each polygon closed by a negative index), a (P, k) "
        "array or a list of index lists";
    std::vector<std::int32_t> description;
    const auto appendPolygon = [&](const IntArray& polygon) {
      for (py::ssize_t k = 0; k < polygon.size(); ++k) {
        if (polygon.data()[k] < 0) throw py::value_error("polygons: negative vertex index");
        description.push_back(polygon.data()[k]);
      }
      description.push_back(-1);
    };
    const auto isSequence = [](py::handle item) {
      return py::isinstance<py::list>(item) || py::isinstance<py::tuple>(item) ||
             (py::isinstance<py::array>(item) &&
              py::reinterpret_borrow<py::array>(item).ndim() > 0);
    };
    const bool listOfLists =
        (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value)) &&
        py::len(value) > 0 && isSequence(value[py::int_(0)]);
    if (listOfLists) {
      for (py::handle polygonValue : value) {
        const IntArray polygon = ToIntArray(polygonValue, "polygons", kExpected);
        RequireShape(polygon, "polygons", kExpected, {-1});
        appendPolygon(polygon);
      }
      return description;
    }
    const IntArray polygons = ToIntArray(value, "polygons", kExpected);
    if (polygons.ndim() == 1) return {polygons.data(), polygons.data() + polygons.size()};
    RequireShape(polygons, "polygons", kExpected, {-1, -1});
    const py::ssize_t corners = polygons.shape(1);
    for (py::ssize_t p = 0; p < polygons.shape(0); ++p) {
      for (py::ssize_t k = 0; k < corners; ++k) {
        const std::int32_t index = polygons.data()[p * corners + k];
        if (index < 0) throw py::value_error("polygons: negative vertex index");
        description.push_back(index);
      }
      description.push_back(-1);
    }
    return description;
  }

  SearchableMesh mesh_;
};

// The most threads vertex_paths starts.
constexpr std::size_t kMaxSearchThreads = 256;

// A Python int as a vertex index; one beyond 32 bits becomes -1, which the search refuses as
// out of range like any other.
std::int32_t VertexIndex(std::int64_t value) {
  return value < std::numeric_limits<std::int32_t>::min() ||
                 value > std::numeric_limits<std::int32_t>::max()
             ? -1
             : std::int32_t(value);
}

// The search flags for `blocked` in `flags`, or null without a mask.
const std::uint8_t* Flags(const std::optional<BoolArray>& blocked,
                          std::vector<std::uint8_t>& flags) {
  if (!blocked) return nullptr;
  return FlagsFromMask({blocked->data(), std::size_t(blocked->size())}, flags);
}

IntArray VertexPath(const Mesh& mesh, std::int64_t start, std::int64_t end, py::handle blocked) {
  const std::optional<BoolArray> mask = mesh.BlockedMask(blocked);
  const SearchableMesh& searchable = mesh.Searchable();
  std::unique_ptr<SearchScratch> scratch = searchable.AcquireScratch();
  std::int32_t length = 0;
  QRVStatus status;
  {
    GilRelease release(std::size_t(mesh.VertexCount()) >= kReleaseThreshold);
    // The flags go into the pooled scratch: no allocation per call for a large mesh.
    status = searchable.Search(VertexIndex(start), VertexIndex(end), Flags(mask, scratch->flags),
                               *scratch, length);
  }
  IntArray out = NewIntArray({scratch->path.data(), std::size_t(length)});
  searchable.ReturnScratch(std::move(scratch));
  if (status != 0) ThrowKernelError(status);
  return out;
}

py::list VertexPaths(const Mesh& mesh, py::handle pairsValue, py::handle blocked, int threads) {
  static constexpr const char* kExpected = "a (K, 2) int32 array of (start, end) pairs";
  const IntArray pairs = ToIntArray(pairsValue, "pairs", kExpected);
  if (pairs.ndim() == 1 && pairs.size() == 0) return py::list();
  RequireShape(pairs, "pairs", kExpected, {-1, 2});
  if (threads < 0) throw py::value_error("threads: expected 0 (every core) or a positive count");
  const std::optional<BoolArray> mask = mesh.BlockedMask(blocked);
  const std::size_t count = std::size_t(pairs.shape(0));
  // One (empty) path vector per pair before any search, the result list after.
  RequireMemory("pairs", count, sizeof(std::vector<std::int32_t>) + sizeof(PyObject*));
  // More threads than pairs would only wait; the cap keeps a runaway count from asking the
  // system for a million threads.
  const std::size_t wanted =
      threads > 0 ? std::size_t(threads) : std::max(1u, std::thread::hardware_concurrency());
  const int threadCount = int(std::min({wanted, count, kMaxSearchThreads}));
  std::vector<std::vector<std::int32_t>> paths;
  {
    GilRelease release(true);
    std::vector<std::uint8_t> flags;
    mesh.Searchable().SearchPairs({pairs.data(), 2 * count}, Flags(mask, flags), threadCount,
                                  paths);
  }
  py::list out(count);
  for (std::size_t k = 0; k < count; ++k) out[k] = NewIntArray(paths[k]);
  return out;
}

IntArray ChainPathBinding(const Mesh& mesh, py::handle indicesValue, py::handle blocked) {
  static constexpr const char* kExpected = "a 1-D int32 array of vertex indices";
  const IntArray indices = ToIntArray(indicesValue, "indices", kExpected);
  RequireShape(indices, "indices", kExpected, {-1});
  const std::optional<BoolArray> mask = mesh.BlockedMask(blocked);
  std::vector<std::int32_t> path;
  {
    GilRelease release(std::size_t(mesh.VertexCount()) >= kReleaseThreshold);
    std::vector<std::uint8_t> flags;
    mesh.Searchable().Chain({indices.data(), std::size_t(indices.size())}, Flags(mask, flags),
                            path);
  }
  return NewIntArray(path);
}

py::tuple ReadMesh(const std::filesystem::path& path) {
  xsihost::MeshData mesh;
  std::string error;
  bool ok;
  {
    GilRelease release(true);
    ok = xsihost::LoadMeshFile(path.string(), mesh, error);
  }
  if (!ok) throw py::value_error(error);
  py::array_t<double> positions({py::ssize_t(mesh.points.size()), py::ssize_t(3)});
  double* out = positions.mutable_data();
  for (const auto& point : mesh.points) out = std::copy(point.begin(), point.end(), out);
  std::vector<std::int32_t> description;
  for (const auto& polygon : mesh.polygons) {
    description.insert(description.end(), polygon.begin(), polygon.end());
    description.push_back(-1);
  }
  return py::make_tuple(positions, NewIntArray(description));
}

}  // namespace

void BindMesh(py::module_& m) {
  py::class_<Mesh>(m, "Mesh",
                   R"(The path node's mesh (Quillix_fpom), built once and searched many times.

Mesh(positions, polygons): positions (V, 3) float32; polygons a polygonal description (1-D
int32, each polygon closed by a negative value), a (P, k) int array of k-gons, or a list of
index lists. Built as the node builds it: invalid polygons and vertices no polygon names are
removed (the others keep their order, renumbered), then neighbour lists and components are
computed. A failed build raises KernelError (92 an index outside the positions, 101 a
polygon of 255 corners, 78 nothing left to search).
Searches only read the mesh: any number of threads may search one Mesh at once.)")
      .def(py::init<py::handle, py::handle>(), py::arg("positions"), py::arg("polygons"))
      .def_property_readonly("vertex_count", &Mesh::VertexCount,
                             "Vertices after the clean-up; paths index these.")
      .def_property_readonly("polygon_count", &Mesh::PolygonCount)
      .def_property_readonly("component_count", &Mesh::ComponentCount)
      .def_property_readonly("positions", &Mesh::Positions,
                             "(vertex_count, 3) float32 positions after the clean-up (a copy).")
      .def("neighbours", &Mesh::Neighbours, py::arg("v"),
           "int32 array of the vertices sharing an edge with v, ascending.")
      .def("components", &Mesh::Components,
           "(vertex_count,) int32 island number per vertex, numbered in order of lowest vertex.")
      .def("__repr__", [](const Mesh& mesh) {
        return "<quillix.Mesh " + std::to_string(mesh.VertexCount()) + " vertices, " +
               std::to_string(mesh.PolygonCount()) + " polygons>";
      });

  m.def("vertex_path", &VertexPath, py::arg("mesh"), py::arg("start"), py::arg("end"),
        py::arg("blocked") = py::none(),
        R"(Shortest chain of neighbouring vertices from start to end (FindVertexPath).

blocked: None or a (vertex_count,) bool mask of vertices the path may not use.
Returns an int32 array, start first and end last. Raises KernelError on failure: status 6
start or end out of range, 27 no path (different islands, blocked), -2 start equal to end.)");
  m.def("vertex_paths", &VertexPaths, py::arg("mesh"), py::arg("pairs"),
        py::arg("blocked") = py::none(), py::arg("threads") = 0,
        R"(vertex_path for every row of a (K, 2) int array of (start, end) pairs, in parallel.

threads: 0 uses every core; at most one thread per pair and 256 in all. Returns a list of K
int32 arrays, empty where vertex_path would raise.)");
  m.def(
      "chain_path", &ChainPathBinding, py::arg("mesh"), py::arg("indices"),
      py::arg("blocked") = py::none(),
      R"(Shortest paths indices[0] -> indices[1] -> ... joined, as Quillix_fpom gives for one element.

Each joint vertex appears once. Returns an empty int32 array when fewer than two indices are
given or any segment has no path.)");
  m.def("read_mesh", &ReadMesh, py::arg("path"),
        R"(Reads an OBJ, PLY or glTF mesh with the offline host's readers.

Returns (positions, polygons): (V, 3) float64 positions in the file's vertex order and the
int32 polygonal description (each polygon's indices followed by -1), ready for Mesh.
Raises ValueError naming the file and the place of a fault.)");
}

}  // namespace quillix::python
