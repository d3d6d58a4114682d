#include "core/curve/line_simplify_scan.h"

#include <algorithm>
#include <cassert>
#include <cstdint>

#include "core/math/vec3_ops.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define QUILLIX_X86_SCAN 1
#else
#define QUILLIX_X86_SCAN 0
#endif

namespace quillix {
namespace {

static_assert(sizeof(Vec3f) == 3 * sizeof(float), "points are read as packed float triples");

// The chord of a part and what every distance to it needs, computed once per scan and shared
// by both loops so that they start from the same bits.
struct Chord {
  Vec3f a;
  Vec3f b;
  Vec3f unit;
  float length;
  bool degenerate;  // shorter than 1e-15: distances are measured to `a`
};

Chord MakeChord(const Vec3f& a, const Vec3f& b) {
  Chord chord{a, b, {}, Length(Subtract(b, a)), false};
  chord.degenerate = chord.length < 1e-15f;
  if (!chord.degenerate) chord.unit = Scale(Subtract(b, a), 1.0f / chord.length);
  return chord;
}

float SquaredDistance(const Vec3f& a, const Vec3f& b) {
  const Vec3f d = Subtract(a, b);
  return Dot(d, d);
}

// The distance the vector loop reproduces lane by lane: any change here must be made there.
float SquaredDistanceToChord(const Chord& chord, const Vec3f& p) {
  if (chord.degenerate) return SquaredDistance(p, chord.a);
  const float t = Dot(Subtract(p, chord.a), chord.unit);
  if (t < 0.0f) return SquaredDistance(p, chord.a);
  if (t > chord.length) return SquaredDistance(p, chord.b);
  return SquaredDistance(Advance(chord.a, t, chord.unit), p);
}

// Continues a scan over points[begin..end) from `best`: only a strictly larger distance
// replaces it, so the lowest index keeps a tie.
void ScanScalar(const Chord& chord, const Vec3f* points, std::size_t begin, std::size_t end,
                FarthestPoint& best) {
  for (std::size_t i = begin; i < end; ++i) {
    const float s = SquaredDistanceToChord(chord, points[i]);
    if (s > best.squaredDistance) best = {s, i};
  }
}

#if QUILLIX_X86_SCAN

// Eight points from 24 packed floats, split into their x, y and z coordinates (lane k holds
// point k).
struct Points8 {
  __m256 x, y, z;
};

__attribute__((target("avx2"))) inline Points8 LoadPoints8(const float* p) {
  // Lane-wise: low halves hold points 0-3, high halves points 4-7.
  const __m256 m03 =
      _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p)), _mm_loadu_ps(p + 12), 1);
  const __m256 m14 =
      _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p + 4)), _mm_loadu_ps(p + 16), 1);
  const __m256 m25 =
      _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(p + 8)), _mm_loadu_ps(p + 20), 1);
  // Per half: m03 = x0 y0 z0 x1, m14 = y1 z1 x2 y2, m25 = z2 x3 y3 z3.
  const __m256 xy = _mm256_shuffle_ps(m14, m25, _MM_SHUFFLE(2, 1, 3, 2));  // x2 y2 x3 y3
  const __m256 yz = _mm256_shuffle_ps(m03, m14, _MM_SHUFFLE(1, 0, 2, 1));  // y0 z0 y1 z1
  return {_mm256_shuffle_ps(m03, xy, _MM_SHUFFLE(2, 0, 3, 0)),
          _mm256_shuffle_ps(yz, xy, _MM_SHUFFLE(3, 1, 2, 0)),
          _mm256_shuffle_ps(yz, m25, _MM_SHUFFLE(3, 0, 3, 1))};
}

// x·x + y·y + z·z in the order of Dot.
__attribute__((target("avx2"))) inline __m256 SquaredLength8(__m256 x, __m256 y, __m256 z) {
  return _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(x, x), _mm256_mul_ps(y, y)),
                       _mm256_mul_ps(z, z));
}

// SquaredDistanceToChord for eight points, with every multiplication, addition and
// subtraction of the scalar form in the same order (the target has no FMA, and the build
// forbids contraction). The branches become blends of differences that are each computed
// exactly as their scalar branch computes them; the comparisons are ordered, so a NaN `t`
// takes the last branch as it does there.
template <bool kDegenerate>
__attribute__((target("avx2"))) inline __m256 SquaredDistanceToChord8(const Chord& chord,
                                                                      const Points8& p) {
  const __m256 ax = _mm256_set1_ps(chord.a.x), ay = _mm256_set1_ps(chord.a.y),
               az = _mm256_set1_ps(chord.a.z);
  const __m256 dx = _mm256_sub_ps(p.x, ax), dy = _mm256_sub_ps(p.y, ay),
               dz = _mm256_sub_ps(p.z, az);
  if constexpr (kDegenerate) {
    return SquaredLength8(dx, dy, dz);
  } else {
    const __m256 ux = _mm256_set1_ps(chord.unit.x), uy = _mm256_set1_ps(chord.unit.y),
                 uz = _mm256_set1_ps(chord.unit.z);
    const __m256 t = _mm256_add_ps(_mm256_add_ps(_mm256_mul_ps(dx, ux), _mm256_mul_ps(dy, uy)),
                                   _mm256_mul_ps(dz, uz));
    const __m256 before = _mm256_cmp_ps(t, _mm256_setzero_ps(), _CMP_LT_OQ);
    const __m256 beyond = _mm256_cmp_ps(t, _mm256_set1_ps(chord.length), _CMP_GT_OQ);
    // Beyond the far end: p − b.
    const __m256 fx = _mm256_sub_ps(p.x, _mm256_set1_ps(chord.b.x)),
                 fy = _mm256_sub_ps(p.y, _mm256_set1_ps(chord.b.y)),
                 fz = _mm256_sub_ps(p.z, _mm256_set1_ps(chord.b.z));
    // Alongside: (a + unit·t) − p.
    const __m256 sx = _mm256_sub_ps(_mm256_add_ps(ax, _mm256_mul_ps(ux, t)), p.x),
                 sy = _mm256_sub_ps(_mm256_add_ps(ay, _mm256_mul_ps(uy, t)), p.y),
                 sz = _mm256_sub_ps(_mm256_add_ps(az, _mm256_mul_ps(uz, t)), p.z);
    // Before the near end: p − a. The length is at least 1e-15, so `before` and `beyond`
    // never hold together.
    const __m256 ex = _mm256_blendv_ps(_mm256_blendv_ps(sx, fx, beyond), dx, before),
                 ey = _mm256_blendv_ps(_mm256_blendv_ps(sy, fy, beyond), dy, before),
                 ez = _mm256_blendv_ps(_mm256_blendv_ps(sz, fz, beyond), dz, before);
    return SquaredLength8(ex, ey, ez);
  }
}

