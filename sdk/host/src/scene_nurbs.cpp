// Rational NURBS evaluation and arc length for the offline host's curve lists.
#include "xsihost/scene_nurbs.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

namespace xsihost {
namespace {

using Vec4d = std::array<double, 4>;

Vec3d sub(const Vec3d& a, const Vec3d& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vec3d scale(double s, const Vec3d& a) { return {s * a[0], s * a[1], s * a[2]}; }
double dot(const Vec3d& a, const Vec3d& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
double norm(const Vec3d& a) { return std::sqrt(dot(a, a)); }
Vec3d cross(const Vec3d& a, const Vec3d& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
// `u` clamped to [lo, hi]; NaN, which orders with nothing, counts as the start of the range
// (as a NaN percentage does), so every parameter lands inside a knot span.
double ClampParameter(double u, double lo, double hi) {
  return std::isnan(u) ? lo : std::clamp(u, lo, hi);
}

Vec3d unit(const Vec3d& a) {
  const double n = norm(a);
  return n > 0.0 ? scale(1.0 / n, a) : Vec3d{0.0, 0.0, 0.0};
}

// De Boor's algorithm for degree q on the local points d[0..q], which stand for control points
// k − q .. k of a curve whose knots are t[offset + i]. Overwrites d.
Vec4d deBoor(std::vector<Vec4d>& d, size_t q, size_t k, size_t offset, const std::vector<double>& t,
             double u) {
  for (size_t r = 1; r <= q; ++r) {
    for (size_t j = q; j >= r; --j) {
      const size_t i = k - q + j;
      const double lo = t[offset + i];
      const double hi = t[offset + i + q + 1 - r];
      const double alpha = (u - lo) / (hi - lo);
      for (int c = 0; c < 4; ++c) d[j][c] = (1.0 - alpha) * d[j - 1][c] + alpha * d[j][c];
    }
  }
  return d[q];
}

// Gauss–Kronrod 7/15 nodes and weights on [−1, 1] (positive half; the last node is 0).
constexpr double kKronrodNodes[8] = {
    0.991455371120812639206854697526329, 0.949107912342758524526189684047851,
    0.864864423359769072789712788640926, 0.741531185599394439863864773280788,
    0.586087235467691130294144845693013, 0.405845151377397166906606412076961,
    0.207784955007898467600689403773245, 0.0};
constexpr double kKronrodWeights[8] = {
    0.022935322010529224963732008058970, 0.063092092629978553290700663189204,
    0.104790010322250183839876322541518, 0.140653259715525918745189590510238,
    0.169004726639267902826583426598550, 0.190350578064785409913256402421014,
    0.204432940075298892414161999234649, 0.209482141084727828012999174891714};
// Gauss weights of the 7-point rule, on the odd Kronrod nodes 1, 3, 5 and 7.
constexpr double kGaussWeights[4] = {
    0.129484966168869693270611432679082, 0.279705391489276667901467771423780,
    0.381830050505118944950369775488975, 0.417959183673469387755102040816327};

template <typename F>
std::pair<double, double> kronrod15(const F& f, double a, double b) {
  const double half = 0.5 * (b - a), mid = 0.5 * (a + b);
  const double center = f(mid);
  double kronrod = kKronrodWeights[7] * center;
  double gauss = kGaussWeights[3] * center;
  for (int i = 0; i < 7; ++i) {
    const double x = half * kKronrodNodes[i];
    const double sum = f(mid - x) + f(mid + x);
    kronrod += kKronrodWeights[i] * sum;
    if (i % 2 == 1) gauss += kGaussWeights[i / 2] * sum;
  }
  return {kronrod * half, std::fabs((kronrod - gauss) * half)};
}

// Adaptive Gauss–Kronrod over [a, b] to the absolute tolerance `tolerance`, bisecting with an
// explicit stack. Intervals too small to split further are accepted as they are.
template <typename F>
double integrate(const F& f, double a, double b, double tolerance) {
  if (!(b > a)) return 0.0;
  struct Interval {
    double a, b, tolerance;
  };
  std::vector<Interval> stack{{a, b, tolerance}};
  double total = 0.0;
  while (!stack.empty()) {
    const Interval iv = stack.back();
    stack.pop_back();
    const auto [value, error] = kronrod15(f, iv.a, iv.b);
    const double mid = 0.5 * (iv.a + iv.b);
    const bool tooSmall = !(mid > iv.a && mid < iv.b) || (iv.b - iv.a) <= 1e-14 * (b - a);
    if (error <= iv.tolerance || tooSmall) {
      total += value;
    } else {
      stack.push_back({iv.a, mid, 0.5 * iv.tolerance});
      stack.push_back({mid, iv.b, 0.5 * iv.tolerance});
    }
  }
  return total;
}

// The parts written one after another, numbers as a stream writes them.
template <class... Parts>
std::string Problem(const Parts&... parts) {
  std::ostringstream out;
  (out << ... << parts);
  return out.str();
}

}  // namespace

std::string ValidateNurbsCurve(const NurbsCurveData& curve) {
  const int p = curve.degree;
  const size_t n = curve.points.size();
  if (p < 1) return Problem("degree ", p, " is below 1");
  if (n < static_cast<size_t>(p) + 1)
    return Problem("a curve of degree ", p, " needs at least ", p + 1, " control points, not ", n);
  for (size_t i = 0; i < n; ++i) {
    const auto& cp = curve.points[i];
    for (double c : cp)
      if (!std::isfinite(c)) return Problem("control point ", i, " is not finite");
    if (!(cp[3] > 0.0))
      return Problem("control point ", i, " has weight ", cp[3], "; weights must be positive");
  }
  const size_t expected = n + static_cast<size_t>(p) + 1;
  if (curve.knots.size() != expected)
    return Problem("inconsistent knots: ", n, " control points of degree ", p, " need ", expected,
                   " knots, not ", curve.knots.size());
  for (size_t i = 0; i < expected; ++i) {
    if (!std::isfinite(curve.knots[i]))
      return Problem("inconsistent knots: knot ", i, " is not finite");
    if (i > 0 && curve.knots[i] < curve.knots[i - 1])
      return Problem("inconsistent knots: knot ", i, " (", curve.knots[i],
                     ") is smaller than the knot before it (", curve.knots[i - 1], ")");
  }
  if (!(curve.knots[n] > curve.knots[static_cast<size_t>(p)]))
    return Problem("inconsistent knots: the parameter range [knot ", p, ", knot ", n, "] is empty");
  // A knot repeated more than p times inside the range would break the curve in two.
  for (size_t i = static_cast<size_t>(p) + 1; i < n;) {
    size_t j = i;
    while (j < n && curve.knots[j] == curve.knots[i]) ++j;
    if (j - i > static_cast<size_t>(p))
      return Problem("inconsistent knots: interior knot ", curve.knots[i], " is repeated ", j - i,
                     " times, more than the degree ", p);
    i = j;
  }
  return {};
}

NurbsCurveEvaluator::NurbsCurveEvaluator(NurbsCurveData curve) : curve_(std::move(curve)) {
  const size_t p = static_cast<size_t>(curve_.degree);
  const size_t n = curve_.points.size();
  const auto& t = curve_.knots;
  min_ = t[p];
  max_ = t[n];
  for (size_t k = p; k < n; ++k)
    if (t[k + 1] > t[k]) spanStarts_.push_back(t[k]);
  spanStarts_.push_back(max_);
  // A first pass of one Kronrod rule per span sizes the tolerance; the table then holds each
  // span's length to about 1e-13 of the whole.
  double rough = 0.0;
  for (size_t j = 0; j + 1 < spanStarts_.size(); ++j)
    rough +=
        kronrod15([this](double u) { return Speed(u); }, spanStarts_[j], spanStarts_[j + 1]).first;
  tolerance_ = std::max(rough, 1e-300) * 1e-13;
  cumulative_.assign(spanStarts_.size(), 0.0);
  for (size_t j = 0; j + 1 < spanStarts_.size(); ++j)
    cumulative_[j + 1] = cumulative_[j] + SpanLength(spanStarts_[j], spanStarts_[j + 1]);
}

void NurbsCurveEvaluator::Derivatives(double u, Vec3d& position, Vec3d& first,
                                      Vec3d& second) const {
  const size_t p = static_cast<size_t>(curve_.degree);
  const size_t n = curve_.points.size();
  const auto& t = curve_.knots;
  u = ClampParameter(u, min_, max_);
  // Span k with t[k] <= u < t[k+1]; the end of the range belongs to the last non-empty span.
  size_t k;
  if (u >= max_) {
    k = n - 1;
    while (k > p && !(t[k + 1] > t[k])) --k;
  } else {
    const auto it = std::upper_bound(t.begin() + p, t.begin() + n + 1, u);
    k = static_cast<size_t>(it - t.begin()) - 1;
  }

  // Homogeneous local points and their first and second hodographs.
  std::vector<Vec4d> h(p + 1);
  for (size_t j = 0; j <= p; ++j) {
    const auto& cp = curve_.points[k - p + j];
    h[j] = {cp[0] * cp[3], cp[1] * cp[3], cp[2] * cp[3], cp[3]};
  }
  std::vector<Vec4d> d1(p);
  for (size_t j = 0; j < p; ++j) {
    const size_t i = k - p + j;
    const double f = p / (t[i + p + 1] - t[i + 1]);
    for (int c = 0; c < 4; ++c) d1[j][c] = f * (h[j + 1][c] - h[j][c]);
  }
  std::vector<Vec4d> d2(p >= 2 ? p - 1 : 0);
  for (size_t j = 0; j + 1 < p; ++j) {
    const size_t i = k - p + j;
    const double f = (p - 1) / (t[i + p + 1] - t[i + 2]);
    for (int c = 0; c < 4; ++c) d2[j][c] = f * (d1[j + 1][c] - d1[j][c]);
  }

  const Vec4d a0 = deBoor(h, p, k, 0, t, u);
  const Vec4d a1 = deBoor(d1, p - 1, k - 1, 1, t, u);
  const Vec4d a2 = p >= 2 ? deBoor(d2, p - 2, k - 2, 2, t, u) : Vec4d{0.0, 0.0, 0.0, 0.0};

  // C = A / w; C' = (A' − w'C) / w; C'' = (A'' − 2w'C' − w''C) / w.
  const double w = a0[3], w1 = a1[3], w2 = a2[3];
  for (int c = 0; c < 3; ++c) {
    position[c] = a0[c] / w;
    first[c] = (a1[c] - w1 * position[c]) / w;
    second[c] = (a2[c] - 2.0 * w1 * first[c] - w2 * position[c]) / w;
  }
}

double NurbsCurveEvaluator::Speed(double u) const {
  Vec3d position, first, second;
  Derivatives(u, position, first, second);
  return norm(first);
}

CurveSample NurbsCurveEvaluator::Evaluate(double u) const {
  CurveSample s;
  Vec3d second;
  Derivatives(u, s.position, s.tangent, second);

  // Unit tangent; at a cusp (zero first derivative) the second derivative gives the direction.
  Vec3d direction = unit(s.tangent);
  if (norm(direction) == 0.0) direction = unit(second);
  if (norm(direction) == 0.0) return s;  // degenerate point: zero frame

  // Principal normal: the part of C'' across the tangent. Where the curve is straight (no
  // measurable curvature over its own length) any perpendicular serves; take the world axis
  // least aligned with the tangent, projected across it, so that the choice is stable.
  const Vec3d across = sub(second, scale(dot(second, direction), direction));
  const double acrossLength = norm(across);
  const double speedSquared = dot(s.tangent, s.tangent);
  const double extent = std::max(Length(), 1e-300);
  const bool straight =
      acrossLength <= 1e-12 * norm(second) || acrossLength * extent <= 1e-10 * speedSquared;
  Vec3d normal;
  if (!straight) {
    normal = scale(1.0 / acrossLength, across);
  } else {
    int axis = 0;
    for (int c = 1; c < 3; ++c)
      if (std::fabs(direction[c]) < std::fabs(direction[axis])) axis = c;
    Vec3d e{0.0, 0.0, 0.0};
    e[axis] = 1.0;
    normal = unit(sub(e, scale(dot(e, direction), direction)));
  }
  s.normal = normal;
  s.binormal = unit(cross(direction, normal));
  return s;
}

double NurbsCurveEvaluator::ParameterFromNormalized(double t) const {
  t = ClampParameter(t, 0.0, 1.0);
  return min_ + t * (max_ - min_);
}

double NurbsCurveEvaluator::SpanLength(double a, double b) const {
  return integrate([this](double u) { return Speed(u); }, a, b, tolerance_);
}

double NurbsCurveEvaluator::ParameterFromPercentage(double percent) const {
  const double total = Length();
  if (!(percent > 0.0) || !(total > 0.0)) return min_;
  if (percent >= 100.0) return max_;
  const double target = percent / 100.0 * total;
  // The span holding the target length, then Newton's method on s(u) − target inside it, kept
  // in a shrinking bracket so that a step leaving it falls back to bisection.
  const auto it = std::upper_bound(cumulative_.begin(), cumulative_.end(), target);
  size_t j = static_cast<size_t>(it - cumulative_.begin());
  j = j == 0 ? 0 : j - 1;
  if (j + 1 >= spanStarts_.size()) return max_;
  const double start = spanStarts_[j];
  double lo = start, hi = spanStarts_[j + 1];
  const double wanted = target - cumulative_[j];
  const double spanTotal = cumulative_[j + 1] - cumulative_[j];
  double u = lo + (hi - lo) * (spanTotal > 0.0 ? wanted / spanTotal : 0.5);
  for (int iteration = 0; iteration < 100; ++iteration) {
    const double f = SpanLength(start, u) - wanted;
    if (std::fabs(f) <= 1e-13 * total) break;
    if (f > 0.0) {
      hi = u;
    } else {
      lo = u;
    }
    const double v = Speed(u);
    double next = v > 0.0 ? u - f / v : 0.5 * (lo + hi);
    if (!(next > lo && next < hi)) next = 0.5 * (lo + hi);
    if (next == u) break;
    u = next;
  }
  return u;
}

}  // namespace xsihost
