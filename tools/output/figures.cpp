#include "tools/output/figures.h"

#include <string>
#include <vector>

#include "core/math/vec3_ops.h"
#include "tools/output/result_files.h"
#include "tools/output/shapes.h"

namespace quillix {
namespace {

namespace fc = figure_colours;

Colour WithAlpha(Colour c, double alpha) {
  c.a = alpha;
  return c;
}

std::string Count(std::size_t n, const char* one, const char* many) {
  return std::to_string(n) + " " + (n == 1 ? one : many);
}

std::vector<Vec3f> BoxEdgeEnds(const Mat4f& transform) {
  const std::array<Vec3f, 8> corners = BoxCorners(transform);
  std::vector<Vec3f> ends;
  for (const auto& edge : kBoxEdges) {
    ends.push_back(corners[edge[0]]);
    ends.push_back(corners[edge[1]]);
  }
  return ends;
}

Vec3f Centre(const Mat4f& transform) {
  return {transform.m[3][0], transform.m[3][1], transform.m[3][2]};
}

// The moving-box node's reading of a packed matrix: displacement over the step in column 3.
Vec3f Velocity(const Mat4f& packed) { return {packed.m[0][3], packed.m[1][3], packed.m[2][3]}; }

Mat4f MovedBy(Mat4f transform, float time, const Vec3f& velocity) {
  const Vec3f centre = Advance(Centre(transform), time, velocity);
  transform.m[3][0] = centre.x;
  transform.m[3][1] = centre.y;
  transform.m[3][2] = centre.z;
  return transform;
}

void AddPairLabels(Panel& panel, const Mat4f& a, const Mat4f& b) {
  panel.labels.push_back({"A", Centre(a), fc::kInput});
  panel.labels.push_back({"B", Centre(b), fc::kInput});
}

void AddPolylineWithMarkers(Panel& panel, std::span<const Vec3f> points, Colour colour,
                            double widthPx, MarkerShape shape, double sizePx) {
  panel.lines.push_back({{points.begin(), points.end()}, colour, widthPx});
  for (const Vec3f& p : points) panel.markers.push_back({p, colour, shape, sizePx});
}

}  // namespace

Figure PolylineResultFigure(std::span<const Vec3f> input, std::span<const Vec3f> result,
                            std::string_view title) {
  Figure figure;
  Panel& before = figure.panels.emplace_back();
  before.title = std::string(title) + ": input";
  before.notes.push_back(Count(input.size(), "point", "points"));
  AddPolylineWithMarkers(before, input, fc::kInput, 2.0, MarkerShape::kRing, 10.0);

  Panel& after = figure.panels.emplace_back();
  after.title = std::string(title) + ": result";
  after.notes.push_back(Count(result.size(), "point", "points"));
  // The input stays visible as a faint dashed line with ringed points, so removed points show.
  AddPolylineWithMarkers(after, input, fc::kInputFaint, 1.5, MarkerShape::kRing, 10.0);
  after.lines.back().dashed = true;
  AddPolylineWithMarkers(after, result, fc::kResult, 2.5, MarkerShape::kDot, 8.0);
  return figure;
}

Figure PathOnMeshFigure(std::span<const Vec3f> positions,
                        std::span<const std::int32_t> polygonalDescription,
                        std::span<const std::int32_t> path, std::span<const std::int32_t> requested,
                        std::span<const std::uint8_t> vertexFlags, std::string_view title) {
  Figure figure;
  Panel& panel = figure.panels.emplace_back();
  panel.title = std::string(title);
  auto vertex = [&](std::int32_t index) { return positions[index]; };
  auto inMesh = [&](std::int32_t index) {
    return index >= 0 && static_cast<std::size_t>(index) < positions.size();
  };

  EdgesItem& wire = panel.edges.emplace_back(EdgesItem{{}, fc::kMesh, 1.0});
  for (const auto& edge : MeshEdges(polygonalDescription, positions.size())) {
    wire.ends.push_back(vertex(edge[0]));
    wire.ends.push_back(vertex(edge[1]));
  }

  std::size_t blocked = 0;
  if (vertexFlags.size() == positions.size()) {
    for (std::size_t i = 0; i < positions.size(); ++i) {
      if (vertexFlags[i] != 0) continue;
      panel.markers.push_back({positions[i], fc::kBlocked, MarkerShape::kSquare, 8.0});
      ++blocked;
    }
  }

  std::vector<Vec3f> chain;
  for (std::int32_t index : path) {
    if (inMesh(index)) chain.push_back(vertex(index));
  }
  AddPolylineWithMarkers(panel, chain, fc::kPath, 4.0, MarkerShape::kDot, 8.0);

  for (std::size_t k = 0; k < requested.size(); ++k) {
    if (!inMesh(requested[k])) continue;
    const bool first = k == 0, last = k + 1 == requested.size();
    const Colour colour = first ? fc::kStart : last ? fc::kEnd : fc::kWaypoint;
    const MarkerShape shape = first || last ? MarkerShape::kDot : MarkerShape::kRing;
    panel.markers.push_back({vertex(requested[k]), colour, shape, 13.0});
    if (first || last)
      panel.labels.push_back({first ? "start" : "end", vertex(requested[k]), colour});
  }

  panel.notes.push_back(path.empty() ? "no path"
                                     : "path: " + Count(path.size(), "vertex", "vertices"));
  if (blocked > 0) panel.notes.back() += ", " + std::to_string(blocked) + " blocked";
  return figure;
}

Figure SpheresAlongSplineFigure(std::span<const Vec3f> controlPoints,
                                std::span<const Mat4f> encodedSpheres, std::string_view title) {
  Figure figure;
  Panel& panel = figure.panels.emplace_back();
  panel.title = std::string(title);
  AddPolylineWithMarkers(panel, controlPoints, fc::kSpline, 1.5, MarkerShape::kDot, 5.0);
  const std::vector<SpherePoint> spheres = SpheresFromEncodedMatrices(encodedSpheres);
  std::size_t corners = 0;
  for (std::size_t i = 0; i < spheres.size(); ++i) {
    const bool corner = encodedSpheres[i].m[3][3] == 1.0f;
    corners += corner;
    const Colour colour = corner ? fc::kCornerSphere : fc::kSphere;
    panel.ellipsoids.push_back(
        {SphereTransform(spheres[i].centre, spheres[i].radius), colour, WithAlpha(colour, 0.2)});
    panel.markers.push_back({spheres[i].centre, colour, MarkerShape::kDot, 4.0});
  }
  panel.notes.push_back(Count(spheres.size(), "sphere", "spheres") + ", " +
                        std::to_string(corners) + " on corners");
  return figure;
}

Figure BoxPairFigure(const Mat4f& a, const Mat4f& b, bool intersect, std::string_view title) {
  Figure figure;
  Panel& panel = figure.panels.emplace_back();
  panel.title = std::string(title);
  const Colour colour = intersect ? fc::kIntersect : fc::kSeparate;
  panel.edges.push_back({BoxEdgeEnds(a), colour, 2.0});
  panel.edges.push_back({BoxEdgeEnds(b), colour, 2.0});
  AddPairLabels(panel, a, b);
  panel.notes.push_back(intersect ? "A and B intersect" : "A and B are apart");
  return figure;
}

Figure EllipsoidPairFigure(const Mat4f& a, const Mat4f& b, float gap, std::string_view title) {
  Figure figure;
  Panel& panel = figure.panels.emplace_back();
  panel.title = std::string(title);
  const Colour colour = gap == 0.0f ? fc::kIntersect : fc::kSeparate;
  panel.ellipsoids.push_back({a, colour, WithAlpha(colour, 0.2)});
  panel.ellipsoids.push_back({b, colour, WithAlpha(colour, 0.2)});
  AddPairLabels(panel, a, b);
  panel.notes.push_back("gap = " + FloatText(gap));
  return figure;
}

Figure MovingBoxPairFigure(const Mat4f& packedA, const Mat4f& packedB, float contactTime,
                           std::string_view title) {
  Figure figure;
  Panel& panel = figure.panels.emplace_back();
  panel.title = std::string(title);
  const bool contact = contactTime >= 0.0f;
  const Colour startColour = contact ? fc::kInput : fc::kSeparate;
  for (const Mat4f* box : {&packedA, &packedB}) {
    const Vec3f velocity = Velocity(*box);
    panel.edges.push_back({BoxEdgeEnds(*box), startColour, 1.5});
    panel.edges.push_back({BoxEdgeEnds(MovedBy(*box, 1.0f, velocity)), fc::kInputFaint, 1.0, true});
    if (contact) {
      panel.edges.push_back(
          {BoxEdgeEnds(MovedBy(*box, contactTime, velocity)), fc::kIntersect, 2.5});
    }
    const Vec3f centre = Centre(*box);
    panel.lines.push_back({{centre, Add(centre, velocity)}, fc::kInput, 1.5, false, false, true});
  }
  AddPairLabels(panel, packedA, packedB);
  if (!contact) {
    panel.notes.push_back("no contact within the step");
  } else {
    panel.notes.push_back("contact at t = " + FloatText(contactTime) +
                          (contactTime > 1.0f ? ", beyond the step" : ""));
  }
  return figure;
}

}  // namespace quillix
