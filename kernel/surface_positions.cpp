// GenerateSurfacePositions: vertex picks, an area-weighted scatter and its blue-noise thinning.
#include "kernel/surface_positions.h"

#include <algorithm>
#include <cmath>

#include "kernel/geometry.h"
#include "kernel/mesh_view.h"
#include "kernel/octree.h"

namespace quillix {
namespace {

// splitmix64: a small generator whose sequence is the same on every platform (the standard
// distributions are not), which keeps the points reproducible.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  double Unit() { return double(Next() >> 11) * 0x1.0p-53; }  // [0, 1)

 private:
  std::uint64_t state_;
};

struct Triangle {
  std::int32_t a, b, c;
};

double TriangleArea(const Vec3f& a, const Vec3f& b, const Vec3f& c) {
  const double ux = double(b.x) - a.x, uy = double(b.y) - a.y, uz = double(b.z) - a.z;
  const double vx = double(c.x) - a.x, vy = double(c.y) - a.y, vz = double(c.z) - a.z;
  const double cx = uy * vz - uz * vy, cy = uz * vx - ux * vz, cz = ux * vy - uy * vx;
  return 0.5 * std::sqrt(cx * cx + cy * cy + cz * cz);
}

// The polygons' fan triangles with their running area, for picking a triangle in proportion
// to its area. The arrays come from `memory` and go back to it on destruction.
class AreaTable {
 public:
  explicit AreaTable(QRVMemoryContext& memory) : memory_(memory) {}
  ~AreaTable() {
    memory_.Release(triangles_);
    memory_.Release(running_);
  }
  AreaTable(const AreaTable&) = delete;
  AreaTable& operator=(const AreaTable&) = delete;

  // False when the memory context refuses the two arrays of `triangleCount` entries.
  bool Build(const MeshView& mesh, std::int32_t triangleCount) {
    triangles_ = memory_.AllocateArray<Triangle>(std::size_t(std::max(triangleCount, 1)));
    running_ = memory_.AllocateArray<double>(std::size_t(std::max(triangleCount, 1)));
    if (triangles_ == nullptr || running_ == nullptr) return false;
    const Vec3f* p = mesh.positions;
    std::int64_t node = 0;
    for (std::int32_t polygon = 0; polygon < mesh.polygonCount; ++polygon) {
      const std::int32_t size = mesh.polygonSizes[polygon];
      for (std::int32_t k = 1; k + 1 < size; ++k) {
        const Triangle tri = {mesh.polygonIndices[node], mesh.polygonIndices[node + k],
                              mesh.polygonIndices[node + k + 1]};
        triangles_[count_] = tri;
        const double area = TriangleArea(p[tri.a], p[tri.b], p[tri.c]);
        total_ += std::isfinite(area) ? area : 0.0;
        running_[count_++] = total_;
      }
      node += size;
    }
    return true;
  }

  double Total() const { return total_; }

  // One point uniformly distributed over the surface, drawing two or three numbers.
  Vec3f Scatter(const Vec3f* positions, Random& random) const {
    const double pick = random.Unit() * total_;
    const std::int32_t at =
        std::int32_t(std::upper_bound(running_, running_ + count_, pick) - running_);
    const Triangle& tri = triangles_[std::min(at, count_ - 1)];
    // Uniform over the triangle: the square root spreads the first coordinate by area.
    const double r1 = std::sqrt(random.Unit()), r2 = random.Unit();
    const double wa = 1.0 - r1, wb = r1 * (1.0 - r2), wc = r1 * r2;
    const Vec3f &a = positions[tri.a], &b = positions[tri.b], &c = positions[tri.c];
    return {float(wa * a.x + wb * b.x + wc * c.x), float(wa * a.y + wb * b.y + wc * c.y),
            float(wa * a.z + wb * b.z + wc * c.z)};
  }

 private:
  QRVMemoryContext& memory_;
  Triangle* triangles_ = nullptr;
  double* running_ = nullptr;
  std::int32_t count_ = 0;
  double total_ = 0.0;
};

// Keeps the candidates in their order, dropping every later one within `spacing` of a kept
// one; appends the kept ones to `positions`.
QRVStatus ThinCandidates(const Vec3f* pool, std::int64_t count, float spacing,
                         QRVMemoryContext& memory, std::vector<Vec3f>& positions) {
  std::uint8_t* removed = memory.AllocateArray<std::uint8_t>(std::size_t(count));
  if (removed == nullptr) return kStatusNoMemory;
  std::fill(removed, removed + count, 0);
  QRVOctree tree(memory);
  const QRVStatus status = tree.Build(pool, std::int32_t(count));
  if (status == kStatusOk) {
    for (std::int64_t i = 0; i < count; ++i) {
      if (removed[i]) continue;
      positions.push_back(pool[i]);
      tree.ForEachWithin(pool[i], spacing, [&](std::int32_t j) { removed[j] = 1; });
    }
  }
  memory.Release(removed);
  return status;
}

}  // namespace

QRVStatus GenerateSurfacePositions(QRVGeometry& geometry, std::int32_t mode, float lod,
                                   std::uint64_t seed, std::vector<Vec3f>& positions) {
  if (mode < kSurfaceVertices || mode > kSurfaceBlueNoise) return kStatusIllegalParameter;
  const MeshView mesh = geometry.Mesh();
  if (mesh.positions == nullptr || mesh.vertexCount < 1 || !(lod > 0.0f)) return kStatusOk;

  if (mode == kSurfaceVertices) {
    const std::int64_t stride =
        lod >= 1.0f ? 1 : std::max<std::int64_t>(1, std::llround(1.0 / lod));
    for (std::int64_t v = 0; v < mesh.vertexCount; v += stride)
      positions.push_back(mesh.positions[v]);
    return kStatusOk;
  }

  const double wanted = std::round(double(lod) * mesh.vertexCount);
  const double candidates = mode == kSurfaceBlueNoise ? 8.0 * wanted : wanted;
  if (candidates > double(kSurfaceMaxPoints)) return kStatusIllegalParameter;
  const auto count = std::int64_t(candidates);
  if (count == 0) return kStatusOk;

  QRVMemoryContext& memory = geometry.Memory();
  AreaTable table(memory);
  if (!table.Build(mesh, geometry.FanTriangleCount())) return kStatusNoMemory;
  if (!(table.Total() > 0.0)) return kStatusOk;
  Random random(seed);

  if (mode == kSurfaceRandom) {
    positions.reserve(positions.size() + std::size_t(count));
    for (std::int64_t i = 0; i < count; ++i)
      positions.push_back(table.Scatter(mesh.positions, random));
    return kStatusOk;
  }

  Vec3f* pool = memory.AllocateArray<Vec3f>(std::size_t(count));
  if (pool == nullptr) return kStatusNoMemory;
  for (std::int64_t i = 0; i < count; ++i) pool[i] = table.Scatter(mesh.positions, random);
  const float spacing = float(std::sqrt(0.6 * table.Total() / wanted * 2.0 / std::sqrt(3.0)));
  const QRVStatus status = ThinCandidates(pool, count, spacing, memory, positions);
  memory.Release(pool);
  return status;
}

QRVStatus QRVGeometry::GeneratePositionsFromSurface(std::int32_t mode, float lod,
                                                    std::uint64_t seed,
                                                    std::vector<Vec3f>& positions) {
  return GenerateSurfacePositions(*this, mode, lod, seed, positions);
}

}  // namespace quillix
