// Figures of node results, built from the plain arrays a result holds: the command line only
// extracts the arrays and calls one of these, then RenderPng / RenderSvg (picture.h).
//
// The colours are fixed and named here, so that pictures read the same across result kinds
// and tests can look for them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "core/math/math_types.h"
#include "tools/output/picture.h"

namespace quillix {

namespace figure_colours {
inline constexpr Colour kInput{0.45, 0.45, 0.45};         // input polylines and their points
inline constexpr Colour kInputFaint{0.78, 0.78, 0.78};    // the input again, behind a result
inline constexpr Colour kResult{0.10, 0.35, 0.85};        // result polylines and kept points
inline constexpr Colour kMesh{0.70, 0.70, 0.70};          // mesh wireframes
inline constexpr Colour kPath{0.95, 0.50, 0.05};          // paths and their vertices
inline constexpr Colour kStart{0.10, 0.65, 0.20};         // first requested vertex
inline constexpr Colour kEnd{0.85, 0.10, 0.10};           // last requested vertex
inline constexpr Colour kWaypoint{0.55, 0.20, 0.75};      // requested vertices in between
inline constexpr Colour kBlocked{0.0, 0.0, 0.0};          // vertices the flags block
inline constexpr Colour kSpline{0.45, 0.45, 0.45};        // control polygon of a spline
inline constexpr Colour kSphere{0.10, 0.35, 0.85};        // spheres filling a stretch
inline constexpr Colour kCornerSphere{0.85, 0.35, 0.10};  // spheres placed on corners
inline constexpr Colour kIntersect{0.85, 0.10, 0.10};     // shapes that intersect or touch
inline constexpr Colour kSeparate{0.10, 0.60, 0.25};      // shapes apart
}  // namespace figure_colours

// Two panels: the input polyline with every point ringed, and beside it the result (simplified
// or resampled) over a faint copy of the input, with the result's points as filled dots. The
// notes give the point counts. Either polyline may be empty.
Figure PolylineResultFigure(std::span<const Vec3f> input, std::span<const Vec3f> result,
                            std::string_view title);

// One panel: the mesh's wireframe (#V `positions`, `polygonalDescription` with each polygon
// ended by a negative value), the path (vertex indices, in order) as a thick line with a dot on
// every vertex, and the requested vertices (`requested`, the path's init indices) marked:
// the first as a green disc, the last as a red disc, the others as rings. Vertices whose
// `vertexFlags` byte is 0 are marked by black squares; flags whose count differs from #V are
// ignored, as the path search ignores them. An empty path is noted as "no path"; indices outside
// the mesh are left out.
Figure PathOnMeshFigure(std::span<const Vec3f> positions,
                        std::span<const std::int32_t> polygonalDescription,
                        std::span<const std::int32_t> path, std::span<const std::int32_t> requested,
                        std::span<const std::uint8_t> vertexFlags, std::string_view title);

// One panel: the spline's control polygon and every sphere of `encodedSpheres` (the sphere
// distribution records: centre in elements 12–14, radius in element 3, element 15 = 1 for a
// corner sphere) as a disc of its radius with a dot at its centre; corner spheres in their own
// colour.
Figure SpheresAlongSplineFigure(std::span<const Vec3f> controlPoints,
                                std::span<const Mat4f> encodedSpheres, std::string_view title);

// One panel: boxes A and B (the cube [−1, 1]³ under each matrix), both coloured by `intersect`,
// labelled A and B, with a note saying whether they intersect.
Figure BoxPairFigure(const Mat4f& a, const Mat4f& b, bool intersect, std::string_view title);

// One panel: ellipsoids A and B (the unit sphere under each matrix), coloured by whether the gap
// between them is 0 (touching or overlapping), with the gap written in a note.
Figure EllipsoidPairFigure(const Mat4f& a, const Mat4f& b, float gap, std::string_view title);

// One panel: moving boxes packed as the moving-box node reads them (velocity in column 3 of
// rows 0–2, fourth column otherwise ignored): both boxes at the start of the step, arrows for
// their displacement over the step, dashed outlines at the end of the step, and, when
// `contactTime` is not negative, both boxes at the contact time. The colour says whether a
// contact was found; a note gives the contact time (noting a time beyond the step).
Figure MovingBoxPairFigure(const Mat4f& packedA, const Mat4f& packedB, float contactTime,
                           std::string_view title);

}  // namespace quillix
