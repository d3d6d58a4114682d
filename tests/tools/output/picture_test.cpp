// Pictures drawn for real and read back: colours at the projected pixels of known points, the
// fitted views, and the SVG output.
#include "tools/output/picture.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tools/output/figures.h"
#include "tools/output/shapes.h"

namespace quillix {
namespace {

namespace fc = figure_colours;

// A PNG written to disk and read back through Cairo, with its views for finding points.
class RenderedPicture {
 public:
  RenderedPicture(const Figure& figure, const PictureOptions& options, const std::string& name)
      : views_(LayoutFigure(figure, options)) {
    const std::filesystem::path file = testing::TempDir() + "/" + name + ".png";
    const OutputStatus status = WritePng(figure, options, file);
    EXPECT_TRUE(status.ok) << status.message;
    surface_ = cairo_image_surface_create_from_png(file.c_str());
    std::filesystem::remove(file);
  }
  ~RenderedPicture() { cairo_surface_destroy(surface_); }
  RenderedPicture(const RenderedPicture&) = delete;
  RenderedPicture& operator=(const RenderedPicture&) = delete;

  bool Valid() const { return cairo_surface_status(surface_) == CAIRO_STATUS_SUCCESS; }
  int Width() const { return cairo_image_surface_get_width(surface_); }
  int Height() const { return cairo_image_surface_get_height(surface_); }

  // Whether the pixel holding `p` in `panel`, or with `slackPx` one of its neighbours, shows
  // `colour` over the white background to within `tolerance` (of 255 per channel; the default
  // allows rounding only).
  bool Shows(const Vec3f& p, const Colour& colour, std::size_t panel = 0, int slackPx = 0,
             double tolerance = 2.0 / 255.0) const {
    const PixelPoint at = views_.at(panel).Project(p);
    for (int dy = -slackPx; dy <= slackPx; ++dy) {
      for (int dx = -slackPx; dx <= slackPx; ++dx) {
        const int x = int(std::floor(at.x)) + dx, y = int(std::floor(at.y)) + dy;
        if (PixelIs(x, y, colour, tolerance)) return true;
      }
    }
    return false;
  }

 private:
  bool PixelIs(int x, int y, const Colour& colour, double tolerance) const {
    if (x < 0 || y < 0 || x >= Width() || y >= Height()) return false;
    const unsigned char* row =
        cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_);
    const std::uint32_t argb = reinterpret_cast<const std::uint32_t*>(row)[x];
    // Translucent colours are seen blended over white.
    auto channel = [&](double c, int shift) {
      const double expected = 255.0 * (c * colour.a + (1.0 - colour.a));
      return std::abs(double((argb >> shift) & 0xFF) - expected) <= 255.0 * tolerance;
    };
    return channel(colour.r, 16) && channel(colour.g, 8) && channel(colour.b, 0);
  }

