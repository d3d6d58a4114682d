#include "tools/output/view.h"

#include <algorithm>
#include <cmath>

namespace quillix {

std::optional<ViewAxis> ParseViewAxis(std::string_view name) {
  if (name == "x") return ViewAxis::kX;
  if (name == "y") return ViewAxis::kY;
  if (name == "z") return ViewAxis::kZ;
  if (name == "iso") return ViewAxis::kIso;
  return std::nullopt;
}

ViewBasis BasisOf(ViewAxis axis) {
  switch (axis) {
    case ViewAxis::kX:
      return {{0, 0, -1}, {0, 1, 0}};
    case ViewAxis::kY:
      return {{1, 0, 0}, {0, 0, -1}};
    case ViewAxis::kZ:
      return {{1, 0, 0}, {0, 1, 0}};
    case ViewAxis::kIso:
      break;
  }
  const double a = 1.0 / std::sqrt(2.0);
  const double b = 1.0 / std::sqrt(6.0);
  return {{a, 0, -a}, {-b, 2 * b, -b}};
}

PlanePoint ToPlane(const ViewBasis& basis, const Vec3f& p) {
  const double x = p.x, y = p.y, z = p.z;
  return {x * basis.u.x + y * basis.u.y + z * basis.u.z,
          x * basis.v.x + y * basis.v.y + z * basis.v.z};
}

void PlaneBounds::Add(const PlanePoint& p) { AddExtent(p, 0.0, 0.0); }

void PlaneBounds::AddExtent(const PlanePoint& centre, double halfU, double halfV) {
  const PlanePoint low{centre.u - halfU, centre.v - halfV};
  const PlanePoint high{centre.u + halfU, centre.v + halfV};
  if (!std::isfinite(low.u) || !std::isfinite(low.v) || !std::isfinite(high.u) ||
      !std::isfinite(high.v)) {
    return;
  }
  if (empty_) {
    min_ = low;
    max_ = high;
    empty_ = false;
    return;
  }
  min_ = {std::min(min_.u, low.u), std::min(min_.v, low.v)};
  max_ = {std::max(max_.u, high.u), std::max(max_.v, high.v)};
}

OrthoView::OrthoView(ViewAxis axis, const PlaneBounds& data, const PixelRect& target,
                     double marginPx)
    : axis_(axis), basis_(BasisOf(axis)) {
  const double width = std::max(1.0, target.width - 2 * marginPx);
  const double height = std::max(1.0, target.height - 2 * marginPx);
  const PlanePoint low = data.Empty() ? PlanePoint{} : data.Min();
  const PlanePoint high = data.Empty() ? PlanePoint{} : data.Max();
  const double extentU = high.u - low.u;
  const double extentV = high.v - low.v;
  if (extentU > 0 && extentV > 0) {
    scale_ = std::min(width / extentU, height / extentV);
  } else if (extentU > 0) {
    scale_ = width / extentU;
  } else if (extentV > 0) {
    scale_ = height / extentV;
  } else {
    scale_ = std::min(width, height);
  }
  centre_ = {(low.u + high.u) / 2, (low.v + high.v) / 2};
  pixelCentre_ = {target.left + target.width / 2, target.top + target.height / 2};
}

PixelPoint OrthoView::ProjectPlane(const PlanePoint& p) const {
  return {pixelCentre_.x + (p.u - centre_.u) * scale_, pixelCentre_.y - (p.v - centre_.v) * scale_};
}

PixelPoint OrthoView::Project(const Vec3f& p) const { return ProjectPlane(ToPlane(basis_, p)); }

}  // namespace quillix
