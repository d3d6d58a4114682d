"""Blender data as the arrays the ``quillix`` module takes, and back.

Blender multiplies column vectors (the translation is the last column); ``quillix`` takes
matrices in the row-vector convention (the translation is row 3). The two are transposes of
each other, which is the only conversion the operators need.
"""

import numpy as np
from mathutils import Matrix


def row_matrix(matrix):
    """A Blender 4×4 matrix as a (4, 4) float64 array in the row-vector convention."""
    return np.array(matrix, dtype=np.float64).T


def blender_matrix(rows):
    """A (4, 4) row-vector matrix as a Blender Matrix (its transpose)."""
    return Matrix(np.asarray(rows, dtype=np.float64).T.tolist())


def vertex_positions(mesh):
    """(V, 3) float32 vertex positions of a Mesh datablock, in its own vertex order."""
    positions = np.empty(len(mesh.vertices) * 3, dtype=np.float32)
    mesh.vertices.foreach_get("co", positions)
    return positions.reshape(-1, 3)


def polygon_description(mesh):
    """The mesh's polygons as a polygonal description: each polygon's vertex indices, then -1."""
    corners = np.empty(len(mesh.loops), dtype=np.int32)
    mesh.loops.foreach_get("vertex_index", corners)
    sizes = np.empty(len(mesh.polygons), dtype=np.int32)
    mesh.polygons.foreach_get("loop_total", sizes)
    ends = np.cumsum(sizes)
    return np.insert(corners, ends, -1).astype(np.int32)


def spline_points(spline):
    """The control points of a poly or Bézier spline as (N, 3) float32; None for other types
    (NURBS control points are weighted and do not lie on the curve)."""
    if spline.type == "BEZIER":
        points = spline.bezier_points
        co = np.empty(len(points) * 3, dtype=np.float32)
        points.foreach_get("co", co)
        return co.reshape(-1, 3)
    if spline.type == "POLY":
        co = np.empty(len(spline.points) * 4, dtype=np.float32)
        spline.points.foreach_get("co", co)
        return co.reshape(-1, 4)[:, :3].copy()
    return None


_SPLINE_SETTINGS = (
    "use_cyclic_u",
    "use_smooth",
    "resolution_u",
    "material_index",
    "order_u",
    "use_endpoint_u",
    "use_bezier_u",
    "tilt_interpolation",
    "radius_interpolation",
)


def _points_of(collection, count):
    if count > 1:
        collection.add(count - 1)  # a new spline comes with one point


def _copy_spline(curve, spline):
    """Appends a copy of `spline` (any type) to `curve`."""
    new = curve.splines.new(spline.type)
    if spline.type == "BEZIER":
        _points_of(new.bezier_points, len(spline.bezier_points))
        for old, point in zip(spline.bezier_points, new.bezier_points):
            point.handle_left_type, point.handle_right_type = "FREE", "FREE"
            for key in ("co", "handle_left", "handle_right", "radius", "tilt"):
                setattr(point, key, getattr(old, key))
            point.handle_left_type = old.handle_left_type
            point.handle_right_type = old.handle_right_type
    else:
        _points_of(new.points, len(spline.points))
        for key, size in (("co", 4), ("radius", 1), ("tilt", 1), ("weight_softbody", 1)):
            values = np.empty(len(spline.points) * size, dtype=np.float32)
            spline.points.foreach_get(key, values)
            new.points.foreach_set(key, values)
    return new


def _spline_from_points(curve, spline, points):
    """Appends a spline of `spline`'s type and settings whose control points are `points`.
    Bézier handles take the type of `spline`'s first point, so a smooth curve stays smooth."""
    new = curve.splines.new(spline.type)
    if spline.type == "BEZIER":
        first = spline.bezier_points[0]
        _points_of(new.bezier_points, len(points))
        flat = points.astype(np.float32).ravel()
        for key in ("co", "handle_left", "handle_right"):
            new.bezier_points.foreach_set(key, flat)
        for point in new.bezier_points:
            point.handle_left_type = first.handle_left_type
            point.handle_right_type = first.handle_right_type
    else:
        _points_of(new.points, len(points))
        co = np.ones((len(points), 4), dtype=np.float32)
        co[:, :3] = points
        new.points.foreach_set("co", co.ravel())
    return new


def rewrite_splines(curve, new_points):
    """Gives the splines of `curve` new control points, keeping their order and settings.

    new_points[i] is an (N, 3) array for spline i, or None to keep that spline as it is; a
    spline whose new array is empty is dropped. A spline's point count cannot shrink in place,
    so every spline is appended anew and the old ones are removed afterwards.
    """
    old_splines = list(curve.splines)
    for spline, points in zip(old_splines, new_points):
        if points is None:
            new = _copy_spline(curve, spline)
        elif len(points) == 0:
            continue
        else:
            new = _spline_from_points(curve, spline, points)
        for key in _SPLINE_SETTINGS:
            setattr(new, key, getattr(spline, key))
    for spline in old_splines:
        curve.splines.remove(spline)