  std::vector<OrthoView> views_;
  cairo_surface_t* surface_ = nullptr;
};

constexpr Colour kWhite{1, 1, 1};

std::vector<Vec3f> Grid3x3() {
  std::vector<Vec3f> positions;
  for (int j = 0; j < 3; ++j) {
    for (int i = 0; i < 3; ++i) positions.push_back({float(i), float(j), 0});
  }
  return positions;
}

TEST(PictureTest, PathVerticesCarryThePathColourOverTheWireframe) {
  const std::vector<Vec3f> grid = Grid3x3();
  const std::vector<std::int32_t> quads = {0, 1, 4, 3, -2, 1, 2, 5, 4, -2,
                                           3, 4, 7, 6, -2, 4, 5, 8, 7, -2};
  const std::vector<std::int32_t> path = {0, 1, 2, 5, 8};
  const std::vector<std::int32_t> requested = {0, 8};
  std::vector<std::uint8_t> flags(9, 1);
  flags[4] = 0;
  const RenderedPicture picture(PathOnMeshFigure(grid, quads, path, requested, flags, "path"), {},
                                "path_on_mesh");
  ASSERT_TRUE(picture.Valid());
  EXPECT_EQ(picture.Width(), 480);
  EXPECT_TRUE(picture.Shows(grid[0], fc::kStart));
  EXPECT_TRUE(picture.Shows(grid[8], fc::kEnd));
  for (int v : {1, 2, 5}) EXPECT_TRUE(picture.Shows(grid[v], fc::kPath)) << v;
  EXPECT_TRUE(picture.Shows(grid[4], fc::kBlocked));
  for (int v : {3, 6, 7}) EXPECT_FALSE(picture.Shows(grid[v], fc::kPath)) << v;
  // Midway along a wireframe edge that the path does not follow: a thin line, so partly covered.
  Colour wire = fc::kMesh;
  wire.a = 0.6;  // accepts grey from 10% to full coverage, not white
  EXPECT_TRUE(picture.Shows({0, 1.5f, 0}, wire, 0, 1, 0.15));

  // Seen from the side (x) the path's vertices line up along z = 0 at their own heights.
  const RenderedPicture side(PathOnMeshFigure(grid, quads, path, requested, {}, "path"),
                             {ViewAxis::kX}, "path_on_mesh_x");
  EXPECT_TRUE(side.Shows(grid[0], fc::kStart));
  EXPECT_TRUE(side.Shows(grid[5], fc::kPath));
}

TEST(PictureTest, ResultPanelMarksKeptPointsOnly) {
  const std::vector<Vec3f> input = {{0, 0, 0}, {1, 1, 0}, {2, -1, 0}, {3, 0, 0}, {4, 0, 0}};
  const std::vector<Vec3f> kept = {{0, 0, 0}, {3, 0, 0}, {4, 0, 0}};
  const RenderedPicture picture(PolylineResultFigure(input, kept, "slins"), {}, "polyline");
  ASSERT_TRUE(picture.Valid());
  EXPECT_EQ(picture.Width(), 960);
  for (const Vec3f& p : kept) EXPECT_TRUE(picture.Shows(p, fc::kResult, 1));
  EXPECT_FALSE(picture.Shows(input[1], fc::kResult, 1, 2));
  EXPECT_FALSE(picture.Shows(input[2], fc::kResult, 1, 2));
  EXPECT_FALSE(picture.Shows(kept[1], fc::kResult, 0, 2));  // the input panel has no result
  EXPECT_TRUE(picture.Shows(input[1], fc::kInput, 0, 1));
}

TEST(PictureTest, SpheresAndShapePairsAreFilledAndColouredByOutcome) {
  Mat4f corner, stretch;
  corner.m[0][3] = 1;  // radius
  corner.m[3][3] = 1;  // corner sphere
  stretch.m[0][3] = 0.5f;
  stretch.m[3][0] = 3;
  const std::vector<Mat4f> spheres = {corner, stretch};
  const std::vector<Vec3f> spline = {{0, 0, 0}, {4, 0, 0}};
  const RenderedPicture along(SpheresAlongSplineFigure(spline, spheres, "dsals"), {}, "spheres");
  EXPECT_TRUE(along.Shows({0, 0, 0}, fc::kCornerSphere));
  EXPECT_TRUE(along.Shows({3, 0, 0}, fc::kSphere));
  Colour tint = fc::kSphere;
  tint.a = 0.2;
  EXPECT_TRUE(along.Shows({3, 0.3f, 0}, tint));
  EXPECT_TRUE(along.Shows({3, 0.7f, 0}, kWhite));

  const Mat4f a = Mat4f::Identity();
  Mat4f b = Mat4f::Identity();
  b.m[3][0] = 3;
  for (bool intersect : {true, false}) {
    const RenderedPicture boxes(BoxPairFigure(a, b, intersect, "iotb"), {}, "boxes");
    const Colour edge = intersect ? fc::kIntersect : fc::kSeparate;
    EXPECT_TRUE(boxes.Shows({1, 0, 0}, edge, 0, 1));  // midway along A's right edge
    EXPECT_TRUE(boxes.Shows({4, 0.5f, 0}, edge, 0, 1));
    EXPECT_TRUE(boxes.Shows({1.5f, 0, 0}, kWhite));
  }

  Mat4f stretched = Mat4f::Identity();
  stretched.m[0][0] = 2;  // 2 along x: spans x in [−2, 2]
  Colour fill = fc::kSeparate;
  fill.a = 0.2;
  const RenderedPicture apart(EllipsoidPairFigure(stretched, b, 0.5f, "cdbte"), {}, "ellipsoids");
  EXPECT_TRUE(apart.Shows({-1.5f, 0, 0}, fill));
  EXPECT_TRUE(apart.Shows({0, 1.5f, 0}, kWhite));  // beyond its unit half-height
  EXPECT_TRUE(apart.Shows({3, 0, 0}, fill));

  Mat4f movingA = a, movingB = b;
  movingB.m[0][3] = -4;  // B moves 4 to the left over the step
  const RenderedPicture moving(MovingBoxPairFigure(movingA, movingB, 0.25f, "iotmb"), {}, "moving");
  EXPECT_TRUE(moving.Shows({3, -1, 0}, fc::kIntersect, 0, 1));  // B at t = 0.25: x in [1, 3]
}

TEST(PictureTest, ViewsFitTheDataAndFollowTheirAxes) {
  PlaneBounds bounds;
  const ViewBasis z = BasisOf(ViewAxis::kZ);
  bounds.Add(ToPlane(z, {0, 0, 0}));
  bounds.Add(ToPlane(z, {4, 1, 0}));
  const OrthoView wide(ViewAxis::kZ, bounds, {100, 0, 200, 100}, 10);
  EXPECT_DOUBLE_EQ(wide.Scale(), 45.0);  // width limits: (200 − 2·10) / 4
  EXPECT_DOUBLE_EQ(wide.Project({0, 0, 0}).x, 110.0);
  EXPECT_DOUBLE_EQ(wide.Project({4, 1, 0}).x, 290.0);
  EXPECT_DOUBLE_EQ(wide.Project({2, 0.5f, 0}).y, 50.0);
  EXPECT_LT(wide.Project({0, 1, 0}).y, wide.Project({0, 0, 0}).y);  // y up on screen

  const OrthoView point(ViewAxis::kZ, PlaneBounds{}, {0, 0, 100, 50}, 0);
  EXPECT_DOUBLE_EQ(point.Scale(), 50.0);

  const Vec3f p{1, 2, 3};
  EXPECT_DOUBLE_EQ(ToPlane(BasisOf(ViewAxis::kX), p).u, -3);
  EXPECT_DOUBLE_EQ(ToPlane(BasisOf(ViewAxis::kY), p).v, -3);
  EXPECT_NEAR(ToPlane(BasisOf(ViewAxis::kIso), {1, 1, 1}).u, 0, 1e-12);
  EXPECT_NEAR(ToPlane(BasisOf(ViewAxis::kIso), {1, 1, 1}).v, 0, 1e-12);
  EXPECT_EQ(ParseViewAxis("iso"), ViewAxis::kIso);
  EXPECT_FALSE(ParseViewAxis("X").has_value());
}

TEST(PictureTest, SvgHoldsTheDrawingAndFailuresAreReported) {
  const std::vector<Vec3f> line = {{0, 0, 0}, {1, 1, 0}};
  const Figure figure = PolylineResultFigure(line, line, "svg");
  std::string svg;
  ASSERT_TRUE(RenderSvg(figure, {}, svg).ok);
  EXPECT_EQ(svg.rfind("<?xml", 0), 0u);
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("width=\"960pt\""), std::string::npos);
  EXPECT_NE(svg.find("<path"), std::string::npos);
  EXPECT_NE(svg.find("glyph"), std::string::npos);  // titles and notes
  EXPECT_NE(svg.find("</svg>"), std::string::npos);

  const OutputStatus status = WriteSvg(figure, {}, "/nonexistent_dir/picture.svg");
  EXPECT_FALSE(status.ok);
  EXPECT_NE(status.message.find("/nonexistent_dir/picture.svg"), std::string::npos);
}

}  // namespace
}  // namespace quillix
