#include "core/mesh/surface_positions.h"

#include <algorithm>
#include <cmath>

#include "kernel/geometry.h"
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

}  // namespace

QRVStatus QRVGeometry::GeneratePositionsFromSurface(std::int32_t mode, float lod,
                                                    std::uint64_t seed,
                                                    std::vector<Vec3f>& positions) {
  if (mode < kSurfaceVertices || mode > kSurfaceBlueNoise) return kStatusIllegalParameter;
  if (!Usable() || !(lod > 0.0f)) return kStatusOk;

  if (mode == kSurfaceVertices) {
    const std::int64_t stride =
        lod >= 1.0f ? 1 : std::max<std::int64_t>(1, std::llround(1.0 / lod));
    for (std::int64_t v = 0; v < vertexCount_; v += stride) positions.push_back(positions_[v]);
    return kStatusOk;
  }

  const double wanted = std::round(double(lod) * vertexCount_);
  const double candidates = mode == kSurfaceBlueNoise ? 8.0 * wanted : wanted;
  if (candidates > double(kSurfaceMaxPoints)) return kStatusIllegalParameter;
  const auto count = std::int64_t(candidates);
  if (count == 0) return kStatusOk;

  // Fan triangles with their running area, for picking a triangle in proportion to its area.
  const std::int32_t triangleCount = FanTriangleCount();
  Triangle* triangles = Alloc<Triangle>(std::size_t(std::max(triangleCount, 1)));
  double* running = Alloc<double>(std::size_t(std::max(triangleCount, 1)));
  const auto release = [&] {
    Free(triangles);
    Free(running);
  };
  if (triangles == nullptr || running == nullptr) {
    release();
    return kStatusNoMemory;
  }
  std::int32_t t = 0;
  double total = 0.0;
  std::int64_t node = 0;
  for (std::int32_t p = 0; p < polygonCount_; ++p) {
    const std::int32_t size = polygonSizes_[p];
    for (std::int32_t k = 1; k + 1 < size; ++k) {
      triangles[t] = {polygonIndices_[node], polygonIndices_[node + k],
                      polygonIndices_[node + k + 1]};
      const double area = TriangleArea(positions_[triangles[t].a], positions_[triangles[t].b],
                                       positions_[triangles[t].c]);
      total += std::isfinite(area) ? area : 0.0;
      running[t++] = total;
    }
    node += size;
  }
  if (!(total > 0.0)) {
    release();
    return kStatusOk;
  }

  Random random(seed);
  const auto scatter = [&]() -> Vec3f {
    const double pick = random.Unit() * total;
    const std::int32_t at = std::int32_t(std::upper_bound(running, running + t, pick) - running);
    const Triangle& tri = triangles[std::min(at, t - 1)];
    // Uniform over the triangle: the square root spreads the first coordinate by area.
    const double r1 = std::sqrt(random.Unit()), r2 = random.Unit();
    const double wa = 1.0 - r1, wb = r1 * (1.0 - r2), wc = r1 * r2;
    const Vec3f &a = positions_[tri.a], &b = positions_[tri.b], &c = positions_[tri.c];
    return {float(wa * a.x + wb * b.x + wc * c.x), float(wa * a.y + wb * b.y + wc * c.y),
            float(wa * a.z + wb * b.z + wc * c.z)};
  };

  if (mode == kSurfaceRandom) {
    positions.reserve(positions.size() + std::size_t(count));
    for (std::int64_t i = 0; i < count; ++i) positions.push_back(scatter());
    release();
    return kStatusOk;
  }

  Vec3f* pool = Alloc<Vec3f>(std::size_t(count));
  std::uint8_t* removed = Alloc<std::uint8_t>(std::size_t(count));
  if (pool == nullptr || removed == nullptr) {
    Free(pool), Free(removed), release();
    return kStatusNoMemory;
  }
  for (std::int64_t i = 0; i < count; ++i) pool[i] = scatter();
  std::fill(removed, removed + count, 0);
  QRVOctree tree(*memory_);
  QRVStatus status = tree.Build(pool, std::int32_t(count));
  if (status == kStatusOk) {
    const float spacing = float(std::sqrt(0.6 * total / wanted * 2.0 / std::sqrt(3.0)));
    for (std::int64_t i = 0; i < count; ++i) {
      if (removed[i]) continue;
      positions.push_back(pool[i]);
      tree.ForEachWithin(pool[i], spacing, [&](std::int32_t j) { removed[j] = 1; });
    }
  }
  Free(pool), Free(removed), release();
  return status;
}

}  // namespace quillix
