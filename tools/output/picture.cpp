#include "tools/output/picture.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

namespace quillix {
namespace {

constexpr double kMarginPx = 24.0;
constexpr double kTitleBandPx = 28.0;
constexpr double kNoteLinePx = 16.0;
constexpr double kFontSizePx = 13.0;
constexpr int kEllipseSegments = 96;
constexpr Colour kTextColour{0.1, 0.1, 0.1};
constexpr Colour kSeparatorColour{0.8, 0.8, 0.8};

// The outline of an ellipsoid in the view: the ellipse {c + M·(cos t, sin t)} in plane
// coordinates, with M the symmetric square root of the shape matrix S = L·Lᵀ of the linear map
// L from the unit sphere to the plane. A singular transform gives a segment or a point.
struct PlaneEllipse {
  PlanePoint centre;
  double m11 = 0.0, m12 = 0.0, m22 = 0.0;
  double halfU = 0.0, halfV = 0.0;  // extent of the outline around the centre
};

PlaneEllipse EllipseOf(const Mat4f& transform, const ViewBasis& basis) {
  double s11 = 0.0, s12 = 0.0, s22 = 0.0;
  for (int row = 0; row < 3; ++row) {
    const Vec3f axis{transform.m[row][0], transform.m[row][1], transform.m[row][2]};
    const PlanePoint p = ToPlane(basis, axis);
    s11 += p.u * p.u;
    s12 += p.u * p.v;
    s22 += p.v * p.v;
  }
  PlaneEllipse e;
  e.centre = ToPlane(basis, {transform.m[3][0], transform.m[3][1], transform.m[3][2]});
  // For a 2×2 symmetric positive semi-definite S: √S = (S + √det·I) / √(trace + 2√det).
  const double rootDet = std::sqrt(std::max(0.0, s11 * s22 - s12 * s12));
  const double norm = std::sqrt(s11 + s22 + 2 * rootDet);
  if (norm > 0) {
    e.m11 = (s11 + rootDet) / norm;
    e.m12 = s12 / norm;
    e.m22 = (s22 + rootDet) / norm;
  }
  e.halfU = std::sqrt(s11);
  e.halfV = std::sqrt(s22);
  return e;
}

PlaneBounds FigureBounds(const Figure& figure, const ViewBasis& basis) {
  PlaneBounds bounds;
  auto addPoints = [&](std::span<const Vec3f> points) {
    for (const Vec3f& p : points) bounds.Add(ToPlane(basis, p));
  };
  for (const Panel& panel : figure.panels) {
    for (const EdgesItem& item : panel.edges) addPoints(item.ends);
    for (const LineItem& item : panel.lines) addPoints(item.points);
    for (const MarkerItem& item : panel.markers) bounds.Add(ToPlane(basis, item.position));
    for (const LabelItem& item : panel.labels) bounds.Add(ToPlane(basis, item.anchor));
    for (const EllipsoidItem& item : panel.ellipsoids) {
      const PlaneEllipse e = EllipseOf(item.transform, basis);
      bounds.AddExtent(e.centre, e.halfU, e.halfV);
    }
  }
  return bounds;
}

std::size_t PanelCount(const Figure& figure) {
  return std::max<std::size_t>(1, figure.panels.size());
}

double NotesBand(const Figure& figure) {
  std::size_t lines = 0;
  for (const Panel& panel : figure.panels) lines = std::max(lines, panel.notes.size());
  return lines == 0 ? 0.0 : lines * kNoteLinePx + 8.0;
}

bool Finite(const PixelPoint& p) { return std::isfinite(p.x) && std::isfinite(p.y); }

void SetColour(cairo_t* cr, const Colour& c) { cairo_set_source_rgba(cr, c.r, c.g, c.b, c.a); }

void SetStroke(cairo_t* cr, const Colour& c, double widthPx, bool dashed) {
  SetColour(cr, c);
  cairo_set_line_width(cr, widthPx);
  static const double kDash[] = {6.0, 4.0};
  cairo_set_dash(cr, kDash, dashed ? 2 : 0, 0.0);
}

// A path through the projected points; a non-finite point breaks it.
void AddPolyline(cairo_t* cr, const OrthoView& view, std::span<const Vec3f> points, bool closed) {
  bool pen = false;
  for (const Vec3f& point : points) {
    const PixelPoint p = view.Project(point);
    if (!Finite(p)) {
      pen = false;
      continue;
    }
    if (pen) {
      cairo_line_to(cr, p.x, p.y);
    } else {
      cairo_move_to(cr, p.x, p.y);
      pen = true;
    }
  }
  if (closed && pen) cairo_close_path(cr);
}

void DrawArrowHead(cairo_t* cr, const OrthoView& view, const LineItem& item) {
  if (item.points.size() < 2) return;
  const PixelPoint tip = view.Project(item.points.back());
  const PixelPoint from = view.Project(item.points[item.points.size() - 2]);
  const double dx = tip.x - from.x, dy = tip.y - from.y;
  const double length = std::hypot(dx, dy);
  if (!Finite(tip) || !Finite(from) || length <= 0) return;
  const double size = 6.0 + 2.0 * item.widthPx;
  const double ux = dx / length, uy = dy / length;
  cairo_move_to(cr, tip.x, tip.y);
  cairo_line_to(cr, tip.x - size * ux - 0.5 * size * uy, tip.y - size * uy + 0.5 * size * ux);
  cairo_line_to(cr, tip.x - size * ux + 0.5 * size * uy, tip.y - size * uy - 0.5 * size * ux);
  cairo_close_path(cr);
  SetColour(cr, item.colour);
  cairo_fill(cr);
}

void DrawEllipsoid(cairo_t* cr, const OrthoView& view, const EllipsoidItem& item) {
  const PlaneEllipse e = EllipseOf(item.transform, view.Basis());
  for (int k = 0; k < kEllipseSegments; ++k) {
    const double t = 2.0 * std::numbers::pi * k / kEllipseSegments;
    const double c = std::cos(t), s = std::sin(t);
    const PixelPoint p =
        view.ProjectPlane({e.centre.u + e.m11 * c + e.m12 * s, e.centre.v + e.m12 * c + e.m22 * s});
    if (!Finite(p)) {
      cairo_new_path(cr);
      return;
    }
    k == 0 ? cairo_move_to(cr, p.x, p.y) : cairo_line_to(cr, p.x, p.y);
  }
  cairo_close_path(cr);
  SetColour(cr, item.fill);
  cairo_fill_preserve(cr);
  SetStroke(cr, item.stroke, item.widthPx, item.dashed);
  cairo_stroke(cr);
}

void DrawMarker(cairo_t* cr, const OrthoView& view, const MarkerItem& item) {
  const PixelPoint p = view.Project(item.position);
  if (!Finite(p)) return;
  const double half = item.sizePx / 2;
  SetStroke(cr, item.colour, 2.0, false);
  switch (item.shape) {
    case MarkerShape::kDot:
      cairo_arc(cr, p.x, p.y, half, 0, 2 * std::numbers::pi);
      cairo_fill(cr);
      break;
    case MarkerShape::kSquare:
      cairo_rectangle(cr, p.x - half, p.y - half, item.sizePx, item.sizePx);
      cairo_fill(cr);
      break;
    case MarkerShape::kCross:
      cairo_move_to(cr, p.x - half, p.y - half);
      cairo_line_to(cr, p.x + half, p.y + half);
      cairo_move_to(cr, p.x - half, p.y + half);
      cairo_line_to(cr, p.x + half, p.y - half);
      cairo_stroke(cr);
      break;
    case MarkerShape::kRing:
      cairo_arc(cr, p.x, p.y, std::max(1.0, half - 1.0), 0, 2 * std::numbers::pi);
      cairo_stroke(cr);
      break;
  }
}

void DrawText(cairo_t* cr, double x, double y, const std::string& text, const Colour& colour) {
  SetColour(cr, colour);
  cairo_move_to(cr, x, y);
  cairo_show_text(cr, text.c_str());
}

void DrawPanel(cairo_t* cr, const Panel& panel, const OrthoView& view, const PixelRect& rect,
               double notesTop) {
  cairo_save(cr);
  cairo_rectangle(cr, rect.left, rect.top, rect.width, rect.height);
  cairo_clip(cr);
  cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  for (const EdgesItem& item : panel.edges) {
    for (std::size_t i = 0; i + 1 < item.ends.size(); i += 2) {
      AddPolyline(cr, view, std::span(item.ends).subspan(i, 2), false);
    }
    SetStroke(cr, item.colour, item.widthPx, item.dashed);
    cairo_stroke(cr);
  }
  for (const EllipsoidItem& item : panel.ellipsoids) DrawEllipsoid(cr, view, item);
  for (const LineItem& item : panel.lines) {
    AddPolyline(cr, view, item.points, item.closed);
    SetStroke(cr, item.colour, item.widthPx, item.dashed);
    cairo_stroke(cr);
    if (item.arrow) DrawArrowHead(cr, view, item);
  }
  for (const MarkerItem& item : panel.markers) DrawMarker(cr, view, item);
  for (const LabelItem& item : panel.labels) {
    const PixelPoint p = view.Project(item.anchor);
    if (Finite(p))
      DrawText(cr, p.x + item.offsetPx.x, p.y + item.offsetPx.y, item.text, item.colour);
  }
  cairo_restore(cr);
  DrawText(cr, rect.left + 8, kTitleBandPx - 10, panel.title, kTextColour);
  for (std::size_t k = 0; k < panel.notes.size(); ++k) {
    DrawText(cr, rect.left + 8, notesTop + kNoteLinePx * (k + 1), panel.notes[k], kTextColour);
  }
}

PixelRect PanelRect(const Figure& figure, const PictureOptions& options, std::size_t panel) {
  return {double(options.panelWidth) * panel, kTitleBandPx, double(options.panelWidth),
          std::max(1.0, options.panelHeight - kTitleBandPx - NotesBand(figure))};
}

void DrawFigure(cairo_t* cr, const Figure& figure, const PictureOptions& options) {
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_paint(cr);
  cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cr, kFontSizePx);
  const std::vector<OrthoView> views = LayoutFigure(figure, options);
  const double notesTop = options.panelHeight - NotesBand(figure);
  for (std::size_t i = 0; i < figure.panels.size(); ++i) {
    DrawPanel(cr, figure.panels[i], views[i], PanelRect(figure, options, i), notesTop);
  }
  for (std::size_t i = 1; i < PanelCount(figure); ++i) {
    const double x = double(options.panelWidth) * i + 0.5;
    cairo_move_to(cr, x, 0);
    cairo_line_to(cr, x, options.panelHeight);
    SetStroke(cr, kSeparatorColour, 1.0, false);
    cairo_stroke(cr);
  }
}

cairo_status_t AppendToString(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

OutputStatus CairoFailure(const char* what, cairo_status_t status, std::string& bytes) {
  bytes.clear();
  return {false, std::string("cannot draw the ") + what + ": " + cairo_status_to_string(status)};
}

// Draws into `surface` and releases it; `finish` writes the surface's bytes out.
template <class Finish>
OutputStatus DrawAndFinish(cairo_surface_t* surface, const Figure& figure,
                           const PictureOptions& options, const char* what, std::string& bytes,
                           Finish finish) {
  cairo_status_t status = cairo_surface_status(surface);
  if (status == CAIRO_STATUS_SUCCESS) {
    cairo_t* cr = cairo_create(surface);
    DrawFigure(cr, figure, options);
    status = cairo_status(cr);
    cairo_destroy(cr);
  }
  if (status == CAIRO_STATUS_SUCCESS) status = finish(surface);
  cairo_surface_destroy(surface);
  if (status != CAIRO_STATUS_SUCCESS) return CairoFailure(what, status, bytes);
  return {};
}

int PictureWidth(const Figure& figure, const PictureOptions& options) {
  return std::max(1, options.panelWidth) * static_cast<int>(PanelCount(figure));
}

}  // namespace

std::vector<OrthoView> LayoutFigure(const Figure& figure, const PictureOptions& options) {
  const PlaneBounds bounds = FigureBounds(figure, BasisOf(options.axis));
  std::vector<OrthoView> views;
  for (std::size_t i = 0; i < PanelCount(figure); ++i) {
    views.emplace_back(options.axis, bounds, PanelRect(figure, options, i), kMarginPx);
  }
  return views;
}

OutputStatus RenderPng(const Figure& figure, const PictureOptions& options, std::string& bytes) {
  bytes.clear();
  cairo_surface_t* surface = cairo_image_surface_create(
      CAIRO_FORMAT_ARGB32, PictureWidth(figure, options), std::max(1, options.panelHeight));
  return DrawAndFinish(surface, figure, options, "PNG picture", bytes, [&](cairo_surface_t* s) {
    return cairo_surface_write_to_png_stream(s, AppendToString, &bytes);
  });
}

OutputStatus RenderSvg(const Figure& figure, const PictureOptions& options, std::string& bytes) {
  bytes.clear();
  cairo_surface_t* surface = cairo_svg_surface_create_for_stream(
      AppendToString, &bytes, PictureWidth(figure, options), std::max(1, options.panelHeight));
  return DrawAndFinish(surface, figure, options, "SVG picture", bytes, [](cairo_surface_t* s) {
    cairo_surface_finish(s);
    return cairo_surface_status(s);
  });
}

OutputStatus WritePng(const Figure& figure, const PictureOptions& options,
                      const std::filesystem::path& file) {
  std::string bytes;
  OutputStatus status = RenderPng(figure, options, bytes);
  return status.ok ? WriteFileBytes(file, bytes) : status;
}

OutputStatus WriteSvg(const Figure& figure, const PictureOptions& options,
                      const std::filesystem::path& file) {
  std::string bytes;
  OutputStatus status = RenderSvg(figure, options, bytes);
  return status.ok ? WriteFileBytes(file, bytes) : status;
}

}  // namespace quillix
