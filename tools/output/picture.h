// Pictures of figures: plain drawing items in scene coordinates, drawn by Cairo in an
// orthographic view (view.h) to PNG or SVG.
//
// A figure is one or more panels side by side, each with its own items and title. All panels
// share one scale and are centred on the data of all of them, so a point sits at the same place
// in every panel and an input and its result can be compared at a glance.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "core/math/math_types.h"
#include "tools/output/file_write.h"
#include "tools/output/view.h"

namespace quillix {

// Red, green, blue and opacity, each in [0, 1].
struct Colour {
  double r = 0.0;
  double g = 0.0;
  double b = 0.0;
  double a = 1.0;
};

// A polyline through `points`, optionally closed back to its first point, dashed, or ending in
// an arrow head at its last point.
struct LineItem {
  std::vector<Vec3f> points;
  Colour colour;
  double widthPx = 2.0;
  bool closed = false;
  bool dashed = false;
  bool arrow = false;
};

// Independent segments (wireframes): `ends` holds two points per segment.
struct EdgesItem {
  std::vector<Vec3f> ends;
  Colour colour;
  double widthPx = 1.0;
  bool dashed = false;
};

// A mark of fixed pixel size at a point: a filled disc, a filled square, a cross, or a ring.
enum class MarkerShape { kDot, kSquare, kCross, kRing };
struct MarkerItem {
  Vec3f position;
  Colour colour;
  MarkerShape shape = MarkerShape::kDot;
  double sizePx = 8.0;  // diameter or side
};

// The unit sphere under `transform` (row-vector convention, fourth column ignored), drawn as its
// exact outline in the view, filled with `fill` and stroked with `stroke`. A sphere of radius r
// around c is SphereTransform(c, r) (shapes.h).
struct EllipsoidItem {
  Mat4f transform;
  Colour stroke;
  Colour fill;
  double widthPx = 1.5;
  bool dashed = false;
};

// Text whose left end sits `offsetPx` from the pixel of `anchor`.
struct LabelItem {
  std::string text;
  Vec3f anchor;
  Colour colour;
  PixelPoint offsetPx{6.0, -6.0};
};

// One panel. Items are drawn by kind in this order, each kind in its list order: edges,
// ellipsoids, lines, markers, labels; then the title at the top and the notes, one per line,
// at the bottom.
struct Panel {
  std::string title;
  std::vector<std::string> notes;
  std::vector<EdgesItem> edges;
  std::vector<EllipsoidItem> ellipsoids;
  std::vector<LineItem> lines;
  std::vector<MarkerItem> markers;
  std::vector<LabelItem> labels;
};

struct Figure {
  std::vector<Panel> panels;
};

// Picture size and view. The picture is panelWidth × panel count wide and panelHeight high.
struct PictureOptions {
  ViewAxis axis = ViewAxis::kZ;
  int panelWidth = 480;
  int panelHeight = 400;
};

// The view of each panel of `figure` in a picture drawn with `options`, in panel order: what
// the renderers use, so that callers (tests) can find the pixel of any scene point. Fitted to
// every item's extent (marker and label sizes excluded) with room for the title and notes.
std::vector<OrthoView> LayoutFigure(const Figure& figure, const PictureOptions& options);

// The picture as PNG or SVG file contents (white background). An empty figure gives one blank
// panel. Cairo failures come back in the status, with `bytes` left empty.
OutputStatus RenderPng(const Figure& figure, const PictureOptions& options, std::string& bytes);
OutputStatus RenderSvg(const Figure& figure, const PictureOptions& options, std::string& bytes);

// RenderPng or RenderSvg, then WriteFileBytes to `file`.
OutputStatus WritePng(const Figure& figure, const PictureOptions& options,
                      const std::filesystem::path& file);
OutputStatus WriteSvg(const Figure& figure, const PictureOptions& options,
                      const std::filesystem::path& file);

}  // namespace quillix
