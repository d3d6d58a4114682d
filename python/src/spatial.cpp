// The spatial cores over pairs of 4x4 matrices: ellipsoid gap (Quillix_cdbte), box
// intersection at rest (Quillix_iotb) and moving (Quillix_iotmb), vectorised over N.
#include <algorithm>
#include <cstddef>

#include "core/spatial/box_intersect.h"
#include "core/spatial/ellipsoid.h"
#include "core/spatial/moving_box.h"
#include "python/src/arrays.h"

namespace quillix::python {

namespace {

// Pairs below this count run on the calling thread only.
constexpr std::size_t kParallelThreshold = 256;

// kernel.Prepare(matrix, reused) and kernel.Pair(a, b) over the matrices of `aValue` and
// `bValue`, paired as the nodes pair them: single with single gives one value (returned as a
// Python scalar), a single matrix is paired with every entry of a stack (and prepared once),
// and two stacks give as many values as the shorter one has matrices.
template <class Out, class Kernel>
py::object MatrixPairs(py::handle aValue, py::handle bValue, const Kernel& kernel) {
  const MatricesArg a = ToMatrices(aValue, "tm_a");
  const MatricesArg b = ToMatrices(bValue, "tm_b");
  if (a.single && b.single) {
    return py::cast(
        kernel.Pair(kernel.Prepare(a.matrices[0], false), kernel.Prepare(b.matrices[0], false)));
  }
  const std::size_t count = a.single   ? b.matrices.size()
                            : b.single ? a.matrices.size()
                                       : std::min(a.matrices.size(), b.matrices.size());
  py::array_t<Out> out(py::ssize_t{static_cast<py::ssize_t>(count)});
  Out* results = out.mutable_data();
  {
    GilRelease release(count >= kParallelThreshold);
    using Prepared = decltype(kernel.Prepare(Mat4f{}, true));
    std::optional<Prepared> sharedA, sharedB;
    if (a.single) sharedA.emplace(kernel.Prepare(a.matrices[0], true));
    if (b.single) sharedB.emplace(kernel.Prepare(b.matrices[0], true));
    const std::ptrdiff_t n = std::ptrdiff_t(count);
#pragma omp parallel for schedule(static) if (count >= kParallelThreshold)
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      const Prepared pa = sharedA ? *sharedA : kernel.Prepare(a.matrices[i], false);
      const Prepared pb = sharedB ? *sharedB : kernel.Prepare(b.matrices[i], false);
      results[i] = kernel.Pair(pa, pb);
    }
  }
  return out;
}

struct EllipsoidGap {
  PreparedEllipsoid Prepare(const Mat4f& matrix, bool) const {
    return PrepareEllipsoid(EllipsoidFromMatrix(matrix));
  }
  float Pair(const PreparedEllipsoid& a, const PreparedEllipsoid& b) const {
    return EllipsoidDistance(a, b);
  }
};

struct BoxTest {
  std::int32_t mode;
  PreparedBox Prepare(const Mat4f& matrix, bool reused) const {
    return PrepareBox(EllipsoidFromMatrix(matrix), reused);
  }
  bool Pair(const PreparedBox& a, const PreparedBox& b) const { return BoxesIntersect(a, b, mode); }
};

struct MovingBoxTest {
  std::int32_t mode;
  PreparedMovingBox Prepare(const Mat4f& packed, bool reused) const {
    return PrepareMovingBox(MovingBoxFromMatrix(packed), reused);
  }
  float Pair(const PreparedMovingBox& a, const PreparedMovingBox& b) const {
    return BoxesContactTime(a, b, mode);
  }
};

}  // namespace

void BindSpatial(py::module_& m) {
  m.def(
      "ellipsoid_distance",
      [](py::handle a, py::handle b) { return MatrixPairs<float>(a, b, EllipsoidGap{}); },
      py::arg("tm_a"), py::arg("tm_b"),
      R"(Gap between the surfaces of two ellipsoids along their centre line (Quillix_cdbte).

tm_a, tm_b: (4, 4) or (N, 4, 4) float32 row-vector matrices mapping the unit sphere onto each
ellipsoid. Two single matrices give a float; a single matrix against a stack, or two stacks,
give an (N,) float32 array (two stacks: as long as the shorter one). Never negative; 0 when
the centres coincide or one centre lies inside the other ellipsoid.)");
  m.def(
      "boxes_intersect",
      [](py::handle a, py::handle b, std::int32_t mode) {
        return MatrixPairs<bool>(a, b, BoxTest{mode});
      },
      py::arg("tm_a"), py::arg("tm_b"), py::arg("mode") = 0,
      R"(Whether two oriented boxes may intersect (Quillix_iotb; the node's 1 is True).

tm_a, tm_b: (4, 4) or (N, 4, 4) float32 matrices mapping the cube [-1, 1]^3 onto each box,
paired as in ellipsoid_distance. mode < 0 compares world bounds only, 0 adds the face planes,
> 0 also the edge-diagonal planes. False is a proof of separation; True may be a near miss.
Returns a bool, or an (N,) bool array.)");
  m.def(
      "boxes_contact_time",
      [](py::handle a, py::handle b, std::int32_t mode) {
        return MatrixPairs<float>(a, b, MovingBoxTest{mode});
      },
      py::arg("tm_a"), py::arg("tm_b"), py::arg("mode") = 1,
      R"(First contact time of two boxes moving over one step (Quillix_iotmb).

tm_a, tm_b: (4, 4) or (N, 4, 4) float32 packed matrices: rows 0-2 the box axes, row 3 the
start centre, column 3 of rows 0-2 the displacement over the step and element [3, 3] the
subdivision count; paired as in ellipsoid_distance. mode as in boxes_intersect.
Returns 0 for boxes touching at the start, -1 for no contact, else the fraction of the step
(may exceed 1): a float, or an (N,) float32 array.)");
}

}  // namespace quillix::python