// Lane indices are 32-bit offsets from the start of a stretch; longer scans go stretch by
// stretch.
constexpr std::size_t kMaxStretch = std::size_t(1) << 30;

// Scans `blocks` blocks of eight points from points[begin] on and merges the farthest into
// `best`. Each lane keeps its own farthest point with a strict comparison, so the first of
// equal distances in that lane; the farthest of the eight lanes, lowest index among equals, is
// then the first farthest point of the whole stretch, which lies after everything `best` has
// seen.
template <bool kDegenerate>
__attribute__((target("avx2"))) void ScanBlocksAvx2(const Chord& chord, const Vec3f* points,
                                                    std::size_t begin, std::size_t blocks,
                                                    FarthestPoint& best) {
  const float* p = &points[begin].x;
  __m256 laneBest = _mm256_set1_ps(-1.0f);
  __m256i laneOffset = _mm256_setzero_si256();
  __m256i offset = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  const __m256i eight = _mm256_set1_epi32(8);
  for (std::size_t block = 0; block < blocks; ++block, p += 24) {
    const __m256 s = SquaredDistanceToChord8<kDegenerate>(chord, LoadPoints8(p));
    const __m256 farther = _mm256_cmp_ps(s, laneBest, _CMP_GT_OQ);  // false for NaN
    laneBest = _mm256_blendv_ps(laneBest, s, farther);
    laneOffset = _mm256_blendv_epi8(laneOffset, offset, _mm256_castps_si256(farther));
    offset = _mm256_add_epi32(offset, eight);
  }
  alignas(32) float distances[8];
  alignas(32) std::int32_t offsets[8];
  _mm256_store_ps(distances, laneBest);
  _mm256_store_si256(reinterpret_cast<__m256i*>(offsets), laneOffset);
  // A lane still at -1 saw no point that counts (distances are never negative).
  float stretchBest = -1.0f;
  std::int32_t stretchOffset = 0;
  for (int lane = 0; lane < 8; ++lane) {
    if (distances[lane] > stretchBest ||
        (distances[lane] == stretchBest && stretchBest >= 0.0f && offsets[lane] < stretchOffset)) {
      stretchBest = distances[lane];
      stretchOffset = offsets[lane];
    }
  }
  if (stretchBest > best.squaredDistance) best = {stretchBest, begin + std::size_t(stretchOffset)};
}

template <bool kDegenerate>
__attribute__((target("avx2"))) void ScanAvx2(const Chord& chord, const Vec3f* points,
                                              std::size_t begin, std::size_t end,
                                              FarthestPoint& best) {
  while (end - begin >= 8) {
    const std::size_t stretch = std::min(end - begin, kMaxStretch) / 8 * 8;
    ScanBlocksAvx2<kDegenerate>(chord, points, begin, stretch / 8, best);
    begin += stretch;
  }
  ScanScalar(chord, points, begin, end, best);
}

bool CpuHasAvx2() {
  static const bool has = __builtin_cpu_supports("avx2");
  return has;
}

#endif  // QUILLIX_X86_SCAN

// Short parts stay with the plain loop: a few blocks do not repay the lane reduction.
constexpr std::size_t kMinVectorScan = 16;

}  // namespace

bool HasVectorScan() {
#if QUILLIX_X86_SCAN
  return CpuHasAvx2();
#else
  return false;
#endif
}

FarthestPoint FindFarthestPoint(std::span<const Vec3f> points, std::size_t first, std::size_t last,
                                ScanKernel kernel) {
  assert(first < last && last < points.size());
  const Chord chord = MakeChord(points[first], points[last]);
  FarthestPoint best{-1.0f, first};
  const std::size_t begin = first + 1;
#if QUILLIX_X86_SCAN
  if (kernel == ScanKernel::kFastest && last - begin >= kMinVectorScan && CpuHasAvx2()) {
    if (chord.degenerate) {
      ScanAvx2<true>(chord, points.data(), begin, last, best);
    } else {
      ScanAvx2<false>(chord, points.data(), begin, last, best);
    }
    return best;
  }
#else
  (void)kernel;
#endif
  ScanScalar(chord, points.data(), begin, last, best);
  return best;
}

}  // namespace quillix
