"""Curve objects: "Quillix Spheres Along Curve" places spheres along the active curve's poly
and Bézier splines, each spline distributed on its own."""

import bmesh
import bpy
import numpy as np
from mathutils import Matrix

from .curves import active_curve_poll, spline_results

_UP_AXES = {"X": (1.0, 0.0, 0.0), "Y": (0.0, 1.0, 0.0), "Z": (0.0, 0.0, 1.0)}


def parse_radii(text):
    """The radii of a comma- or blank-separated list; ValueError names a bad entry."""
    entries = text.replace(",", " ").split()
    try:
        radii = [float(entry) for entry in entries]
    except ValueError as error:
        raise ValueError(f"Radii: {error}") from None
    if not radii or min(radii) <= 0.0:
        raise ValueError("Radii: give one or more numbers above 0, e.g. \"0.2, 0.3\"")
    return radii


def sphere_matrix(record):
    """The Blender matrix of one sphere record: the record's orientation rows as the axes,
    scaled by its radius (element 3), centred at its row 3."""
    axes = Matrix(np.asarray(record[:3, :3], dtype=np.float64).T.tolist())
    matrix = axes.to_4x4() @ Matrix.Scale(float(record[0, 3]), 4)
    matrix.translation = [float(v) for v in record[3, :3]]
    return matrix


def _unit_sphere_mesh(name):
    mesh = bpy.data.meshes.new(name)
    bm = bmesh.new()
    bmesh.ops.create_uvsphere(bm, u_segments=32, v_segments=16, radius=1.0)
    bm.to_mesh(mesh)
    bm.free()
    for polygon in mesh.polygons:
        polygon.use_smooth = True
    return mesh


class OBJECT_OT_quillix_spheres_along_curve(bpy.types.Operator):
    """Place spheres along the active curve: one at every corner, the stretches between
    corners filled with spheres of the listed radii, gaps spread evenly"""

    bl_idname = "object.quillix_spheres_along_curve"
    bl_label = "Quillix Spheres Along Curve"
    bl_options = {"REGISTER", "UNDO"}

    radii: bpy.props.StringProperty(
        name="Radii", description="Sphere radii, used in turn (comma-separated)", default="1.0"
    )
    corner_threshold: bpy.props.FloatProperty(
        name="Corner Threshold",
        description="Control points further than this from the simplified line are corners; "
        "0 places no corner spheres",
        default=1.0, min=0.0, soft_max=10.0,
    )
    corner_scale: bpy.props.FloatProperty(
        name="Corner Scale", description="Radius factor of the corner spheres",
        default=1.0, min=0.0, soft_max=4.0,
    )
    alignment: bpy.props.EnumProperty(
        name="Alignment",
        items=(
            ("0", "None", "Spheres keep the curve's axes"),
            ("1", "Tangent", "X along the curve, Y towards the up axis"),
            ("2", "Up", "Y along the up axis, X towards the curve"),
        ),
        default="1",
    )
    up_axis: bpy.props.EnumProperty(
        name="Up Axis", description="Up vector of every control point, in the curve's space",
        items=[(k, k, "") for k in _UP_AXES], default="Z",
    )
    distribution: bpy.props.EnumProperty(
        name="Distribution",
        items=(
            ("0", "Cyclic", "Radii in list order, starting at the seed"),
            ("1", "Random", "Radii drawn at random from the seed"),
            ("2", "First", "Always the first radius"),
        ),
        default="0",
    )
    seed: bpy.props.IntProperty(name="Seed", default=0, min=0)
    interpolate_tangents: bpy.props.BoolProperty(
        name="Interpolate Tangents", description="Blend tangents between control points",
        default=True,
    )
    interpolate_up: bpy.props.BoolProperty(
        name="Interpolate Up Vectors", default=True,
    )
    max_spheres: bpy.props.IntProperty(
        name="Max Spheres", description="At most this many spheres per spline",
        default=1000, min=0, soft_max=100000,
    )
    kind: bpy.props.EnumProperty(
        name="As",
        items=(
            ("MESH", "UV Spheres", "Objects sharing one UV sphere mesh"),
            ("EMPTY", "Empties", "Sphere empties"),
        ),
        default="MESH",
    )

    @classmethod
    def poll(cls, context):
        return active_curve_poll(cls, context)

    def spline_records(self, quillix, points, spline):
        """The sphere records (K, 4, 4) of one spline, in the curve's space."""
        return quillix.spheres_along_spline(
            points,
            up_vectors=np.tile(_UP_AXES[self.up_axis], (len(points), 1)),
            radii=parse_radii(self.radii),
            corner_threshold=self.corner_threshold,
            corner_scale=self.corner_scale,
            closed=spline.use_cyclic_u,
            alignment=int(self.alignment),
            distribution=int(self.distribution),
            random_seed=self.seed,
            interpolation=int(self.interpolate_tangents) | int(self.interpolate_up) << 1,
            max_spheres=self.max_spheres,
        )

    def execute(self, context):
        curve = context.active_object
        computed = spline_results(self, curve, self.spline_records)
        if computed is None:
            return {"CANCELLED"}
        records = [r for r in computed[1] if r is not None]
        records = np.concatenate(records) if records else np.empty((0, 4, 4), np.float32)
        if len(records) == 0:
            self.report({"WARNING"}, f"No sphere fits on \"{curve.name}\" with these radii")
            return {"CANCELLED"}

        collection = bpy.data.collections.new(f"{curve.name} Spheres")
        context.scene.collection.children.link(collection)
        mesh = _unit_sphere_mesh(f"{curve.name} Sphere") if self.kind == "MESH" else None
        for index, record in enumerate(records):
            sphere = bpy.data.objects.new(f"{curve.name} Sphere {index:03d}", mesh)
            if mesh is None:
                sphere.empty_display_type = "SPHERE"
            # Children of the curve, so that they follow it; the records are in its space.
            sphere.parent = curve
            sphere.matrix_basis = sphere_matrix(record)
            sphere["quillix_radius_index"] = int(record[2, 3])
            sphere["quillix_spacing"] = float(record[1, 3])
            sphere["quillix_corner"] = bool(record[3, 3] == 1.0)
            collection.objects.link(sphere)
        corners = int(np.count_nonzero(records[:, 3, 3] == 1.0))
        self.report(
            {"INFO"},
            f"Quillix spheres: {len(records)} along \"{curve.name}\" ({corners} at corners) "
            f"in collection \"{collection.name}\"",
        )
        return {"FINISHED"}


classes = (OBJECT_OT_quillix_spheres_along_curve,)
