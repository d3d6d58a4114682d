// Orthographic views of 3D data, fitted to a pixel rectangle.
//
// A view looks along one of four directions and maps a point first to plane coordinates
// (u to the right, v upwards, in scene units) and then to pixels (x to the right, y downwards).
// Pictures and their tests share this mapping, so a test can find the pixel of a known point.
#pragma once

#include <optional>
#include <string_view>

#include "core/math/math_types.h"

namespace quillix {

// The direction a view looks from. The scene's up axis is y:
//  - kX: from +x, u = −z, v = +y (side view);
//  - kY: from +y, u = +x, v = −z (top view);
//  - kZ: from +z, u = +x, v = +y (front view; the xy plane as drawn on paper);
//  - kIso: from (1, 1, 1), u = (1, 0, −1)/√2, v = (−1, 2, −1)/√6 (isometric, y stays upright).
enum class ViewAxis { kX, kY, kZ, kIso };

// "x", "y", "z" or "iso" (exactly; lower case); nothing for any other text.
std::optional<ViewAxis> ParseViewAxis(std::string_view name);

// The unit plane axes of a view, in scene coordinates.
struct ViewBasis {
  Vec3d u;
  Vec3d v;
};
ViewBasis BasisOf(ViewAxis axis);

// Plane coordinates of a scene point.
struct PlanePoint {
  double u = 0.0;
  double v = 0.0;
};
PlanePoint ToPlane(const ViewBasis& basis, const Vec3f& p);

// The bounding rectangle of data in plane coordinates; empty until something is added.
// Non-finite coordinates are ignored.
class PlaneBounds {
 public:
  void Add(const PlanePoint& p);
  // The rectangle [u − halfU, u + halfU] × [v − halfV, v + halfV] around `centre`.
  void AddExtent(const PlanePoint& centre, double halfU, double halfV);
  bool Empty() const { return empty_; }
  PlanePoint Min() const { return min_; }
  PlanePoint Max() const { return max_; }

 private:
  bool empty_ = true;
  PlanePoint min_;
  PlanePoint max_;
};

// A rectangle of the picture, in pixels.
struct PixelRect {
  double left = 0.0;
  double top = 0.0;
  double width = 0.0;
  double height = 0.0;
};

// A pixel position: x to the right, y downwards, (0, 0) the top-left corner of the picture.
struct PixelPoint {
  double x = 0.0;
  double y = 0.0;
};

// The mapping of one view: uniform scale (no distortion), data centred in the target.
class OrthoView {
 public:
  // Fits `data` into `target` shrunk by `marginPx` on every side, as large as fits with equal
  // scale on both axes. Data of zero extent along an axis is fitted by the other axis; data
  // that is a single point (or empty, which counts as the origin) gets 1 scene unit across
  // the smaller side. A target smaller than twice the margin counts as 1 pixel.
  OrthoView(ViewAxis axis, const PlaneBounds& data, const PixelRect& target, double marginPx);

  ViewAxis Axis() const { return axis_; }
  const ViewBasis& Basis() const { return basis_; }
  // Pixels per scene unit.
  double Scale() const { return scale_; }
  PixelPoint Project(const Vec3f& p) const;
  PixelPoint ProjectPlane(const PlanePoint& p) const;

 private:
  ViewAxis axis_;
  ViewBasis basis_;
  double scale_ = 1.0;
  PlanePoint centre_;  // plane point drawn at pixelCentre_
  PixelPoint pixelCentre_;
};

}  // namespace quillix
